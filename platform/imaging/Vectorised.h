#pragma once
// Runs a loop kernel of the image operations in the widest vector instructions the
// processor has. A kernel is a plain loop over samples, written for the compiler's
// vectoriser and marked QX_IMAGING_INLINE (always inlined, as are the helpers it calls),
// so that it is compiled three times: for the baseline x86-64 instruction set, for AVX2
// and for AVX-512 (with its byte, word and 256-bit forms), the widest the processor has
// taken at run time. The layer is compiled without fused multiply-add contraction, so
// every float result is the same in all three.
//
//   runVectorised<rotateHues>(samples, shift);
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

template <auto Kernel, class... Args>
__attribute__((target("avx512f,avx512bw,avx512dq,avx512vl"))) void runAvx512(Args... args)
{
    Kernel(args...);
}

inline bool hasAvx2()
{
    static const bool present = (__builtin_cpu_init(), __builtin_cpu_supports("avx2"));
    return present;
}

inline bool hasAvx512()
{
    static const bool present = (__builtin_cpu_init(), __builtin_cpu_supports("avx512f") &&
                                                           __builtin_cpu_supports("avx512bw") &&
                                                           __builtin_cpu_supports("avx512dq") &&
                                                           __builtin_cpu_supports("avx512vl"));
    return present;
}
#endif

}  // namespace detail

template <auto Kernel, class... Args>
void runVectorised(Args... args)
{
#if defined(__x86_64__)
    if (detail::hasAvx512())
        return detail::runAvx512<Kernel>(args...);
    if (detail::hasAvx2())
        return detail::runAvx2<Kernel>(args...);
#endif
    detail::runBaseline<Kernel>(args...);
}

}  // namespace qx::imaging
