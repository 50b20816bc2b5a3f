#include "apps/qxfx/RenderCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/OutputOptions.h"
#include "apps/qxfx/ParamCheck.h"
#include "apps/qxfx/RenderPipeline.h"
#include "apps/session/ContentPack.h"
#include "platform/os/WorkerPool.h"

#include <cstdio>
#include <string>

namespace qx::qxfx {

namespace {

constexpr const char* kUsageHead =
    "usage: qxfx render [options] (-o OUTPUT | --discard)\n"
    "Puts one effect of the catalogue on a video, an image or the built-in test pattern.\n"
    "The input's audio, timestamps and colour tags are kept; a clip stored on its side is\n"
    "turned upright. Progress goes from 0 where the effect's span starts to 1 where it\n"
    "ends (default: the whole clip); frames outside the span pass untouched.\n"
    "  -e, --effect ID      effect id, as 'qxfx list' shows it (default 0)\n"
    "      --index N        the effect by its table index instead\n"
    "  -p, --params TEXT    parameter text, each value followed by ';' (default: the\n"
    "                       effect's defaults), checked against the effect's table\n"
    "      --raw-params TEXT  the parameter text handed to the effect unchecked, as an\n"
    "                       editor would\n"
    "      --source PATH    the effect's source (scene or animation file, under the\n"
    "                       data path); default: the pack's own for 5003 to 5005, 15000\n"
    "      --data PATH      data path of the content pack (default: the built or\n"
    "                       installed pack)\n"
    "  -i, --input PATH     video or image (anything FFmpeg reads), '-' for standard\n"
    "                       input; default: test pattern\n"
    "      --input-format NAME  the input's format, for pipes FFmpeg cannot probe\n"
    "                       (rawvideo needs --input-size, --input-rate, --input-pixels)\n"
    "      --input-size WxH, --input-rate FPS, --input-pixels NAME  raw video's layout\n"
    "  -ss SEC              start reading the input at SEC\n"
    "  -t SEC               read SEC seconds of the input\n"
    "      --start SEC      where the effect's span starts in the output (default 0)\n"
    "      --length SEC     how long the span lasts (default: to the end of the clip)\n"
    "      --no-audio       leave the input's audio out\n";

constexpr const char* kUsageTail =
    "      --size WxH       size of the test pattern (default 640x360)\n"
    "      --frames N       frames to render (default: all of a video; 50 otherwise);\n"
    "                       a shorter input holds its last frame\n"
    "      --fps RATE       convert to this constant frame rate, dropping or repeating\n"
    "                       frames (default: the input's own timing, else 25)\n"
    "      --duration SEC   the effect's Duration (default: the span's length)\n"
    "      --aspect RATIO   aspect ratio for the effect (default: the frame's)\n";

struct RenderOptions {
    RenderRequest request;
    std::optional<long> effectIndex;
    bool rawParams = false;
    OutputOptions output;
    bool help = false;
};

bool readInputOption(ArgReader& args, std::string_view option, RenderRequest& r)
{
    if (option == "-i" || option == "--input")
        r.input = args.value(option);
    else if (option == "--input-format")
        r.inputFormat.name = args.value(option);
    else if (option == "--input-size")
        r.inputFormat.options.emplace_back("video_size", args.value(option));
    else if (option == "--input-rate")
        r.inputFormat.options.emplace_back("framerate", args.value(option));
    else if (option == "--input-pixels")
        r.inputFormat.options.emplace_back("pixel_format", args.value(option));
    else if (option == "-ss")
        r.trim.start = args.number(option, 0.0, 1e9);
    else if (option == "-t")
        r.trim.length = args.number(option, 0.0, 1e9);
    else if (option == "--no-audio")
        r.audio = false;
    else
        return false;
    return true;
}

void readOption(ArgReader& args, std::string_view option, RenderOptions& o)
{
    RenderRequest& r = o.request;
    if (readInputOption(args, option, r) || readOutputOption(args, option, o.output)) return;
    if (option == "-e" || option == "--effect")
        r.effect.effectId = LONG(args.integer(option, INT32_MIN, INT32_MAX));
    else if (option == "--index")
        o.effectIndex = args.integer(option, 0, INT32_MAX);
    else if (option == "-p" || option == "--params" || option == "--raw-params") {
        r.effect.params = args.value(option);
        o.rawParams = option == "--raw-params";
    } else if (option == "--source")
        r.effect.source = args.value(option);
    else if (option == "--data")
        r.effect.dataPath = args.value(option);
    else if (option == "--size")
        r.patternSize = args.size(option, kMaxFrameSide);
    else if (option == "--frames")
        r.pacing.count = args.integer(option, 1, kMaxFrames);
    else if (option == "--fps")
        r.pacing.rate = args.number(option, 0.001, 1000.0);
    else if (option == "--duration")
        r.effect.durationSeconds = args.number(option, 0.0, 1e9);
    else if (option == "--start")
        r.spanStart = args.number(option, 0.0, 1e9);
    else if (option == "--length")
        r.spanLength = args.number(option, 0.0, 1e9);
    else if (option == "--aspect")
        r.effect.aspectRatio = float(args.number(option, 0.0, 1000.0));
    else if (option == "-h" || option == "--help")
        o.help = true;
    else
        throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx render --help')");
}

RenderOptions parseOptions(std::span<const std::string_view> arguments)
{
    RenderOptions options;
    options.request.effect.dataPath = findDataPath("/proc/self/exe");
    ArgReader args(arguments);
    while (!args.done()) readOption(args, args.take(), options);
    if (options.help) return options;
    checkOutputOptions(options.output, "render");
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

}  // namespace

int runRender(std::span<const std::string_view> args)
{
    return runCommand("render", args, {kUsageHead, kOutputOptionsHelp, kUsageTail}, parseOptions, [](auto& o) {
        RenderRequest& r = o.request;
        if (o.effectIndex) r.effect.effectId = effectIdOfIndex(*o.effectIndex);
        if (r.effect.source.empty()) r.effect.source = packSource(r.effect.effectId);
        if (r.effect.params && !o.rawParams) checkParamText(*r.effect.params, paramTableOf(r.effect.effectId));
        // Before any frame: the effects' worker pool is sized once, on first use.
        os::WorkerPool::setThreadCount(unsigned(o.output.encode.threads));
        return renderClip(r, o.output);
    });
}

}  // namespace qx::qxfx
