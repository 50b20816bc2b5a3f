#include "tools/import/SourceScene.h"

#include <algorithm>

namespace qx4d::tools {

float SourceAnimation::Duration() const
{
    float duration = 0.0f;
    for (const SourceChannel& channel : channels)
        if (!channel.times.empty()) duration = std::max(duration, channel.times.back());
    return duration;
}

}  // namespace qx4d::tools
