#pragma once
// Fades through a colour: the colour of params[0] (a COLORREF, black by default) covers
// the frame with an opacity that follows the progress.
#include "platform/com/HResult.h"

namespace qx::draw2d {
class Bitmap;
}

namespace qx {

/// "Apparition en fondu": the colour covers the frame at the start and is gone at the end.
void FadeInFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);
/// "Disparition en fondu": the reverse.
void FadeOutFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);

}  // namespace qx
