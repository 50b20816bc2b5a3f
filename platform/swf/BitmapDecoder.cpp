#include "platform/swf/BitmapDecoder.h"

#include "platform/swf/ByteReader.h"
#include "platform/swf/Inflate.h"
#include "platform/swf/PictureDecoder.h"
#include "platform/swf/Tags.h"

#include <algorithm>

namespace qx::swf {

namespace {

bool sizeAllowed(int64_t width, int64_t height)
{
    return width > 0 && height > 0 && width <= kMaxBitmapSide && height <= kMaxBitmapSide &&
           width * height <= kMaxBitmapSamples;
}

uint32_t premultiplied(uint32_t a, uint32_t r, uint32_t g, uint32_t b)
{
    const auto scale = [a](uint32_t c) { return (c * a + 127) / 255; };
    return a << 24 | scale(r) << 16 | scale(g) << 8 | scale(b);
}

// SWF JPEG data may begin with an end-of-image marker before the start ("FF D9 FF D8"
// after the first "FF D8"), and tables and image joined by a writer leave an end and a
// start marker between them. Both pairs are removed; in entropy-coded data 0xFF is never
// followed by a marker byte, so the pair only appears as markers.
std::vector<uint8_t> cleanJpeg(std::span<const uint8_t> tables, std::span<const uint8_t> image)
{
    std::vector<uint8_t> joined(tables.begin(), tables.end());
    joined.insert(joined.end(), image.begin(), image.end());
    std::vector<uint8_t> clean;
    clean.reserve(joined.size());
    for (size_t i = 0; i < joined.size(); ++i) {
        if (i + 3 < joined.size() && joined[i] == 0xFF && joined[i + 1] == 0xD9 && joined[i + 2] == 0xFF &&
            joined[i + 3] == 0xD8) {
            i += 3;
            continue;
        }
        clean.push_back(joined[i]);
    }
    // A leading "FF D8 FF D9" (start, then end at once) would leave an empty picture.
    if (clean.size() >= 4 && clean[0] == 0xFF && clean[1] == 0xD8 && clean[2] == 0xFF && clean[3] == 0xD9) {
        clean.erase(clean.begin(), clean.begin() + 4);
    }
    return clean;
}

// DefineBitsJPEG3 and 4: the alpha plane replaces the picture's alpha.
bool applyAlpha(DecodedBitmap& bitmap, std::span<const uint8_t> compressed)
{
    const auto alpha = inflateExactly(compressed, bitmap.samples.size());
    if (!alpha) return false;
    for (size_t i = 0; i < bitmap.samples.size(); ++i) {
        const uint32_t s = bitmap.samples[i];  // opaque so far: straight and premultiplied agree
        bitmap.samples[i] = premultiplied((*alpha)[i], (s >> 16) & 0xFF, (s >> 8) & 0xFF, s & 0xFF);
    }
    return true;
}

std::optional<DecodedBitmap> decodeJpeg(const BitmapSource& source)
{
    ByteReader reader(source.body);
    reader.u16();  // id
    if (source.code == kDefineBits) return decodePicture(cleanJpeg(source.jpegTables, reader.rest()));
    if (source.code == kDefineBitsJpeg2) return decodePicture(cleanJpeg({}, reader.rest()));
    const uint32_t alphaOffset = reader.u32();
    if (source.code == kDefineBitsJpeg4) reader.u16();  // deblocking filter strength
    if (reader.failed() || alphaOffset > reader.remaining()) return std::nullopt;
    const auto image = reader.bytes(alphaOffset);
    auto bitmap = decodePicture(cleanJpeg({}, image));
    const auto alpha = reader.rest();
    // A PNG or GIF in a JPEG3 carries its own alpha, and so does a JPEG with no plane.
    if (!bitmap || alpha.empty() || image.size() < 2 || image[0] != 0xFF || image[1] != 0xD8) return bitmap;
    if (!applyAlpha(*bitmap, alpha)) return std::nullopt;
    return bitmap;
}

// Lossless pixel rows, after inflation.
struct LosslessLayout {
    int format = 0;  // 3 colour-mapped, 4 15-bit, 5 32-bit
    int width = 0;
    int height = 0;
    size_t paletteSize = 0;
    bool withAlpha = false;  // DefineBitsLossless2
};

size_t rowBytes(const LosslessLayout& layout)
{
    const size_t unpadded = size_t(layout.width) * (layout.format == 3 ? 1 : layout.format == 4 ? 2 : 4);
    return (unpadded + 3) & ~size_t(3);
}

uint32_t paletteEntry(std::span<const uint8_t> palette, size_t index, bool withAlpha)
{
    const size_t size = withAlpha ? 4 : 3;
    if ((index + 1) * size > palette.size()) return 0;  // an index past the palette is transparent
    const uint8_t* p = palette.data() + index * size;
    return premultiplied(withAlpha ? p[3] : 255, p[0], p[1], p[2]);
}

uint32_t losslessSample(const LosslessLayout& layout, std::span<const uint8_t> palette, const uint8_t* p)
{
    if (layout.format == 3) return paletteEntry(palette, *p, layout.withAlpha);
    if (layout.format == 4) {
        const uint32_t word = uint32_t(p[0]) << 8 | p[1];
        const auto expand = [](uint32_t five) { return (five << 3) | (five >> 2); };
        return 0xFF000000u | expand((word >> 10) & 0x1F) << 16 | expand((word >> 5) & 0x1F) << 8 | expand(word & 0x1F);
    }
    if (!layout.withAlpha) return 0xFF000000u | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
    // Stored premultiplied; a channel above its alpha would not be a valid sample.
    const uint32_t a = p[0];
    return a << 24 | std::min<uint32_t>(p[1], a) << 16 | std::min<uint32_t>(p[2], a) << 8 | std::min<uint32_t>(p[3], a);
}

std::optional<DecodedBitmap> decodeLossless(const BitmapSource& source)
{
    ByteReader reader(source.body);
    reader.u16();  // id
    LosslessLayout layout;
    layout.format = reader.u8();
    layout.width = reader.u16();
    layout.height = reader.u16();
    layout.withAlpha = source.code == kDefineBitsLossless2;
    if (layout.format == 3) layout.paletteSize = size_t(reader.u8()) + 1;
    const bool known = layout.format == 3 || layout.format == 5 || (layout.format == 4 && !layout.withAlpha);
    if (reader.failed() || !known || !sizeAllowed(layout.width, layout.height)) return std::nullopt;
    const size_t paletteBytes = layout.paletteSize * (layout.withAlpha ? 4 : 3);
    const size_t rows = rowBytes(layout);
    const auto data = inflateExactly(reader.rest(), paletteBytes + rows * size_t(layout.height));
    if (!data) return std::nullopt;
    const std::span<const uint8_t> palette(data->data(), paletteBytes);
    const size_t step = layout.format == 3 ? 1 : layout.format == 4 ? 2 : 4;
    DecodedBitmap bitmap{layout.width, layout.height,
                         std::vector<uint32_t>(size_t(layout.width) * size_t(layout.height))};
    for (int y = 0; y < layout.height; ++y) {
        const uint8_t* row = data->data() + paletteBytes + size_t(y) * rows;
        uint32_t* out = bitmap.samples.data() + size_t(y) * size_t(layout.width);
        for (int x = 0; x < layout.width; ++x) out[x] = losslessSample(layout, palette, row + size_t(x) * step);
    }
    return bitmap;
}

}  // namespace

uint16_t bitmapId(std::span<const uint8_t> body)
{
    ByteReader reader(body);
    return reader.u16();
}

std::optional<DecodedBitmap> decodeBitmap(const BitmapSource& source)
{
    switch (source.code) {
    case kDefineBits:
    case kDefineBitsJpeg2:
    case kDefineBitsJpeg3:
    case kDefineBitsJpeg4: return decodeJpeg(source);
    case kDefineBitsLossless:
    case kDefineBitsLossless2: return decodeLossless(source);
    default: return std::nullopt;
    }
}

}  // namespace qx::swf
