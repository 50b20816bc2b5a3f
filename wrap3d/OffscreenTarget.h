#pragma once
// The off-screen target of a scene player: a render target and a depth surface that stand
// in for the device's own while a frame is drawn, and a surface in system memory that the
// frame is read back through.
#include "platform/gpu/Surface.h"
#include "qx4d/core/device/ResourceHandle.h"

#include <cstdint>
#include <memory>

namespace qx::wrap3d {

class OffscreenTarget {
public:
    OffscreenTarget() = default;
    ~OffscreenTarget();
    OffscreenTarget(const OffscreenTarget&) = delete;
    OffscreenTarget& operator=(const OffscreenTarget&) = delete;

    /// Gives up the old surfaces and makes new ones of this size; false when one of them
    /// can't be made.
    bool Create(int32_t newWidth, int32_t newHeight);
    /// Saves the device's target and depth surface and sets this target's in their place.
    bool Begin();
    /// Reads the frame back into `out` (the readback's pitch times the height, in one
    /// block) and puts the saved surfaces back.
    void End(uint32_t* out);

    qx4d::ResourceHandle renderTarget;
    qx4d::ResourceHandle depthStencil;
    std::shared_ptr<gpu::Surface> savedColor;
    std::shared_ptr<gpu::Surface> savedDepth;
    std::shared_ptr<gpu::Surface> readback;
    int32_t width = 0;
    int32_t height = 0;

private:
    void Release();
};

}  // namespace qx::wrap3d
