#include "tools/swf/SwfWriter.h"

#include "platform/swf/Tags.h"

#include <lzma.h>
#include <stb_image_write.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace qx::swftool {

using namespace swf;

namespace {

std::vector<uint8_t> zlibCompress(std::span<const uint8_t> data)
{
    uLongf size = compressBound(uLong(data.size()));
    std::vector<uint8_t> out(size);
    if (compress2(out.data(), &size, data.data(), uLong(data.size()), 9) != Z_OK) {
        throw std::runtime_error("zlib compression failed");
    }
    out.resize(size);
    return out;
}

// The .lzma ("alone") form: 5 property bytes, 8 size bytes, then the stream.
std::vector<uint8_t> lzmaAlone(std::span<const uint8_t> data)
{
    lzma_options_lzma options;
    lzma_lzma_preset(&options, 6);
    lzma_stream stream = LZMA_STREAM_INIT;
    if (lzma_alone_encoder(&stream, &options) != LZMA_OK) throw std::runtime_error("lzma encoder failed");
    std::vector<uint8_t> out(data.size() + data.size() / 2 + 1024);
    stream.next_in = data.data();
    stream.avail_in = data.size();
    stream.next_out = out.data();
    stream.avail_out = out.size();
    const lzma_ret rc = lzma_code(&stream, LZMA_FINISH);
    out.resize(out.size() - stream.avail_out);
    lzma_end(&stream);
    if (rc != LZMA_STREAM_END) throw std::runtime_error("lzma compression failed");
    return out;
}

uint8_t channel(uint32_t argb, int shift) { return uint8_t(argb >> shift); }

uint8_t premultiplied(uint32_t argb, int shift) { return uint8_t((channel(argb, shift) * (argb >> 24) + 127) / 255); }

// The JPEG's marker segments before its scan, split into tables (quantisation and Huffman)
// and the rest.
struct JpegParts {
    std::vector<uint8_t> tables;
    std::vector<uint8_t> image;
};

JpegParts splitJpeg(const std::vector<uint8_t>& jpeg)
{
    JpegParts parts;
    parts.tables = {0xFF, 0xD8};
    parts.image = {0xFF, 0xD8};
    size_t at = 2;
    while (at + 4 <= jpeg.size() && jpeg[at] == 0xFF && jpeg[at + 1] != 0xDA) {
        const size_t length = size_t(jpeg[at + 2]) << 8 | jpeg[at + 3];
        auto& into = jpeg[at + 1] == 0xDB || jpeg[at + 1] == 0xC4 ? parts.tables : parts.image;
        into.insert(into.end(), jpeg.begin() + ptrdiff_t(at), jpeg.begin() + ptrdiff_t(at + 2 + length));
        at += 2 + length;
    }
    parts.image.insert(parts.image.end(), jpeg.begin() + ptrdiff_t(at), jpeg.end());
    parts.tables.insert(parts.tables.end(), {0xFF, 0xD9});
    return parts;
}

}  // namespace

// --- TagList ---

void TagList::tag(uint16_t code, std::span<const uint8_t> body, bool longForm)
{
    BitWriter out;
    if (body.size() < 0x3F && !longForm) {
        out.u16(uint16_t(code << 6 | body.size()));
    } else {
        out.u16(uint16_t(code << 6 | 0x3F));
        out.u32(uint32_t(body.size()));
    }
    out.bytes(body);
    const auto bytes = out.take();
    data_.insert(data_.end(), bytes.begin(), bytes.end());
}

void TagList::showFrame()
{
    tag(kShowFrame, {});
    ++frames_;
}

void TagList::place(uint16_t depth, std::optional<uint16_t> id, const Matrix& matrix,
                    std::optional<ColorTransform> colors, std::optional<uint16_t> ratio,
                    std::optional<uint16_t> clipDepth, bool move)
{
    BitWriter out;
    out.u8(uint8_t((clipDepth ? 0x40 : 0) | (ratio ? 0x10 : 0) | (colors ? 0x08 : 0) | 0x04 | (id ? 0x02 : 0) |
                   (move ? 0x01 : 0)));
    out.u16(depth);
    if (id) out.u16(*id);
    out.matrix(matrix);
    if (colors) out.colorTransform(*colors, true);
    if (ratio) out.u16(*ratio);
    if (clipDepth) out.u16(*clipDepth);
    tag(kPlaceObject2, out.take());
}

void TagList::placeObject1(uint16_t id, uint16_t depth, const Matrix& matrix, std::optional<ColorTransform> colors)
{
    BitWriter out;
    out.u16(id);
    out.u16(depth);
    out.matrix(matrix);
    if (colors) out.colorTransform(*colors, false);
    tag(kPlaceObject, out.take());
}

void TagList::remove(uint16_t depth)
{
    BitWriter out;
    out.u16(depth);
    tag(kRemoveObject2, out.take());
}

void TagList::removeObject1(uint16_t id, uint16_t depth)
{
    BitWriter out;
    out.u16(id);
    out.u16(depth);
    tag(kRemoveObject, out.take());
}

void TagList::frameLabel(const char* label)
{
    const auto* text = reinterpret_cast<const uint8_t*>(label);
    tag(kFrameLabel, std::span<const uint8_t>(text, std::strlen(label) + 1));
}

// --- SwfWriter ---

SwfWriter::SwfWriter(int version, Rect stage, double frameRate)
    : version_(version), stage_(stage), frameRate_(frameRate)
{}

void SwfWriter::background(Rgba color)
{
    BitWriter out;
    out.color(color, false);
    tag(kSetBackgroundColor, out.take());
}

void SwfWriter::defineShape(uint16_t id, const ShapeBuilder& shape, int version)
{
    static constexpr uint16_t codes[] = {kDefineShape, kDefineShape2, kDefineShape3, kDefineShape4};
    BitWriter out;
    out.u16(id);
    out.rect(stage_);
    if (version >= 4) {
        out.rect(stage_);
        out.u8(shape.nonZeroWinding ? 0x04 : 0x00);
    }
    out.bytes(shape.encode(version));
    tag(codes[std::clamp(version, 1, 4) - 1], out.take(), true);
}

void SwfWriter::defineMorph(uint16_t id, const ShapeBuilder& start, const ShapeBuilder& end, int version)
{
    BitWriter out;
    out.u16(id);
    out.rect(stage_);
    out.rect(stage_);
    if (version >= 2) {
        out.rect(stage_);
        out.rect(stage_);
        out.u8(0);
    }
    BitWriter styles;
    writeCount(styles, start.fills.size(), 2);
    for (size_t i = 0; i < start.fills.size(); ++i) {
        const FillStyle& a = start.fills[i];
        const FillStyle& b = end.fills[i];
        if (a.kind == FillKind::Solid) {
            styles.u8(0x00);
            styles.color(a.color, true);
            styles.color(b.color, true);
        } else if (a.kind == FillKind::Bitmap) {
            styles.u8(uint8_t(0x40 | (a.repeat ? 0 : 1) | (a.smooth ? 0 : 2)));
            styles.u16(a.bitmapId);
            styles.matrix(a.matrix);
            styles.matrix(b.matrix);
        } else {
            styles.u8(a.kind == FillKind::Linear ? 0x10 : 0x12);
            styles.matrix(a.matrix);
            styles.matrix(b.matrix);
            styles.u8(uint8_t(a.gradient.stops.size()));
            for (size_t s = 0; s < a.gradient.stops.size(); ++s) {
                styles.u8(a.gradient.stops[s].ratio);
                styles.color(a.gradient.stops[s].color, true);
                styles.u8(b.gradient.stops[s].ratio);
                styles.color(b.gradient.stops[s].color, true);
            }
        }
    }
    writeCount(styles, start.lines.size(), 2);
    for (size_t i = 0; i < start.lines.size(); ++i) {
        styles.u16(start.lines[i].width);
        styles.u16(end.lines[i].width);
        // Morph lines are written as solid colours.
        if (version >= 2) writeLineStyle2Flags(styles, LineStyle{start.lines[i].width, {}, false});
        styles.color(start.lines[i].color, true);
        styles.color(end.lines[i].color, true);
    }
    start.encodeRecords(styles, 3);
    const auto head = styles.take();
    out.u32(uint32_t(head.size()));
    out.bytes(head);
    BitWriter endEdges;
    ShapeBuilder edgesOnly = end;
    edgesOnly.fills.clear();
    edgesOnly.lines.clear();
    edgesOnly.encodeRecords(endEdges, 3);
    out.bytes(endEdges.take());
    tag(version >= 2 ? kDefineMorphShape2 : kDefineMorphShape, out.take(), true);
}

void SwfWriter::defineLossless(uint16_t id, int width, int height, std::span<const uint32_t> argb, bool alpha)
{
    std::vector<uint8_t> pixels;
    pixels.reserve(argb.size() * 4);
    for (const uint32_t p : argb) {
        if (alpha) {
            pixels.insert(pixels.end(),
                          {channel(p, 24), premultiplied(p, 16), premultiplied(p, 8), premultiplied(p, 0)});
        } else {
            pixels.insert(pixels.end(), {0xFF, channel(p, 16), channel(p, 8), channel(p, 0)});
        }
    }
    BitWriter out;
    out.u16(id);
    out.u8(5);
    out.u16(uint16_t(width));
    out.u16(uint16_t(height));
    out.bytes(zlibCompress(pixels));
    tag(alpha ? kDefineBitsLossless2 : kDefineBitsLossless, out.take(), true);
}

void SwfWriter::defineLosslessPalette(uint16_t id, int width, int height, std::span<const uint32_t> palette,
                                      std::span<const uint8_t> indices, bool alpha)
{
    std::vector<uint8_t> data;
    for (const uint32_t p : palette) {
        data.insert(data.end(), {channel(p, 16), channel(p, 8), channel(p, 0)});
        if (alpha) data.push_back(channel(p, 24));
    }
    const size_t row = (size_t(width) + 3) & ~size_t(3);
    for (int y = 0; y < height; ++y) {
        const auto line = indices.subspan(size_t(y) * size_t(width), size_t(width));
        data.insert(data.end(), line.begin(), line.end());
        data.resize(data.size() + row - size_t(width), 0);
    }
    BitWriter out;
    out.u16(id);
    out.u8(3);
    out.u16(uint16_t(width));
    out.u16(uint16_t(height));
    out.u8(uint8_t(palette.size() - 1));
    out.bytes(zlibCompress(data));
    tag(alpha ? kDefineBitsLossless2 : kDefineBitsLossless, out.take(), true);
}

void SwfWriter::defineJpeg(uint16_t id, int width, int height, std::span<const uint32_t> argb, bool alpha)
{
    const auto jpeg = encodeJpeg(width, height, argb);
    BitWriter out;
    out.u16(id);
    if (!alpha) {
        out.bytes(jpeg);
        tag(kDefineBitsJpeg2, out.take(), true);
        return;
    }
    std::vector<uint8_t> plane;
    for (const uint32_t p : argb) plane.push_back(channel(p, 24));
    out.u32(uint32_t(jpeg.size()));
    out.bytes(jpeg);
    out.bytes(zlibCompress(plane));
    tag(kDefineBitsJpeg3, out.take(), true);
}

void SwfWriter::defineJpegWithTables(uint16_t id, int width, int height, std::span<const uint32_t> argb)
{
    const JpegParts parts = splitJpeg(encodeJpeg(width, height, argb));
    tag(kJpegTables, parts.tables, true);
    BitWriter out;
    out.u16(id);
    out.bytes(parts.image);
    tag(kDefineBits, out.take(), true);
}

void SwfWriter::defineSprite(uint16_t id, const TagList& sprite)
{
    BitWriter out;
    out.u16(id);
    out.u16(uint16_t(sprite.frames()));
    out.bytes(sprite.bytes());
    out.u16(0);  // End
    tag(kDefineSprite, out.take(), true);
}

std::vector<uint8_t> SwfWriter::finish(Compression compression, std::optional<uint16_t> declaredFrames) const
{
    BitWriter body;
    body.rect(stage_);
    const long rate = std::lround(frameRate_ * 256.0);
    body.u8(uint8_t(rate & 0xFF));
    body.u8(uint8_t(rate >> 8));
    body.u16(declaredFrames.value_or(uint16_t(frames())));
    body.bytes(bytes());
    body.u16(0);  // End
    const auto plain = body.take();
    BitWriter file;
    const char* signature = compression == Compression::Zlib ? "CWS" : compression == Compression::Lzma ? "ZWS" : "FWS";
    file.bytes({reinterpret_cast<const uint8_t*>(signature), 3});
    file.u8(uint8_t(version_));
    file.u32(uint32_t(plain.size() + 8));
    if (compression == Compression::None) {
        file.bytes(plain);
    } else if (compression == Compression::Zlib) {
        file.bytes(zlibCompress(plain));
    } else {
        const auto alone = lzmaAlone(plain);
        file.u32(uint32_t(alone.size() - 13));
        file.bytes(std::span(alone).first(5));
        file.bytes(std::span(alone).subspan(13));
    }
    return file.take();
}

std::vector<uint8_t> encodeJpeg(int width, int height, std::span<const uint32_t> argb)
{
    std::vector<uint8_t> rgb;
    rgb.reserve(argb.size() * 3);
    for (const uint32_t p : argb) rgb.insert(rgb.end(), {channel(p, 16), channel(p, 8), channel(p, 0)});
    std::vector<uint8_t> jpeg;
    const auto append = [](void* context, void* data, int size) {
        auto* out = static_cast<std::vector<uint8_t>*>(context);
        const auto* bytes = static_cast<const uint8_t*>(data);
        out->insert(out->end(), bytes, bytes + size);
    };
    if (!stbi_write_jpg_to_func(append, &jpeg, width, height, 3, rgb.data(), 95)) {
        throw std::runtime_error("JPEG encoding failed");
    }
    return jpeg;
}

}  // namespace qx::swftool
