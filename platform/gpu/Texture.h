#pragma once
// A 2D or cube texture with its mip levels, in Direct3D's pools and usages. Locks go
// through a system-memory copy of the level, uploaded at unlock; row 0 is the top row.
#include "platform/gpu/GlName.h"
#include "platform/gpu/PoolToken.h"
#include "platform/gpu/Types.h"

#include <map>
#include <memory>
#include <vector>

namespace qx::gpu {

class Surface;

struct TextureDesc {
    UINT width = 0;
    UINT height = 0;
    UINT levels = 1;
    DWORD usage = 0;
    D3DFORMAT format = D3DFMT_UNKNOWN;
    D3DPOOL pool = D3DPOOL_MANAGED;
    bool cube = false;
};

class Texture : public std::enable_shared_from_this<Texture> {
public:
    /// Null on an unsupported format, a zero size or a level count above the chain.
    static std::shared_ptr<Texture> create(const std::shared_ptr<Context>& context, const PoolCounter& pool,
                                           const TextureDesc& desc);
    Texture(const Texture&) = delete;
    Texture& operator=(const Texture&) = delete;

    D3DRESOURCETYPE GetType() const { return desc_.cube ? D3DRTYPE_CUBETEXTURE : D3DRTYPE_TEXTURE; }
    UINT GetLevelCount() const { return desc_.levels; }
    HRESULT GetLevelDesc(UINT level, D3DSURFACE_DESC* desc) const;
    /// Level of a 2D texture (face 0) or of one cube face (0 to 5, +X -X +Y -Y +Z -Z).
    std::shared_ptr<Surface> GetSurfaceLevel(UINT level) { return GetCubeMapSurface(0, level); }
    std::shared_ptr<Surface> GetCubeMapSurface(UINT face, UINT level);
    HRESULT LockRect(UINT level, D3DLOCKED_RECT* locked, DWORD flags) { return lockFace(0, level, locked, flags); }
    HRESULT UnlockRect(UINT level) { return unlockFace(0, level); }

    HRESULT lockFace(UINT face, UINT level, D3DLOCKED_RECT* locked, DWORD flags);
    HRESULT unlockFace(UINT face, UINT level);
    /// Writes one whole level from memory laid out with `rowPitch` (compressed: block rows).
    bool upload(UINT face, UINT level, const uint8_t* data, size_t rowPitchBytes);
    /// Reads one whole level into tightly packed rows.
    bool download(UINT face, UINT level, std::vector<uint8_t>& out) const;

    const TextureDesc& desc() const { return desc_; }
    UINT levelWidth(UINT level) const;
    UINT levelHeight(UINT level) const;
    uint32_t glName() const { return name_.get(); }
    const std::shared_ptr<Context>& context() const { return context_; }

private:
    Texture(const std::shared_ptr<Context>& context, const PoolCounter& pool, const TextureDesc& desc);
    bool allocate();

    struct Staging {
        std::vector<uint8_t> bytes;
        DWORD flags = 0;
    };
    std::shared_ptr<Context> context_;
    PoolToken poolToken_;
    TextureDesc desc_;
    GlName name_;
    std::map<UINT, Staging> locks_;  // key: face * 32 + level
};

}  // namespace qx::gpu
