#include "effects/VideoRipple.h"

#include "effects/FastRand.h"
#include "effects/FrameSize.h"
#include "platform/os/WorkerPool.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

// Hot loops are built twice, for AVX2 and for the baseline, and the loader picks one.
#if defined(__x86_64__) && defined(__GNUC__)
#define QX_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define QX_VECTOR_CLONES
#endif

namespace qx {
namespace {

// The water works in 32-bit integers that wrap on overflow, as 32-bit machine arithmetic
// does; sums go through uint32_t so that a wrap is defined, and shifts of the signed
// results are arithmetic.

/// One row of the wave equation: acceleration from the eight neighbours, velocity from
/// the previous surface, damped by `decay`.
QX_VECTOR_CLONES void waveRow(const int32_t* above, const int32_t* here, const int32_t* below, const int32_t* previous,
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
QX_VECTOR_CLONES void smoothRow(const int32_t* above, const int32_t* here, const int32_t* below, int32_t* out,
                                LONG lastColumn)
{
    for (LONG x = 1; x < lastColumn; ++x) {
        const uint32_t sum = uint32_t(above[x]) + uint32_t(here[x - 1]) + uint32_t(here[x + 1]) + uint32_t(below[x]) +
                             uint32_t(here[x]) * 60u;
        out[x] = int32_t(sum) >> 6;
    }
}

struct BlockVectors {
    const int8_t* __restrict dx;  ///< the block's own cells
    const int8_t* __restrict dy;
    const int8_t* __restrict belowDy;  ///< the cells of the row below
};

struct BlockSources {
    int32_t* __restrict upperLeft;
    int32_t* __restrict upperRight;
    int32_t* __restrict lowerLeft;
    int32_t* __restrict lowerRight;
};

/// Where each 2 by 2 block of the frame row pair starting at `y` takes its four samples:
/// the block's vector moves the upper-left sample; the others are moved by the mean of
/// it and the next block's vector, one sample on. Every position is held in the frame.
QX_VECTOR_CLONES void placeBlocks(BlockVectors vectors, BlockSources out, LONG blockCount, LONG y, LONG width,
                                  LONG height)
{
    const LONG lastColumn = width - 1;
    const LONG lastRow = height - 1;
    for (LONG column = 0; column < blockCount; ++column) {
        const LONG x = column * 2;
        const LONG dx = vectors.dx[column];
        const LONG dy = vectors.dy[column];
        const LONG ax = std::clamp(x + dx, 0, lastColumn);
        const LONG ay = std::clamp(y + dy, 0, lastRow);
        // Signed halves, rounding toward zero.
        const LONG bx = std::clamp(x + (dx + vectors.dx[column + 1]) / 2 + 1, 0, lastColumn);
        const LONG by = std::clamp(y + (dy + vectors.belowDy[column]) / 2 + 1, 0, lastRow);
        out.upperLeft[column] = ay * width + ax;
        out.upperRight[column] = ay * width + bx;
        out.lowerLeft[column] = by * width + ax;
        out.lowerRight[column] = by * width + bx;
    }
}

/// Fills one frame row from its blocks' left and right sources. The two samples of a
/// block go out as one 64-bit store (the frame is little-endian, left sample first),
/// which halves the stores of this, the effect's busiest loop.
QX_VECTOR_CLONES void gatherRow(const uint32_t* __restrict src, const int32_t* __restrict left,
                                const int32_t* __restrict right, uint32_t* __restrict out, LONG width)
{
    static_assert(std::endian::native == std::endian::little, "a block's pair is stored left sample first");
    const LONG fullBlocks = width / 2;
    for (LONG column = 0; column < fullBlocks; ++column) {
        const uint64_t pair = uint64_t(src[left[column]]) | uint64_t(src[right[column]]) << 32;
        std::memcpy(out + 2 * column, &pair, sizeof pair);
    }
    if (width % 2 != 0) out[width - 1] = src[left[fullBlocks]];
}

}  // namespace

CVideoRipple::CVideoRipple(LONG frameWidth, LONG frameHeight)
    : CVideoEffect(frameWidth, frameHeight), mapHeight(frameHeight / 2 + 1), mapWidth(frameWidth / 2 + 1)
{}

LONG CVideoRipple::Start()
{
    if (!isFrameSizeUsable(width, height, 8)) return -1;
    const size_t cellCount = size_t(mapHeight) * size_t(mapWidth);
    try {
        cells.assign(cellCount * 3, 0);
        vectorMap.dx.assign(cellCount + 1, 0);
        vectorMap.dy.assign(cellCount + 1, 0);
        blocksPerRow = (width + 1) / 2;
    } catch (const std::bad_alloc&) {
        cells.clear();
        vectorMap = {};
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
    for (LONG i = 0; i < 128; ++i) squareTable[size_t(i)] = i * i;
    for (LONG v = 1; v <= 128; ++v) squareTable[size_t(256 - v)] = -v * v;
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
    // The smoothing of a row needs the new surface of the rows around it, so it trails
    // the wave equation by one row; both run in one sweep while those rows are in the
    // cache. The smoothing overwrites rows of map2 that the wave equation has read.
    const LONG w = mapWidth;
    auto smooth = [&](LONG y) {
        const int32_t* here = map3 + y * w;
        smoothRow(here - w, here, here + w, map2 + y * w, w - 1);
    };
    for (LONG y = 1; y < mapHeight - 1; ++y) {
        const int32_t* here = map1 + y * w;
        waveRow(here - w, here, here + w, map2 + y * w, map3 + y * w, w - 1, decay);
        if (y >= 2) smooth(y - 1);
    }
    smooth(mapHeight - 2);
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
    // Each cell's vector depends on the surface alone: rows go to the shared workers.
    os::parallelRows(mapHeight - 1, [&](int begin, int end) {
        for (LONG y = begin; y < end; ++y) {
            const int32_t* row = map1 + y * w;
            int8_t* outX = vectorMap.dx.data() + y * w;
            int8_t* outY = vectorMap.dy.data() + y * w;
            for (LONG x = 0; x < w - 1; ++x) {
                outX[x] = bend(row[x], row[x + 1]);
                outY[x] = bend(row[x], row[x + w]);
            }
        }
    });
}

void CVideoRipple::findBlockSources(LONG blockRow, int32_t* upperLeft) const
{
    // The last block of an odd width reads the cell after it in the map (one cell of
    // padding keeps that inside), and of an odd height the row below is held on the
    // map: those only place samples past the frame's edge, which are never written.
    const LONG below = std::min(blockRow + 1, mapHeight - 1);
    placeBlocks({vectorMap.dx.data() + blockRow * mapWidth, vectorMap.dy.data() + blockRow * mapWidth,
                 vectorMap.dy.data() + below * mapWidth},
                {upperLeft, upperLeft + blocksPerRow, upperLeft + 2 * blocksPerRow, upperLeft + 3 * blocksPerRow},
                blocksPerRow, blockRow * 2, width, height);
}

void CVideoRipple::copyBlockRow(const uint32_t* src, uint32_t* dst, LONG y, const int32_t* upperLeft) const
{
    uint32_t* upper = dst + int64_t(y) * width;
    gatherRow(src, upperLeft, upperLeft + blocksPerRow, upper, width);
    if (y + 1 < height)
        gatherRow(src, upperLeft + 2 * blocksPerRow, upperLeft + 3 * blocksPerRow, upper + width, width);
}

void CVideoRipple::refract(const uint32_t* src, uint32_t* dst)
{
    // Block rows are independent once the vectors are known: they go to the shared
    // workers, each placing its blocks' sources in a buffer of its own, kept from frame
    // to frame so that a frame allocates nothing.
    os::parallelRows((height + 1) / 2, [&](int begin, int end) {
        thread_local std::vector<int32_t> sources;
        sources.resize(size_t(blocksPerRow) * 4);
        for (LONG blockRow = begin; blockRow < end; ++blockRow) {
            findBlockSources(blockRow, sources.data());
            copyBlockRow(src, dst, blockRow * 2, sources.data());
        }
    });
}

LONG CVideoRipple::ProcessFrame(const uint32_t* src, uint32_t* dst, float /*progress*/)
{
    if (cells.empty() || src == nullptr || dst == nullptr) {
        passFrameThrough(src, dst, width, height);
        return 0;
    }
    // A drop costs the same however many fall; more than one per cell changes nothing
    // a viewer could tell, and bounds the loop for any parameter.
    const LONG drops = std::clamp(params[RippleParam::kDropsPerFrame], 0, mapWidth * mapHeight);
    for (LONG i = 0; i < drops; ++i) Drop(dropHeight(fastrand()));
    for (LONG step = 0; step < loopCount; ++step) stepWater();
    computeVectors();
    refract(src, dst);
    return 0;
}

}  // namespace qx
