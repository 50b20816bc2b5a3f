#include "effects/FrameSize.h"

#include <algorithm>

namespace qx {

void passFrameThrough(const uint32_t* src, uint32_t* dst, LONG width, LONG height)
{
    if (src != nullptr && dst != nullptr && isFrameSizeUsable(width, height, 1))
        std::copy_n(src, size_t(width) * size_t(height), dst);
}

}  // namespace qx
