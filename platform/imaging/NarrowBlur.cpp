#include "platform/imaging/NarrowBlur.h"

#include "platform/imaging/PaddedRow.h"
#include "platform/imaging/Vectorised.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace qx::imaging {

std::optional<WindowDivisor> windowDivisor(int32_t radius)
{
    if (radius < 1 || radius > 127) return std::nullopt;
    const uint32_t window = 2 * uint32_t(radius) + 1;
    // Rounding half up: floor((sum + (w - 1) / 2) / w), the same as the general blur's
    // float mean for every window up to 257 samples.
    const uint32_t bias = (window - 1) / 2;
    const auto divider = findDivider16(window, 255 * window + bias);
    if (!divider) return std::nullopt;
    return WindowDivisor{*divider, uint16_t(bias)};
}

#if defined(__x86_64__)
namespace {

#define QX_AVX2 __attribute__((target("avx2"))) inline

/// The rounded means of sixteen 16-bit window sums.
QX_AVX2 __m256i means16(__m256i sums, const WindowDivisor& divisor)
{
    const __m256i biased = _mm256_add_epi16(sums, _mm256_set1_epi16(int16_t(divisor.bias)));
    const __m256i high = _mm256_mulhi_epu16(biased, _mm256_set1_epi16(int16_t(divisor.divider.multiplier)));
    return _mm256_srl_epi16(high, _mm_cvtsi32_si128(divisor.divider.shift));
}

/// Thirty-two means as bytes, in order, from two vectors of sixteen sums.
QX_AVX2 __m256i meanBytes(__m256i first, __m256i second, const WindowDivisor& divisor)
{
    const __m256i packed = _mm256_packus_epi16(means16(first, divisor), means16(second, divisor));
    return _mm256_permute4x64_epi64(packed, _MM_SHUFFLE(3, 1, 2, 0));
}

QX_AVX2 __m256i loadWide(const uint16_t* at) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)); }

QX_AVX2 __m256i widenBytes(const uint8_t* at)
{
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)));
}

/// Running sums of four samples' channels (sixteen 16-bit lanes): lane c of sample i
/// becomes the sum of channel c over samples 0..i.
QX_AVX2 __m256i scanFourSamples(__m256i channels)
{
    const __m256i pairs = _mm256_add_epi16(channels, _mm256_slli_si256(channels, 8));
    const __m256i firstPair = _mm256_permute4x64_epi64(pairs, _MM_SHUFFLE(1, 1, 1, 1));
    return _mm256_add_epi16(pairs, _mm256_blend_epi32(_mm256_setzero_si256(), firstPair, 0xF0));
}

/// The working memory of one blur: a padded row, its prefix sums and the column sums.
struct NarrowScratch {
    std::vector<uint32_t> padded;
    std::vector<uint16_t> prefix;
    std::vector<uint16_t> columns;
};

/// Prefix sums per channel of the padded row: `prefix` lanes 4 * i .. 4 * i + 3 hold
/// the sums of samples before i. They wrap at 16 bits; a difference of two of them is
/// still the exact window sum, which fits.
__attribute__((target("avx2"))) void prefixSums(std::span<const uint32_t> padded, std::span<uint16_t> prefix)
{
    const auto* bytes = reinterpret_cast<const uint8_t*>(padded.data());
    __m256i carry = _mm256_setzero_si256();
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(prefix.data()), carry);
    for (size_t i = 0; i + 4 <= padded.size(); i += 4) {
        const __m256i local = scanFourSamples(widenBytes(bytes + 4 * i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(prefix.data() + 4 * (i + 1)), _mm256_add_epi16(local, carry));
        carry = _mm256_add_epi16(carry, _mm256_permute4x64_epi64(local, _MM_SHUFFLE(3, 3, 3, 3)));
    }
}

/// The horizontal pass of one row: the window means of `row` into `out`, eight samples
/// at a time; the last, partial group goes through a staging block.
__attribute__((target("avx2"))) void blurRowNarrow(std::span<const uint32_t> row, std::span<uint32_t> out,
                                                   int32_t radius, const WindowDivisor& divisor, NarrowScratch& scratch)
{
    const size_t width = row.size();
    const size_t window = 2 * size_t(radius) + 1;
    padRow(row, scratch.padded, radius);
    prefixSums(scratch.padded, scratch.prefix);
    const uint16_t* prefix = scratch.prefix.data();
    for (size_t x = 0; x < width; x += 8) {
        const __m256i first = _mm256_sub_epi16(loadWide(prefix + 4 * (x + window)), loadWide(prefix + 4 * x));
        const __m256i second =
            _mm256_sub_epi16(loadWide(prefix + 4 * (x + 4 + window)), loadWide(prefix + 4 * (x + 4)));
        const __m256i means = meanBytes(first, second, divisor);
        if (x + 8 <= width) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out.data() + x), means);
        } else {
            alignas(32) uint32_t staged[8];
            _mm256_store_si256(reinterpret_cast<__m256i*>(staged), means);
            std::copy_n(staged, width - x, out.data() + x);
        }
    }
}

}  // namespace

/// Column sums, sixteen bytes' worth at a time.
__attribute__((target("avx2"))) void addRowNarrow(std::span<uint16_t> columns, const uint8_t* row)
{
    size_t j = 0;
    for (; j + 16 <= columns.size(); j += 16) {
        auto* at = reinterpret_cast<__m256i*>(columns.data() + j);
        _mm256_storeu_si256(at, _mm256_add_epi16(_mm256_loadu_si256(at), widenBytes(row + j)));
    }
    for (; j < columns.size(); ++j) columns[j] = uint16_t(columns[j] + row[j]);
}

__attribute__((target("avx2"))) void blurColumnsNarrow(std::span<uint16_t> columns, uint8_t* out,
                                                       const uint8_t* entering, const uint8_t* leaving,
                                                       const WindowDivisor& divisor)
{
    const __m256i alpha = _mm256_set1_epi32(int32_t(0xFF000000u));
    uint16_t* sums = columns.data();
    size_t j = 0;
    for (; j + 32 <= columns.size(); j += 32) {
        const __m256i first = loadWide(sums + j);
        const __m256i second = loadWide(sums + j + 16);
        // The moves of the sums first: `entering` and `leaving` may be `out` itself.
        const __m256i firstDelta = _mm256_sub_epi16(widenBytes(entering + j), widenBytes(leaving + j));
        const __m256i secondDelta = _mm256_sub_epi16(widenBytes(entering + j + 16), widenBytes(leaving + j + 16));
        auto* target = reinterpret_cast<__m256i*>(out + j);
        const __m256i means = meanBytes(first, second, divisor);
        _mm256_storeu_si256(target, _mm256_blendv_epi8(means, _mm256_loadu_si256(target), alpha));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums + j), _mm256_add_epi16(first, firstDelta));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums + j + 16), _mm256_add_epi16(second, secondDelta));
    }
    for (; j < columns.size(); ++j) {
        const int delta = int(entering[j]) - int(leaving[j]);
        if (j % 4 != 3) out[j] = uint8_t(divisor.meanOf(sums[j]));
        sums[j] = uint16_t(sums[j] + delta);
    }
}

namespace {

#undef QX_AVX2

/// Both passes at once, a row at a time: row y of the picture is written as soon as
/// the rows up to y + radius are blurred along themselves, which a ring of 2 * radius
/// + 2 such rows holds (every row, for shorter pictures). The ring stays in the cache
/// where a whole blurred frame would not, and no row is read after it is written.
__attribute__((target("avx2"))) void blurNarrowAvx2(BitmapHandle& bitmap, int32_t radius, const WindowDivisor& divisor)
{
    const size_t width = size_t(bitmap.width());
    const size_t window = 2 * size_t(radius) + 1;
    // Room for the groups of eight of the last samples, whose windows reach one
    // window past the last group's start, in whole groups of four for the prefix.
    const size_t paddedLength = (((width + 7) / 8) * 8 + window + 3) / 4 * 4;
    NarrowScratch scratch{std::vector<uint32_t>(paddedLength), std::vector<uint16_t>(4 * (paddedLength + 1)),
                          std::vector<uint16_t>(4 * width)};
    const int32_t last = bitmap.height() - 1;
    const int32_t ringRows = std::min(2 * radius + 2, bitmap.height());
    std::vector<uint32_t> ring(size_t(ringRows) * width);
    auto ringRow = [&](int32_t y) {
        return std::span<uint32_t>(ring).subspan(size_t(std::clamp(y, 0, last) % ringRows) * width, width);
    };
    int32_t blurredUpTo = -1;
    auto blurRowsUpTo = [&](int32_t y) {
        for (; blurredUpTo < std::min(y, last); ++blurredUpTo)
            blurRowNarrow(bitmap.row(blurredUpTo + 1), ringRow(blurredUpTo + 1), radius, divisor, scratch);
    };
    auto bytesOf = [&](int32_t y) { return reinterpret_cast<const uint8_t*>(ringRow(y).data()); };

    blurRowsUpTo(radius);
    for (int32_t k = -radius; k <= radius; ++k) addRowNarrow(scratch.columns, bytesOf(k));
    for (int32_t y = 0; y <= last; ++y) {
        blurRowsUpTo(y + radius + 1);
        blurColumnsNarrow(scratch.columns, reinterpret_cast<uint8_t*>(bitmap.row(y).data()), bytesOf(y + radius + 1),
                          bytesOf(y - radius), divisor);
    }
}

}  // namespace
#endif

bool blurNarrow(BitmapHandle& bitmap, int32_t radius)
{
#if defined(__x86_64__)
    const auto divisor = windowDivisor(radius);
    if (!divisor || activeVectorLevel() == VectorLevel::baseline) return false;
    blurNarrowAvx2(bitmap, radius, *divisor);
    return true;
#else
    (void)bitmap;
    (void)radius;
    return false;
#endif
}

}  // namespace qx::imaging
