#include "platform/imaging/Filters.h"

#include "platform/imaging/Samples.h"

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace qx::imaging {
namespace {

/// Sums of the four byte channels of several samples.
struct ChannelSums {
    std::array<uint32_t, 4> sum{};

    void add(uint32_t sample)
    {
        for (size_t c = 0; c < 4; ++c)
            sum[c] += (sample >> (8 * c)) & 0xFF;
    }
    void remove(uint32_t sample)
    {
        for (size_t c = 0; c < 4; ++c)
            sum[c] -= (sample >> (8 * c)) & 0xFF;
    }
};

inline uint32_t meanOf(uint32_t sum, float inverse)
{
    return uint32_t(float(sum) * inverse + 0.5f);
}

/// The colour channels of `sums` divided by the window, with the alpha of `original`.
inline uint32_t meanSample(uint32_t original, const uint32_t* sums, float inverse)
{
    return alphaBitsOf(original) | meanOf(sums[0], inverse) | (meanOf(sums[1], inverse) << 8) |
           (meanOf(sums[2], inverse) << 16);
}

/// Running window sum along one row, the edge samples repeated past the ends.
void blurRow(std::span<const uint32_t> in, std::span<uint32_t> out, int32_t radius, float inverse)
{
    const int32_t last = int32_t(in.size()) - 1;
    auto at = [&](int32_t x) { return in[size_t(std::clamp(x, 0, last))]; };
    ChannelSums window;
    for (int32_t k = -radius; k <= radius; ++k)
        window.add(at(k));
    for (int32_t x = 0; x <= last; ++x) {
        out[size_t(x)] = meanSample(in[size_t(x)], window.sum.data(), inverse);
        window.add(at(x + radius + 1));
        window.remove(at(x - radius));
    }
}

/// Adds (or with `sign` -1 takes away) the bytes of one row to per-byte column sums.
void accumulateRow(std::vector<uint32_t>& sums, std::span<const uint32_t> row, uint32_t sign)
{
    const auto* bytes = reinterpret_cast<const uint8_t*>(row.data());
    for (size_t j = 0; j < sums.size(); ++j)
        sums[j] += sign * bytes[j];
}

/// Running window sum down the columns, one row of sums at a time so the work on a row
/// is a plain loop across it.
void blurColumns(const std::vector<uint32_t>& in, BitmapHandle& bitmap, int32_t radius, float inverse)
{
    const int32_t width = bitmap.width();
    const int32_t last = bitmap.height() - 1;
    auto rowAt = [&](int32_t y) {
        return std::span<const uint32_t>(in).subspan(size_t(std::clamp(y, 0, last)) * size_t(width),
                                                     size_t(width));
    };
    std::vector<uint32_t> sums(size_t(width) * 4, 0);
    for (int32_t k = -radius; k <= radius; ++k)
        accumulateRow(sums, rowAt(k), 1u);
    for (int32_t y = 0; y <= last; ++y) {
        auto out = bitmap.row(y);
        for (int32_t x = 0; x < width; ++x)
            out[size_t(x)] = meanSample(out[size_t(x)], &sums[size_t(x) * 4], inverse);
        accumulateRow(sums, rowAt(y + radius + 1), 1u);
        accumulateRow(sums, rowAt(y - radius), uint32_t(-1));
    }
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

int32_t largerSide(const BitmapHandle& bitmap)
{
    return std::max(bitmap.width(), bitmap.height());
}

}  // namespace

bool blur(BitmapHandle& bitmap, int32_t size)
{
    if (bitmap.isNull() || size < 0)
        return false;
    const int32_t radius = std::min(size, largerSide(bitmap));
    if (radius == 0)
        return true;
    const float inverse = 1.0f / float(2 * radius + 1);
    const size_t width = size_t(bitmap.width());
    std::vector<uint32_t> rows(bitmap.pixels().size());
    for (int32_t y = 0; y < bitmap.height(); ++y)
        blurRow(bitmap.row(y), std::span<uint32_t>(rows).subspan(size_t(y) * width, width), radius, inverse);
    blurColumns(rows, bitmap, radius, inverse);
    return true;
}

bool motionBlur(BitmapHandle& bitmap, int32_t length, int32_t angle, bool oneDirection)
{
    if (bitmap.isNull() || length < 1)
        return false;
    const int32_t runLength = std::min(length, largerSide(bitmap));
    if (runLength == 1)
        return true;
    const auto steps = motionSteps(runLength, angle, oneDirection);
    const std::vector<uint32_t> source(bitmap.pixels().begin(), bitmap.pixels().end());
    const int32_t width = bitmap.width();
    const int32_t height = bitmap.height();
    const float inverse = 1.0f / float(runLength);
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
