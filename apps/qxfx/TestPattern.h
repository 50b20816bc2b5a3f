#pragma once
// The built-in test picture, for runs without an input file: colour bars, a grey ramp, a
// grid and a disc that travels across the frame, so that moves, zooms, colour changes
// and the passing of time all show.
#include "apps/session/Frame.h"

namespace qx::qxfx {

/// Draws frame `index` of `count` of the pattern into `frame` (opaque samples).
void drawTestPattern(Frame& frame, int index, int count);

}  // namespace qx::qxfx
