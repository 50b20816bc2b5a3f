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

int32_t fixed16(double value) { return int32_t(std::lround(value * 65536.0)); }

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

uint8_t premultiplied(uint32_t argb, int shift)
{
    return uint8_t((channel(argb, shift) * (argb >> 24) + 127) / 255);
}

void writeGradient(BitWriter& out, const Gradient& gradient, int version, bool focal)
{
    out.ub(uint32_t(gradient.spread), 2);
    out.ub(0, 2);
    out.ub(uint32_t(gradient.stops.size()), 4);
    for (const GradientStop& stop : gradient.stops) {
        out.u8(stop.ratio);
        out.color(stop.color, version >= 3);
    }
    if (focal) out.u16(uint16_t(int16_t(std::lround(gradient.focalPoint * 256.0))));
}

void writeFillStyle(BitWriter& out, const FillStyle& fill, int version)
{
    switch (fill.kind) {
    case FillKind::Solid:
        out.u8(0x00);
        out.color(fill.color, version >= 3);
        return;
    case FillKind::Linear:
    case FillKind::Radial:
    case FillKind::Focal:
        out.u8(fill.kind == FillKind::Linear ? 0x10 : fill.kind == FillKind::Radial ? 0x12 : 0x13);
        out.matrix(fill.matrix);
        writeGradient(out, fill.gradient, version, fill.kind == FillKind::Focal);
        return;
    case FillKind::Bitmap:
        out.u8(uint8_t(0x40 | (fill.repeat ? 0 : 1) | (fill.smooth ? 0 : 2)));
        out.u16(fill.bitmapId);
        out.matrix(fill.matrix);
        return;
    }
}

void writeCount(BitWriter& out, size_t count, int version)
{
    if (count >= 0xFF && version >= 2) {
        out.u8(0xFF);
        out.u16(uint16_t(count));
    } else {
        out.u8(uint8_t(count));
    }
}

void writeLineStyle2Flags(BitWriter& out, const LineStyle& line)
{
    out.ub(uint32_t(line.cap), 2);
    out.ub(uint32_t(line.join), 2);
    out.ub(line.hasFill, 1);
    out.ub(0, 3);
    out.ub(0, 5);
    out.ub(0, 1);
    out.ub(uint32_t(line.cap), 2);
    if (line.join == JoinStyle::Miter) out.u16(uint16_t(int16_t(std::lround(line.miterLimit * 256.0))));
}

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

// --- BitWriter ---

void BitWriter::ub(uint32_t value, unsigned bits)
{
    for (unsigned i = bits; i-- > 0;) {
        if (bitsUsed_ == 0) data_.push_back(0);
        if ((value >> i) & 1) data_.back() |= uint8_t(0x80 >> bitsUsed_);
        bitsUsed_ = (bitsUsed_ + 1) % 8;
    }
}

void BitWriter::sb(int32_t value, unsigned bits) { ub(uint32_t(value) & (bits >= 32 ? ~0u : (1u << bits) - 1), bits); }

void BitWriter::align() { bitsUsed_ = 0; }

void BitWriter::u8(uint8_t value)
{
    align();
    data_.push_back(value);
}

void BitWriter::u16(uint16_t value)
{
    u8(uint8_t(value));
    u8(uint8_t(value >> 8));
}

void BitWriter::u32(uint32_t value)
{
    u16(uint16_t(value));
    u16(uint16_t(value >> 16));
}

void BitWriter::bytes(std::span<const uint8_t> data)
{
    align();
    data_.insert(data_.end(), data.begin(), data.end());
}

void BitWriter::rect(const Rect& r)
{
    align();
    const unsigned bits = std::max({signedBits(r.xMin), signedBits(r.xMax), signedBits(r.yMin), signedBits(r.yMax)});
    ub(bits, 5);
    for (const int32_t v : {r.xMin, r.xMax, r.yMin, r.yMax}) sb(v, bits);
    align();
}

void BitWriter::matrix(const Matrix& m)
{
    align();
    const bool scales = m.a != 1.0 || m.d != 1.0;
    ub(scales, 1);
    if (scales) {
        const unsigned bits = std::max(signedBits(fixed16(m.a)), signedBits(fixed16(m.d)));
        ub(bits, 5);
        sb(fixed16(m.a), bits);
        sb(fixed16(m.d), bits);
    }
    const bool rotates = m.b != 0.0 || m.c != 0.0;
    ub(rotates, 1);
    if (rotates) {
        const unsigned bits = std::max(signedBits(fixed16(m.b)), signedBits(fixed16(m.c)));
        ub(bits, 5);
        sb(fixed16(m.b), bits);
        sb(fixed16(m.c), bits);
    }
    const int32_t tx = int32_t(std::lround(m.tx));
    const int32_t ty = int32_t(std::lround(m.ty));
    const unsigned bits = tx == 0 && ty == 0 ? 0 : std::max(signedBits(tx), signedBits(ty));
    ub(bits, 5);
    sb(tx, bits);
    sb(ty, bits);
    align();
}

void BitWriter::colorTransform(const ColorTransform& cx, bool withAlpha)
{
    align();
    const int channels = withAlpha ? 4 : 3;
    unsigned bits = 1;
    for (int i = 0; i < channels; ++i) bits = std::max({bits, signedBits(cx.multiply[i]), signedBits(cx.add[i])});
    ub(1, 1);  // add terms
    ub(1, 1);  // multiply terms
    ub(bits, 4);
    for (int i = 0; i < channels; ++i) sb(cx.multiply[i], bits);
    for (int i = 0; i < channels; ++i) sb(cx.add[i], bits);
    align();
}

void BitWriter::color(Rgba c, bool withAlpha)
{
    u8(c.r);
    u8(c.g);
    u8(c.b);
    if (withAlpha) u8(c.a);
}

std::vector<uint8_t> BitWriter::take()
{
    align();
    return std::move(data_);
}

unsigned signedBits(int64_t value)
{
    unsigned bits = 1;
    while (value < -(int64_t(1) << (bits - 1)) || value >= (int64_t(1) << (bits - 1))) ++bits;
    return bits;
}

unsigned unsignedBits(uint64_t value)
{
    unsigned bits = 0;
    while (value >> bits) ++bits;
    return bits;
}

// --- Styles ---

void writeFillStyles(BitWriter& out, const std::vector<FillStyle>& fills, int version)
{
    writeCount(out, fills.size(), version);
    for (const FillStyle& fill : fills) writeFillStyle(out, fill, version);
}

void writeLineStyles(BitWriter& out, const std::vector<LineStyle>& lines, int version)
{
    writeCount(out, lines.size(), version);
    for (const LineStyle& line : lines) {
        out.u16(line.width);
        if (version >= 4) {
            writeLineStyle2Flags(out, line);
            if (line.hasFill) writeFillStyle(out, line.fill, version);
            else out.color(line.color, true);
        } else {
            out.color(line.color, version >= 3);
        }
    }
}

// --- ShapeBuilder ---

ShapeBuilder& ShapeBuilder::moveTo(int32_t x, int32_t y)
{
    records_.push_back({Record::Kind::Move, x, y});
    return *this;
}

ShapeBuilder& ShapeBuilder::fill0(uint32_t index)
{
    records_.push_back({Record::Kind::Fill0, 0, 0, 0, 0, index});
    return *this;
}

ShapeBuilder& ShapeBuilder::fill1(uint32_t index)
{
    records_.push_back({Record::Kind::Fill1, 0, 0, 0, 0, index});
    return *this;
}

ShapeBuilder& ShapeBuilder::line(uint32_t index)
{
    records_.push_back({Record::Kind::Line, 0, 0, 0, 0, index});
    return *this;
}

ShapeBuilder& ShapeBuilder::lineTo(int32_t x, int32_t y)
{
    records_.push_back({Record::Kind::Straight, x, y});
    return *this;
}

ShapeBuilder& ShapeBuilder::curveTo(int32_t controlX, int32_t controlY, int32_t x, int32_t y)
{
    records_.push_back({Record::Kind::Curve, x, y, controlX, controlY});
    return *this;
}

ShapeBuilder& ShapeBuilder::rectangle(int32_t left, int32_t top, int32_t right, int32_t bottom, uint32_t fill)
{
    return moveTo(left, top).fill0(0).fill1(fill).lineTo(right, top).lineTo(right, bottom).lineTo(left, bottom).lineTo(
        left, top);
}

ShapeBuilder& ShapeBuilder::circle(int32_t centreX, int32_t centreY, int32_t radius, uint32_t fill)
{
    const double step = 3.14159265358979323846 / 4.0;
    const double controlRadius = radius / std::cos(step / 2.0);
    const auto at = [&](double angle, double r, bool x) {
        return int32_t(std::lround(x ? centreX + r * std::cos(angle) : centreY + r * std::sin(angle)));
    };
    moveTo(centreX + radius, centreY).fill0(0).fill1(fill);
    for (int k = 0; k < 8; ++k) {
        const double mid = (k + 0.5) * step;
        const double end = (k + 1) * step;
        curveTo(at(mid, controlRadius, true), at(mid, controlRadius, false), at(end, radius, true), at(end, radius, false));
    }
    return *this;
}

ShapeBuilder& ShapeBuilder::newStyles(std::vector<FillStyle> newFills, std::vector<LineStyle> newLines)
{
    laterSets_.push_back({std::move(newFills), std::move(newLines)});
    records_.push_back({Record::Kind::NewStyles, 0, 0, 0, 0, 0, laterSets_.size() - 1});
    return *this;
}

std::vector<uint8_t> ShapeBuilder::encode(int version) const
{
    BitWriter out;
    writeFillStyles(out, fills, version);
    writeLineStyles(out, lines, version);
    encodeRecords(out, version);
    return out.take();
}

void ShapeBuilder::encodeRecords(BitWriter& out, int version) const
{
    const unsigned fillBits = unsignedBits(fills.size());
    const unsigned lineBits = unsignedBits(lines.size());
    out.ub(fillBits, 4);
    out.ub(lineBits, 4);
    encodeRecordList(out, version, fillBits, lineBits);
}

void ShapeBuilder::encodeRecordList(BitWriter& out, int version, unsigned fillBits, unsigned lineBits) const
{
    int32_t penX = 0;
    int32_t penY = 0;
    for (size_t i = 0; i < records_.size();) {
        const Record& r = records_[i];
        if (r.kind == Record::Kind::Straight || r.kind == Record::Kind::Curve) {
            out.ub(1, 1);
            const bool straight = r.kind == Record::Kind::Straight;
            out.ub(straight, 1);
            const int32_t cx = r.controlX - penX;
            const int32_t cy = r.controlY - penY;
            const int32_t ax = straight ? r.x - penX : r.x - r.controlX;
            const int32_t ay = straight ? r.y - penY : r.y - r.controlY;
            unsigned bits = std::max({2u, signedBits(ax), signedBits(ay)});
            if (!straight) bits = std::max({bits, signedBits(cx), signedBits(cy)});
            out.ub(bits - 2, 4);
            if (straight) out.ub(1, 1);  // general line
            if (!straight) {
                out.sb(cx, bits);
                out.sb(cy, bits);
            }
            out.sb(ax, bits);
            out.sb(ay, bits);
            penX = r.x;
            penY = r.y;
            ++i;
            continue;
        }
        // Consecutive style records make one style change record.
        std::optional<Record> move;
        std::optional<uint32_t> f0, f1, ln;
        std::optional<size_t> set;
        for (; i < records_.size(); ++i) {
            const Record& s = records_[i];
            if (s.kind == Record::Kind::Move) move = s;
            else if (s.kind == Record::Kind::Fill0) f0 = s.index;
            else if (s.kind == Record::Kind::Fill1) f1 = s.index;
            else if (s.kind == Record::Kind::Line) ln = s.index;
            else if (s.kind == Record::Kind::NewStyles) set = s.styleSet;
            else break;
        }
        out.ub(0, 1);
        out.ub(set.has_value(), 1);
        out.ub(ln.has_value(), 1);
        out.ub(f1.has_value(), 1);
        out.ub(f0.has_value(), 1);
        out.ub(move.has_value(), 1);
        if (move) {
            const unsigned bits = std::max(signedBits(move->x), signedBits(move->y));
            out.ub(bits, 5);
            out.sb(move->x, bits);
            out.sb(move->y, bits);
            penX = move->x;
            penY = move->y;
        }
        if (f0) out.ub(*f0, fillBits);
        if (f1) out.ub(*f1, fillBits);
        if (ln) out.ub(*ln, lineBits);
        if (set) {
            const StyleSet& styles = laterSets_[*set];
            writeFillStyles(out, styles.fills, version);
            writeLineStyles(out, styles.lines, version);
            fillBits = unsignedBits(styles.fills.size());
            lineBits = unsignedBits(styles.lines.size());
            out.ub(fillBits, 4);
            out.ub(lineBits, 4);
        }
    }
    out.ub(0, 6);  // end of shape
    out.align();
}

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

SwfWriter::SwfWriter(int version, Rect stage, double frameRate) : version_(version), stage_(stage), frameRate_(frameRate) {}

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
            pixels.insert(pixels.end(), {channel(p, 24), premultiplied(p, 16), premultiplied(p, 8), premultiplied(p, 0)});
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
