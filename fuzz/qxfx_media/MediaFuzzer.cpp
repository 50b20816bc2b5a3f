// Feeds arbitrary bytes to qxfx's video reader as a file: whatever FFmpeg makes of them,
// the reader must end with frames or a CommandError, within its caps, without reading or
// writing out of bounds; frame times come in order and the turn is a quarter turn.
#include "apps/qxfx/VideoReader.h"

extern "C" {
#include <libavutil/log.h>
}

#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

constexpr int kMaxFrames = 16;

std::string inputPath() { return "/tmp/qxfx-media-fuzz-" + std::to_string(::getpid()); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    av_log_set_level(AV_LOG_QUIET);
    const std::string path = inputPath();
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(data), std::streamsize(size));
    try {
        qx::qxfx::VideoReader reader(path, 1);
        auto frame = qx::qxfx::makeFrame(reader.width(), reader.height());
        for (int i = 0; i < kMaxFrames && reader.read(frame); ++i) {}
        // The times of every frame, from the packets, and the turn of the display matrix.
        const auto times = qx::qxfx::VideoReader::frameTimes(path);
        for (size_t i = 1; i < times.size(); ++i)
            if (times[i] < times[i - 1]) __builtin_trap();
        const int turn = reader.uprightTurn();
        if (turn != 0 && turn != 90 && turn != 180 && turn != 270) __builtin_trap();
    } catch (const qx::qxfx::CommandError&) {}
    std::remove(path.c_str());
    return 0;
}
