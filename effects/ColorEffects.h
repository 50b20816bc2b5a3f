#pragma once
// The colour effects: each is one operation of the imaging layer on the bitmap handle,
// with an argument that follows the progress.
#include "platform/com/HResult.h"

namespace qx::imaging {
class BitmapHandle;
}

namespace qx {

/// "Spectre de couleurs": the hue turns once round the circle.
HRESULT SpectrumImage(imaging::BitmapHandle* handle, double progress, const LONG* params, LONG paramCount,
                      void* state);
/// "Coloriser": a tint that goes once round the colour circle.
HRESULT ColorizeImage(imaging::BitmapHandle* handle, double progress, const LONG* params, LONG paramCount,
                      void* state);
/// "Saturation, +": the colour comes in, from grey to the picture.
HRESULT SaturationUpImage(imaging::BitmapHandle* handle, double progress, const LONG* params, LONG paramCount,
                          void* state);
/// "Saturation, -": the colour goes out, from the picture to grey.
HRESULT SaturationDownImage(imaging::BitmapHandle* handle, double progress, const LONG* params, LONG paramCount,
                            void* state);

/// The tint of "Coloriser" at `progress`: red, green and blue in thousandths.
struct TintThousandths {
    LONG red;
    LONG green;
    LONG blue;
};
TintThousandths colorizeTint(double progress);

}  // namespace qx
