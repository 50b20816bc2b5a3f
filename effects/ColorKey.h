#pragma once
// The colour key: samples within a tolerance of a colour become transparent black.
#include "platform/com/HResult.h"

namespace qx::draw2d {
class Bitmap;
}

namespace qx {

/// params[0] is the key colour (a COLORREF) and params[1] the tolerance per channel;
/// either at -1 sets no key, and the frame is drawn unchanged.
void ColorKeyFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);

}  // namespace qx
