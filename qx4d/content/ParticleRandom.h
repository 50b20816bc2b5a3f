#pragma once
// The random draws of particle effects: the C runtime's process-wide `rand`, scaled to a
// unit value as the scene engine does, and values drawn from ranges.
#include "platform/os/CRuntime.h"
#include "qx4d/content/EmitterValues.h"

namespace qx4d {

/// rand() * 3.051851e-05: about rand / 32767, from 0 to 1.
inline float UnitRandom() { return float(double(qx::os::rand()) * 3.051851e-05); }

/// (`max` - `min`) * r + `min`, with a new unit random r.
inline float Draw(const FloatRange& range)
{
    const double r = UnitRandom();
    return float((double(range.max) - range.min) * r + range.min);
}

/// One draw an axis, X first.
inline Float3 Draw(const FloatRange3& ranges) { return {Draw(ranges[0]), Draw(ranges[1]), Draw(ranges[2])}; }

}  // namespace qx4d
