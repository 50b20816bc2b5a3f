#pragma once
// Pan and zoom: seven effects that move a virtual camera over the frame. Each redraws the
// frame on itself from a copy; what the moved picture does not cover is transparent
// black. Rectangles come in thousandths of the frame (left, top, right, bottom), so they
// hold for every frame size; the motion is linear in the progress.
#include "platform/com/HResult.h"

namespace qx::draw2d {
class Bitmap;
}

namespace qx {

/// From the parameter rectangle, enlarged, out to the whole frame.
void ZoomOutFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);
/// From the whole frame in to the parameter rectangle.
void ZoomInFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);
/// The frame, enlarged until the parameter rectangle fills the output, slides to the right.
void PanLeftToRightFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);
void PanRightToLeftFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);
void PanTopToBottomFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);
void PanBottomToTopFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);
/// A view that moves from the source rectangle (params 0 to 3) to the destination
/// rectangle (params 4 to 7), always filling the output.
void FreeMoveFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);

}  // namespace qx
