#pragma once
// A render target surface resource (no multisampling, not lockable).
#include "qx4d/core/device/SurfaceResource.h"

namespace qx4d {

class RenderTarget : public SurfaceResource {
public:
    using SurfaceResource::SurfaceResource;

protected:
    bool Create(gpu::Device& device) override
    {
        return qx::SUCCEEDED(device.CreateRenderTarget(desc.Width, desc.Height, desc.Format, &surface));
    }
};

}  // namespace qx4d
