#include "plugins/frei0r/Frei0rParams.h"

#include <algorithm>
#include <cmath>

namespace qx::frei0r {

namespace {

// NaN, which a host may pass as easily as any double, counts as 0.
double clampUnit(double value) { return std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 1.0); }

}  // namespace

float progressAt(double time, bool milliseconds, double durationValue, double progressValue)
{
    const double span = clampUnit(durationValue) * kDurationScale;
    if (span <= 0.0) return float(clampUnit(progressValue));
    const double seconds = milliseconds ? time / 1000.0 : time;
    return float(clampUnit(seconds / span));
}

}  // namespace qx::frei0r
