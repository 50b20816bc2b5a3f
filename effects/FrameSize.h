#pragma once
// The frame sizes the stateful effects accept. Their arithmetic works in 32-bit integers
// (columns in 1/256, sample indexes), so a side is held below 2^22 and the sample count
// below 2^31; below `minimum` on a side their random positions have no room.
#include "platform/com/HResult.h"

#include <cstdint>

namespace qx {

inline constexpr LONG kMaxFrameSide = LONG(1) << 22;

inline bool isFrameSizeUsable(LONG width, LONG height, LONG minimum)
{
    return width >= minimum && height >= minimum && width <= kMaxFrameSide && height <= kMaxFrameSide &&
           int64_t(width) * int64_t(height) <= INT32_MAX;
}

/// What an effect does with a frame it cannot work on: the frame passes through when
/// its size is a real one, else nothing is written.
void passFrameThrough(const uint32_t* src, uint32_t* dst, LONG width, LONG height);

}  // namespace qx
