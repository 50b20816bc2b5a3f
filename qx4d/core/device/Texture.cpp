#include "qx4d/core/device/Texture.h"

#include "platform/gpu/ImageFile.h"
#include "qx4d/core/FileManager.h"

#include <cstring>

namespace qx4d {

void Texture::OnDeviceLost()
{
    if (InDefaultPool()) ReleaseDevice();
}

void Texture::ReleaseDevice()
{
    surface.reset();
    texture.reset();
    cubeTexture.reset();
    baseTexture.reset();
}

bool Texture::Restore()
{
    if (baseTexture) return true;
    gpu::Device* device = CurrentDevice();
    if (!device || !(InDefaultPool() ? RestoreWithoutFile(*device) : RestoreFromFile(*device))) return false;
    baseTexture = cubeTexture ? cubeTexture : texture;
    return true;
}

bool Texture::RestoreWithoutFile(gpu::Device& device)
{
    if (flags & kResourceCube)
        return qx::SUCCEEDED(
            device.CreateCubeTexture(info.Width, 1, usage, info.Format, gpu::D3DPOOL_DEFAULT, &cubeTexture));
    if (qx::FAILED(
            device.CreateTexture(info.Width, info.Height, 1, usage, info.Format, gpu::D3DPOOL_DEFAULT, &texture)))
        return false;
    surface = texture->GetSurfaceLevel(0);
    return true;
}

bool Texture::RestoreFromFile(gpu::Device& device)
{
    // A name with a colon is a whole logical path ("EFFECTS:x.dds"); others are images.
    const String path = name.find(u':') != String::npos ? name : String(u"IMAGES:" + name);
    size_t size = 0;
    const std::unique_ptr<uint8_t[]> file =
        FileManager::Instance() ? FileManager::Instance()->Load(path, size) : nullptr;
    if (!file || size > 0xFFFFFFFFu ||
        qx::FAILED(gpu::D3DXGetImageInfoFromFileInMemory(file.get(), uint32_t(size), &info)))
        return false;
    if (info.ResourceType == gpu::D3DRTYPE_CUBETEXTURE) {
        flags |= kResourceCube;
        return qx::SUCCEEDED(gpu::D3DXCreateCubeTextureFromFileInMemoryEx(
            device, file.get(), uint32_t(size), info.MipLevels, 0, gpu::D3DPOOL_MANAGED, &info, &cubeTexture));
    }
    if (qx::FAILED(gpu::D3DXCreateTextureFromFileInMemoryEx(device, file.get(), uint32_t(size), info.MipLevels, 0,
                                                            gpu::D3DPOOL_MANAGED, &info, &texture)))
        return false;
    surface = texture->GetSurfaceLevel(0);
    return true;
}

bool Texture::MakeDynamic(uint32_t width, uint32_t height)
{
    ReleaseDevice();
    flags &= ~kResourceCube;
    info.Width = width;
    info.Height = height;
    info.Format = gpu::D3DFMT_A8R8G8B8;
    info.MipLevels = 1;
    usage = gpu::D3DUSAGE_DYNAMIC;
    return Restore();
}

bool Texture::Upload(const uint8_t* pixels, uint32_t sourcePitch)
{
    gpu::D3DLOCKED_RECT locked;
    if (!texture || !pixels || qx::FAILED(texture->LockRect(0, &locked, gpu::D3DLOCK_DISCARD))) return false;
    const bool fourBytes = info.Format == gpu::D3DFMT_A8R8G8B8 || info.Format == gpu::D3DFMT_X8R8G8B8;
    const size_t rowBytes = size_t(texture->desc().width) * (fourBytes ? 4 : 1);
    auto* target = static_cast<uint8_t*>(locked.pBits);
    for (uint32_t row = 0; row < texture->desc().height; ++row)
        std::memcpy(target + size_t(row) * size_t(locked.Pitch), pixels + size_t(row) * sourcePitch, rowBytes);
    texture->UnlockRect(0);
    return true;
}

}  // namespace qx4d
