#pragma once
// Runs a loop kernel of the image operations in the widest vector instructions the
// processor has. A kernel is a plain loop over samples, written for the compiler's
// vectoriser and marked QX_IMAGING_INLINE (always inlined, as are the helpers it calls),
// so that it is compiled twice: once for the baseline x86-64 instruction set and once for
// AVX2, the second taken where the processor has it. AVX2 alone (not FMA) keeps every
// float result the same in both, since no multiply and add are fused into one rounding.
//
//   runVectorised<hueKernel>(samples, shift);
#define QX_IMAGING_INLINE __attribute__((always_inline)) inline

namespace qx::imaging {
namespace detail {

template <auto Kernel, class... Args>
void runBaseline(Args... args)
{
    Kernel(args...);
}

#if defined(__x86_64__)
template <auto Kernel, class... Args>
__attribute__((target("avx2"))) void runAvx2(Args... args)
{
    Kernel(args...);
}

inline bool hasAvx2()
{
    static const bool present = (__builtin_cpu_init(), __builtin_cpu_supports("avx2"));
    return present;
}
#endif

}  // namespace detail

template <auto Kernel, class... Args>
void runVectorised(Args... args)
{
#if defined(__x86_64__)
    if (detail::hasAvx2())
        return detail::runAvx2<Kernel>(args...);
#endif
    detail::runBaseline<Kernel>(args...);
}

}  // namespace qx::imaging
