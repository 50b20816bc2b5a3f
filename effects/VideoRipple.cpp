#include "effects/VideoRipple.h"

#include "effects/FastRand.h"
#include "effects/FrameSize.h"

#include <algorithm>
#include <new>

namespace qx {
namespace {

// The water works in 32-bit integers that wrap on overflow, as the machine arithmetic
// the effect was tuned on does; sums go through uint32_t so that a wrap is defined, and
// shifts of the signed results are arithmetic.

/// One row of the wave equation: acceleration from the eight neighbours, velocity from
/// the previous surface, damped by `decay`.
void waveRow(const int32_t* above, const int32_t* here, const int32_t* below, const int32_t* previous,
             int32_t* next, LONG lastColumn, LONG decay)
{
    for (LONG x = 1; x < lastColumn; ++x) {
        const uint32_t centre = uint32_t(here[x]);
        const uint32_t around = uint32_t(above[x - 1]) + uint32_t(above[x]) + uint32_t(above[x + 1]) +
                                uint32_t(here[x - 1]) + uint32_t(here[x + 1]) + uint32_t(below[x - 1]) +
                                uint32_t(below[x]) + uint32_t(below[x + 1]);
        const int32_t acceleration = int32_t(around - centre * 9u) >> 3;
        const uint32_t velocity = centre - uint32_t(previous[x]);
        next[x] = int32_t(uint32_t(acceleration) - uint32_t(int32_t(velocity) >> decay) + velocity + centre);
    }
}

/// One row of the smoothing: the cell weighs 60 of 64 against its four side neighbours.
void smoothRow(const int32_t* above, const int32_t* here, const int32_t* below, int32_t* out, LONG lastColumn)
{
    for (LONG x = 1; x < lastColumn; ++x) {
        const uint32_t sum = uint32_t(above[x]) + uint32_t(here[x - 1]) + uint32_t(here[x + 1]) +
                             uint32_t(below[x]) + uint32_t(here[x]) * 60u;
        out[x] = int32_t(sum) >> 6;
    }
}

}  // namespace

CVideoRipple::CVideoRipple(LONG frameWidth, LONG frameHeight)
    : CVideoEffect(frameWidth, frameHeight), mapHeight(frameHeight / 2 + 1), mapWidth(frameWidth / 2 + 1)
{
}

LONG CVideoRipple::Start()
{
    if (!isFrameSizeUsable(width, height, 8))
        return -1;
    const size_t cellCount = size_t(mapHeight) * size_t(mapWidth);
    try {
        cells.assign(cellCount * 3, 0);
        vectorMap.assign(cellCount, Vector{0, 0});
    } catch (const std::bad_alloc&) {
        cells.clear();
        vectorMap.clear();
        return -1;
    }
    map1 = cells.data();
    map2 = map1 + cellCount;
    map3 = map2 + cellCount;
    fillSquareTable();
    running = 1;
    return 0;
}

LONG CVideoRipple::Stop()
{
    running = 0;
    return 0;
}

void CVideoRipple::fillSquareTable()
{
    for (LONG i = 0; i < 128; ++i)
        squareTable[size_t(i)] = i * i;
    for (LONG v = 1; v <= 128; ++v)
        squareTable[size_t(256 - v)] = -v * v;
}

LONG CVideoRipple::dropHeight(uint32_t draw) const
{
    const LONG depth = -LONG(draw >> 28) - 2;
    const LONG unscaled = depth << point;
    // 76800 is the area of a 320 by 240 frame: drops weigh the same on every frame size.
    const double scaled = double(unscaled) * (double(width) * double(height) / 76800.0);
    return LONG(std::clamp(scaled, double(INT32_MIN), double(INT32_MAX)));
}

void CVideoRipple::Drop(LONG dropHeight)
{
    const LONG w = mapWidth;
    const LONG x = LONG(fastrand() % uint32_t(mapWidth - 4)) + 2;
    const LONG y = LONG(fastrand() % uint32_t(mapHeight - 4)) + 2;
    int32_t* p = map1 + y * w + x;
    int32_t* q = map2 + y * w + x;
    const int32_t half = dropHeight / 2;
    const int32_t quarter = dropHeight / 4;
    p[0] = q[0] = dropHeight;
    p[-w] = p[w] = p[-1] = p[1] = half;
    q[-w] = q[w] = q[-1] = q[1] = half;
    p[-w - 1] = p[-w + 1] = p[w - 1] = p[w + 1] = quarter;
    // The corner down-right of map2 keeps its old value: the drop is not quite
    // symmetric in its first steps, which belongs to the look.
    q[-w - 1] = q[-w + 1] = q[w - 1] = quarter;
}

void CVideoRipple::stepWater()
{
    const LONG w = mapWidth;
    for (LONG y = 1; y < mapHeight - 1; ++y) {
        const int32_t* here = map1 + y * w;
        waveRow(here - w, here, here + w, map2 + y * w, map3 + y * w, w - 1, decay);
    }
    for (LONG y = 1; y < mapHeight - 1; ++y) {
        const int32_t* here = map3 + y * w;
        smoothRow(here - w, here, here + w, map2 + y * w, w - 1);
    }
    std::swap(map1, map2);
}

void CVideoRipple::computeVectors()
{
    const LONG w = mapWidth;
    auto bend = [this](int32_t cell, int32_t neighbour) {
        const int32_t slope = int32_t(uint32_t(cell) - uint32_t(neighbour)) >> (point - 1);
        // The low byte of the squared slope, as a signed number: large slopes wrap.
        return int8_t(uint8_t(squareTable[size_t(slope & 255)] & 0xFF));
    };
    for (LONG y = 0; y < mapHeight - 1; ++y) {
        const int32_t* row = map1 + y * w;
        Vector* out = vectorMap.data() + y * w;
        for (LONG x = 0; x < w - 1; ++x)
            out[x] = Vector{bend(row[x], row[x + 1]), bend(row[x], row[x + w])};
    }
}

void CVideoRipple::refract(const uint32_t* src, uint32_t* dst) const
{
    for (LONG y = 0; y < height; y += 2) {
        const LONG cellRow = y / 2;
        const LONG rowBelow = std::min(cellRow + 1, mapHeight - 1);
        const bool secondRow = y + 1 < height;
        for (LONG x = 0; x < width; x += 2) {
            const LONG cellColumn = x / 2;
            // Odd sizes: the last block's right or lower neighbour is held on the map.
            const Vector here = vectorMap[size_t(cellRow * mapWidth + cellColumn)];
            const Vector right = vectorMap[size_t(cellRow * mapWidth + std::min(cellColumn + 1, mapWidth - 1))];
            const Vector below = vectorMap[size_t(rowBelow * mapWidth + cellColumn)];
            const LONG ax = std::clamp(x + here.dx, 0, width - 1);
            const LONG ay = std::clamp(y + here.dy, 0, height - 1);
            const LONG bx = std::clamp(x + (here.dx + right.dx) / 2 + 1, 0, width - 1);
            const LONG by = std::clamp(y + (here.dy + below.dy) / 2 + 1, 0, height - 1);
            uint32_t* out = dst + int64_t(y) * width + x;
            const uint32_t* upper = src + int64_t(ay) * width;
            const uint32_t* lower = src + int64_t(by) * width;
            const bool secondColumn = x + 1 < width;
            out[0] = upper[ax];
            if (secondColumn)
                out[1] = upper[bx];
            if (secondRow) {
                out[width] = lower[ax];
                if (secondColumn)
                    out[width + 1] = lower[bx];
            }
        }
    }
}

LONG CVideoRipple::ProcessFrame(const uint32_t* src, uint32_t* dst, float /*progress*/)
{
    if (cells.empty() || src == nullptr || dst == nullptr) {
        passFrameThrough(src, dst, width, height);
        return 0;
    }
    // A drop costs the same however many fall; more than one per cell changes nothing
    // a viewer could tell, and bounds the loop for any parameter.
    const LONG drops = std::clamp(params[0], 0, mapWidth * mapHeight);
    for (LONG i = 0; i < drops; ++i)
        Drop(dropHeight(fastrand()));
    for (LONG step = 0; step < loopCount; ++step)
        stepWater();
    computeVectors();
    refract(src, dst);
    return 0;
}

}  // namespace qx
