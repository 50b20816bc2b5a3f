#pragma once
// A texture resource: from a file (found through the file manager, kept in the managed
// pool, so it outlives a lost device) or from no file (made in the default pool, given up
// when the device is lost and made again empty).
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Resource.h"

namespace qx4d {

class Texture : public Resource {
public:
    void OnDeviceLost() override;
    bool Restore() override;
    void ReleaseDevice() override;

    /// Copies `height` rows of `width` pixels into level 0, the source advancing by
    /// `sourcePitch` bytes per row: 4 bytes a pixel for A8R8G8B8 and X8R8G8B8, 1 for other
    /// formats. False without a 2D texture or when the lock fails.
    bool Upload(const uint8_t* pixels, uint32_t sourcePitch);
    /// Gives up the device object and makes an empty dynamic A8R8G8B8 texture of this size
    /// in its place, for live pixels; it stays one through a lost device. False when the
    /// device can't make it.
    bool MakeDynamic(uint32_t width, uint32_t height);
    /// Lives in the default pool, whose pixels a lost device takes: made without a file,
    /// or replaced by a dynamic texture.
    bool InDefaultPool() const { return name.empty() || (usage & gpu::D3DUSAGE_DYNAMIC); }

    gpu::D3DXIMAGE_INFO info;
    uint32_t usage = 0;
    std::shared_ptr<gpu::Texture> baseTexture;  // the one bound: the cube or the 2D texture
    std::shared_ptr<gpu::Texture> texture;
    std::shared_ptr<gpu::Texture> cubeTexture;
    std::shared_ptr<gpu::Surface> surface;  // level 0

private:
    bool RestoreWithoutFile(gpu::Device& device);
    bool RestoreFromFile(gpu::Device& device);
};

}  // namespace qx4d
