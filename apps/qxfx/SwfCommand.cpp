#include "apps/qxfx/SwfCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/Messages.h"
#include "apps/qxfx/OutputOptions.h"
#include "apps/qxfx/ProgressBar.h"
#include "platform/swf/Movie.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx swf ANIMATION.swf [options] (-o OUTPUT | --discard)\n"
    "Draws the frames of an SWF animation (shapes, gradients, bitmaps, morphs, sprites;\n"
    "no ActionScript, text or sound) into a video, at the animation's own frame rate.\n"
    "      --size WxH        size of the video (default: the animation's stage)\n"
    "      --stretch         fill the video with the stage (default: whole stage, centred)\n"
    "      --frames N        frames to draw (default: the animation's; more play on,\n"
    "                        its sprites going on as the main timeline loops)\n"
    "      --fps RATE        frame rate of the video (default: the animation's, else 25)\n"
    "      --background RRGGBB  instead of the animation's background colour\n"
    "      --transparent     no background: frames keep their alpha (with --lossless)\n"
    "      --low-quality     no smoothing, as the player's low quality draws\n";

constexpr long kMaxFrames = 10'000'000;
constexpr double kDefaultFps = 25.0;

struct SwfOptions {
    std::string input;
    OutputOptions output;
    std::optional<std::pair<int, int>> size;
    bool stretch = false;
    std::optional<long> frames;
    std::optional<double> fps;
    std::optional<swf::Rgba> background;
    bool lowQuality = false;
    bool help = false;
};

swf::Rgba parseColor(std::string_view option, const std::string& text)
{
    unsigned value = 0;
    if (text.size() != 6 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos ||
        std::sscanf(text.c_str(), "%6x", &value) != 1) {
        throw CommandError("bad value '" + text + "' for " + std::string(option) + " (RRGGBB in hex)");
    }
    return {uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value), 255};
}

void readOption(ArgReader& args, std::string_view option, SwfOptions& o)
{
    if (readOutputOption(args, option, o.output)) return;
    if (option == "--size")
        o.size = args.size(option, kMaxFrameSide);
    else if (option == "--stretch")
        o.stretch = true;
    else if (option == "--frames")
        o.frames = args.integer(option, 1, kMaxFrames);
    else if (option == "--fps")
        o.fps = args.number(option, 0.001, 1000.0);
    else if (option == "--background")
        o.background = parseColor(option, args.value(option));
    else if (option == "--transparent")
        o.background = swf::Rgba{0, 0, 0, 0};
    else if (option == "--low-quality")
        o.lowQuality = true;
    else if (option == "-h" || option == "--help")
        o.help = true;
    else if (!option.starts_with("-") && o.input.empty())
        o.input = std::string(option);
    else
        throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx swf --help')");
}

SwfOptions parseOptions(std::span<const std::string_view> arguments)
{
    SwfOptions options;
    ArgReader args(arguments);
    while (!args.done()) readOption(args, args.take(), options);
    if (options.help) return options;
    if (options.input.empty()) throw CommandError("give the animation file (see 'qxfx swf --help')");
    checkOutputOptions(options.output, "swf");
    return options;
}

// The stage in whole pixels, within the limits of a frame.
std::pair<int, int> stageSize(const swf::MovieHeader& header)
{
    const auto pixels = [](int64_t twips) { return int(std::clamp<int64_t>((twips + 10) / 20, 1, kMaxFrameSide)); };
    return {pixels(header.stage.width()), pixels(header.stage.height())};
}

int draw(const SwfOptions& o)
{
    const auto movie = swf::Movie::loadFile(o.input);
    if (!movie) throw CommandError("'" + o.input + "': not a readable SWF animation");
    if (movie->frameCount() == 0) throw CommandError("'" + o.input + "': the animation has no frames");
    const auto [width, height] = o.size.value_or(stageSize(movie->header()));
    Frame frame = makeFrame(width, height);
    const double declared = movie->header().frameRate;
    const double fps = o.fps.value_or(declared > 0.0 && declared <= 1000.0 ? declared : kDefaultFps);
    const long frames = o.frames.value_or(long(std::min<size_t>(movie->frameCount(), size_t(kMaxFrames))));
    std::unique_ptr<VideoOutput> out;
    if (!o.output.discard) {
        const std::string inputs[] = {o.input};
        out = std::make_unique<VideoOutput>(o.output, inputs, width, height, constantRate(o.output.encode, fps));
    }
    const swf::RenderOptions options{o.stretch ? swf::ScaleMode::ExactFit : swf::ScaleMode::ShowAll, !o.lowQuality,
                                     o.background};
    draw2d::Bitmap target(width, height, width * 4, frame.samples.data());
    ProgressBar bar("swf", frames);
    const InterruptGuard interruption;
    for (long i = 0; i < frames && !InterruptGuard::raised(); ++i) {
        if (!movie->render(size_t(i), target, options)) throw CommandError("the frame cannot be drawn");
        if (out) out->writer().write(frame);
        bar.update(i + 1);
    }
    if (out) out->finish();
    return 0;
}

}  // namespace

int runSwf(std::span<const std::string_view> args)
{
    return runCommand("swf", args, {kUsage, kOutputOptionsHelp}, parseOptions,
                      [](auto& options) { return draw(options); });
}

}  // namespace qx::qxfx
