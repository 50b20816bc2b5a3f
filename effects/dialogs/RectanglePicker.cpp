#include "effects/dialogs/RectanglePicker.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace qx::dialogs {

namespace {

constexpr float kDefaultAspect = 1.3333334f;
constexpr LONG kThousand = 1000;

int fromThousandths(LONG value, int size)
{
    return int(int64_t(size) * std::clamp<LONG>(value, 0, kThousand) / kThousand);
}

}  // namespace

RectanglePicker::RectanglePicker(int width, float aspect)
    : width_(std::max(width, 1)), aspect_(aspect > 0.0f && std::isfinite(aspect) ? aspect : kDefaultAspect)
{
    // A very wide frame would leave no row to drag in.
    height_ = std::max(int(double(width_) / double(aspect_)), 1);
}

void RectanglePicker::setSides(const std::array<LONG, 4>& thousandths)
{
    x0_ = fromThousandths(thousandths[0], width_);
    y0_ = fromThousandths(thousandths[1], height_);
    x1_ = fromThousandths(thousandths[2], width_);
    y1_ = fromThousandths(thousandths[3], height_);
}

LONG toThousandths(int coordinate, int size)
{
    if (size <= 0) return 0;
    const LONG truncated = LONG(double(coordinate) / double(size) * 1000.0);
    return (truncated + 5) / 10 * 10;
}

std::array<LONG, 4> RectanglePicker::sides() const
{
    return {toThousandths(std::min(x0_, x1_), width_), toThousandths(std::min(y0_, y1_), height_),
            toThousandths(std::max(x0_, x1_), width_), toThousandths(std::max(y0_, y1_), height_)};
}

void RectanglePicker::press(int x, int y)
{
    dragging_ = true;
    x0_ = x1_ = std::clamp(x, 0, width_);
    y0_ = y1_ = std::clamp(y, 0, height_);
}

bool RectanglePicker::move(int x, int y)
{
    if (!dragging_) return false;
    x1_ = std::clamp(x, 0, width_);
    if (keepProportions_)
        fitProportions(y < y0_ ? -1 : 1);
    else
        y1_ = std::clamp(y, 0, height_);
    return true;
}

void RectanglePicker::setKeepProportions(bool on)
{
    keepProportions_ = on;
    if (on) fitProportions(y1_ < y0_ ? -1 : 1);
}

void RectanglePicker::fitProportions(int sign)
{
    const double aspect = aspect_;
    double bottom = double(y0_) + sign * std::abs(x1_ - x0_) / aspect;
    bottom = std::max(std::min(bottom, double(height_)), 0.0);
    y1_ = int(bottom);
    const int direction = x1_ < x0_ ? -1 : 1;
    x1_ = int(double(x0_) + direction * std::abs(y1_ - y0_) * aspect);
}

}  // namespace qx::dialogs
