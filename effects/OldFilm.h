#pragma once
// "Film ancien": worn film drawn on the picture (shake, hair curves, a vertical scratch,
// flashes) followed by posterise, noise, desaturation and blur. Draws from the C
// runtime's `rand`; ignores the progress.
#include "platform/com/HResult.h"

#include <array>

namespace qx::imaging {
class BitmapHandle;
}

namespace qx {

/// The vertical scratch kept from frame to frame: position (0 to 1000, beyond when
/// finished), speed, start column, end column.
using FilmState = std::array<float, 4>;

/// params: shake level, shake strength, hair count bound, scratch factor, flash strength,
/// noise level, posterise levels, desaturation, blur. `state` is the FilmState or null.
HRESULT OldFilmImage(imaging::BitmapHandle* handle, double progress, const LONG* params, LONG paramCount,
                     void* state);

}  // namespace qx
