#include "apps/qxfx/TestPattern.h"

#include <array>
#include <cmath>

namespace qx::qxfx {

namespace {

constexpr uint32_t kOpaque = 0xFF000000u;

// The seven bars, B, G, R in the low three bytes: white, yellow, cyan, green, magenta,
// red, blue.
constexpr std::array<uint32_t, 7> kBars = {0xC0C0C0u, 0x00C0C0u, 0xC0C000u, 0x00C000u, 0xC000C0u, 0x0000C0u, 0xC00000u};

uint32_t background(int x, int y, int width, int height)
{
    if (y < height * 2 / 3) return kOpaque | kBars[size_t(x * 7 / width)];
    const uint32_t grey = uint32_t(x * 255 / std::max(1, width - 1));
    return kOpaque | grey << 16 | grey << 8 | grey;
}

bool onGrid(int x, int y, int width, int height)
{
    const int cellX = std::max(1, width / 8);
    const int cellY = std::max(1, height / 6);
    return x % cellX == 0 || y % cellY == 0;
}

}  // namespace

void drawTestPattern(Frame& frame, int index, int count)
{
    const int width = frame.width;
    const int height = frame.height;
    const double t = count > 1 ? double(index) / double(count - 1) : 0.0;
    const double discX = width * (0.15 + 0.7 * t);
    const double discY = height * (0.5 - 0.25 * std::sin(t * 6.283185307179586));
    const double radius = std::max(2.0, height / 10.0);
    for (int y = 0; y < height; ++y) {
        uint32_t* row = frame.samples.data() + size_t(y) * size_t(width);
        for (int x = 0; x < width; ++x) {
            const double dx = x - discX;
            const double dy = y - discY;
            if (dx * dx + dy * dy <= radius * radius) {
                row[x] = kOpaque | 0xFFFFFFu;
            } else if (onGrid(x, y, width, height)) {
                row[x] = kOpaque;
            } else {
                row[x] = background(x, y, width, height);
            }
        }
    }
}

}  // namespace qx::qxfx

namespace qx::qxfx {

PatternFrames::PatternFrames(int width, int height, long count, double rate)
    : width_(width), height_(height), count_(count), rate_(rate)
{}

bool PatternFrames::next(TimedFrame& out)
{
    if (index_ >= count_) return false;
    if (out.frame.width != width_ || out.frame.height != height_) out.frame = makeFrame(width_, height_);
    drawTestPattern(out.frame, int(index_), int(count_));
    out.seconds = double(index_) / rate_;
    ++index_;
    return true;
}

}  // namespace qx::qxfx
