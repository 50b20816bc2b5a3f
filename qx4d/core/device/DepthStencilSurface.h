#pragma once
// A depth-stencil surface resource (no multisampling, contents discarded).
#include "qx4d/core/device/SurfaceResource.h"

namespace qx4d {

class DepthStencilSurface : public SurfaceResource {
public:
    using SurfaceResource::SurfaceResource;

protected:
    bool Create(gpu::Device& device) override
    {
        return qx::SUCCEEDED(device.CreateDepthStencilSurface(desc.Width, desc.Height, desc.Format, &surface));
    }
};

}  // namespace qx4d
