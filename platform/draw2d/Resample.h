#pragma once
// Bilinear resampling of an axis-aligned image draw, the common case of drawing: a source
// rectangle scaled and moved onto a destination rectangle. Sample centres follow the
// usual convention (destination pixel x samples the source at u = scale*(x+0.5)+offset-0.5)
// and samples beyond the source edge repeat the edge. Works on 32-bit samples with
// 8-bit weights, row by row: a vertical blend into a row buffer, then a horizontal one.
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

namespace qx::draw2d {

/// A linear map from destination to source coordinates along one axis.
struct AxisMap {
    double scale = 1.0;
    double offset = 0.0;
};

/// True when the map moves by whole samples at scale 1: destination samples are source
/// samples, with nothing to blend.
inline bool isWholeSampleShift(const AxisMap& map) { return map.scale == 1.0 && map.offset == std::floor(map.offset); }

/// An image as rows of samples.
struct SampleGrid {
    const uint32_t* samples = nullptr;
    int width = 0;
    int height = 0;
    int pitch = 0;  // samples between rows
};

/// Destination pixels to produce: columns [x0, x1) of rows [y0, y1).
struct PixelSpan {
    int x0 = 0;
    int x1 = 0;
    int y0 = 0;
    int y1 = 0;
};

class Resampler {
public:
    Resampler(const SampleGrid& source, AxisMap mapX, AxisMap mapY, const PixelSpan& span);

    /// Writes the resampled samples of destination row `y` (within the span), columns x0
    /// to x1, to `out`, which holds at least x1 - x0 samples.
    void row(int y, std::span<uint32_t> out);

private:
    /// Whole-sample shifts at scale 1 need no blending: rows are copied.
    bool copyRow(int y, std::span<uint32_t> out) const;

    SampleGrid source_;
    AxisMap mapX_;
    AxisMap mapY_;
    bool shiftOnly_ = false;
    PixelSpan span_;
    int firstColumn_ = 0;                // first source column the row buffer holds
    std::vector<int32_t> leftTap_;       // per destination column, relative to firstColumn_
    std::vector<uint32_t> rightWeight_;  // per destination column, 0..256
    std::vector<uint32_t> blended_;      // vertically blended source columns, one spare
};

}  // namespace qx::draw2d
