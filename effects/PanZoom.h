#pragma once
// Pan and zoom: seven effects that move a virtual camera over the frame. Each redraws the
// frame on itself from a copy; what the moved picture does not cover is transparent
// black. Rectangles come in thousandths of the frame (left, top, right, bottom), so they
// hold for every frame size; the motion is linear in the progress.
#include "effects/EffectDescriptor.h"

namespace qx {

/// From the parameter rectangle, enlarged, out to the whole frame.
void ZoomOutFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);
/// From the whole frame in to the parameter rectangle.
void ZoomInFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);
/// The frame, enlarged until the parameter rectangle fills the output, slides to the right.
void PanLeftToRightFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);
void PanRightToLeftFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);
void PanTopToBottomFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);
void PanBottomToTopFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);
/// A view that moves from the source rectangle to the destination rectangle, always
/// filling the output.
void FreeMoveFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);

namespace effect_id {
inline constexpr LONG kZoomOut = 0;
inline constexpr LONG kZoomIn = 1;
inline constexpr LONG kPanLeftToRight = 2;
inline constexpr LONG kPanRightToLeft = 3;
inline constexpr LONG kPanTopToBottom = 4;
inline constexpr LONG kPanBottomToTop = 5;
inline constexpr LONG kFreeMove = 6;
}  // namespace effect_id

/// The slots of the zooms and the pans: one rectangle.
struct RectangleParam {
    enum Slot : int { kLeft, kTop, kRight, kBottom };
};

/// The slots of the free move: the rectangle at the start, then the one at the end.
struct FreeMoveParam {
    enum Slot : int {
        kSourceLeft,
        kSourceTop,
        kSourceRight,
        kSourceBottom,
        kDestinationLeft,
        kDestinationTop,
        kDestinationRight,
        kDestinationBottom,
    };
};

// The rectangle picker of the dialog keeps every side inside the picture: 0 to 1000.
inline constexpr std::array<ParamDescriptor, 4> kZoomParams{{
    {RectangleParam::kLeft, "left",
     "Left side of the region that fills the frame when zoomed in, in thousandths of the width", 100, 0, 1000,
     ParamKind::RectangleSide, "Gauche :"},
    {RectangleParam::kTop, "top", "Top side of that region, in thousandths of the height", 100, 0, 1000,
     ParamKind::RectangleSide, "Haut :"},
    {RectangleParam::kRight, "right", "Right side of that region, in thousandths of the width", 900, 0, 1000,
     ParamKind::RectangleSide, "Droite :"},
    {RectangleParam::kBottom, "bottom", "Bottom side of that region, in thousandths of the height", 900, 0, 1000,
     ParamKind::RectangleSide, "Bas :"},
}};

inline constexpr std::array<ParamDescriptor, 4> kPanParams{{
    {RectangleParam::kLeft, "left",
     "Left side of the region that fills the output, in thousandths of the width; a vertical pan keeps it on the "
     "left edge",
     250, 0, 1000, ParamKind::RectangleSide, "Gauche :"},
    {RectangleParam::kTop, "top",
     "Top side of that region, in thousandths of the height; a horizontal pan keeps it on the top edge", 250, 0, 1000,
     ParamKind::RectangleSide, "Haut :"},
    {RectangleParam::kRight, "right", "Right side of that region, in thousandths of the width", 750, 0, 1000,
     ParamKind::RectangleSide, "Droite :"},
    {RectangleParam::kBottom, "bottom", "Bottom side of that region, in thousandths of the height", 750, 0, 1000,
     ParamKind::RectangleSide, "Bas :"},
}};

inline constexpr std::array<ParamDescriptor, 8> kFreeMoveParams{{
    {FreeMoveParam::kSourceLeft, "source left", "Left side of the view at the start, in thousandths of the width", 0, 0,
     1000, ParamKind::RectangleSide, "Gauche :"},
    {FreeMoveParam::kSourceTop, "source top", "Top side of the view at the start, in thousandths of the height", 0, 0,
     1000, ParamKind::RectangleSide, "Haut :"},
    {FreeMoveParam::kSourceRight, "source right", "Right side of the view at the start, in thousandths of the width",
     500, 0, 1000, ParamKind::RectangleSide, "Droite :"},
    {FreeMoveParam::kSourceBottom, "source bottom",
     "Bottom side of the view at the start, in thousandths of the height", 500, 0, 1000, ParamKind::RectangleSide,
     "Bas :"},
    {FreeMoveParam::kDestinationLeft, "destination left",
     "Left side of the view at the end, in thousandths of the width", 500, 0, 1000, ParamKind::RectangleSide,
     "Gauche :"},
    {FreeMoveParam::kDestinationTop, "destination top", "Top side of the view at the end, in thousandths of the height",
     500, 0, 1000, ParamKind::RectangleSide, "Haut :"},
    {FreeMoveParam::kDestinationRight, "destination right",
     "Right side of the view at the end, in thousandths of the width", 1000, 0, 1000, ParamKind::RectangleSide,
     "Droite :"},
    {FreeMoveParam::kDestinationBottom, "destination bottom",
     "Bottom side of the view at the end, in thousandths of the height", 1000, 0, 1000, ParamKind::RectangleSide,
     "Bas :"},
}};

inline constexpr EffectDescriptor kZoomOutEffect{.id = effect_id::kZoomOut,
                                                 .nameStringId = 101,
                                                 .frameRoutine = plainRoutine<ZoomOutFrame>,
                                                 .hasDialog = 1,
                                                 .params = kZoomParams};
inline constexpr EffectDescriptor kZoomInEffect{.id = effect_id::kZoomIn,
                                                .nameStringId = 102,
                                                .frameRoutine = plainRoutine<ZoomInFrame>,
                                                .hasDialog = 1,
                                                .params = kZoomParams};
inline constexpr EffectDescriptor kPanLeftToRightEffect{.id = effect_id::kPanLeftToRight,
                                                        .nameStringId = 103,
                                                        .frameRoutine = plainRoutine<PanLeftToRightFrame>,
                                                        .hasDialog = 1,
                                                        .params = kPanParams};
inline constexpr EffectDescriptor kPanRightToLeftEffect{.id = effect_id::kPanRightToLeft,
                                                        .nameStringId = 104,
                                                        .frameRoutine = plainRoutine<PanRightToLeftFrame>,
                                                        .hasDialog = 1,
                                                        .params = kPanParams};
inline constexpr EffectDescriptor kPanTopToBottomEffect{.id = effect_id::kPanTopToBottom,
                                                        .nameStringId = 105,
                                                        .frameRoutine = plainRoutine<PanTopToBottomFrame>,
                                                        .hasDialog = 1,
                                                        .params = kPanParams};
inline constexpr EffectDescriptor kPanBottomToTopEffect{.id = effect_id::kPanBottomToTop,
                                                        .nameStringId = 106,
                                                        .frameRoutine = plainRoutine<PanBottomToTopFrame>,
                                                        .hasDialog = 1,
                                                        .params = kPanParams};
inline constexpr EffectDescriptor kFreeMoveEffect{.id = effect_id::kFreeMove,
                                                  .nameStringId = 107,
                                                  .frameRoutine = plainRoutine<FreeMoveFrame>,
                                                  .hasDialog = 1,
                                                  .params = kFreeMoveParams};

}  // namespace qx
