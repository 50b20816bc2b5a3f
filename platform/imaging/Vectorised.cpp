#include "platform/imaging/Vectorised.h"

#include <algorithm>
#include <atomic>

namespace qx::imaging {
namespace {

std::atomic<int> levelLimit{int(VectorLevel::avx512)};

VectorLevel detectVectorLevel()
{
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl"))
        return VectorLevel::avx512;
    if (__builtin_cpu_supports("avx2")) return VectorLevel::avx2;
#endif
    return VectorLevel::baseline;
}

}  // namespace

VectorLevel supportedVectorLevel()
{
    static const VectorLevel supported = detectVectorLevel();
    return supported;
}

VectorLevel activeVectorLevel()
{
    return VectorLevel(std::min(int(supportedVectorLevel()), levelLimit.load(std::memory_order_relaxed)));
}

void limitVectorLevel(VectorLevel level) { levelLimit.store(int(level), std::memory_order_relaxed); }

}  // namespace qx::imaging
