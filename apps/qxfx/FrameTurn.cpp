#include "apps/qxfx/FrameTurn.h"

namespace qx::qxfx {

void turnClockwise(const Frame& frame, int degrees, Frame& turned)
{
    const bool sideways = degrees == 90 || degrees == 270;
    if (degrees != 0 && degrees != 180 && !sideways) {
        throw CommandError("a frame turns by 0, 90, 180 or 270 degrees, not " + std::to_string(degrees));
    }
    const int width = frame.width;
    const int height = frame.height;
    const int turnedWidth = sideways ? height : width;
    if (turned.width != turnedWidth || turned.samples.size() != frame.samples.size()) {
        turned = makeFrame(turnedWidth, sideways ? width : height);
    }
    // Each source sample (x, y) lands where the turn puts it.
    for (int y = 0; y < height; ++y) {
        const uint32_t* row = frame.samples.data() + size_t(y) * size_t(width);
        for (int x = 0; x < width; ++x) {
            int tx = x, ty = y;
            if (degrees == 90) {
                tx = height - 1 - y;
                ty = x;
            } else if (degrees == 180) {
                tx = width - 1 - x;
                ty = height - 1 - y;
            } else if (degrees == 270) {
                tx = y;
                ty = width - 1 - x;
            }
            turned.samples[size_t(ty) * size_t(turnedWidth) + size_t(tx)] = row[x];
        }
    }
}

}  // namespace qx::qxfx
