#include "platform/imaging/Filters.h"

#include "platform/imaging/Samples.h"

namespace qx::imaging {
namespace {

/// Where this thread's noise sequence stands: the index of the next draw.
thread_local uint32_t noiseCounter = 0;

/// A 32-bit integer hash with full avalanche (the "lowbias32" mixer): draw `i` of the
/// sequence is the hash of `i`, so a loop can compute its draws independently, and
/// vectorise.
inline uint32_t mixBits(uint32_t value)
{
    value ^= value >> 16;
    value *= 0x7FEB352Du;
    value ^= value >> 15;
    value *= 0x846CA68Bu;
    value ^= value >> 16;
    return value;
}

/// A whole number from -amplitude to +amplitude, from the top 16 bits of a draw.
inline int32_t offsetOf(uint32_t draw, int32_t amplitude)
{
    return int32_t(((draw >> 16) * uint32_t(2 * amplitude + 1)) >> 16) - amplitude;
}

}  // namespace

void seedNoise(uint32_t seed)
{
    noiseCounter = seed;
}

bool addNoise(BitmapHandle& bitmap, int32_t level, int32_t channel)
{
    if (bitmap.isNull() || level < 0 || channel < 0 || channel > int32_t(NoiseChannel::blue))
        return false;
    const int32_t amplitude = std::min(level, 1000) * 255 / 1000;
    const auto chosen = NoiseChannel(channel);
    // Masks rather than branches keep the loop branch-free.
    const int32_t onRed = chosen == NoiseChannel::all || chosen == NoiseChannel::red;
    const int32_t onGreen = chosen == NoiseChannel::all || chosen == NoiseChannel::green;
    const int32_t onBlue = chosen == NoiseChannel::all || chosen == NoiseChannel::blue;

    const auto samples = bitmap.pixels();
    const uint32_t base = noiseCounter;
    for (size_t i = 0; i < samples.size(); ++i) {
        const uint32_t draw = base + uint32_t(i) * 3u;
        const uint32_t sample = samples[i];
        samples[i] = withChannels(
            sample, clampChannel(redOf(sample) + onRed * offsetOf(mixBits(draw), amplitude)),
            clampChannel(greenOf(sample) + onGreen * offsetOf(mixBits(draw + 1), amplitude)),
            clampChannel(blueOf(sample) + onBlue * offsetOf(mixBits(draw + 2), amplitude)));
    }
    noiseCounter = base + uint32_t(samples.size()) * 3u;
    return true;
}

}  // namespace qx::imaging
