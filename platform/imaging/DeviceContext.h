#pragma once
// A drawing context that draws on a bitmap handle's own pixels, in the picture's own
// orientation (row 0 at the top as the handle holds it).
#include "platform/draw2d/Bitmap.h"
#include "platform/imaging/BitmapHandle.h"

namespace qx::imaging {

class DeviceContext {
public:
    /// A context on `handle`, which must outlive it; a null handle gives a bitmap whose
    /// status is not Ok, on which every drawing fails quietly.
    explicit DeviceContext(BitmapHandle& handle)
        : bitmap_(handle.width(), handle.height(), handle.width() * 4,
                  handle.isNull() ? nullptr : handle.pixels().data())
    {}

    draw2d::Bitmap& bitmap() { return bitmap_; }

private:
    draw2d::Bitmap bitmap_;
};

}  // namespace qx::imaging
