#pragma once
// The random draws of particle effects: the C runtime's process-wide `rand`, scaled to a
// unit value as the scene engine does, and values drawn from ranges.
#include "platform/os/CRuntime.h"
#include "qx4d/content/EmitterValues.h"

namespace qx4d {

/// rand() * 3.051851e-05: about rand / 32767, from 0 to 1. It stays in double, as every
/// value drawn from it is worked out in double and stored to float once.
inline double UnitRandom() { return double(qx::os::rand()) * 3.051851e-05; }

/// (`max` - `min`) * r + `min`, with a new unit random r.
inline float Draw(const FloatRange& range) { return float((double(range.max) - range.min) * UnitRandom() + range.min); }

/// One draw an axis, X first.
inline Float3 Draw(const FloatRange3& ranges) { return {Draw(ranges[0]), Draw(ranges[1]), Draw(ranges[2])}; }

}  // namespace qx4d
