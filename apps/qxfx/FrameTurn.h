#pragma once
// Quarter turns of a frame, to show clips upright whose picture is stored on its side
// (a phone's clip held upright carries a display matrix rather than turned samples).
#include "apps/session/Frame.h"

namespace qx::qxfx {

/// `frame` turned clockwise by `degrees` (0, 90, 180 or 270) into `turned`, which takes
/// the turned size; CommandError for any other angle.
void turnClockwise(const Frame& frame, int degrees, Frame& turned);

}  // namespace qx::qxfx
