#include "apps/qxfx/AnimCommand.h"

#include "apps/qxfx/AnimJob.h"
#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/Messages.h"
#include "apps/qxfx/OutputOptions.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/session/ContentPack.h"

#include <cmath>
#include <cstdio>
#include <memory>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx anim COMPOSITION [--image PICTURE]... [options] (-o OUTPUT | --discard)\n"
    "Plays a composition with your pictures in its places, as a slideshow or a title:\n"
    "a 3D composition (.cpo3d, named under the pack's Scenes folder, e.g.\n"
    "Compositions/Carousel.cpo3d) or a 2D composition (a file of its own, or one under\n"
    "the pack's Scenes folder, e.g. Compositions/Slideshow.cpo). Pictures repeat when\n"
    "the composition has more places than pictures. A frame is written while the next\n"
    "is rendered.\n"
    "      --image PATH      a picture (PNG, JPEG, BMP...); up to five, in order\n"
    "      --duration S      length of the video; the composition is played over it\n"
    "                        (default: the composition's own length)\n"
    "      --start S         seconds into that length to begin at (default 0)\n"
    "      --size WxH        frame size (default 1280x720)\n"
    "      --fps RATE        frame rate (default 25)\n"
    "      --fit MODE        how pictures fill their places: crop (default), inside, stretch\n"
    "      --data PATH       the content pack (default: the built or installed pack)\n";

constexpr size_t kMaxImages = 5;
constexpr double kMaxSeconds = 24 * 3600.0;

struct AnimOptions {
    AnimSettings settings;
    OutputOptions output;
    bool help = false;
};

int fitMode(const std::string& text)
{
    // The source's codes: 0 stretches, 2 fits inside, any other fills and crops.
    if (text == "stretch") return 0;
    if (text == "inside") return 2;
    if (text == "crop") return 1;
    throw CommandError("bad value '" + text + "' for --fit (crop, inside or stretch)");
}

void readOption(ArgReader& args, std::string_view option, AnimOptions& o)
{
    AnimSettings& s = o.settings;
    if (option == "--image") {
        if (s.images.size() == kMaxImages) throw CommandError("at most five pictures");
        s.images.push_back(args.value(option));
    } else if (option == "--duration")
        s.duration = args.number(option, 0.001, kMaxSeconds);
    else if (option == "--start")
        s.start = args.number(option, 0.0, kMaxSeconds);
    else if (option == "--size")
        std::tie(s.width, s.height) = args.size(option, kMaxFrameSide);
    else if (option == "--fps")
        s.fps = args.number(option, 0.01, 1000.0);
    else if (option == "--fit")
        s.stretchMode = fitMode(args.value(option));
    else if (option == "--data")
        s.dataPath = args.value(option);
    else if (option == "-h" || option == "--help")
        o.help = true;
    else if (!option.starts_with("-") && s.composition.empty())
        s.composition = std::string(option);
    else if (!readOutputOption(args, option, o.output))
        throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx anim --help')");
}

AnimOptions parseOptions(std::span<const std::string_view> arguments)
{
    AnimOptions options;
    options.settings.dataPath = findDataPath("/proc/self/exe");
    ArgReader args(arguments);
    while (!args.done()) readOption(args, args.take(), options);
    if (options.help) return options;
    if (options.settings.composition.empty()) throw CommandError("give the composition (see 'qxfx anim --help')");
    if (options.settings.images.empty()) throw CommandError("give at least one --image");
    checkOutputOptions(options.output, "anim");
    return options;
}

int play(AnimOptions& o)
{
    AnimSettings& s = o.settings;
    makeFrame(s.width, s.height);  // the size is checked before anything else
    if (s.duration <= 0.0) {
        s.duration = compositionDuration(s);
        if (s.duration <= 0.0) {
            throw CommandError("'" + s.composition +
                               "': no composition there, or it has no duration (give --duration)");
        }
    }
    if (s.start >= s.duration) throw CommandError("--start lies beyond the composition's end");
    const long frames = std::max(1L, std::lround((s.duration - s.start) * s.fps));
    std::unique_ptr<VideoOutput> out;
    if (!o.output.discard) {
        std::vector<std::string> inputs = s.images;
        inputs.push_back(s.composition);
        out = std::make_unique<VideoOutput>(o.output, inputs, s.width, s.height, constantRate(o.output.encode, s.fps));
    }
    const InterruptGuard interruption;
    ProgressBar bar("anim", frames);
    long written = 0;
    renderComposition(s, frames, [&](const Frame& frame, long index) {
        if (out) out->writer().write(frame);
        bar.update(written = index + 1);
        return !InterruptGuard::raised();
    });
    if (out) out->finish();
    return exitCodeOfRun("anim", written, out ? out->target() : "");
}

}  // namespace

int runAnim(std::span<const std::string_view> args)
{
    return runCommand("anim", args, {kUsage, kOutputOptionsHelp}, parseOptions,
                      [](auto& options) { return play(options); });
}

}  // namespace qx::qxfx
