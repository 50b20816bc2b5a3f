#include "effects/VideoAgging.h"

#include "effects/FastRand.h"
#include "effects/FrameSize.h"

#include <algorithm>

namespace qx {
namespace {

/// Adds 0x20 to each colour channel with saturation: the carries out of the channels
/// (after dropping each low bit so they cannot ripple) become 0xFF masks.
inline uint32_t lighten(uint32_t sample)
{
    const uint32_t sum = (sample & 0xFEFEFFu) + 0x202020u;
    const uint32_t carries = sum & 0x1010100u;
    return (carries - (carries >> 8)) | sum;
}

}  // namespace

CVideoAgging::CVideoAgging(LONG frameWidth, LONG frameHeight) : CVideoEffect(frameWidth, frameHeight) {}

bool CVideoAgging::fitsFrame() const { return isFrameSizeUsable(width, height, 2); }

LONG CVideoAgging::Start()
{
    if (!fitsFrame()) return -1;
    agingMode = 0;
    scratchCount = kScratchRecords;
    areaScale = std::max<LONG>(LONG(int64_t(width) * height / 64 / 480), 1);
    running = 1;
    return 0;
}

LONG CVideoAgging::Stop()
{
    running = 0;
    return 0;
}

LONG CVideoAgging::ProcessFrame(const uint32_t* src, uint32_t* dst, float /*progress*/)
{
    if (!fitsFrame() || src == nullptr || dst == nullptr) {
        passFrameThrough(src, dst, width, height);
        return 0;
    }
    ageColours(src, dst);
    drawScratches(dst);
    drawPits(dst);
    drawDust(dst);
    return 0;
}

void CVideoAgging::ageColours(const uint32_t* src, uint32_t* dst) const
{
    // A quarter of the contrast out, one bit of grain per channel, blacks lifted by 0x18.
    // No channel can carry into the next: 255 - 63 + 16 + 24 stays below 256.
    FastRandRun draw;
    for (LONG i = 0; i < pixelCount; ++i) {
        const uint32_t sample = src[i];
        const uint32_t grain = (draw() >> 8) & 0x101010u;
        dst[i] = sample - ((sample & 0xFCFCFCu) >> 2) + grain + 0x181818u;
    }
}

void CVideoAgging::drawScratches(uint32_t* dst)
{
    const int64_t samples = pixelCount;
    for (LONG i = 0; i < scratchCount; ++i) {
        Scratch& scratch = scratches[size_t(i)];
        if (scratch.life == 0) {
            if ((fastrand() & 0xF0000000u) == 0) startScratch(scratch);
            continue;
        }
        scratch.x += scratch.dx;
        if (scratch.x < 0 || scratch.x > width * 256) {
            // Ends the whole step: the records after this one wait for the next frame.
            scratch.life = 0;
            return;
        }
        const LONG column = scratch.x >> 8;
        const LONG firstRow = scratch.init;
        scratch.init = 0;
        --scratch.life;
        // The end row is not drawn; a scratch at the very right edge (column == width)
        // lands on the first sample of the next row, as the frame is laid out, and is
        // dropped on the last row where that sample would lie past the frame.
        const LONG endRow = scratch.life != 0 ? height : LONG(fastrand() % uint32_t(height));
        for (LONG y = firstRow; y < endRow; ++y) {
            const int64_t index = int64_t(y) * width + column;
            if (index < samples) dst[index] = lighten(dst[index]);
        }
    }
}

void CVideoAgging::startScratch(Scratch& scratch) const
{
    scratch.life = LONG(fastrand() >> 27) + 2;
    scratch.x = LONG(fastrand() % uint32_t(width * 256));
    scratch.dx = int32_t(fastrand()) >> 23;
    scratch.init = LONG(fastrand() % uint32_t(height - 1)) + 1;
}

void CVideoAgging::drawPits(uint32_t* dst)
{
    const uint32_t spread = uint32_t(areaScale) * 2;
    uint32_t count = 0;
    if (pitInterval != 0) {
        count = fastrand() % spread + spread;
        --pitInterval;
    } else {
        count = fastrand() % spread;
        if ((fastrand() & 0xF8000000u) == 0) pitInterval = (fastrand() >> 28) + 20;
    }
    for (uint32_t pit = 0; pit < count; ++pit) {
        LONG x = LONG(fastrand() % uint32_t(width - 1));
        LONG y = LONG(fastrand() % uint32_t(height - 1));
        const uint32_t size = fastrand() >> 28;
        for (uint32_t step = 0; step < size; ++step) {
            // Two draws: each coordinate wanders on its own by -1, 0 or +1.
            x += LONG(fastrand() % 3) - 1;
            y += LONG(fastrand() % 3) - 1;
            if (!inFrame(x, y)) break;
            dst[int64_t(y) * width + x] = 0xC0C0C0u;  // alpha 0, as written
        }
    }
}

void CVideoAgging::drawDust(uint32_t* dst)
{
    if (areaScale < 2) return;
    if (dustInterval == 0) {
        if ((fastrand() & 0xF0000000u) == 0) dustInterval = fastrand() >> 29;
        return;
    }
    const uint32_t count = (fastrand() >> 27) + uint32_t(areaScale) * 4;
    for (uint32_t speck = 0; speck < count; ++speck) {
        LONG x = LONG(fastrand() % uint32_t(width));
        LONG y = LONG(fastrand() % uint32_t(height));
        uint32_t direction = fastrand() >> 29;
        const uint32_t length = fastrand() % uint32_t(areaScale) + 5;
        for (uint32_t step = 0; step < length; ++step) {
            dst[int64_t(y) * width + x] = 0x101010u;  // alpha 0, as written
            y += dustDirY[direction];
            x += dustDirX[direction];
            if (!inFrame(x, y)) break;
            direction = (direction + fastrand() % 3 - 1) & 7;
        }
    }
    --dustInterval;
}

}  // namespace qx
