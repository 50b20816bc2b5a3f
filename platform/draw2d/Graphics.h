#pragma once
// A drawing context on a Bitmap. Defaults are those of a new context of the system's
// drawing library: source-over compositing, bilinear image resampling, no transform.
//
// The bitmap is straight alpha at rest. Blending needs premultiplied samples, so the
// context converts the bitmap when a drawing first needs its old contents, and converts
// it back when the context is destroyed. The common frame effect (clear, then an opaque
// picture over the whole bitmap) needs neither conversion: a clear is only recorded, and
// a draw that covers every pixel with opaque samples replaces the contents outright.
// Shapes are drawn by Cairo on the premultiplied samples.
#include "platform/draw2d/Bitmap.h"
#include "platform/draw2d/CairoHandles.h"
#include "platform/draw2d/Resample.h"

#include <span>

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
    /// The edge samples of `source` extend outward, so a drawn picture has no faded rim;
    /// pixels that the destination covers in part are blended by their coverage.
    Status drawImage(const Bitmap& image, const RectF& destination, const RectF& source);
    /// Draws the whole of `image` into `destination`.
    Status drawImage(const Bitmap& image, const RectF& destination);
    /// The same with image attributes (a colour key, a colour matrix), applied to the
    /// source samples.
    Status drawImage(const Bitmap& image, const RectF& destination, const RectF& source,
                     const ImageAttributes* attributes);

    /// The world transform, from the coordinates of the drawing calls to pixels. Image
    /// draws follow it; the other drawing calls work in pixels.
    Status ScaleTransform(double sx, double sy, MatrixOrder order = MatrixOrder::Prepend);
    Status TranslateTransform(double dx, double dy, MatrixOrder order = MatrixOrder::Prepend);
    /// Turns by `angle` degrees, clockwise on the top-down bitmap.
    Status RotateTransform(double angle, MatrixOrder order = MatrixOrder::Prepend);
    Status ResetTransform();
    /// Replaces the world transform; a matrix with a value that is not finite is refused.
    Status SetTransform(const Matrix& matrix);
    /// Combines `matrix` with the world transform, before it (prepended) or after it.
    Status MultiplyTransform(const Matrix& matrix, MatrixOrder order = MatrixOrder::Prepend);
    const Matrix& transform() const { return transform_; }

    Status setCompositingMode(CompositingMode mode);
    /// Fills whole pixels of the rectangle with `color`, blended by its alpha.
    Status fillRectangle(Color color, int x, int y, int width, int height);
    /// Strokes a line; coordinates name pixel centres, so a one-wide line at an integer
    /// x covers exactly that column.
    Status drawLine(const Pen& pen, PointF from, PointF to);
    /// Strokes a cardinal spline through `points`: each segment is a Bezier curve whose
    /// control points lie `tension` / 3 of the neighbouring chord away from its ends.
    Status drawCurve(const Pen& pen, std::span<const PointF> points, float tension);
    /// Strokes the closed polygon through `points`, given in world units: unlike the other
    /// strokes it follows the world transform. A pen narrower than a pixel there draws
    /// one pixel wide, so thin outlines never vanish.
    Status drawPolygon(const Pen& pen, std::span<const PointF> points);

private:
    // What the bitmap's samples hold now.
    enum class Content {
        Straight,       // as the caller left them
        Premultiplied,  // converted for blending
        Cleared,        // to be filled with clearColor_ (nothing written yet)
        Opaque,         // all alpha 255: both forms at once, nothing to convert back
        OpaqueOrClear,  // each sample opaque or transparent black: the same in both forms
    };

    /// Makes the samples fit for blending: premultiplied, or opaque (the same thing).
    void premultiplyContent();
    void drewWith(bool keepsOpacity);
    /// The Cairo context over the premultiplied samples, made on first use.
    cairo_t* cairo();
    /// Ends Cairo's hold on the samples before they are written directly.
    void flushCairo();

    Status stroke(const Pen& pen);
    Status combineTransform(const Matrix& change, MatrixOrder order);
    Status drawAxisAligned(const Bitmap& image, const RectF& destination, const RectF& source,
                           const ImageAttributes* key);
    bool transferRows(const Bitmap& image, const AxisMap& mapX, const AxisMap& mapY, const ImageAttributes* key);
    void compositeImage(const SampleGrid& source, const AxisMap& mapX, const AxisMap& mapY, const RectF& destination);

    Bitmap& target_;
    CompositingMode mode_ = CompositingMode::SourceOver;
    Matrix transform_;
    Content content_ = Content::Straight;
    Color clearColor_;
    CairoSurface surface_;
    CairoContext context_;
    Status status_ = Status::InvalidParameter;
};

}  // namespace qx::draw2d
