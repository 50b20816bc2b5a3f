#include "platform/imaging/Filters.h"

#include "platform/imaging/Samples.h"

#include <span>

namespace qx::imaging {
namespace {

/// Where this thread's noise sequence stands: the index of the next draw.
thread_local uint32_t noiseCounter = 0;

/// A 32-bit integer hash with full avalanche (the "lowbias32" mixer): draw `i` of the
/// sequence is the hash of `i`, so a loop can compute its draws independently, and
/// vectorise.
QX_IMAGING_INLINE uint32_t mixBits(uint32_t value)
{
    value ^= value >> 16;
    value *= 0x7FEB352Du;
    value ^= value >> 15;
    value *= 0x846CA68Bu;
    value ^= value >> 16;
    return value;
}

/// A whole number from -amplitude to +amplitude, from the top 16 bits of a draw.
QX_IMAGING_INLINE int32_t offsetOf(uint32_t draw, int32_t amplitude)
{
    return int32_t(((draw >> 16) * uint32_t(2 * amplitude + 1)) >> 16) - amplitude;
}

/// What one call adds: the channels it moves (1 or 0 each) and how far at most.
struct NoiseSpread {
    int32_t amplitude;
    int32_t onRed;
    int32_t onGreen;
    int32_t onBlue;
};

/// Adds noise to `samples`, sample `i` taking draws `base + 3 * i` to `base + 3 * i + 2`.
QX_IMAGING_INLINE void addNoiseTo(std::span<uint32_t> samples, uint32_t base, NoiseSpread spread)
{
    for (size_t i = 0; i < samples.size(); ++i) {
        const uint32_t draw = base + uint32_t(i) * 3u;
        const uint32_t sample = samples[i];
        auto moved = [&](int32_t channel, int32_t on, uint32_t index) {
            return clampChannel(channel + on * offsetOf(mixBits(index), spread.amplitude));
        };
        samples[i] = withChannels(sample, moved(redOf(sample), spread.onRed, draw),
                                  moved(greenOf(sample), spread.onGreen, draw + 1),
                                  moved(blueOf(sample), spread.onBlue, draw + 2));
    }
}

}  // namespace

void seedNoise(uint32_t seed) { noiseCounter = seed; }

bool addNoise(BitmapHandle& bitmap, int32_t level, int32_t channel)
{
    if (bitmap.isNull() || level < 0 || channel < 0 || channel > int32_t(NoiseChannel::blue)) return false;
    const int32_t amplitude = std::min(level, 1000) * 255 / 1000;
    const auto chosen = NoiseChannel(channel);
    // Masks rather than branches keep the loop branch-free.
    const NoiseSpread spread{
        .amplitude = amplitude,
        .onRed = chosen == NoiseChannel::all || chosen == NoiseChannel::red,
        .onGreen = chosen == NoiseChannel::all || chosen == NoiseChannel::green,
        .onBlue = chosen == NoiseChannel::all || chosen == NoiseChannel::blue,
    };
    const auto samples = bitmap.pixels();
    const uint32_t base = noiseCounter;
    // Below level 4 every offset is 0; the draws are still used up, so that the noise
    // that follows is the same as if they had been added.
    if (amplitude > 0) runVectorised<addNoiseTo>(samples, base, spread);
    noiseCounter = base + uint32_t(samples.size()) * 3u;
    return true;
}

}  // namespace qx::imaging
