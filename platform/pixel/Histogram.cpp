#include "platform/pixel/Histogram.h"

#include <algorithm>
#include <cassert>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace qx::pixel {

namespace {

constexpr int32_t kSixteen = 16;

/// Adds the histogram of `bytes` to `counts`, a byte at a time. Four sets of counters
/// take turns, so that a run of equal bytes does not wait on one counter.
void countScalar(std::span<const uint8_t> bytes, int32_t bins, ByteHistogram& counts)
{
    std::array<ByteHistogram, 4> partial{};
    const size_t n = bytes.size();
    const auto bin = [bins](uint8_t b) { return size_t((int32_t(b) * bins) >> 8); };
    size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        ++partial[0][bin(bytes[i])];
        ++partial[1][bin(bytes[i + 1])];
        ++partial[2][bin(bytes[i + 2])];
        ++partial[3][bin(bytes[i + 3])];
    }
    for (; i < n; ++i) ++partial[0][bin(bytes[i])];
    for (const auto& part : partial)
        for (size_t k = 0; k < counts.size(); ++k) counts[k] += part[k];
}

#if defined(__x86_64__)

// The vector kernels count in byte lanes: each bin has a vector of byte counters that
// goes up by 1 in every lane whose byte falls in the bin. A byte counter holds 255, so
// the counters are summed into the histogram after at most 255 vectors.
constexpr size_t kVectorsPerFlush = 255;

/// Counts the whole vectors of `bytes` and returns how many bytes that covered.
__attribute__((target("avx512f,avx512bw"))) size_t countAvx512(std::span<const uint8_t> bytes, ByteHistogram& counts)
{
    const __m512i lowNibble = _mm512_set1_epi8(0x0F);
    const __m512i one = _mm512_set1_epi8(1);
    const size_t vectors = bytes.size() / 64;
    for (size_t done = 0; done < vectors;) {
        const size_t run = std::min(kVectorsPerFlush, vectors - done);
        __m512i bin[kSixteen];
        for (auto& counter : bin) counter = _mm512_setzero_si512();
        for (size_t v = done; v < done + run; ++v) {
            const __m512i x = _mm512_loadu_si512(bytes.data() + v * 64);
            const __m512i top = _mm512_and_si512(_mm512_srli_epi16(x, 4), lowNibble);
            for (int k = 0; k < kSixteen; ++k) {
                const __mmask64 hit = _mm512_cmpeq_epi8_mask(top, _mm512_set1_epi8(char(k)));
                bin[k] = _mm512_mask_add_epi8(bin[k], hit, bin[k], one);
            }
        }
        for (int k = 0; k < kSixteen; ++k) {
            alignas(64) uint64_t lanes[8];
            _mm512_store_si512(lanes, _mm512_sad_epu8(bin[k], _mm512_setzero_si512()));
            uint64_t sum = 0;
            for (const uint64_t lane : lanes) sum += lane;
            counts[size_t(k)] += int32_t(sum);
        }
        done += run;
    }
    return vectors * 64;
}

/// The same in 256-bit vectors. AVX2 has 16 vector registers, too few for 16 counters
/// and the bytes, so each run is counted twice from the cache, eight bins at a time.
template <int First>
__attribute__((target("avx2"), always_inline)) inline void countEightAvx2(const uint8_t* data, size_t run,
                                                                          ByteHistogram& counts)
{
    const __m256i lowNibble = _mm256_set1_epi8(0x0F);
    __m256i bin[8];
    for (auto& counter : bin) counter = _mm256_setzero_si256();
    for (size_t v = 0; v < run; ++v) {
        const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(data + v * 32));
        const __m256i top = _mm256_and_si256(_mm256_srli_epi16(x, 4), lowNibble);
        for (int k = 0; k < 8; ++k) {
            // A hit is -1 in its lane: subtracting it counts one.
            bin[k] = _mm256_sub_epi8(bin[k], _mm256_cmpeq_epi8(top, _mm256_set1_epi8(char(First + k))));
        }
    }
    for (int k = 0; k < 8; ++k) {
        const __m256i sums = _mm256_sad_epu8(bin[k], _mm256_setzero_si256());
        const __m128i half = _mm_add_epi64(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
        counts[size_t(First + k)] += int32_t(_mm_cvtsi128_si64(half) + _mm_extract_epi64(half, 1));
    }
}

__attribute__((target("avx2"))) size_t countAvx2(std::span<const uint8_t> bytes, ByteHistogram& counts)
{
    const size_t vectors = bytes.size() / 32;
    for (size_t done = 0; done < vectors;) {
        const size_t run = std::min(kVectorsPerFlush, vectors - done);
        countEightAvx2<0>(bytes.data() + done * 32, run, counts);
        countEightAvx2<8>(bytes.data() + done * 32, run, counts);
        done += run;
    }
    return vectors * 32;
}

HistogramKernel detectKernel()
{
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw")) return HistogramKernel::avx512;
    if (__builtin_cpu_supports("avx2")) return HistogramKernel::avx2;
    return HistogramKernel::scalar;
}

#else

HistogramKernel detectKernel() { return HistogramKernel::scalar; }

#endif

}  // namespace

HistogramKernel histogramKernel()
{
    static const HistogramKernel kernel = detectKernel();
    return kernel;
}

ByteHistogram countSixteenBins(std::span<const uint8_t> bytes, HistogramKernel kernel)
{
    ByteHistogram counts{};
    size_t counted = 0;
#if defined(__x86_64__)
    if (kernel == HistogramKernel::avx512)
        counted = countAvx512(bytes, counts);
    else if (kernel == HistogramKernel::avx2)
        counted = countAvx2(bytes, counts);
#else
    (void)kernel;
#endif
    countScalar(bytes.subspan(counted), kSixteen, counts);
    return counts;
}

ByteHistogram countBins(std::span<const uint8_t> bytes, int32_t bins)
{
    assert(bins >= 1 && bins <= 256);
    if (bins == kSixteen) return countSixteenBins(bytes, histogramKernel());
    ByteHistogram counts{};
    countScalar(bytes, bins, counts);
    return counts;
}

}  // namespace qx::pixel
