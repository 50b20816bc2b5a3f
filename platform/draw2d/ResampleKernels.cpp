#include "platform/draw2d/ResampleKernels.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace qx::draw2d {

namespace {

// Blends two samples channel by channel, two channels per 32-bit lane pair: the sums stay
// below 0x10000 in every 16-bit lane, so no channel carries into the next.
inline uint32_t lerp(uint32_t a, uint32_t b, uint32_t w)
{
    const uint32_t iw = 256 - w;
    const uint32_t rb = (((a & 0x00FF00FFu) * iw + (b & 0x00FF00FFu) * w + 0x00800080u) >> 8) & 0x00FF00FFu;
    const uint32_t ag = (((a >> 8) & 0x00FF00FFu) * iw + ((b >> 8) & 0x00FF00FFu) * w + 0x00800080u) & 0xFF00FF00u;
    return rb | ag;
}

void blendRowsPortable(const uint32_t* top, const uint32_t* bottom, uint32_t weight, uint32_t* out, int count)
{
    for (int i = 0; i < count; ++i) out[i] = lerp(top[i], bottom[i], weight);
}

void blendColumnsPortable(const uint32_t* row, const int32_t* left, const uint32_t* weight, uint32_t* out, int count)
{
    for (int i = 0; i < count; ++i) out[i] = lerp(row[left[i]], row[left[i] + 1], weight[i]);
}

#if defined(__x86_64__)
// The same blends eight samples at a time, with gathers for the column taps.
#define QX_AVX2 __attribute__((target("avx2"), always_inline)) inline

QX_AVX2 __m256i weighLanes(__m256i x, __m256i y, __m256i w, __m256i iw)
{
    return _mm256_add_epi32(_mm256_add_epi32(_mm256_mullo_epi32(x, iw), _mm256_mullo_epi32(y, w)),
                            _mm256_set1_epi32(0x00800080));
}

QX_AVX2 __m256i lerp8(__m256i a, __m256i b, __m256i w)
{
    const __m256i mask = _mm256_set1_epi32(0x00FF00FF);
    const __m256i iw = _mm256_sub_epi32(_mm256_set1_epi32(256), w);
    const __m256i rb = _mm256_and_si256(
        _mm256_srli_epi32(weighLanes(_mm256_and_si256(a, mask), _mm256_and_si256(b, mask), w, iw), 8), mask);
    const __m256i ag = _mm256_and_si256(weighLanes(_mm256_and_si256(_mm256_srli_epi32(a, 8), mask),
                                                   _mm256_and_si256(_mm256_srli_epi32(b, 8), mask), w, iw),
                                        _mm256_set1_epi32(int(0xFF00FF00u)));
    return _mm256_or_si256(rb, ag);
}
#undef QX_AVX2

__attribute__((target("avx2"))) void blendRowsAvx2(const uint32_t* top, const uint32_t* bottom, uint32_t weight,
                                                   uint32_t* out, int count)
{
    const __m256i w = _mm256_set1_epi32(int(weight));
    int i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(top + i));
        const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bottom + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), lerp8(a, b, w));
    }
    blendRowsPortable(top + i, bottom + i, weight, out + i, count - i);
}

__attribute__((target("avx2"))) void blendColumnsAvx2(const uint32_t* row, const int32_t* left, const uint32_t* weight,
                                                      uint32_t* out, int count)
{
    const auto* samples = reinterpret_cast<const int*>(row);
    int i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m256i index = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(left + i));
        const __m256i a = _mm256_i32gather_epi32(samples, index, 4);
        const __m256i b = _mm256_i32gather_epi32(samples + 1, index, 4);
        const __m256i w = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(weight + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), lerp8(a, b, w));
    }
    blendColumnsPortable(row, left + i, weight + i, out + i, count - i);
}

// GCC 12's AVX-512 headers start vectors from undefined values, which its flow analysis
// reports as uninitialised here; the values are fully written before use.
#pragma GCC diagnostic push
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

__attribute__((target("avx512f"))) inline __m512i lerp16(__m512i a, __m512i b, __m512i w)
{
    const __m512i mask = _mm512_set1_epi32(0x00FF00FF);
    const __m512i round = _mm512_set1_epi32(0x00800080);
    const __m512i iw = _mm512_sub_epi32(_mm512_set1_epi32(256), w);
    const __m512i rb = _mm512_add_epi32(_mm512_add_epi32(_mm512_mullo_epi32(_mm512_and_si512(a, mask), iw),
                                                         _mm512_mullo_epi32(_mm512_and_si512(b, mask), w)),
                                        round);
    const __m512i ag =
        _mm512_add_epi32(_mm512_add_epi32(_mm512_mullo_epi32(_mm512_and_si512(_mm512_srli_epi32(a, 8), mask), iw),
                                          _mm512_mullo_epi32(_mm512_and_si512(_mm512_srli_epi32(b, 8), mask), w)),
                         round);
    return _mm512_or_si512(_mm512_and_si512(_mm512_srli_epi32(rb, 8), mask),
                           _mm512_and_si512(ag, _mm512_set1_epi32(int(0xFF00FF00u))));
}

__attribute__((target("avx512f"))) void blendRowsAvx512(const uint32_t* top, const uint32_t* bottom, uint32_t weight,
                                                        uint32_t* out, int count)
{
    const __m512i w = _mm512_set1_epi32(int(weight));
    int i = 0;
    for (; i + 16 <= count; i += 16) {
        _mm512_storeu_si512(out + i, lerp16(_mm512_loadu_si512(top + i), _mm512_loadu_si512(bottom + i), w));
    }
    blendRowsPortable(top + i, bottom + i, weight, out + i, count - i);
}

// Sixteen outputs whose taps lie within 32 consecutive samples (any scale up to about 2)
// take them from two loads and a two-register permute; wider runs gather.
__attribute__((target("avx512f"))) void blendColumnsAvx512(const uint32_t* row, const int32_t* left,
                                                           const uint32_t* weight, uint32_t* out, int count)
{
    const __m512i one = _mm512_set1_epi32(1);
    int i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m512i index = _mm512_loadu_si512(left + i);
        const __m512i w = _mm512_loadu_si512(weight + i);
        const int base = left[i];
        __m512i a;
        __m512i b;
        if (left[i + 15] + 1 - base < 32) {
            const __m512i low = _mm512_loadu_si512(row + base);
            const __m512i high = _mm512_loadu_si512(row + base + 16);
            const __m512i local = _mm512_sub_epi32(index, _mm512_set1_epi32(base));
            a = _mm512_permutex2var_epi32(low, local, high);
            b = _mm512_permutex2var_epi32(low, _mm512_add_epi32(local, one), high);
        } else {
            a = _mm512_i32gather_epi32(index, row, 4);
            b = _mm512_i32gather_epi32(index, row + 1, 4);
        }
        _mm512_storeu_si512(out + i, lerp16(a, b, w));
    }
    blendColumnsPortable(row, left + i, weight + i, out + i, count - i);
}

#pragma GCC diagnostic pop

const bool kHasAvx512 = __builtin_cpu_supports("avx512f");
const bool kHasAvx2 = __builtin_cpu_supports("avx2");
#endif

}  // namespace

void blendRows(const uint32_t* top, const uint32_t* bottom, uint32_t weight, uint32_t* out, int count)
{
#if defined(__x86_64__)
    if (kHasAvx512) return blendRowsAvx512(top, bottom, weight, out, count);
    if (kHasAvx2) return blendRowsAvx2(top, bottom, weight, out, count);
#endif
    blendRowsPortable(top, bottom, weight, out, count);
}

void blendColumns(const uint32_t* row, const int32_t* left, const uint32_t* weight, uint32_t* out, int count)
{
#if defined(__x86_64__)
    if (kHasAvx512) return blendColumnsAvx512(row, left, weight, out, count);
    if (kHasAvx2) return blendColumnsAvx2(row, left, weight, out, count);
#endif
    blendColumnsPortable(row, left, weight, out, count);
}

}  // namespace qx::draw2d
