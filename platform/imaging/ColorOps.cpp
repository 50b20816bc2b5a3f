#include "platform/imaging/ColorOps.h"

#include "platform/imaging/Divider16.h"
#include "platform/imaging/Samples.h"
#include "platform/os/WorkerPool.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

namespace qx::imaging {
namespace {

/// Share of the hexcone's range that channel `sextantOffset` (5 red, 3 green, 1 blue)
/// loses at hue `hue` (in sextants, 0..6): the piecewise-linear HSV-to-RGB curve.
QX_IMAGING_INLINE float hexconeDrop(float sextantOffset, float hue)
{
    const float turned = sextantOffset + hue;
    const float k = turned - (turned >= 6.0f ? 6.0f : 0.0f);
    return std::clamp(std::min(k, 4.0f - k), 0.0f, 1.0f);
}

/// One sample with its hue moved by `shift` sextants (0..6). Value (the largest channel)
/// and chroma (largest minus smallest) stay, so greys are untouched.
QX_IMAGING_INLINE uint32_t rotateHue(uint32_t sample, float shift)
{
    const float red = float(redOf(sample));
    const float green = float(greenOf(sample));
    const float blue = float(blueOf(sample));
    const float value = std::max(red, std::max(green, blue));
    const float chroma = value - std::min(red, std::min(green, blue));
    // Chroma is a whole number; when it is 0 every difference below is 0 too, so
    // dividing by 1 instead keeps the loop free of branches.
    const float inverse = 1.0f / std::max(chroma, 1.0f);
    // The sextant of the largest channel, and the other two's difference within it: one
    // multiply after the choice rather than one for each case (adding 0 changes nothing).
    const bool redLargest = value == red;
    const bool greenLargest = !redLargest && value == green;
    const float difference = redLargest ? green - blue : greenLargest ? blue - red : red - green;
    const float sextant = redLargest ? 0.0f : greenLargest ? 2.0f : 4.0f;
    float hue = difference * inverse + sextant;
    hue += shift;
    hue += hue < 0.0f ? 6.0f : 0.0f;
    hue -= hue >= 6.0f ? 6.0f : 0.0f;
    // The drop is within 0..1, so each channel lies between the smallest and the largest
    // of the sample and needs rounding only, no clamping.
    auto dropped = [&](float sextantOffset) {
        return int32_t(value - chroma * hexconeDrop(sextantOffset, hue) + 0.5f);
    };
    return withChannels(sample, dropped(5.0f), dropped(3.0f), dropped(1.0f));
}

/// The loop kernels below run on all samples of a picture through runVectorised.
QX_IMAGING_INLINE void rotateHues(std::span<uint32_t> samples, float shift)
{
    for (uint32_t& sample : samples) sample = rotateHue(sample, shift);
}

QX_IMAGING_INLINE void scaleSaturations(std::span<uint32_t> samples, int32_t factor)
{
    for (uint32_t& sample : samples) {
        const int32_t red = redOf(sample);
        const int32_t green = greenOf(sample);
        const int32_t blue = blueOf(sample);
        const int32_t luma = lumaOf(red, green, blue);
        auto scaled = [&](int32_t channel) { return clampChannel(luma + (((channel - luma) * factor + 32768) >> 16)); };
        sample = withChannels(sample, scaled(red), scaled(green), scaled(blue));
    }
}

/// The weights of a tint: of the original channel, of the luma per channel, and the
/// brightness added to all three.
struct TintMix {
    float keep;
    float lift;
    float redGain;
    float greenGain;
    float blueGain;
};

QX_IMAGING_INLINE void tintSamples(std::span<uint32_t> samples, TintMix mix)
{
    for (uint32_t& sample : samples) {
        const int32_t r = redOf(sample);
        const int32_t g = greenOf(sample);
        const int32_t b = blueOf(sample);
        const float luma = float(lumaOf(r, g, b));
        sample = withChannels(sample, roundChannel(float(r) * mix.keep + luma * mix.redGain + mix.lift),
                              roundChannel(float(g) * mix.keep + luma * mix.greenGain + mix.lift),
                              roundChannel(float(b) * mix.keep + luma * mix.blueGain + mix.lift));
    }
}

/// Posterizing in arithmetic rather than through a table, so that the loop vectorises:
/// the level is (value * steps + 127) / 255 and its value (level * 255 + steps / 2) /
/// steps, both divisions 16-bit high multiplies.
struct LevelDividers {
    uint16_t steps;
    Divider16 byRange;
    Divider16 bySteps;
};

/// The dividers for `steps` + 1 levels; none where a division has no 16-bit divider.
std::optional<LevelDividers> levelDividers(int32_t steps)
{
    const uint32_t largest = 255 * uint32_t(steps) + 127;
    const auto byRange = findDivider16(255, largest);
    const auto bySteps = findDivider16(uint32_t(steps), largest);
    if (!byRange || !bySteps) return std::nullopt;
    return LevelDividers{uint16_t(steps), *byRange, *bySteps};
}

QX_IMAGING_INLINE int32_t posterized(uint32_t value, const LevelDividers& dividers)
{
    const uint32_t level = dividers.byRange.quotient(value * dividers.steps + 127);
    return int32_t(dividers.bySteps.quotient(level * 255 + dividers.steps / 2u));
}

/// What the dividers give for every value, to be checked against the table.
std::array<uint8_t, 256> posterizedTable(const LevelDividers& dividers)
{
    std::array<uint8_t, 256> table{};
    for (size_t value = 0; value < table.size(); ++value) table[value] = uint8_t(posterized(uint32_t(value), dividers));
    return table;
}

/// Posterizes the blue, green and red of every sample, alpha kept.
QX_IMAGING_INLINE void posterizeSamples(std::span<uint32_t> samples, LevelDividers dividers)
{
    for (uint32_t& sample : samples) {
        sample = withChannels(sample, posterized(uint32_t(redOf(sample)), dividers),
                              posterized(uint32_t(greenOf(sample)), dividers),
                              posterized(uint32_t(blueOf(sample)), dividers));
    }
}

/// Maps blue, green and red of every sample through one table.
void mapChannels(BitmapHandle& bitmap, const std::array<uint8_t, 256>& table)
{
    for (uint32_t& sample : bitmap.pixels()) {
        sample = withChannels(sample, table[size_t(redOf(sample))], table[size_t(greenOf(sample))],
                              table[size_t(blueOf(sample))]);
    }
}

/// Runs a per-sample kernel over the picture in slices of rows on the shared worker
/// threads: each sample's result depends on that sample alone.
template <auto Kernel, class Arg>
void runOnRows(BitmapHandle& bitmap, Arg argument)
{
    const std::span<uint32_t> samples = bitmap.pixels();
    const size_t width = size_t(bitmap.width());
    os::parallelRows(bitmap.height(), [&](int begin, int end) {
        runVectorised<Kernel>(samples.subspan(size_t(begin) * width, size_t(end - begin) * width), argument);
    });
}

}  // namespace

bool changeHue(BitmapHandle& bitmap, int32_t degrees)
{
    if (bitmap.isNull()) return false;
    const int32_t turn = (degrees % 360 + 360) % 360;
    const float shift = float(turn) / 60.0f;
    // A whole turn gives every 24-bit colour back exactly, so the pixels are left alone.
    if (turn != 0) runOnRows<rotateHues>(bitmap, shift);
    return true;
}

bool changeSaturation(BitmapHandle& bitmap, int32_t change)
{
    if (bitmap.isNull()) return false;
    // Distance from the grey scaled by (1000 + change) / 1000, in 16-bit fixed point:
    // 65536 at 0 keeps every channel exactly, 0 at -1000 leaves only the luma.
    const int32_t factor = (1000 + std::clamp(change, -1000, 1000)) * 65536 / 1000;
    if (factor != 65536) runOnRows<scaleSaturations>(bitmap, factor);
    return true;
}

bool tint(BitmapHandle& bitmap, int32_t brightness, int32_t originalShare, int32_t tintShare, int32_t red,
          int32_t green, int32_t blue)
{
    if (bitmap.isNull()) return false;
    const float filter = float(std::clamp(tintShare, 0, 1000)) / 1000.0f;
    const TintMix mix{
        .keep = float(std::clamp(originalShare, 0, 1000)) / 1000.0f,
        .lift = float(std::clamp(brightness, -1000, 1000)) * 255.0f / 1000.0f,
        .redGain = filter * float(std::clamp(red, 0, 1000)) / 1000.0f,
        .greenGain = filter * float(std::clamp(green, 0, 1000)) / 1000.0f,
        .blueGain = filter * float(std::clamp(blue, 0, 1000)) / 1000.0f,
    };
    runOnRows<tintSamples>(bitmap, mix);
    return true;
}

bool posterize(BitmapHandle& bitmap, int32_t levels)
{
    if (bitmap.isNull() || levels < 2 || levels > 256) return false;
    const int32_t steps = levels - 1;
    std::array<uint8_t, 256> table{};
    for (int32_t value = 0; value < 256; ++value) {
        const int32_t level = (value * steps + 127) / 255;
        table[size_t(value)] = uint8_t((level * 255 + steps / 2) / steps);
    }
    if (levels == 256) return true;  // every value is its own level
    // Without AVX2 the multiplies of 32-bit lanes are emulated, and the table is faster.
    const auto dividers = levelDividers(steps);
    if (activeVectorLevel() != VectorLevel::baseline && dividers &&
        std::ranges::equal(table, posterizedTable(*dividers)))
        runOnRows<posterizeSamples>(bitmap, *dividers);
    else
        mapChannels(bitmap, table);
    return true;
}

}  // namespace qx::imaging
