#include "platform/gpu/Formats.h"

namespace qx::gpu {

FormatInfo formatInfo(D3DFORMAT format)
{
    switch (format) {
    case D3DFMT_A8R8G8B8: return {GL_RGBA8, GL_BGRA, GL_UNSIGNED_BYTE, 4};
    case D3DFMT_X8R8G8B8: return {GL_RGBA8, GL_BGRA, GL_UNSIGNED_BYTE, 4, false, false, true};
    case D3DFMT_A8: return {GL_R8, GL_RED, GL_UNSIGNED_BYTE, 1};
    case D3DFMT_L8: return {GL_R8, GL_RED, GL_UNSIGNED_BYTE, 1};
    case D3DFMT_R32F: return {GL_R32F, GL_RED, GL_FLOAT, 4};
    case D3DFMT_DXT1: return {GL_COMPRESSED_RGBA_S3TC_DXT1_EXT, 0, 0, 8, true};
    case D3DFMT_DXT3: return {GL_COMPRESSED_RGBA_S3TC_DXT3_EXT, 0, 0, 16, true};
    case D3DFMT_DXT5: return {GL_COMPRESSED_RGBA_S3TC_DXT5_EXT, 0, 0, 16, true};
    case D3DFMT_D16: return {GL_DEPTH_COMPONENT16, GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT, 2, false, true};
    case D3DFMT_D24X8:
    case D3DFMT_D24S8: return {GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, 4, false, true};
    case D3DFMT_D32: return {GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT, GL_FLOAT, 4, false, true};
    default: return {};
    }
}

size_t rowPitch(D3DFORMAT format, UINT width)
{
    const FormatInfo info = formatInfo(format);
    const size_t units = info.compressed ? (size_t(width) + 3) / 4 : size_t(width);
    return units * info.bytesPerBlock;
}

UINT rowCount(D3DFORMAT format, UINT height) { return formatInfo(format).compressed ? (height + 3) / 4 : height; }

size_t imageSize(D3DFORMAT format, UINT width, UINT height)
{
    return rowPitch(format, width) * rowCount(format, height);
}

}  // namespace qx::gpu
