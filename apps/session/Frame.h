#pragma once
// A frame as the effect host takes it: 32-bit samples B, G, R, A, straight alpha,
// top-down, rows without padding.
#include "apps/session/CommandError.h"

#include <cstdint>
#include <new>
#include <string>
#include <vector>

namespace qx::qxfx {

/// The largest frame the command line accepts: 16384 samples a side and 2^26 (a 256 MiB frame) in all, so
/// that sizes from files or options never overflow a 32-bit row or a 64-bit buffer.
inline constexpr int kMaxFrameSide = 16384;
inline constexpr int64_t kMaxFrameSamples = int64_t(1) << 26;

struct Frame {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> samples;
};

/// Checks a size against the limits and allocates a zeroed frame; CommandError when the
/// size is out of range or the memory cannot be had.
inline Frame makeFrame(int width, int height)
{
    if (width <= 0 || height <= 0 || width > kMaxFrameSide || height > kMaxFrameSide ||
        int64_t(width) * height > kMaxFrameSamples) {
        throw CommandError("frame size " + std::to_string(width) + "x" + std::to_string(height) +
                           " is out of range (1 to " + std::to_string(kMaxFrameSide) + " a side, " +
                           std::to_string(kMaxFrameSamples) + " samples in all)");
    }
    try {
        return Frame{width, height, std::vector<uint32_t>(size_t(width) * size_t(height))};
    } catch (const std::bad_alloc&) {
        throw CommandError("not enough memory for a " + std::to_string(width) + "x" + std::to_string(height) +
                           " frame");
    }
}

/// Gives `frame` the size asked for, making it anew only when its size differs, so that a
/// buffer that goes round keeps its samples.
inline void fitFrame(Frame& frame, int width, int height)
{
    if (frame.width != width || frame.height != height || frame.samples.empty()) frame = makeFrame(width, height);
}

}  // namespace qx::qxfx
