#pragma once
// Memory for whole frames, kept for reuse. Frame effects take and give back a few
// frame-sized blocks on every frame; a fresh block of that size costs the kernel a page
// fault for every 4 KiB, which at 1920x1080 outweighs the effect itself. Released blocks
// are kept (up to a bound) and handed out again for the same size.
#include <cstddef>
#include <cstdint>
#include <memory>

namespace qx::pixel {

struct FrameMemoryRelease {
    size_t samples = 0;
    void operator()(uint32_t* block) const;
};

using FrameMemory = std::unique_ptr<uint32_t[], FrameMemoryRelease>;

/// A block of `samples` 32-bit samples with undefined contents; null when memory runs out.
FrameMemory allocateFrameMemory(size_t samples);

}  // namespace qx::pixel
