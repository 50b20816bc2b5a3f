#include "platform/draw2d/Resample.h"

#include <algorithm>
#include <cmath>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace qx::draw2d {

namespace {

// The left tap and the weight of the right tap (0..256) at source coordinate `u`,
// clamped so that the edge sample repeats.
void tapAt(double u, int size, int32_t& left, uint32_t& weight)
{
    u = std::clamp(u, 0.0, double(size - 1));
    const double whole = std::floor(u);
    left = int32_t(whole);
    weight = uint32_t(std::lround((u - whole) * 256.0));
}

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
    const __m256i rb =
        _mm256_and_si256(_mm256_srli_epi32(weighLanes(_mm256_and_si256(a, mask), _mm256_and_si256(b, mask), w, iw), 8),
                         mask);
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

__attribute__((target("avx2"))) void blendColumnsAvx2(const uint32_t* row, const int32_t* left,
                                                      const uint32_t* weight, uint32_t* out, int count)
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

const bool kHasAvx2 = __builtin_cpu_supports("avx2");
#endif

void blendRows(const uint32_t* top, const uint32_t* bottom, uint32_t weight, uint32_t* out, int count)
{
#if defined(__x86_64__)
    if (kHasAvx2) return blendRowsAvx2(top, bottom, weight, out, count);
#endif
    blendRowsPortable(top, bottom, weight, out, count);
}

void blendColumns(const uint32_t* row, const int32_t* left, const uint32_t* weight, uint32_t* out, int count)
{
#if defined(__x86_64__)
    if (kHasAvx2) return blendColumnsAvx2(row, left, weight, out, count);
#endif
    blendColumnsPortable(row, left, weight, out, count);
}

}  // namespace

Resampler::Resampler(const SampleGrid& source, AxisMap mapX, AxisMap mapY, const PixelSpan& span)
    : source_(source), mapX_(mapX), mapY_(mapY), span_(span)
{
    shiftOnly_ = mapX.scale == 1.0 && mapY.scale == 1.0 && mapX.offset == std::floor(mapX.offset) &&
                 mapY.offset == std::floor(mapY.offset);
    const int columns = std::max(0, span.x1 - span.x0);
    leftTap_.resize(size_t(columns));
    rightWeight_.resize(size_t(columns));
    int lastColumn = 0;
    firstColumn_ = source.width;
    for (int i = 0; i < columns; ++i) {
        tapAt(mapX.scale * (span.x0 + i + 0.5) + mapX.offset - 0.5, source.width, leftTap_[size_t(i)],
              rightWeight_[size_t(i)]);
        firstColumn_ = std::min(firstColumn_, int(leftTap_[size_t(i)]));
        lastColumn = std::max(lastColumn, int(leftTap_[size_t(i)]));
    }
    firstColumn_ = std::min(firstColumn_, lastColumn);
    for (auto& tap : leftTap_) tap -= firstColumn_;
    // The spare sample after the last column repeats it, so a right tap never leaves the row.
    blended_.resize(size_t(lastColumn - firstColumn_ + 2));
}

bool Resampler::copyRow(int y, std::span<uint32_t> out) const
{
    const double sourceY = y + mapY_.offset;
    const double sourceX = span_.x0 + mapX_.offset;
    if (sourceY < 0 || sourceY >= source_.height || sourceX < 0 || sourceX + (span_.x1 - span_.x0) > source_.width) {
        return false;  // edge samples repeat there: the blend handles it
    }
    const uint32_t* from = source_.samples + size_t(sourceY) * size_t(source_.pitch) + size_t(sourceX);
    std::copy_n(from, span_.x1 - span_.x0, out.begin());
    return true;
}

void Resampler::row(int y, std::span<uint32_t> out)
{
    if (shiftOnly_ && copyRow(y, out)) return;
    int32_t top = 0;
    uint32_t weight = 0;
    tapAt(mapY_.scale * (y + 0.5) + mapY_.offset - 0.5, source_.height, top, weight);
    const int bottom = std::min(top + 1, source_.height - 1);
    // Source columns from firstColumn_ on, as many as exist; the spare repeats the last.
    const int available = std::min(firstColumn_ + int(blended_.size()), source_.width) - firstColumn_;
    const uint32_t* topRow = source_.samples + size_t(top) * size_t(source_.pitch) + firstColumn_;
    const uint32_t* bottomRow = source_.samples + size_t(bottom) * size_t(source_.pitch) + firstColumn_;
    blendRows(topRow, bottomRow, weight, blended_.data(), available);
    std::fill(blended_.begin() + available, blended_.end(), blended_[size_t(available - 1)]);
    blendColumns(blended_.data(), leftTap_.data(), rightWeight_.data(), out.data(), int(leftTap_.size()));
}

}  // namespace qx::draw2d
