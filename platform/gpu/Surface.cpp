#include "platform/gpu/Surface.h"

#include "platform/gpu/Formats.h"

namespace qx::gpu {

std::shared_ptr<Surface> Surface::ofTexture(std::shared_ptr<Texture> texture, UINT face, UINT level)
{
    std::shared_ptr<Surface> surface(new Surface());
    texture->GetLevelDesc(level, &surface->desc_);
    surface->texture_ = std::move(texture);
    surface->face_ = face;
    surface->level_ = level;
    return surface;
}

std::shared_ptr<Surface> Surface::inSystemMemory(UINT width, UINT height, D3DFORMAT format)
{
    const FormatInfo info = formatInfo(format);
    if (info.internalFormat == 0 || info.depth || width == 0 || height == 0 || width > 16384 || height > 16384)
        return nullptr;
    std::shared_ptr<Surface> surface(new Surface());
    surface->desc_ = D3DSURFACE_DESC{format, D3DRTYPE_SURFACE, 0, D3DPOOL_SYSTEMMEM, 0, 0, width, height};
    surface->bytes_.assign(imageSize(format, width, height), 0);
    return surface;
}

HRESULT Surface::GetDesc(D3DSURFACE_DESC* desc) const
{
    if (!desc) return D3DERR_INVALIDCALL;
    *desc = desc_;
    return D3D_OK;
}

HRESULT Surface::LockRect(D3DLOCKED_RECT* locked, DWORD flags)
{
    if (texture_) return texture_->lockFace(face_, level_, locked, flags);
    if (!locked || locked_) return D3DERR_INVALIDCALL;
    locked_ = true;
    locked->Pitch = int32_t(rowPitch(desc_.Format, desc_.Width));
    locked->pBits = bytes_.data();
    return D3D_OK;
}

HRESULT Surface::UnlockRect()
{
    if (texture_) return texture_->unlockFace(face_, level_);
    if (!locked_) return D3DERR_INVALIDCALL;
    locked_ = false;
    return D3D_OK;
}

}  // namespace qx::gpu
