#include "apps/qxfx/AnimCommand.h"

#include "apps/qxfx/AnimJob.h"
#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/qxfx/VideoWriter.h"
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
    "the composition has more places than pictures.\n"
    "  -o, --output PATH     video file (.mp4: H.264; .mkv, .mov) or PNG frames with a\n"
    "                        number pattern (frames/f-%04d.png)\n"
    "      --discard         render and drop the frames (for timing)\n"
    "      --image PATH      a picture (PNG, JPEG, BMP...); up to five, in order\n"
    "      --duration S      length of the video; the composition is played over it\n"
    "                        (default: the composition's own length)\n"
    "      --start S         seconds into that length to begin at (default 0)\n"
    "      --size WxH        frame size (default 1280x720)\n"
    "      --fps RATE        frame rate (default 25)\n"
    "      --fit MODE        how pictures fill their places: crop (default), inside, stretch\n"
    "      --data PATH       the content pack (default: the built or installed pack)\n"
    "      --lossless        a lossless codec instead of H.264\n"
    "      --threads N       FFmpeg encoding threads (default 0: automatic)\n";

constexpr size_t kMaxImages = 5;
constexpr double kMaxSeconds = 24 * 3600.0;

struct AnimOptions {
    AnimSettings settings;
    std::string output;
    bool discard = false;
    bool lossless = false;
    int threads = 0;
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
    if (option == "-o" || option == "--output")
        o.output = args.value(option);
    else if (option == "--discard")
        o.discard = true;
    else if (option == "--image") {
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
    else if (option == "--lossless")
        o.lossless = true;
    else if (option == "--threads")
        o.threads = int(args.integer(option, 0, 64));
    else if (option == "-h" || option == "--help")
        o.help = true;
    else if (!option.starts_with("-") && s.composition.empty())
        s.composition = std::string(option);
    else
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
    if (options.discard == !options.output.empty()) {
        throw CommandError("give either -o OUTPUT or --discard (see 'qxfx anim --help')");
    }
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
    std::unique_ptr<VideoWriter> writer;
    if (!o.discard) {
        writer =
            std::make_unique<VideoWriter>(o.output, s.width, s.height, av_d2q(s.fps, 100000), o.threads, o.lossless);
    }
    ProgressBar bar("anim", frames);
    renderComposition(s, frames, [&](const Frame& frame, long index) {
        if (writer) writer->write(frame);
        bar.update(index + 1);
    });
    if (writer) writer->finish();
    return 0;
}

}  // namespace

int runAnim(std::span<const std::string_view> args)
{
    try {
        auto options = parseOptions(args);
        if (options.help) {
            std::fputs(kUsage, stdout);
            return 0;
        }
        return play(options);
    } catch (const CommandError& error) {
        std::fprintf(stderr, "qxfx anim: %s\n", error.what());
        return 1;
    }
}

}  // namespace qx::qxfx
