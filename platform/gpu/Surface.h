#pragma once
// One image: a level of a texture (render targets and depth-stencil surfaces are levels of
// textures of their own) or a surface in system memory. Rows are top-down with a pitch of
// exactly the row's bytes.
#include "platform/gpu/Texture.h"
#include "platform/gpu/Types.h"

#include <memory>
#include <vector>

namespace qx::gpu {

class Surface {
public:
    static std::shared_ptr<Surface> ofTexture(std::shared_ptr<Texture> texture, UINT face, UINT level);
    /// A surface of D3DPOOL_SYSTEMMEM; null on an unsupported format or size.
    static std::shared_ptr<Surface> inSystemMemory(UINT width, UINT height, D3DFORMAT format);

    HRESULT GetDesc(D3DSURFACE_DESC* desc) const;
    HRESULT LockRect(D3DLOCKED_RECT* locked, DWORD flags);
    HRESULT UnlockRect();

    /// The texture that holds this image; null for system memory.
    const std::shared_ptr<Texture>& texture() const { return texture_; }
    UINT face() const { return face_; }
    UINT level() const { return level_; }
    std::vector<uint8_t>& systemBytes() { return bytes_; }
    const D3DSURFACE_DESC& desc() const { return desc_; }

private:
    Surface() = default;

    std::shared_ptr<Texture> texture_;
    UINT face_ = 0;
    UINT level_ = 0;
    D3DSURFACE_DESC desc_;
    std::vector<uint8_t> bytes_;
    bool locked_ = false;
};

}  // namespace qx::gpu
