#pragma once
// The image files of D3DX: information, textures from files in memory, and surfaces
// saved to files. DDS by our own reader; PNG, JPEG, TGA and BMP through stb_image;
// saving through stb_image_write. Files come from memory: finding them is the caller's
// business (the engine's file system).
#include "platform/gpu/Device.h"
#include "platform/gpu/Types.h"

#include <memory>
#include <string>

namespace qx::gpu {

HRESULT D3DXGetImageInfoFromFileInMemory(const void* data, UINT size, D3DXIMAGE_INFO* info);

/// `mipLevels`: 0 or D3DX_DEFAULT for a whole chain, made from level 0 when the file has
/// fewer; otherwise at most that many of the file's levels. `info` may be null.
HRESULT D3DXCreateTextureFromFileInMemoryEx(Device& device, const void* data, UINT size, UINT mipLevels, DWORD usage,
                                            D3DPOOL pool, D3DXIMAGE_INFO* info, std::shared_ptr<Texture>* texture);
/// The same for a DDS cube map; other files fail.
HRESULT D3DXCreateCubeTextureFromFileInMemoryEx(Device& device, const void* data, UINT size, UINT mipLevels,
                                                DWORD usage, D3DPOOL pool, D3DXIMAGE_INFO* info,
                                                std::shared_ptr<Texture>* texture);

/// Writes a surface of A8R8G8B8 or X8R8G8B8 (read from the card when it is a level of a
/// texture) to `path` (UTF-8) as BMP, JPEG, TGA or PNG.
HRESULT D3DXSaveSurfaceToFile(const std::string& path, D3DXIMAGE_FILEFORMAT format, Surface& surface);

}  // namespace qx::gpu
