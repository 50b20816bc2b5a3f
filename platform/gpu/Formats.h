#pragma once
// How each Direct3D format lives in OpenGL: storage, upload layout and pitch.
// Colour formats keep Direct3D's byte order in memory: A8R8G8B8 is bytes B, G, R, A,
// uploaded and read back as GL_BGRA.
#include "platform/gpu/GlApi.h"
#include "platform/gpu/Types.h"

#include <cstddef>

namespace qx::gpu {

struct FormatInfo {
    GLenum internalFormat = 0;  // 0: not supported
    GLenum uploadFormat = 0;
    GLenum uploadType = 0;
    UINT bytesPerBlock = 0;  // per pixel, or per 4x4 block when compressed
    bool compressed = false;
    bool depth = false;
    bool opaque = false;  // X8R8G8B8: alpha reads as 1
};

FormatInfo formatInfo(D3DFORMAT format);
/// Bytes of one row of pixels (or of 4x4 blocks) at this width.
size_t rowPitch(D3DFORMAT format, UINT width);
/// Rows of pixels (or of blocks) at this height.
UINT rowCount(D3DFORMAT format, UINT height);
/// Bytes of one whole image of this size.
size_t imageSize(D3DFORMAT format, UINT width, UINT height);

}  // namespace qx::gpu
