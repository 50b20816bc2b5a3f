#pragma once
// Drawing over frames with Cairo for the demo: captions on video frames, and frames
// scaled into a larger picture. Cairo's ARGB32 is the frame's byte order on a
// little-endian machine, but premultiplied, so frames are made opaque before Cairo sees
// them (for opaque samples both forms agree).
#include "apps/session/Frame.h"
#include "platform/draw2d/CairoHandles.h"

#include <string>

namespace qx::qxfx {

/// Sets every alpha to 255, as a video frame is shown.
void makeOpaque(Frame& frame);

/// A Cairo surface over the frame's samples; the frame must outlive it.
draw2d::CairoSurface surfaceOver(Frame& frame);

/// Draws `text` (UTF-8) with its top-left corner at (x, y), white on a dark band.
void drawCaption(cairo_t* cr, double x, double y, const std::string& text, double fontSize);

/// Draws `frame` scaled to `width` x `height` at (x, y).
void drawScaled(cairo_t* cr, Frame& frame, double x, double y, double width, double height);

}  // namespace qx::qxfx
