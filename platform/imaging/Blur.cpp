#include "platform/imaging/Filters.h"

#include "platform/imaging/Divider16.h"
#include "platform/imaging/NarrowBlur.h"
#include "platform/imaging/PaddedRow.h"
#include "platform/imaging/Samples.h"
#include "platform/pixel/FrameMemory.h"

#include <array>
#include <cmath>
#include <cstring>
#include <numbers>
#include <optional>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qx::imaging {
namespace {

/// Sums of the four byte channels of several samples.
struct ChannelSums {
    std::array<uint32_t, 4> sum{};

    void add(uint32_t sample)
    {
        for (size_t c = 0; c < 4; ++c) sum[c] += (sample >> (8 * c)) & 0xFF;
    }
};

QX_IMAGING_INLINE uint32_t meanOf(uint32_t sum, float inverse)
{
    // Signed conversions, one vector instruction each where the unsigned ones are
    // several: a window sum stays below 2^31 for any window under 8 million samples,
    // and the mean is at most 255.5.
    return uint32_t(int32_t(float(int32_t(sum)) * inverse + 0.5f));
}

/// The colour channels of `sums` divided by the window, with the alpha of `original`.
inline uint32_t meanSample(uint32_t original, const uint32_t* sums, float inverse)
{
    return alphaBitsOf(original) | meanOf(sums[0], inverse) | (meanOf(sums[1], inverse) << 8) |
           (meanOf(sums[2], inverse) << 16);
}

/// Writes the means of `sums`, one per byte of a row, to `out`.
QX_IMAGING_INLINE void writeMeans(const uint32_t* __restrict sums, uint8_t* __restrict out, size_t count, float inverse)
{
    for (size_t j = 0; j < count; ++j) out[j] = uint8_t(meanOf(sums[j], inverse));
}

/// Writes the means of `sums` to the blue, green and red bytes of `out`, leaving its
/// alpha bytes as they are.
QX_IMAGING_INLINE void writeColourMeans(const uint32_t* __restrict sums, uint8_t* __restrict out, size_t count,
                                        float inverse)
{
    for (size_t j = 0; j < count; ++j) out[j] = (j & 3) == 3 ? out[j] : uint8_t(meanOf(sums[j], inverse));
}

/// The working rows of a box blur: a row with its edges repeated (one more sample after
/// it than the window needs, read but never summed), and the window sums for one row,
/// one per byte.
struct BlurScratch {
    std::span<uint32_t> padded;
    std::span<uint32_t> sums;
};

/// The four channels of a sample as one vector of sums (GCC vector extensions, which
/// every target has: the running sums below move all four channels in one instruction).
using ChannelVector = uint32_t __attribute__((vector_size(16)));

QX_IMAGING_INLINE ChannelVector channelsAt(const uint8_t* bytes)
{
    uint32_t sample = 0;
    std::memcpy(&sample, bytes, sizeof sample);
#if defined(__SSE2__)
    // Unpacking with zeros is in every x86-64 processor; shifts by a vector of counts
    // (below) come only with AVX2.
    const __m128i zero = _mm_setzero_si128();
    const __m128i words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(int32_t(sample)), zero);
    return ChannelVector(_mm_unpacklo_epi16(words, zero));
#else
    const ChannelVector spread{sample, sample, sample, sample};
    return (spread >> ChannelVector{0, 8, 16, 24}) & 0xFFu;
#endif
}

/// Window sums along one padded row, per byte: running sums of four channels at once.
QX_IMAGING_INLINE void slideAlongRow(const uint8_t* padded, uint32_t* sums, size_t width, int32_t radius)
{
    const size_t windowBytes = 4 * size_t(2 * radius + 1);
    ChannelVector window{};
    for (size_t j = 0; j < windowBytes; j += 4) window += channelsAt(padded + j);
    for (size_t j = 0; j < 4 * width; j += 4) {
        std::memcpy(sums + j, &window, sizeof window);
        window += channelsAt(padded + j + windowBytes) - channelsAt(padded + j);
    }
}

/// The horizontal pass: each row of `bitmap` blurred along itself into `out`.
QX_IMAGING_INLINE void blurRows(const BitmapHandle& bitmap, std::span<uint32_t> out, BlurScratch scratch,
                                int32_t radius, float inverse)
{
    const size_t width = size_t(bitmap.width());
    const auto* padded = reinterpret_cast<const uint8_t*>(scratch.padded.data());
    for (int32_t y = 0; y < bitmap.height(); ++y) {
        const auto row = bitmap.row(y);
        padRow(row, scratch.padded, radius);
        slideAlongRow(padded, scratch.sums.data(), width, radius);
        writeMeans(scratch.sums.data(), reinterpret_cast<uint8_t*>(out.data() + size_t(y) * width), 4 * width, inverse);
    }
}

/// Adds the bytes of one row to column sums.
QX_IMAGING_INLINE void addRow(uint32_t* sums, const uint8_t* row, size_t count)
{
    for (size_t j = 0; j < count; ++j) sums[j] += row[j];
}

/// Moves column sums one row down: adds the bytes of the row entering the window and
/// takes away those of the row leaving it.
QX_IMAGING_INLINE void slideDown(uint32_t* sums, const uint8_t* entering, const uint8_t* leaving, size_t count)
{
    for (size_t j = 0; j < count; ++j) sums[j] += uint32_t(entering[j]) - uint32_t(leaving[j]);
}

/// The vertical pass: running window sums down the columns of `in`, a row of sums at a
/// time so the work on a row is a plain loop across it, written into `bitmap`.
QX_IMAGING_INLINE void blurColumns(std::span<const uint32_t> in, BitmapHandle& bitmap, std::span<uint32_t> sums,
                                   int32_t radius, float inverse)
{
    const size_t count = 4 * size_t(bitmap.width());
    const int32_t last = bitmap.height() - 1;
    const auto* bytes = reinterpret_cast<const uint8_t*>(in.data());
    auto rowAt = [&](int32_t y) { return bytes + size_t(std::clamp(y, 0, last)) * count; };
    std::fill(sums.begin(), sums.end(), 0u);
    for (int32_t k = -radius; k <= radius; ++k) addRow(sums.data(), rowAt(k), count);
    for (int32_t y = 0; y <= last; ++y) {
        auto* out = reinterpret_cast<uint8_t*>(bitmap.row(y).data());
        writeColourMeans(sums.data(), out, count, inverse);
        slideDown(sums.data(), rowAt(y + radius + 1), rowAt(y - radius), count);
    }
}

/// Both passes of a box blur, compiled as one vectorised kernel.
QX_IMAGING_INLINE void boxBlur(BitmapHandle& bitmap, std::span<uint32_t> rows, BlurScratch scratch, int32_t radius,
                               float inverse)
{
    blurRows(bitmap, rows, scratch, radius, inverse);
    blurColumns(rows, bitmap, scratch.sums, radius, inverse);
}

struct Step {
    int32_t dx;
    int32_t dy;
};

/// The whole-sample offsets of a motion blur's run, first to last.
std::vector<Step> motionSteps(int32_t length, int32_t angle, bool oneDirection)
{
    const double radians = double(angle) / 100.0 * std::numbers::pi / 180.0;
    const double cosine = std::cos(radians);
    const double sine = std::sin(radians);
    const int32_t first = oneDirection ? 0 : -((length - 1) / 2);
    std::vector<Step> steps;
    steps.reserve(size_t(length));
    for (int32_t k = first; k < first + length; ++k) {
        // Rows grow downwards, so a counter-clockwise angle moves towards smaller y.
        steps.push_back({int32_t(std::lround(k * cosine)), int32_t(std::lround(-k * sine))});
    }
    return steps;
}

int32_t largerSide(const BitmapHandle& bitmap) { return std::max(bitmap.width(), bitmap.height()); }

/// The way a run goes when it lies straight along the column and starts at the sample
/// itself: -1 towards row 0, +1 towards the last row. Nothing for any other run.
std::optional<int32_t> columnRunDirection(std::span<const Step> steps)
{
    for (const int32_t direction : {-1, 1}) {
        bool straight = true;
        for (size_t k = 0; k < steps.size() && straight; ++k)
            straight = steps[k].dx == 0 && steps[k].dy == direction * int32_t(k);
        if (straight) return direction;
    }
    return std::nullopt;
}

/// The scratch of a column run: window sums, one per byte of a row, and the means of a
/// row before they go into its colour bytes.
struct ColumnScratch {
    std::span<uint32_t> sums;
    std::span<uint8_t> means;
};

/// Writes the means into the colour bytes of `row`; its alpha bytes stay. A loop of
/// its own, on whole samples, so that the loop over bytes has no lane to skip.
QX_IMAGING_INLINE void writeColourBytes(uint8_t* __restrict row, const uint8_t* __restrict means, size_t count)
{
    for (size_t j = 0; j < count; j += 4) {
        uint32_t sample = 0;
        uint32_t mean = 0;
        std::memcpy(&sample, row + j, 4);
        std::memcpy(&mean, means + j, 4);
        sample = (sample & 0xFF000000u) | (mean & 0x00FFFFFFu);
        std::memcpy(row + j, &sample, 4);
    }
}

/// One row of a column run: the means of the window sums go into the colour bytes of
/// `row`, and the sums move on: the bytes of `entering` join the window and those of
/// `row`, read before it changes, leave it.
QX_IMAGING_INLINE void slideAlongColumn(ColumnScratch scratch, float inverse, uint8_t* __restrict row,
                                        const uint8_t* __restrict entering)
{
    uint32_t* __restrict sums = scratch.sums.data();
    uint8_t* __restrict means = scratch.means.data();
    const size_t count = scratch.sums.size();
    for (size_t j = 0; j < count; ++j) {
        means[j] = uint8_t(meanOf(sums[j], inverse));
        sums[j] += uint32_t(entering[j]) - uint32_t(row[j]);
    }
    writeColourBytes(row, means, count);
}

/// The rows of a column run in the order it visits them: in the run's own direction,
/// so that every row a later window reads is still unchanged; and for each row, the one
/// whose bytes join the window after it (the edge row held beyond the picture).
struct ColumnRows {
    BitmapHandle& bitmap;
    int32_t length;
    int32_t direction;

    int32_t last() const { return bitmap.height() - 1; }
    int32_t first() const { return direction < 0 ? last() : 0; }
    uint8_t* at(int32_t y) const { return reinterpret_cast<uint8_t*>(bitmap.row(std::clamp(y, 0, last())).data()); }
    /// The i-th row visited, and the row that joins the window after it.
    uint8_t* visited(int32_t i) const { return at(first() + direction * i); }
    const uint8_t* entering(int32_t i) const { return at(first() + direction * (i + length)); }
};

/// A motion blur whose run goes straight along the columns from each sample, in place,
/// in 32-bit sums and the float mean of the other blurs.
QX_IMAGING_INLINE void blurAlongColumns(ColumnRows rows, ColumnScratch scratch, float inverse)
{
    const size_t count = scratch.sums.size();
    std::fill(scratch.sums.begin(), scratch.sums.end(), 0u);
    for (int32_t k = 0; k < rows.length; ++k) addRow(scratch.sums.data(), rows.visited(k), count);
    for (int32_t i = 0; i < rows.last(); ++i) slideAlongColumn(scratch, inverse, rows.visited(i), rows.entering(i));
    // The row at the far end: its window is complete, and no window follows it.
    writeColourMeans(scratch.sums.data(), rows.visited(rows.last()), count, inverse);
}

/// The divisor of the 16-bit way for a run of `length`, where one gives the float mean
/// for every sum the run can hold, ties included.
std::optional<WindowDivisor> runDivisor(int32_t length, float inverse)
{
    const uint32_t largest = 255u * uint32_t(length);
    const auto bias = uint16_t(length / 2);
    const auto divider = findDivider16(uint32_t(length), largest + bias);
    if (!divider) return std::nullopt;
    const WindowDivisor divisor{*divider, bias};
    for (uint32_t sum = 0; sum <= largest; ++sum)
        if (divisor.meanOf(sum) != meanOf(sum, inverse)) return std::nullopt;
    return divisor;
}

/// The column run, in 16-bit sums with AVX2 where the run has an exact divisor (sixteen
/// channels to an instruction, twice the 32-bit way), else in 32-bit sums.
void blurAlongColumnsAnyWay(ColumnRows rows, float inverse)
{
    const size_t count = 4 * size_t(rows.bitmap.width());
#if defined(__x86_64__)
    if (activeVectorLevel() != VectorLevel::baseline) {
        if (const auto divisor = runDivisor(rows.length, inverse)) {
            std::vector<uint16_t> sums(count);
            for (int32_t k = 0; k < rows.length; ++k) addRowNarrow(sums, rows.visited(k));
            for (int32_t i = 0; i < rows.last(); ++i)
                blurColumnsNarrow(sums, rows.visited(i), rows.entering(i), rows.visited(i), *divisor);
            uint8_t* lastRow = rows.visited(rows.last());
            blurColumnsNarrow(sums, lastRow, lastRow, lastRow, *divisor);  // the sums are not needed after it
            return;
        }
    }
#endif
    std::vector<uint32_t> sums(count);
    std::vector<uint8_t> means(count);
    runVectorised<blurAlongColumns>(rows, ColumnScratch{sums, means}, inverse);
}

}  // namespace

bool blur(BitmapHandle& bitmap, int32_t size)
{
    if (bitmap.isNull() || size < 0) return false;
    const int32_t radius = std::min(size, largerSide(bitmap));
    if (radius == 0 || blurNarrow(bitmap, radius)) return true;
    const float inverse = 1.0f / float(2 * radius + 1);
    const size_t width = size_t(bitmap.width());
    // The blurred rows take a whole frame; reused frame memory spares the page faults
    // of a fresh block on every call.
    const auto rows = pixel::allocateFrameMemory(bitmap.pixels().size());
    if (!rows) return false;
    std::vector<uint32_t> padded(width + 2 * size_t(radius) + 1);
    std::vector<uint32_t> sums(4 * width);
    runVectorised<boxBlur>(bitmap, std::span<uint32_t>(rows.get(), bitmap.pixels().size()), BlurScratch{padded, sums},
                           radius, inverse);
    return true;
}

bool motionBlur(BitmapHandle& bitmap, int32_t length, int32_t angle, bool oneDirection)
{
    if (bitmap.isNull() || length < 1) return false;
    const int32_t runLength = std::min(length, largerSide(bitmap));
    if (runLength == 1) return true;
    const auto steps = motionSteps(runLength, angle, oneDirection);
    const float inverse = 1.0f / float(runLength);
    if (const auto direction = columnRunDirection(steps)) {
        // Along the columns the run needs no copy of the picture and no per-sample walk.
        blurAlongColumnsAnyWay(ColumnRows{bitmap, runLength, *direction}, inverse);
        return true;
    }
    const std::vector<uint32_t> source(bitmap.pixels().begin(), bitmap.pixels().end());
    const int32_t width = bitmap.width();
    const int32_t height = bitmap.height();
    for (int32_t y = 0; y < height; ++y) {
        auto out = bitmap.row(y);
        for (int32_t x = 0; x < width; ++x) {
            ChannelSums run;
            for (const Step& step : steps) {
                const int32_t sx = std::clamp(x + step.dx, 0, width - 1);
                const int32_t sy = std::clamp(y + step.dy, 0, height - 1);
                run.add(source[size_t(sy) * size_t(width) + size_t(sx)]);
            }
            out[size_t(x)] = meanSample(out[size_t(x)], run.sum.data(), inverse);
        }
    }
    return true;
}

}  // namespace qx::imaging
