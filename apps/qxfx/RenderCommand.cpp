#include "apps/qxfx/RenderCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/qxfx/TestPattern.h"
#include "apps/qxfx/VideoReader.h"
#include "apps/qxfx/VideoWriter.h"
#include "apps/session/ContentPack.h"
#include "apps/session/EffectSession.h"
#include "platform/os/WorkerPool.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx render [options] (-o OUTPUT | --discard)\n"
    "Puts one effect of the catalogue on a video, an image or the built-in test pattern.\n"
    "Progress goes from 0 at the first frame to 1 at the last.\n"
    "  -e, --effect ID      effect id, as 'qxfx list' shows it (default 0)\n"
    "      --index N        the effect by its table index instead\n"
    "  -p, --params TEXT    parameter text, each value followed by ';' (default: the\n"
    "                       effect's defaults)\n"
    "      --source PATH    the effect's source (scene or animation file, under the\n"
    "                       data path); default: the pack's own for 5003 to 5005, 15000\n"
    "      --data PATH      data path of the content pack (default: the built or\n"
    "                       installed pack)\n"
    "  -i, --input PATH     video or image (anything FFmpeg reads); default: test pattern\n"
    "  -o, --output PATH    video file (.mp4: H.264; .mkv, .mov) or PNG frames with a\n"
    "                       number pattern (frames/f-%04d.png)\n"
    "      --discard        render and drop the frames (for timing)\n"
    "      --lossless       a lossless codec with alpha (FFV1 or PNG) instead of H.264\n"
    "      --size WxH       size of the test pattern (default 640x360)\n"
    "      --frames N       frames to render (default: all of a video; 50 otherwise);\n"
    "                       a shorter input holds its last frame\n"
    "      --fps RATE       frame rate (default: the input's, else 25)\n"
    "      --duration SEC   the effect's span in seconds (default: frames / fps)\n"
    "      --aspect RATIO   aspect ratio for the effect (default: the frame's)\n"
    "      --threads N      threads of FFmpeg's decoding and encoding and of the\n"
    "                       effect's rows (default 0: automatic, every core)\n";

constexpr long kDefaultStillFrames = 50;
constexpr long kMaxFrames = 10'000'000;

struct RenderOptions {
    EffectSettings effect;
    std::optional<long> effectIndex;
    std::string input;
    std::string output;
    bool discard = false;
    bool lossless = false;
    int width = 640;
    int height = 360;
    std::optional<long> frames;
    std::optional<double> fps;
    int threads = 0;
    bool help = false;
};

void readOption(ArgReader& args, std::string_view option, RenderOptions& o)
{
    if (option == "-e" || option == "--effect")
        o.effect.effectId = LONG(args.integer(option, INT32_MIN, INT32_MAX));
    else if (option == "--index")
        o.effectIndex = args.integer(option, 0, INT32_MAX);
    else if (option == "-p" || option == "--params")
        o.effect.params = args.value(option);
    else if (option == "--source")
        o.effect.source = args.value(option);
    else if (option == "--data")
        o.effect.dataPath = args.value(option);
    else if (option == "-i" || option == "--input")
        o.input = args.value(option);
    else if (option == "-o" || option == "--output")
        o.output = args.value(option);
    else if (option == "--discard")
        o.discard = true;
    else if (option == "--lossless")
        o.lossless = true;
    else if (option == "--size")
        std::tie(o.width, o.height) = args.size(option, kMaxFrameSide);
    else if (option == "--frames")
        o.frames = args.integer(option, 1, kMaxFrames);
    else if (option == "--fps")
        o.fps = args.number(option, 0.001, 1000.0);
    else if (option == "--duration")
        o.effect.durationSeconds = args.number(option, 0.0, 1e9);
    else if (option == "--aspect")
        o.effect.aspectRatio = float(args.number(option, 0.0, 1000.0));
    else if (option == "--threads")
        o.threads = int(args.integer(option, 0, 64));
    else if (option == "-h" || option == "--help")
        o.help = true;
    else
        throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx render --help')");
}

RenderOptions parseOptions(std::span<const std::string_view> arguments)
{
    RenderOptions options;
    options.effect.dataPath = findDataPath("/proc/self/exe");
    ArgReader args(arguments);
    while (!args.done()) readOption(args, args.take(), options);
    if (options.help) return options;
    if (options.discard == !options.output.empty()) {
        throw CommandError("give either -o OUTPUT or --discard (see 'qxfx render --help')");
    }
    return options;
}

// The effect id of a table index, through the host as an editor would ask it.
LONG effectIdOfIndex(long index)
{
    const auto host = CQXDynamicEffect::Create();
    LONG id = 0;
    if (host->GetIDFromIdx(LONG(index), &id) != S_OK) {
        throw CommandError("no effect at table index " + std::to_string(index) + " (see 'qxfx list')");
    }
    return id;
}

int render(RenderOptions& o)
{
    if (o.effectIndex) o.effect.effectId = effectIdOfIndex(*o.effectIndex);
    // Before any frame: the effects' worker pool is sized once, on first use.
    os::WorkerPool::setThreadCount(unsigned(o.threads));
    if (o.effect.source.empty()) o.effect.source = packSource(o.effect.effectId);
    std::unique_ptr<VideoReader> reader;
    if (!o.input.empty()) reader = std::make_unique<VideoReader>(o.input, o.threads);
    const int width = reader ? reader->width() : o.width;
    const int height = reader ? reader->height() : o.height;
    const long inputFrames = reader && !o.frames ? long(VideoReader::countFrames(o.input)) : 0;
    const long frames = o.frames.value_or(inputFrames > 1 ? std::min(inputFrames, kMaxFrames) : kDefaultStillFrames);
    const double fps = o.fps.value_or(reader ? reader->frameRate() : 25.0);
    o.effect.fps = float(fps);
    if (o.effect.durationSeconds <= 0.0) o.effect.durationSeconds = double(frames) / fps;

    EffectSession session(o.effect, width, height);
    std::unique_ptr<VideoWriter> writer;
    if (!o.discard)
        writer = std::make_unique<VideoWriter>(o.output, width, height, av_d2q(fps, 100000), o.threads, o.lossless);
    ProgressBar bar("render", frames);
    bool inputEnded = false;
    for (long i = 0; i < frames; ++i) {
        if (!reader)
            drawTestPattern(session.input(), int(i), int(frames));
        else if (!inputEnded && !reader->read(session.input()))
            inputEnded = true;
        if (inputEnded && i == 0) throw CommandError("'" + o.input + "': no frame could be decoded");
        session.process(frames > 1 ? float(double(i) / double(frames - 1)) : 0.0f);
        if (writer) writer->write(session.output());
        bar.update(i + 1);
    }
    if (writer) writer->finish();
    return 0;
}

}  // namespace

int runRender(std::span<const std::string_view> args)
{
    try {
        auto options = parseOptions(args);
        if (options.help) {
            std::fputs(kUsage, stdout);
            return 0;
        }
        return render(options);
    } catch (const CommandError& error) {
        std::fprintf(stderr, "qxfx render: %s\n", error.what());
        return 1;
    }
}

}  // namespace qx::qxfx
