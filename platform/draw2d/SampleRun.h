#pragma once
// Bilinear sampling along a line of target pixels, the inner loop of turned and shrunk
// image draws, with a vector variant chosen at run time.
#include "platform/draw2d/Resample.h"

#include <cstddef>
#include <cstdint>

namespace qx::draw2d {

/// out[i] = the bilinear sample of premultiplied `grid` at (u + i du, v + i dv), positions
/// in 16.16 fixed point with sample centres at integers; samples beyond the edge repeat
/// the edge.
void sampleRun(const SampleGrid& grid, int32_t u, int32_t v, int32_t du, int32_t dv, uint32_t* out, size_t count);

}  // namespace qx::draw2d
