#pragma once
// Noise and blurs on a bitmap handle. Each works in place on blue, green and red, leaves
// alpha as it is, and returns false, changing nothing, for a null handle or an argument
// it refuses.
#include "platform/imaging/BitmapHandle.h"

#include <cstdint>

namespace qx::imaging {

/// The channels noise is added to; the numbers are those callers pass.
enum class NoiseChannel : int32_t { all = 0, red = 1, green = 2, blue = 3 };

/// Adds uniform noise to the chosen channels: each channel of each sample moves by an
/// independent whole number from -A to +A, with A = `level` * 255 / 1000 (the level is in
/// tenths of a percent of full intensity, 0..1000; larger levels are taken as 1000).
/// The noise comes from this thread's own counter-based generator, not from the process
/// `rand`: each call goes on where the last one stopped, and a thread that starts (or is
/// reseeded with `seedNoise`) from the same seed draws the same noise.
bool addNoise(BitmapHandle& bitmap, int32_t level, int32_t channel);

/// Restarts this thread's noise generator at `seed` (every thread starts at 0).
void seedNoise(uint32_t seed);

/// Box blur: each sample becomes the mean of the (2 * size + 1) square around it, the
/// edge samples repeated beyond the border. Size 0 changes nothing; sizes beyond the
/// picture's larger side act as that side.
bool blur(BitmapHandle& bitmap, int32_t size);

/// Motion blur of `length` samples along `angle` (hundredths of a degree, counter-
/// clockwise from the rightward direction as the picture is seen, so 9000 points to row
/// 0). One-directional: each sample becomes the mean of itself and the `length` - 1
/// samples that follow it along the angle. Otherwise the run is centred on the sample.
/// Positions are rounded to whole samples and held at the border. Length 1 changes
/// nothing; lengths beyond the picture's larger side act as that side.
bool motionBlur(BitmapHandle& bitmap, int32_t length, int32_t angle, bool oneDirection);

}  // namespace qx::imaging
