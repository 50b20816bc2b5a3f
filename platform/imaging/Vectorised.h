#pragma once
// Runs a loop kernel of the image operations in the widest vector instructions the
// processor has. A kernel is a plain loop over samples, written for the compiler's
// vectoriser and marked QX_IMAGING_INLINE (always inlined, as are the helpers it calls),
// so that it is compiled three times: for the baseline x86-64 instruction set, for AVX2
// and for AVX-512 (with its byte, word and 256-bit forms), the widest the processor has
// taken at run time, or a narrower one for comparing and measuring them. The layer is
// compiled without fused multiply-add contraction, so every float result is the same
// in all three.
//
//   runVectorised<rotateHues>(samples, shift);
#define QX_IMAGING_INLINE __attribute__((always_inline)) inline

#include <utility>

namespace qx::imaging {

enum class VectorLevel : int { baseline = 0, avx2 = 1, avx512 = 2 };

/// The widest level this processor has.
VectorLevel supportedVectorLevel();

/// The level the kernels use: the widest the processor has, at most `limitVectorLevel`'s.
VectorLevel activeVectorLevel();

/// Caps the level the kernels use, for this whole process (no cap at first).
void limitVectorLevel(VectorLevel level);

namespace detail {

template <auto Kernel, class... Args>
void runBaseline(Args&&... args)
{
    Kernel(std::forward<Args>(args)...);
}

#if defined(__x86_64__)
template <auto Kernel, class... Args>
__attribute__((target("avx2"))) void runAvx2(Args&&... args)
{
    Kernel(std::forward<Args>(args)...);
}

template <auto Kernel, class... Args>
__attribute__((target("avx512f,avx512bw,avx512dq,avx512vl"))) void runAvx512(Args&&... args)
{
    Kernel(std::forward<Args>(args)...);
}

#endif

}  // namespace detail

template <auto Kernel, class... Args>
void runVectorised(Args&&... args)
{
#if defined(__x86_64__)
    switch (activeVectorLevel()) {
    case VectorLevel::avx512: return detail::runAvx512<Kernel>(std::forward<Args>(args)...);
    case VectorLevel::avx2: return detail::runAvx2<Kernel>(std::forward<Args>(args)...);
    case VectorLevel::baseline: break;
    }
#endif
    detail::runBaseline<Kernel>(std::forward<Args>(args)...);
}

}  // namespace qx::imaging
