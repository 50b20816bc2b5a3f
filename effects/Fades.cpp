#include "effects/Fades.h"

#include "effects/ColorRef.h"
#include "platform/draw2d/Graphics.h"

namespace qx {

namespace {

void fillWith(draw2d::Bitmap& bitmap, LONG colorRef, uint32_t alpha)
{
    draw2d::Graphics graphics(bitmap);
    graphics.fillRectangle(colorFromColorRef(colorRef, alpha), 0, 0, bitmap.width(), bitmap.height());
}

}  // namespace

void FadeInFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params)
{
    fillWith(bitmap, params[FadeParam::kColor], uint32_t((1.0 - progress) * 255.0));
}

void FadeOutFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params)
{
    // The remaining share is stored as a float before the alpha is taken from it.
    const float remaining = float(1.0 - progress);
    fillWith(bitmap, params[FadeParam::kColor], uint32_t((1.0 - remaining) * 255.0));
}

}  // namespace qx
