#include "platform/gpu/ImageFile.h"

#include "platform/gpu/DdsFile.h"
#include "platform/gpu/Formats.h"
#include "platform/gpu/GlApi.h"

#include <stb_image.h>

#include <algorithm>
#include <cstring>
#include <span>

namespace qx::gpu {

namespace {

D3DXIMAGE_FILEFORMAT fileFormatOf(std::span<const uint8_t> file)
{
    if (file.size() >= 4 && std::memcmp(file.data(), "DDS ", 4) == 0) return D3DXIFF_DDS;
    if (file.size() >= 8 && std::memcmp(file.data(), "\x89PNG", 4) == 0) return D3DXIFF_PNG;
    if (file.size() >= 2 && file[0] == 0xFF && file[1] == 0xD8) return D3DXIFF_JPG;
    if (file.size() >= 2 && file[0] == 'B' && file[1] == 'M') return D3DXIFF_BMP;
    return D3DXIFF_TGA;  // the one format without a signature
}

UINT chainLength(UINT width, UINT height)
{
    UINT levels = 1;
    for (UINT size = std::max(width, height); size > 1; size >>= 1) ++levels;
    return levels;
}

UINT levelsToMake(UINT requested, UINT inFile, UINT width, UINT height, D3DFORMAT format)
{
    const UINT chain = chainLength(width, height);
    const UINT wanted = requested == 0 || requested == D3DX_DEFAULT ? chain : std::min(requested, chain);
    // Compressed levels cannot be made on the card: only those in the file.
    return formatInfo(format).compressed ? std::min(wanted, inFile) : wanted;
}

HRESULT createFromDds(Device& device, const DdsImage& dds, UINT mipLevels, DWORD usage, D3DPOOL pool,
                      std::shared_ptr<Texture>* texture)
{
    const UINT levels = levelsToMake(mipLevels, dds.levels, dds.width, dds.height, dds.format);
    const HRESULT made = dds.cube
                             ? device.CreateCubeTexture(dds.width, levels, usage, dds.format, pool, texture)
                             : device.CreateTexture(dds.width, dds.height, levels, usage, dds.format, pool, texture);
    if (FAILED(made)) return made;
    const UINT fromFile = std::min(levels, dds.levels);
    for (UINT face = 0; face < (dds.cube ? 6u : 1u); ++face) {
        for (UINT level = 0; level < fromFile; ++level) {
            const auto image = dds.images[face * dds.levels + level];
            if (!(*texture)->upload(face, level, image.data(), rowPitch(dds.format, std::max(1u, dds.width >> level))))
                return D3DERR_INVALIDCALL;
        }
    }
    if (levels > fromFile) glGenerateTextureMipmap((*texture)->glName());
    return D3D_OK;
}

using StbPixels = std::unique_ptr<stbi_uc, decltype(&stbi_image_free)>;

HRESULT createFromPicture(Device& device, std::span<const uint8_t> file, UINT mipLevels, DWORD usage, D3DPOOL pool,
                          D3DFORMAT format, std::shared_ptr<Texture>* texture)
{
    int width = 0, height = 0, channels = 0;
    StbPixels pixels(stbi_load_from_memory(file.data(), int(file.size()), &width, &height, &channels, 4),
                     &stbi_image_free);
    if (!pixels) return D3DERR_INVALIDCALL;
    const UINT levels = levelsToMake(mipLevels, 1, UINT(width), UINT(height), format);
    const HRESULT made = device.CreateTexture(UINT(width), UINT(height), levels, usage, format, pool, texture);
    if (FAILED(made)) return made;
    // stb gives R, G, B, A bytes; Direct3D's A8R8G8B8 is B, G, R, A.
    stbi_uc* bytes = pixels.get();
    for (size_t i = 0; i < size_t(width) * size_t(height); ++i) std::swap(bytes[i * 4], bytes[i * 4 + 2]);
    if (!(*texture)->upload(0, 0, bytes, size_t(width) * 4)) return D3DERR_INVALIDCALL;
    if (levels > 1) glGenerateTextureMipmap((*texture)->glName());
    return D3D_OK;
}

HRESULT createTexture(Device& device, const void* data, UINT size, UINT mipLevels, DWORD usage, D3DPOOL pool,
                      D3DXIMAGE_INFO* info, std::shared_ptr<Texture>* texture, bool cube)
{
    D3DXIMAGE_INFO found;
    if (!texture || FAILED(D3DXGetImageInfoFromFileInMemory(data, size, &found)) ||
        cube != (found.ResourceType == D3DRTYPE_CUBETEXTURE))
        return D3DERR_INVALIDCALL;
    *texture = nullptr;
    const std::span<const uint8_t> file(static_cast<const uint8_t*>(data), size);
    const HRESULT result = found.ImageFileFormat == D3DXIFF_DDS
                               ? createFromDds(device, *readDds(file), mipLevels, usage, pool, texture)
                               : createFromPicture(device, file, mipLevels, usage, pool, found.Format, texture);
    if (FAILED(result)) {
        *texture = nullptr;
        return result;
    }
    if (info) *info = found;
    return D3D_OK;
}

}  // namespace

HRESULT D3DXGetImageInfoFromFileInMemory(const void* data, UINT size, D3DXIMAGE_INFO* info)
{
    if (!data || size == 0 || !info) return D3DERR_INVALIDCALL;
    const std::span<const uint8_t> file(static_cast<const uint8_t*>(data), size);
    const D3DXIMAGE_FILEFORMAT fileFormat = fileFormatOf(file);
    if (fileFormat == D3DXIFF_DDS) {
        const std::optional<DdsImage> dds = readDds(file);
        if (!dds) return D3DERR_INVALIDCALL;
        *info = D3DXIMAGE_INFO{dds->width,  dds->height, 1,
                               dds->levels, dds->format, dds->cube ? D3DRTYPE_CUBETEXTURE : D3DRTYPE_TEXTURE,
                               D3DXIFF_DDS};
        return D3D_OK;
    }
    int width = 0, height = 0, channels = 0;
    if (size > 0x7FFFFFFF || !stbi_info_from_memory(file.data(), int(size), &width, &height, &channels) || width <= 0 ||
        height <= 0 || width > 16384 || height > 16384)
        return D3DERR_INVALIDCALL;
    const bool alpha = channels == 2 || channels == 4;
    *info = D3DXIMAGE_INFO{UINT(width),      UINT(height), 1, 1, alpha ? D3DFMT_A8R8G8B8 : D3DFMT_X8R8G8B8,
                           D3DRTYPE_TEXTURE, fileFormat};
    return D3D_OK;
}

HRESULT D3DXCreateTextureFromFileInMemoryEx(Device& device, const void* data, UINT size, UINT mipLevels, DWORD usage,
                                            D3DPOOL pool, D3DXIMAGE_INFO* info, std::shared_ptr<Texture>* texture)
{
    return createTexture(device, data, size, mipLevels, usage, pool, info, texture, false);
}

HRESULT D3DXCreateCubeTextureFromFileInMemoryEx(Device& device, const void* data, UINT size, UINT mipLevels,
                                                DWORD usage, D3DPOOL pool, D3DXIMAGE_INFO* info,
                                                std::shared_ptr<Texture>* texture)
{
    return createTexture(device, data, size, mipLevels, usage, pool, info, texture, true);
}

}  // namespace qx::gpu
