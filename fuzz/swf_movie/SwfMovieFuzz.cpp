// SWF movies from any bytes: loaded, then a few frames drawn with and without smoothing,
// at a small size and an odd one. Inputs without a signature are taken as a tag stream
// and given the header of a plain movie, so that mutations reach the tags, shapes and
// bitmaps instead of stopping at the signature or a compressed stream.
#include "platform/swf/Movie.h"

extern "C" {
#include <libavutil/log.h>
}

#include <cstring>
#include <vector>

namespace {

constexpr size_t kFramesDrawn = 4;

void drawSome(const qx::swf::Movie& movie)
{
    qx::draw2d::Bitmap small(48, 32);
    qx::draw2d::Bitmap odd(7, 61);
    const size_t frames = std::min(movie.frameCount(), kFramesDrawn) + 1;  // one past the end loops
    for (size_t tick = 0; tick < frames; ++tick) {
        movie.render(tick, small, {qx::swf::ScaleMode::ShowAll, tick % 2 == 0, {}});
        movie.render(tick, odd, {qx::swf::ScaleMode::ExactFit, true, qx::swf::Rgba{255, 0, 255, 0}});
    }
}

bool hasSignature(const uint8_t* data, size_t size)
{
    return size >= 3 &&
           (std::memcmp(data, "FWS", 3) == 0 || std::memcmp(data, "CWS", 3) == 0 || std::memcmp(data, "ZWS", 3) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    av_log_set_level(AV_LOG_QUIET);  // the picture decoders' complaints about damaged data
    if (hasSignature(data, size)) {
        if (const auto movie = qx::swf::Movie::load({data, size})) drawSome(*movie);
        return 0;
    }
    // FWS, version 10, length, a 40 by 30 pixel stage, 25 frames a second, 0 frames.
    std::vector<uint8_t> file{'F',  'W',  'S',  10,   0,    0,    0,    0, 0x58, 0x00,
                              0x64, 0x00, 0x01, 0x2C, 0x00, 0x00, 0x19, 0, 0};
    file.insert(file.end(), data, data + size);
    const uint32_t length = uint32_t(file.size());
    std::memcpy(file.data() + 4, &length, 4);
    if (const auto movie = qx::swf::Movie::load(file)) drawSome(*movie);
    return 0;
}
