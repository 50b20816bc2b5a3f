#pragma once
// Colour operations on a bitmap handle. Each works in place on blue, green and red and
// leaves alpha as it is; each returns false, changing nothing, for a null handle or an
// argument it refuses.
#include "platform/imaging/BitmapHandle.h"

#include <cstdint>

namespace qx::imaging {

/// Rotates the hue of every sample by `degrees` in the HSV model (hexcone hue, value and
/// saturation kept): +120 turns red into green, any multiple of 360 changes nothing.
bool changeHue(BitmapHandle& bitmap, int32_t degrees);

/// Moves every sample towards or away from its Rec. 601 luma: -1000 gives that grey, 0
/// leaves the picture as it is, +1000 doubles each channel's distance from the grey.
/// Values beyond -1000..1000 are taken as those ends.
bool changeSaturation(BitmapHandle& bitmap, int32_t change);

/// Colours the picture with a tint. The picture seen through a filter of the tint colour
/// is its Rec. 601 luma times `red`, `green` and `blue` (thousandths of full intensity,
/// 0..1000). Each channel becomes original * `originalShare` / 1000 + filtered *
/// `tintShare` / 1000 + `brightness` * 255 / 1000, rounded and clamped. The colour effects
/// call it with brightness 0 and shares of 500 each: half picture, half tinted grey.
/// Shares are clamped to 0..1000, the brightness to -1000..1000.
bool tint(BitmapHandle& bitmap, int32_t brightness, int32_t originalShare, int32_t tintShare, int32_t red,
          int32_t green, int32_t blue);

/// Reduces each channel to `levels` evenly spaced values from 0 to 255, each sample taking
/// the nearest. Levels from 2 to 256 are accepted; 256 changes nothing.
bool posterize(BitmapHandle& bitmap, int32_t levels);

}  // namespace qx::imaging
