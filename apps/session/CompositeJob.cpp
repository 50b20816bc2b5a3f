#include "apps/session/CompositeJob.h"

namespace qx::qxfx {

namespace {

void pack(transform::DXSurface& surface, const Frame& frame)
{
    std::unique_ptr<transform::SurfaceLock> lock;
    if (FAILED(surface.LockSurface(nullptr, 0, transform::DXLOCKF_READWRITE, lock))) throw CommandError("surface busy");
    lock->PackRect({const_cast<uint32_t*>(frame.samples.data()), false, {0, 0, frame.width, frame.height}, 0});
}

void unpack(transform::DXSurface& surface, Frame& frame)
{
    std::unique_ptr<transform::SurfaceLock> lock;
    if (FAILED(surface.LockSurface(nullptr, 0, transform::DXLOCKF_READ, lock))) throw CommandError("surface busy");
    lock->UnpackRect({frame.samples.data(), false, {0, 0, frame.width, frame.height}, 0});
}

}  // namespace

CompositeJob::CompositeJob(int width, int height)
    : first_(makeFrame(width, height)), second_(makeFrame(width, height)), output_(makeFrame(width, height)),
      firstSurface_(transform::DXSurface::create(width, height)),
      secondSurface_(transform::DXSurface::create(width, height)),
      outputSurface_(transform::DXSurface::create(width, height)), compositor_(CQXCompositor::Create())
{
    if (!firstSurface_ || !secondSurface_ || !outputSurface_) throw CommandError("out of memory");
}

void CompositeJob::setUp()
{
    const std::shared_ptr<transform::DXSurface> inputs[] = {firstSurface_, secondSurface_};
    if (FAILED(compositor_->Setup(inputs, outputSurface_, 0))) throw CommandError("the compositor cannot be set up");
}

const Frame& CompositeJob::run(float progress, bool secondIsFirst)
{
    pack(*firstSurface_, first_);
    pack(*secondSurface_, secondIsFirst ? first_ : second_);
    compositor_->put_Progress(progress);
    if (FAILED(compositor_->Execute(nullptr, nullptr, nullptr))) throw CommandError("the compositor failed on a frame");
    unpack(*outputSurface_, output_);
    return output_;
}

}  // namespace qx::qxfx
