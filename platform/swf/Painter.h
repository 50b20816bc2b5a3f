#pragma once
// Draws the display lists of a movie with Cairo: each object's character under the
// product of the matrices and colour transforms above it, sprites at their own age,
// masks (objects with a clip depth) as groups masked by the clip character.
//
// Paths are built in device space (points transformed here), so that hairlines and
// thin lines keep at least one pixel whatever the scale, and fill patterns get the
// matrix from device space to their own.
#include "platform/draw2d/CairoHandles.h"
#include "platform/swf/BitmapCache.h"
#include "platform/swf/Dictionary.h"

namespace qx::swf {

class Painter {
public:
    /// `position` is where the main timeline's frame stands among the movie's tags: the
    /// characters defined before it are those drawn.
    Painter(cairo_t* cairo, const Dictionary& dictionary, BitmapCache& bitmaps, size_t position, bool antialias);

    /// Draws `timeline` as it is `age` frames after it was placed, looping.
    void paintTimeline(const Timeline& timeline, size_t age, const Matrix& matrix, const ColorTransform& colors);

private:
    struct Context {
        Matrix matrix;
        ColorTransform colors;
        int nesting = 0;
        bool mask = false;  // drawing a clip shape: fills only, opaque
    };

    void paintList(const Timeline& timeline, size_t age, const Context& context);
    void paintObject(uint16_t depth, const DisplayObject& object, const Timeline& timeline, size_t age,
                     size_t localFrame, const Context& context);
    void paintShape(const Shape& shape, const std::vector<GroupOutline>& outlines, const Context& context);
    void fillContours(const std::vector<Contour>& contours, const FillStyle& fill, bool nonZero,
                      const Context& context);
    void strokeRuns(const std::vector<Contour>& runs, const LineStyle& line, const Context& context);
    void appendPath(const Contour& contour, const Matrix& matrix, bool close);
    /// Sets the source for `fill`; false when it draws nothing. `keep` holds what the
    /// source draws from until the drawing is done.
    bool setSource(const FillStyle& fill, const Context& context, std::shared_ptr<const void>& keep);
    bool setGradient(const FillStyle& fill, const Context& context);
    bool setBitmap(const FillStyle& fill, const Context& context, std::shared_ptr<const void>& keep);
    bool budgetLeft();

    cairo_t* cairo_;
    const Dictionary& dictionary_;
    BitmapCache& bitmaps_;
    size_t position_;
    bool antialias_;
    size_t objectsLeft_;
};

}  // namespace qx::swf
