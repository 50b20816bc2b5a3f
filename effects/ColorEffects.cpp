#include "effects/ColorEffects.h"

#include "platform/imaging/BitmapHandle.h"
#include "platform/imaging/ColorOps.h"

namespace qx {

HRESULT SpectrumImage(imaging::BitmapHandle& handle, double progress, ParamValues)
{
    imaging::changeHue(handle, int32_t(progress * 360.0));
    return S_OK;
}

TintThousandths colorizeTint(double progress)
{
    const float h = float(progress * 360.0);
    // Each value is truncated; the sector is the truncated hue divided by 60 in integers.
    switch (int32_t(h) / 60) {
    case 0: return {1000, LONG(h * 1000.0 / 60.0), 0};
    case 1: return {LONG((1.0 - (h - 60.0) / 60.0) * 1000.0), 1000, 0};
    case 2: return {0, 1000, LONG((h - 120.0) / 60.0 * 1000.0)};
    case 3: return {0, LONG((1.0 - (h - 180.0) / 60.0) * 1000.0), 1000};
    case 4: return {LONG((h - 240.0) / 60.0 * 1000.0), 0, 1000};
    default:  // 5, and 6 at the end of the span
        return {1000, 0, LONG((1.0 - (h - 300.0) / 60.0) * 1000.0)};
    }
}

HRESULT ColorizeImage(imaging::BitmapHandle& handle, double progress, ParamValues)
{
    const TintThousandths tint = colorizeTint(progress);
    imaging::tint(handle, 0, 500, 500, tint.red, tint.green, tint.blue);
    return S_OK;
}

HRESULT SaturationUpImage(imaging::BitmapHandle& handle, double progress, ParamValues)
{
    imaging::changeSaturation(handle, int32_t(progress * 1000.0 - 1000.0));
    return S_OK;
}

HRESULT SaturationDownImage(imaging::BitmapHandle& handle, double progress, ParamValues)
{
    imaging::changeSaturation(handle, int32_t(-1000.0 * progress));
    return S_OK;
}

}  // namespace qx
