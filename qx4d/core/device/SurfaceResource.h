#pragma once
// What depth-stencil surfaces and render targets share: a description and a surface of
// the default pool, given up when the device is lost and made again on restore.
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Resource.h"

namespace qx4d {

class SurfaceResource : public Resource {
public:
    SurfaceResource(uint32_t width, uint32_t height, gpu::D3DFORMAT format)
    {
        desc.Width = width;
        desc.Height = height;
        desc.Format = format;
    }

    void OnDeviceLost() override { ReleaseDevice(); }
    void ReleaseDevice() override { surface.reset(); }
    bool Restore() override
    {
        gpu::Device* device = CurrentDevice();
        if (surface) return true;
        if (!device || !Create(*device)) return false;
        desc = surface->desc();
        return true;
    }

    gpu::D3DSURFACE_DESC desc;
    std::shared_ptr<gpu::Surface> surface;

protected:
    virtual bool Create(gpu::Device& device) = 0;
};

}  // namespace qx4d
