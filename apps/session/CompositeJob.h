#pragma once
// The compositor driven as an editor drives it, over frames of the command line: two
// input surfaces and an output, Setup once, then Execute per frame. Shared by
// `qxfx composite` and the frei0r compositor filter.
#include "apps/session/Frame.h"
#include "filters/Compositor.h"

#include <memory>

namespace qx::qxfx {

class CompositeJob {
public:
    CompositeJob(int width, int height);
    CompositeJob(const CompositeJob&) = delete;
    CompositeJob& operator=(const CompositeJob&) = delete;

    CQXCompositor& compositor() { return *compositor_.get(); }
    /// The background of the next frame, and the second input's frame.
    Frame& first() { return first_; }
    Frame& second() { return second_; }

    /// Sets the compositor up (after its properties are put); CommandError when it refuses.
    void setUp();
    /// The frame composed at `progress`; with `secondIsFirst`, the first frame is also the
    /// second input.
    const Frame& run(float progress, bool secondIsFirst);

private:
    Frame first_;
    Frame second_;
    Frame output_;
    std::shared_ptr<transform::DXSurface> firstSurface_;
    std::shared_ptr<transform::DXSurface> secondSurface_;
    std::shared_ptr<transform::DXSurface> outputSurface_;
    com::ComPtr<CQXCompositor> compositor_;
};

}  // namespace qx::qxfx
