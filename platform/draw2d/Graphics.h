#pragma once
// A drawing context on a Bitmap, on Cairo. Defaults are those of a new context of the
// system's drawing library: source-over compositing, bilinear image resampling, no
// transform. Cairo works premultiplied, so while a Graphics is open its bitmap holds
// premultiplied samples; they return to straight alpha when the Graphics is destroyed.
// Opaque samples are the same in both forms and cost no conversion.
#include "platform/draw2d/Bitmap.h"
#include "platform/draw2d/CairoHandles.h"

namespace qx::draw2d {

class Graphics {
public:
    explicit Graphics(Bitmap& target);
    ~Graphics();
    Graphics(const Graphics&) = delete;
    Graphics& operator=(const Graphics&) = delete;

    Status status() const { return status_; }

    /// Fills the whole bitmap with `color`, replacing what was there (alpha included).
    Status clear(Color color);
    /// Draws `source` of `image` (in pixels) into `destination`, resampled bilinearly.
    /// The edge samples of `source` extend outward, so a drawn picture has no faded rim.
    Status drawImage(const Bitmap& image, const RectF& destination, const RectF& source);
    /// Draws the whole of `image` into `destination`.
    Status drawImage(const Bitmap& image, const RectF& destination);

private:
    Bitmap& target_;
    CairoSurface surface_;
    CairoContext context_;
    Status status_ = Status::InvalidParameter;
};

}  // namespace qx::draw2d
