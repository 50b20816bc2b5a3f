#pragma once
// The rectangle the user drags over a picture in the pan dialogs, in pixels of the
// picture's control, and its conversion to and from a parameter list's four sides in
// thousandths of the frame (left, top, right, bottom). With "Conserver les proportions"
// on, the rectangle keeps the frame's shape while it is dragged.
#include "effects/ParamTable.h"

#include <array>

namespace qx::dialogs {

class RectanglePicker {
public:
    /// A control `width` pixels wide and width / `aspect` high (truncated); a
    /// non-positive aspect keeps the pickers' own 1.3333334.
    RectanglePicker(int width, float aspect);

    int width() const { return width_; }
    int height() const { return height_; }
    float aspect() const { return aspect_; }

    /// Corners from four sides in thousandths, each cut to 0..1000 first.
    void setSides(const std::array<LONG, 4>& thousandths);
    /// The sides in thousandths, smaller coordinates first, each rounded to a multiple of 10.
    std::array<LONG, 4> sides() const;

    /// Starts a drag at a point of the control: both corners go there.
    void press(int x, int y);
    /// Moves the second corner while a drag runs; false (and nothing moves) otherwise.
    bool move(int x, int y);
    void release() { dragging_ = false; }
    bool dragging() const { return dragging_; }

    /// Turning proportions on fits the current rectangle to the frame's shape at once.
    void setKeepProportions(bool on);
    bool keepProportions() const { return keepProportions_; }

    int x0() const { return x0_; }
    int y0() const { return y0_; }
    int x1() const { return x1_; }
    int y1() const { return y1_; }

private:
    /// Sets y1 from the width of the rectangle and the aspect, going up for `sign` -1,
    /// and then x1 from the height that fits.
    void fitProportions(int sign);

    int width_;
    int height_;
    float aspect_;
    bool dragging_ = false;
    bool keepProportions_ = false;
    int x0_ = 0, y0_ = 0, x1_ = 0, y1_ = 0;
};

/// A coordinate of `size` pixels in thousandths: truncated, then rounded to the nearest
/// multiple of 10, 5 going up. This is why a saved rectangle is always a multiple of 10.
LONG toThousandths(int coordinate, int size);

}  // namespace qx::dialogs
