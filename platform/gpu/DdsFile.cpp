#include "platform/gpu/DdsFile.h"

#include "platform/gpu/Formats.h"

#include <algorithm>
#include <cstring>

namespace qx::gpu {

namespace {

constexpr uint32_t kMagic = makeFourCC('D', 'D', 'S', ' ');
constexpr size_t kHeaderSize = 124;
constexpr uint32_t kFlagsCaps = 0x1, kFlagsHeight = 0x2, kFlagsWidth = 0x4, kFlagsPixelFormat = 0x1000;
constexpr uint32_t kFlagsMipCount = 0x20000, kFlagsLinearSize = 0x80000;
constexpr uint32_t kPixelAlphaPixels = 0x1, kPixelAlpha = 0x2, kPixelFourCC = 0x4, kPixelRgb = 0x40;
constexpr uint32_t kPixelLuminance = 0x20000;
constexpr uint32_t kCapsTexture = 0x1000, kCapsComplex = 0x8, kCapsMipmap = 0x400000;
constexpr uint32_t kCaps2Cubemap = 0x200, kCaps2AllFaces = 0xFC00;

// Header words after the magic, by their place: size, flags, height, width, pitch, depth,
// mip count, 11 reserved, then the 8 words of the pixel format, then the caps.
enum Word : size_t {
    kSize = 0,
    kFlags = 1,
    kHeight = 2,
    kWidth = 3,
    kPitch = 4,
    kMipCount = 6,
    kPixelSize = 18,
    kPixelFlags = 19,
    kFourCC = 20,
    kBitCount = 21,
    kRedMask = 22,
    kGreenMask = 23,
    kBlueMask = 24,
    kAlphaMask = 25,
    kCaps = 26,
    kCaps2 = 27
};

uint32_t readWord(std::span<const uint8_t> header, size_t word)
{
    uint32_t value = 0;
    std::memcpy(&value, header.data() + word * 4, 4);  // DDS is little-endian, as we are
    return value;
}

D3DFORMAT formatOfHeader(std::span<const uint8_t> header)
{
    const uint32_t flags = readWord(header, kPixelFlags);
    if (flags & kPixelFourCC) {
        const uint32_t fourCC = readWord(header, kFourCC);
        return fourCC == D3DFMT_DXT1 || fourCC == D3DFMT_DXT3 || fourCC == D3DFMT_DXT5 ? fourCC : D3DFMT_UNKNOWN;
    }
    const uint32_t bits = readWord(header, kBitCount);
    if ((flags & kPixelRgb) && bits == 32 && readWord(header, kRedMask) == 0xFF0000 &&
        readWord(header, kGreenMask) == 0xFF00 && readWord(header, kBlueMask) == 0xFF)
        return (flags & kPixelAlphaPixels) && readWord(header, kAlphaMask) == 0xFF000000u ? D3DFMT_A8R8G8B8
                                                                                          : D3DFMT_X8R8G8B8;
    if ((flags & kPixelLuminance) && bits == 8) return D3DFMT_L8;
    if ((flags & kPixelAlpha) && bits == 8) return D3DFMT_A8;
    return D3DFMT_UNKNOWN;
}

void putWord(std::vector<uint8_t>& out, size_t word, uint32_t value)
{
    std::memcpy(out.data() + 4 + word * 4, &value, 4);
}

void writePixelFormat(std::vector<uint8_t>& out, D3DFORMAT format)
{
    putWord(out, kPixelSize, 32);
    if (formatInfo(format).compressed) {
        putWord(out, kPixelFlags, kPixelFourCC);
        putWord(out, kFourCC, format);
        return;
    }
    if (format == D3DFMT_L8 || format == D3DFMT_A8) {
        putWord(out, kPixelFlags, format == D3DFMT_L8 ? kPixelLuminance : kPixelAlpha);
        putWord(out, kBitCount, 8);
        putWord(out, format == D3DFMT_L8 ? kRedMask : kAlphaMask, 0xFF);
        return;
    }
    const bool alpha = format == D3DFMT_A8R8G8B8;
    putWord(out, kPixelFlags, kPixelRgb | (alpha ? kPixelAlphaPixels : 0));
    putWord(out, kBitCount, 32);
    putWord(out, kRedMask, 0xFF0000);
    putWord(out, kGreenMask, 0xFF00);
    putWord(out, kBlueMask, 0xFF);
    putWord(out, kAlphaMask, alpha ? 0xFF000000u : 0);
}

}  // namespace

std::optional<DdsImage> readDds(std::span<const uint8_t> file)
{
    if (file.size() < 4 + kHeaderSize || readWord(file, 0) != kMagic) return std::nullopt;
    const auto header = file.subspan(4, kHeaderSize);
    DdsImage image;
    image.width = readWord(header, kWidth);
    image.height = readWord(header, kHeight);
    image.format = formatOfHeader(header);
    image.levels = (readWord(header, kFlags) & kFlagsMipCount) ? std::max(1u, readWord(header, kMipCount)) : 1u;
    image.cube = (readWord(header, kCaps2) & kCaps2Cubemap) != 0;
    const UINT largest = std::max(image.width, image.height);
    if (readWord(header, kSize) != kHeaderSize || image.format == D3DFMT_UNKNOWN || image.width == 0 ||
        image.height == 0 || largest > 16384 || image.levels > 15 || (largest >> (image.levels - 1)) == 0 ||
        (image.cube && ((readWord(header, kCaps2) & kCaps2AllFaces) != kCaps2AllFaces || image.width != image.height)))
        return std::nullopt;
    size_t at = 4 + kHeaderSize;
    for (UINT face = 0; face < (image.cube ? 6u : 1u); ++face) {
        for (UINT level = 0; level < image.levels; ++level) {
            const size_t size =
                imageSize(image.format, std::max(1u, image.width >> level), std::max(1u, image.height >> level));
            if (size > file.size() - at) return std::nullopt;
            image.images.push_back(file.subspan(at, size));
            at += size;
        }
    }
    return image;
}

std::vector<uint8_t> writeDds(D3DFORMAT format, UINT width, UINT height, UINT levels, bool cube,
                              const std::vector<std::vector<uint8_t>>& images)
{
    std::vector<uint8_t> out(4 + kHeaderSize, 0);
    std::memcpy(out.data(), &kMagic, 4);
    const bool compressed = formatInfo(format).compressed;
    putWord(out, kSize, kHeaderSize);
    putWord(out, kFlags,
            kFlagsCaps | kFlagsHeight | kFlagsWidth | kFlagsPixelFormat | kFlagsMipCount |
                (compressed ? kFlagsLinearSize : 0));
    putWord(out, kHeight, height);
    putWord(out, kWidth, width);
    putWord(out, kPitch, compressed ? uint32_t(imageSize(format, width, height)) : uint32_t(rowPitch(format, width)));
    putWord(out, kMipCount, levels);
    writePixelFormat(out, format);
    putWord(out, kCaps, kCapsTexture | (levels > 1 || cube ? kCapsComplex : 0) | (levels > 1 ? kCapsMipmap : 0));
    putWord(out, kCaps2, cube ? kCaps2Cubemap | kCaps2AllFaces : 0);
    for (const auto& image : images) out.insert(out.end(), image.begin(), image.end());
    return out;
}

}  // namespace qx::gpu
