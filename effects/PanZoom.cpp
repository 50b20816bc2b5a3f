#include "effects/PanZoom.h"

#include "platform/draw2d/Graphics.h"

#include <cmath>

namespace qx {

namespace {

using draw2d::Bitmap;
using draw2d::Graphics;
using draw2d::RectF;

// Each named value is stored as a float and each formula is evaluated in double up to
// that store, in the order written, so that results agree to the last bit.

struct Edges {
    float left;
    float top;
    float right;
    float bottom;
};

// The parameter rectangle whose left side is at slot `left`, in pixels.
Edges scaledRect(ParamValues params, int left, float W, float H)
{
    const auto side = [&](int offset, float size) {
        return float(params[size_t(left + offset)] * double(size) / 1000.0);
    };
    return {side(RectangleParam::kLeft, W), side(RectangleParam::kTop, H), side(RectangleParam::kRight, W),
            side(RectangleParam::kBottom, H)};
}

// A source rectangle from edges that may be crossed: it still draws, unmirrored.
RectF normalised(const Edges& e)
{
    return {e.right > e.left ? e.left : e.right, e.bottom > e.top ? e.top : e.bottom,
            float(std::fabs(double(e.right) - e.left)), float(std::fabs(double(e.bottom) - e.top))};
}

// The frame shared by all seven: clone, clear to transparent black, draw the clone.
template <typename Draw>
void redraw(Bitmap& bitmap, Draw draw)
{
    const auto clone = bitmap.clone();
    if (!clone) return;
    Graphics graphics(bitmap);
    graphics.clear(draw2d::Color{0});
    draw(graphics, *clone, float(bitmap.width()), float(bitmap.height()));
}

void zoom(Bitmap& bitmap, float u, ParamValues params)
{
    redraw(bitmap, [&](Graphics& graphics, const Bitmap& clone, float W, float H) {
        const Edges p = scaledRect(params, RectangleParam::kLeft, W, H);
        const Edges e{float(p.left - double(u) * p.left), float(p.top - double(u) * p.top),
                      float((double(W) - p.right) * u + p.right), float((double(H) - p.bottom) * u + p.bottom)};
        graphics.drawImage(clone, {0.0f, 0.0f, W, H}, normalised(e));
    });
}

enum class PanAxis { Horizontal, Vertical };

void pan(Bitmap& bitmap, float s, ParamValues params, PanAxis axis)
{
    redraw(bitmap, [&](Graphics& graphics, const Bitmap& clone, float W, float H) {
        const Edges p = scaledRect(params, RectangleParam::kLeft, W, H);
        // A parameter rectangle of zero height or width makes these infinite, and then
        // nothing is drawn.
        const float scaledH = float(double(H) / (double(p.bottom) - p.top) * H);
        const float scaledW = float(double(W) / (double(p.right) - p.left) * W);
        RectF destination{0.0f, 0.0f, scaledW, scaledH};
        if (axis == PanAxis::Horizontal) {
            destination.X = float(-double(s) * (double(scaledW) - W));
            destination.Y = float(0.0 - double(scaledH) * p.top / H);
        } else {
            destination.X = float(0.0 - double(scaledW) * p.left / W);
            destination.Y = float(-double(s) * (double(scaledH) - H));
        }
        graphics.drawImage(clone, destination);
    });
}

}  // namespace

void ZoomOutFrame(Bitmap& bitmap, float progress, ParamValues params) { zoom(bitmap, progress, params); }

void ZoomInFrame(Bitmap& bitmap, float progress, ParamValues params) { zoom(bitmap, float(1.0 - progress), params); }

void PanLeftToRightFrame(Bitmap& bitmap, float progress, ParamValues params)
{
    pan(bitmap, float(1.0 - progress), params, PanAxis::Horizontal);
}

void PanRightToLeftFrame(Bitmap& bitmap, float progress, ParamValues params)
{
    pan(bitmap, progress, params, PanAxis::Horizontal);
}

void PanTopToBottomFrame(Bitmap& bitmap, float progress, ParamValues params)
{
    pan(bitmap, float(1.0 - progress), params, PanAxis::Vertical);
}

void PanBottomToTopFrame(Bitmap& bitmap, float progress, ParamValues params)
{
    pan(bitmap, progress, params, PanAxis::Vertical);
}

void FreeMoveFrame(Bitmap& bitmap, float progress, ParamValues params)
{
    redraw(bitmap, [&](Graphics& graphics, const Bitmap& clone, float W, float H) {
        const Edges a = scaledRect(params, FreeMoveParam::kSourceLeft, W, H);
        const Edges b = scaledRect(params, FreeMoveParam::kDestinationLeft, W, H);
        const auto edge = [progress](float from, float to) { return float((double(to) - from) * progress + from); };
        const Edges e{edge(a.left, b.left), edge(a.top, b.top), edge(a.right, b.right), edge(a.bottom, b.bottom)};
        graphics.drawImage(clone, {0.0f, 0.0f, W, H}, normalised(e));
    });
}

}  // namespace qx
