#include "apps/qxfx/TransitionCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/qxfx/RetimedClip.h"
#include "apps/qxfx/VideoReader.h"
#include "apps/qxfx/VideoWriter.h"
#include "apps/session/ContentPack.h"
#include "apps/session/TransitionJob.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx transition -a FIRST -b SECOND --overlap SECONDS [options] (-o OUTPUT | --discard)\n"
    "Joins two clips with a 3D transition: the first clip plays, the transition scene\n"
    "runs over the last SECONDS of it and the first SECONDS of the second clip with\n"
    "progress 0 to 1, then the second clip plays on. The output has the first clip's\n"
    "size and frame rate; the second clip is stretched and retimed to them. An overlap\n"
    "longer than either clip is cut to the shorter one.\n"
    "  -a, --first PATH     the clip that leaves (anything FFmpeg reads)\n"
    "  -b, --second PATH    the clip that enters\n"
    "      --overlap SEC    length of the transition in seconds\n"
    "      --scene PATH     transition scene under the pack's Scenes folder\n"
    "                       (default Transitions\\Cube.afx; '/' may stand for '\\')\n"
    "      --data PATH      data path of the content pack (default: the built or\n"
    "                       installed pack)\n"
    "      --aspect RATIO   aspect ratio for the scene (default: the frame's)\n"
    "  -o, --output PATH    video file (.mp4: H.264; .mkv, .mov) or PNG frames with a\n"
    "                       number pattern (frames/f-%04d.png)\n"
    "      --discard        render and drop the frames (for timing)\n"
    "      --lossless       a lossless codec with alpha (FFV1 or PNG) instead of H.264\n"
    "      --threads N      FFmpeg decoding and encoding threads (default 0: automatic)\n";

constexpr long kMaxFrames = 100'000'000;

struct TransitionOptions {
    TransitionSettings transition;
    std::string first;
    std::string second;
    std::optional<double> overlap;
    std::string output;
    bool discard = false;
    bool lossless = false;
    int threads = 0;
    bool help = false;
};

void readOption(ArgReader& args, std::string_view option, TransitionOptions& o)
{
    if (option == "-a" || option == "--first")
        o.first = args.value(option);
    else if (option == "-b" || option == "--second")
        o.second = args.value(option);
    else if (option == "--overlap")
        o.overlap = args.number(option, 0.0, 1e7);
    else if (option == "--scene")
        o.transition.scene = args.value(option);
    else if (option == "--data")
        o.transition.dataPath = args.value(option);
    else if (option == "--aspect")
        o.transition.aspectRatio = float(args.number(option, 0.0, 1000.0));
    else if (option == "-o" || option == "--output")
        o.output = args.value(option);
    else if (option == "--discard")
        o.discard = true;
    else if (option == "--lossless")
        o.lossless = true;
    else if (option == "--threads")
        o.threads = int(args.integer(option, 0, 64));
    else if (option == "-h" || option == "--help")
        o.help = true;
    else
        throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx transition --help')");
}

TransitionOptions parseOptions(std::span<const std::string_view> arguments)
{
    TransitionOptions options;
    options.transition.dataPath = findDataPath("/proc/self/exe");
    ArgReader args(arguments);
    while (!args.done()) readOption(args, args.take(), options);
    if (options.help) return options;
    if (options.first.empty() || options.second.empty()) {
        throw CommandError("give both clips with -a and -b (see 'qxfx transition --help')");
    }
    if (!options.overlap) throw CommandError("give the transition's length with --overlap SECONDS");
    if (options.discard == !options.output.empty()) {
        throw CommandError("give either -o OUTPUT or --discard (see 'qxfx transition --help')");
    }
    return options;
}

/// Where the transition lies in the output: the first clip's frames, then the second's,
/// sharing `overlap` frames (at least one).
struct Timeline {
    long firstFrames;
    long secondFrames;
    long overlap;

    long total() const { return firstFrames + secondFrames - overlap; }
    long transitionStart() const { return firstFrames - overlap; }
    /// Progress of output frame `index` inside the transition: 0 at its first frame, 1 at
    /// its last (0.5 for a transition of one frame).
    float progress(long index) const
    {
        const long step = index - transitionStart();
        return overlap > 1 ? float(double(step) / double(overlap - 1)) : 0.5f;
    }
};

Timeline timelineOf(long firstFrames, long secondFrames, double overlapSeconds, double fps)
{
    const long wanted = long(std::lround(std::min(overlapSeconds * fps, double(kMaxFrames))));
    return {firstFrames, secondFrames, std::clamp(wanted, 1L, std::min(firstFrames, secondFrames))};
}

int transition(const TransitionOptions& o)
{
    VideoReader first(o.first, o.threads);
    const double fps = first.frameRate();
    RetimedClip second(o.second, fps, o.threads);
    const long firstFrames = std::clamp<long>(long(VideoReader::countFrames(o.first)), 1L, kMaxFrames);
    const Timeline timeline = timelineOf(firstFrames, second.frameCount(), *o.overlap, fps);

    TransitionJob job(o.transition, first.width(), first.height());
    if (!job.playsScene()) throw CommandError(whyNoScene(o.transition));
    std::unique_ptr<VideoWriter> writer;
    if (!o.discard) {
        writer = std::make_unique<VideoWriter>(o.output, first.width(), first.height(), first.frameRateRational(),
                                               o.threads, o.lossless);
    }
    ProgressBar bar("transition", timeline.total());
    bool firstEnded = false;
    for (long i = 0; i < timeline.total(); ++i) {
        // A first clip shorter than its count holds its last frame.
        if (i < timeline.firstFrames && !firstEnded && !first.read(job.first())) firstEnded = true;
        if (firstEnded && i == 0) throw CommandError("'" + o.first + "': no frame could be decoded");
        const bool inSecond = i >= timeline.transitionStart();
        if (inSecond) second.read(i - timeline.transitionStart(), job.second());
        const Frame& shown = !inSecond                  ? job.first()
                             : i < timeline.firstFrames ? job.run(timeline.progress(i))
                                                        : job.second();
        if (writer) writer->write(shown);
        bar.update(i + 1);
    }
    if (writer) writer->finish();
    return 0;
}

}  // namespace

int runTransition(std::span<const std::string_view> args)
{
    try {
        const auto options = parseOptions(args);
        if (options.help) {
            std::fputs(kUsage, stdout);
            return 0;
        }
        return transition(options);
    } catch (const CommandError& error) {
        std::fprintf(stderr, "qxfx transition: %s\n", error.what());
        return 1;
    }
}

}  // namespace qx::qxfx
