#include "platform/draw2d/SampleRun.h"

#include <immintrin.h>

#include <algorithm>

namespace qx::draw2d {

namespace {

// a and b mixed with `w` (0..256) of b, four channels at once in two lanes each.
inline uint32_t lerp(uint32_t a, uint32_t b, uint32_t w)
{
    const uint32_t rb = ((((a & 0x00FF00FFu) * (256 - w) + (b & 0x00FF00FFu) * w) >> 8) & 0x00FF00FFu);
    const uint32_t ag = ((((a >> 8) & 0x00FF00FFu) * (256 - w) + ((b >> 8) & 0x00FF00FFu) * w) & 0xFF00FF00u);
    return rb | ag;
}

inline uint32_t sampleAt(const SampleGrid& grid, int32_t u, int32_t v)
{
    const int x = u >> 16;
    const int y = v >> 16;
    const uint32_t fx = (uint32_t(u) >> 8) & 0xFF;
    const uint32_t fy = (uint32_t(v) >> 8) & 0xFF;
    const int x0 = std::clamp(x, 0, grid.width - 1);
    const int x1 = std::clamp(x + 1, 0, grid.width - 1);
    const uint32_t* top = grid.samples + size_t(std::clamp(y, 0, grid.height - 1)) * size_t(grid.pitch);
    const uint32_t* bottom = grid.samples + size_t(std::clamp(y + 1, 0, grid.height - 1)) * size_t(grid.pitch);
    return lerp(lerp(top[x0], top[x1], fx), lerp(bottom[x0], bottom[x1], fx), fy);
}

void sampleRunScalar(const SampleGrid& grid, int32_t u, int32_t v, int32_t du, int32_t dv, uint32_t* out, size_t count)
{
    for (size_t i = 0; i < count; ++i, u += du, v += dv) out[i] = sampleAt(grid, u, v);
}

// The same mix on eight samples: channels in 16-bit halves of each word, so that the
// 16-bit multiplies give exactly the products of the single-sample form.
__attribute__((target("avx2"))) inline __m256i lerp8(__m256i a, __m256i b, __m256i w)
{
    const __m256i low = _mm256_set1_epi32(0x00FF00FF);
    const __m256i keep = _mm256_sub_epi16(_mm256_set1_epi16(256), w);
    const __m256i rb = _mm256_add_epi16(_mm256_mullo_epi16(_mm256_and_si256(a, low), keep),
                                        _mm256_mullo_epi16(_mm256_and_si256(b, low), w));
    const __m256i ag = _mm256_add_epi16(_mm256_mullo_epi16(_mm256_and_si256(_mm256_srli_epi32(a, 8), low), keep),
                                        _mm256_mullo_epi16(_mm256_and_si256(_mm256_srli_epi32(b, 8), low), w));
    return _mm256_or_si256(_mm256_srli_epi16(rb, 8), _mm256_andnot_si256(low, ag));
}

__attribute__((target("avx2"))) void sampleRunAvx2(const SampleGrid& grid, int32_t u, int32_t v, int32_t du, int32_t dv,
                                                   uint32_t* out, size_t count)
{
    const __m256i steps = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    __m256i us = _mm256_add_epi32(_mm256_set1_epi32(u), _mm256_mullo_epi32(steps, _mm256_set1_epi32(du)));
    __m256i vs = _mm256_add_epi32(_mm256_set1_epi32(v), _mm256_mullo_epi32(steps, _mm256_set1_epi32(dv)));
    const __m256i stepU = _mm256_set1_epi32(int32_t(uint32_t(du) * 8));
    const __m256i stepV = _mm256_set1_epi32(int32_t(uint32_t(dv) * 8));
    const __m256i zero = _mm256_setzero_si256();
    const __m256i lastX = _mm256_set1_epi32(grid.width - 1);
    const __m256i lastY = _mm256_set1_epi32(grid.height - 1);
    const __m256i pitch = _mm256_set1_epi32(grid.pitch);
    const __m256i one = _mm256_set1_epi32(1);
    const __m256i byte = _mm256_set1_epi32(0xFF);
    const auto* base = reinterpret_cast<const int*>(grid.samples);
    size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m256i x = _mm256_srai_epi32(us, 16);
        const __m256i y = _mm256_srai_epi32(vs, 16);
        // Weights 0..255, in both 16-bit halves of each word.
        __m256i fx = _mm256_and_si256(_mm256_srli_epi32(us, 8), byte);
        __m256i fy = _mm256_and_si256(_mm256_srli_epi32(vs, 8), byte);
        fx = _mm256_or_si256(fx, _mm256_slli_epi32(fx, 16));
        fy = _mm256_or_si256(fy, _mm256_slli_epi32(fy, 16));
        const __m256i x0 = _mm256_min_epi32(_mm256_max_epi32(x, zero), lastX);
        const __m256i x1 = _mm256_min_epi32(_mm256_max_epi32(_mm256_add_epi32(x, one), zero), lastX);
        const __m256i top = _mm256_mullo_epi32(_mm256_min_epi32(_mm256_max_epi32(y, zero), lastY), pitch);
        const __m256i bottom =
            _mm256_mullo_epi32(_mm256_min_epi32(_mm256_max_epi32(_mm256_add_epi32(y, one), zero), lastY), pitch);
        const __m256i t00 = _mm256_i32gather_epi32(base, _mm256_add_epi32(top, x0), 4);
        const __m256i t01 = _mm256_i32gather_epi32(base, _mm256_add_epi32(top, x1), 4);
        const __m256i t10 = _mm256_i32gather_epi32(base, _mm256_add_epi32(bottom, x0), 4);
        const __m256i t11 = _mm256_i32gather_epi32(base, _mm256_add_epi32(bottom, x1), 4);
        const __m256i mixed = lerp8(lerp8(t00, t01, fx), lerp8(t10, t11, fx), fy);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), mixed);
        us = _mm256_add_epi32(us, stepU);
        vs = _mm256_add_epi32(vs, stepV);
    }
    if (i < count) {
        sampleRunScalar(grid, int32_t(uint32_t(u) + uint32_t(du) * uint32_t(i)),
                        int32_t(uint32_t(v) + uint32_t(dv) * uint32_t(i)), du, dv, out + i, count - i);
    }
}

}  // namespace

void sampleRun(const SampleGrid& grid, int32_t u, int32_t v, int32_t du, int32_t dv, uint32_t* out, size_t count)
{
    static const bool avx2 = __builtin_cpu_supports("avx2");
    if (avx2)
        sampleRunAvx2(grid, u, v, du, dv, out, count);
    else
        sampleRunScalar(grid, u, v, du, dv, out, count);
}

}  // namespace qx::draw2d
