#include "platform/draw2d/Resample.h"

#include "platform/draw2d/ResampleKernels.h"

#include <algorithm>
#include <cmath>

namespace qx::draw2d {

namespace {

// The left tap and the weight of the right tap (0..256) at source coordinate `u`,
// clamped so that the edge sample repeats.
void tapAt(double u, int size, int32_t& left, uint32_t& weight)
{
    u = std::clamp(u, 0.0, double(size - 1));
    const double whole = std::floor(u);
    left = int32_t(whole);
    weight = uint32_t(std::lround((u - whole) * 256.0));
}

}  // namespace

Resampler::Resampler(const SampleGrid& source, AxisMap mapX, AxisMap mapY, const PixelSpan& span)
    : source_(source), mapX_(mapX), mapY_(mapY), span_(span)
{
    shiftOnly_ = isWholeSampleShift(mapX) && isWholeSampleShift(mapY);
    const int columns = std::max(0, span.x1 - span.x0);
    leftTap_.resize(size_t(columns));
    rightWeight_.resize(size_t(columns));
    int lastColumn = 0;
    firstColumn_ = source.width;
    for (int i = 0; i < columns; ++i) {
        tapAt(mapX.scale * (span.x0 + i + 0.5) + mapX.offset - 0.5, source.width, leftTap_[size_t(i)],
              rightWeight_[size_t(i)]);
        firstColumn_ = std::min(firstColumn_, int(leftTap_[size_t(i)]));
        lastColumn = std::max(lastColumn, int(leftTap_[size_t(i)]));
    }
    firstColumn_ = std::min(firstColumn_, lastColumn);
    for (auto& tap : leftTap_) tap -= firstColumn_;
    // One spare sample after the last column repeats it, so a right tap never leaves the
    // row; beyond it, room that the vector kernels may read past the row's end.
    blended_.resize(size_t(lastColumn - firstColumn_ + 2) + kRowSlack);
}

bool Resampler::copyRow(int y, std::span<uint32_t> out) const
{
    const double sourceY = y + mapY_.offset;
    const double sourceX = span_.x0 + mapX_.offset;
    if (sourceY < 0 || sourceY >= source_.height || sourceX < 0 || sourceX + (span_.x1 - span_.x0) > source_.width) {
        return false;  // edge samples repeat there: the blend handles it
    }
    const uint32_t* from = source_.samples + size_t(sourceY) * size_t(source_.pitch) + size_t(sourceX);
    std::copy_n(from, span_.x1 - span_.x0, out.begin());
    return true;
}

void Resampler::row(int y, std::span<uint32_t> out)
{
    if (shiftOnly_ && copyRow(y, out)) return;
    int32_t top = 0;
    uint32_t weight = 0;
    tapAt(mapY_.scale * (y + 0.5) + mapY_.offset - 0.5, source_.height, top, weight);
    const int bottom = std::min(top + 1, source_.height - 1);
    // Source columns from firstColumn_ on, as many as exist; the spare repeats the last.
    const int columns = int(blended_.size() - kRowSlack);
    const int available = std::min(firstColumn_ + columns, source_.width) - firstColumn_;
    const uint32_t* topRow = source_.samples + size_t(top) * size_t(source_.pitch) + firstColumn_;
    const uint32_t* bottomRow = source_.samples + size_t(bottom) * size_t(source_.pitch) + firstColumn_;
    blendRows(topRow, bottomRow, weight, blended_.data(), available);
    std::fill(blended_.begin() + available, blended_.begin() + columns, blended_[size_t(available - 1)]);
    blendColumns(blended_.data(), leftTap_.data(), rightWeight_.data(), out.data(), int(leftTap_.size()));
}

}  // namespace qx::draw2d
