#include "effects/ColorKey.h"

#include "effects/ColorRef.h"
#include "platform/draw2d/Graphics.h"

#include <algorithm>

namespace qx {

void ColorKeyFrame(draw2d::Bitmap& bitmap, float, ParamValues params)
{
    const auto clone = bitmap.clone();
    if (!clone) return;
    draw2d::Graphics graphics(bitmap);
    graphics.clear(draw2d::Color{0});
    draw2d::ImageAttributes attributes;
    const LONG colorRef = params[ColorKeyParam::kColor];
    const LONG tolerance = params[ColorKeyParam::kTolerance];
    if (colorRef != -1 && tolerance != -1) {
        const draw2d::Color key = colorFromColorRef(colorRef, 255);
        // Computed in 64 bits, so that any tolerance clamps rather than overflows.
        const auto bound = [](uint32_t channel, int64_t offset) {
            return uint32_t(std::clamp<int64_t>(int64_t(channel) + offset, 0, 255));
        };
        attributes.SetColorKey(draw2d::Color::fromArgb(255, bound(key.red(), -int64_t(tolerance)),
                                                       bound(key.green(), -int64_t(tolerance)),
                                                       bound(key.blue(), -int64_t(tolerance))),
                               draw2d::Color::fromArgb(255, bound(key.red(), tolerance), bound(key.green(), tolerance),
                                                       bound(key.blue(), tolerance)));
    }
    const float W = float(bitmap.width());
    const float H = float(bitmap.height());
    graphics.drawImage(*clone, {0.0f, 0.0f, W, H}, {0.0f, 0.0f, W, H}, &attributes);
}

}  // namespace qx
