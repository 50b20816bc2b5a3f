#include "apps/qxfx/CompositeCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/AudioTrack.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/Messages.h"
#include "apps/qxfx/OutputOptions.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/qxfx/TestPattern.h"
#include "apps/qxfx/VideoReader.h"
#include "apps/session/CompositeJob.h"
#include "apps/session/OverlayFile.h"
#include "filters/Compositor.h"
#include "platform/os/WideText.h"
#include "platform/video/MovieReaderComponent.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx composite [options] --overlay FILE (-o OUTPUT | --discard)\n"
    "Draws a picture, an SWF animation or a movie over a video, an image or the test\n"
    "pattern, as the compositor does for an editor. Geometry is in fractions of the frame.\n"
    "  -i, --input PATH      the background (anything FFmpeg reads); default: test pattern\n"
    "      --overlay FILE    a picture (PNG, JPEG...), an SWF animation (.swf or .dat), or a\n"
    "                        movie (any video FFmpeg reads); \"second\" takes --second\n"
    "      --second PATH     a second video as the picture (with --overlay second)\n"
    "      --x, --y N        left and top of the picture (default 0)\n"
    "      --width, --height N  size of the picture (default 1)\n"
    "      --src-x, --src-y, --src-width, --src-height N  the part of the picture shown\n"
    "                        (default 0, 0, 1, 1)\n"
    "      --angle DEG       turn around the picture's centre, clockwise (default 0)\n"
    "      --opacity N       0 to 1 (default 1)\n"
    "      --key RRGGBB      colour made transparent (with --similarity)\n"
    "      --similarity N    tolerance per channel: 0 to 255, or RRGGBB per channel\n"
    "      --aspect RATIO    shape of the frame when its pixels are not square\n"
    "      --duration SEC    seconds of the clip (default: frames / fps)\n"
    "      --media-start SEC where a movie overlay starts playing (default 0)\n"
    "      --size WxH        size of the test pattern (default 640x360)\n"
    "      --frames N        frames to render (default: all of the input; 50 otherwise)\n"
    "      --fps RATE        frame rate (default: the input's, else 25)\n"
    "      --no-audio        leave the background's audio out (kept by default)\n";

constexpr long kDefaultStillFrames = 50;
constexpr long kMaxFrames = 10'000'000;

struct Placement {
    float x = 0.0f, y = 0.0f, width = 1.0f, height = 1.0f;
    float srcX = 0.0f, srcY = 0.0f, srcWidth = 1.0f, srcHeight = 1.0f;
    float angle = 0.0f, opacity = 1.0f, aspect = 0.0f;
    ULONG key = CQXCompositor::kNoKey;
    ULONG similarity = CQXCompositor::kNoKey;
    std::optional<double> duration;
    double mediaStart = 0.0;
};

struct CompositeOptions {
    std::string input;
    std::string overlay;
    std::string second;
    OutputOptions output;
    int width = 640;
    int height = 360;
    std::optional<long> frames;
    std::optional<double> fps;
    bool audio = true;
    bool help = false;
    Placement placement;
};

// A colour as RRGGBB in hex, turned into the compositor's order (red in the low byte).
ULONG colorRef(std::string_view option, const std::string& text)
{
    unsigned value = 0;
    if (text.size() != 6 || std::sscanf(text.c_str(), "%6x", &value) != 1 ||
        text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        throw CommandError("bad value '" + text + "' for " + std::string(option) + " (RRGGBB in hex)");
    }
    return ULONG((value >> 16) & 0xFF) | ULONG(value & 0xFF00) | ULONG(value & 0xFF) << 16;
}

ULONG similarity(std::string_view option, ArgReader& args)
{
    const std::string text = args.value(option);
    if (text.size() == 6) return colorRef(option, text);
    const std::array<std::string_view, 1> alone{text};
    const ULONG level = ULONG(ArgReader(alone).integer(option, 0, 255));
    return level | level << 8 | level << 16;
}

bool readPlacement(ArgReader& args, std::string_view option, Placement& p)
{
    const auto fraction = [&] { return float(args.number(option, -100.0, 100.0)); };
    if (option == "--x")
        p.x = fraction();
    else if (option == "--y")
        p.y = fraction();
    else if (option == "--width")
        p.width = fraction();
    else if (option == "--height")
        p.height = fraction();
    else if (option == "--src-x")
        p.srcX = fraction();
    else if (option == "--src-y")
        p.srcY = fraction();
    else if (option == "--src-width")
        p.srcWidth = fraction();
    else if (option == "--src-height")
        p.srcHeight = fraction();
    else if (option == "--angle")
        p.angle = float(args.number(option, -36000.0, 36000.0));
    else if (option == "--opacity")
        p.opacity = float(args.number(option, 0.0, 1.0));
    else if (option == "--aspect")
        p.aspect = float(args.number(option, 0.0, 1000.0));
    else if (option == "--key")
        p.key = colorRef(option, args.value(option));
    else if (option == "--similarity")
        p.similarity = similarity(option, args);
    else if (option == "--duration")
        p.duration = args.number(option, 0.0, 1e9);
    else if (option == "--media-start")
        p.mediaStart = args.number(option, 0.0, 1e9);
    else
        return false;
    return true;
}

void readOption(ArgReader& args, std::string_view option, CompositeOptions& o)
{
    if (readPlacement(args, option, o.placement) || readOutputOption(args, option, o.output)) return;
    if (option == "-i" || option == "--input")
        o.input = args.value(option);
    else if (option == "--overlay")
        o.overlay = args.value(option);
    else if (option == "--no-audio")
        o.audio = false;
    else if (option == "--second")
        o.second = args.value(option);
    else if (option == "--size")
        std::tie(o.width, o.height) = args.size(option, kMaxFrameSide);
    else if (option == "--frames")
        o.frames = args.integer(option, 1, kMaxFrames);
    else if (option == "--fps")
        o.fps = args.number(option, 0.001, 1000.0);
    else if (option == "-h" || option == "--help")
        o.help = true;
    else
        throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx composite --help')");
}

CompositeOptions parseOptions(std::span<const std::string_view> arguments)
{
    CompositeOptions options;
    ArgReader args(arguments);
    while (!args.done()) readOption(args, args.take(), options);
    if (options.help) return options;
    checkOutputOptions(options.output, "composite");
    if (options.overlay.empty()) throw CommandError("give the picture with --overlay (see 'qxfx composite --help')");
    if ((options.overlay == "second") != !options.second.empty()) {
        throw CommandError("--second goes with --overlay second, and the other way round");
    }
    return options;
}

void putProperties(CQXCompositor& c, const Placement& p, double clipSeconds, const std::string& overlayPath)
{
    c.put_OffsetX(p.x);
    c.put_OffsetY(p.y);
    c.put_Width(p.width);
    c.put_Height(p.height);
    c.put_SrcOffsetX(p.srcX);
    c.put_SrcOffsetY(p.srcY);
    c.put_SrcWidth(p.srcWidth);
    c.put_SrcHeight(p.srcHeight);
    c.put_Angle(p.angle);
    c.put_Opacity(p.opacity);
    c.put_AspectRatio(p.aspect);
    c.put_KeyColor(p.key);
    c.put_Similarity(p.similarity);
    c.put_Duration(p.duration.value_or(clipSeconds));
    c.put_MediaStart(p.mediaStart);
    const std::u16string path = os::fromUtf8(overlayPath);
    const Bstr text(path);
    c.put_OverlayPath(text.get());
}

int compose(const CompositeOptions& o)
{
    std::unique_ptr<VideoReader> reader;
    const int threads = o.output.encode.threads;
    if (!o.input.empty()) reader = std::make_unique<VideoReader>(o.input, threads);
    std::unique_ptr<VideoReader> second;
    if (!o.second.empty()) second = std::make_unique<VideoReader>(o.second, threads);
    const int width = reader ? reader->width() : o.width;
    const int height = reader ? reader->height() : o.height;
    const long inputFrames = reader && !o.frames ? long(VideoReader::countFrames(o.input)) : 0;
    const long frames = o.frames.value_or(inputFrames > 1 ? std::min(inputFrames, kMaxFrames) : kDefaultStillFrames);
    const double fps = o.fps.value_or(reader ? reader->frameRate() : 25.0);
    // Movies are read through the movie reader component, found by class identifier.
    video::RegisterMovieReader();
    const OverlayFile overlay(o.overlay == "second" ? std::string() : o.overlay);
    CompositeJob job(width, height);
    putProperties(job.compositor(), o.placement, double(frames) / fps, overlay.path());
    job.setUp();
    std::unique_ptr<VideoOutput> out;
    std::unique_ptr<AudioTrack> audio;
    if (!o.output.discard) {
        const std::string inputs[] = {o.input, o.overlay, o.second};
        out = std::make_unique<VideoOutput>(o.output, inputs, width, height, constantRate(o.output.encode, fps));
        // The background's sound goes along, as render keeps a clip's.
        if (reader && o.audio) audio = AudioTrack::open(o.input, Trim{}, out->writer());
        out->writer().start();
    }
    const InterruptGuard interruption;
    ProgressBar bar("composite", frames);
    bool inputEnded = false;
    bool secondEnded = false;
    for (long i = 0; i < frames && !InterruptGuard::raised(); ++i) {
        if (!reader)
            drawTestPattern(job.first(), int(i), int(frames));
        else if (!inputEnded && !reader->read(job.first()))
            inputEnded = true;
        if (inputEnded && i == 0) throw CommandError("'" + o.input + "': no frame could be decoded");
        if (second && !secondEnded && !second->read(job.second())) secondEnded = true;
        const Frame& result = job.run(frames > 1 ? float(double(i) / double(frames - 1)) : 0.0f, !second);
        if (audio) audio->writeUntil(double(i) / fps);
        if (out) out->writer().write(result);
        bar.update(i + 1);
    }
    if (audio) audio->finish(o.frames || InterruptGuard::raised() ? double(frames) / fps : INFINITY);
    if (out) out->finish();
    return 0;
}

}  // namespace

int runComposite(std::span<const std::string_view> args)
{
    return runCommand("composite", args, {kUsage, kOutputOptionsHelp}, parseOptions,
                      [](auto& options) { return compose(options); });
}

}  // namespace qx::qxfx
