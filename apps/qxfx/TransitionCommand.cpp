#include "apps/qxfx/TransitionCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/FramePipeline.h"
#include "apps/qxfx/Messages.h"
#include "apps/qxfx/OutputOptions.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/qxfx/RetimedClip.h"
#include "apps/qxfx/VideoReader.h"
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
    "Reading, the transition and writing run at once unless --threads is 1.\n";

constexpr long kMaxFrames = 100'000'000;

struct TransitionOptions {
    TransitionSettings transition;
    std::string first;
    std::string second;
    std::optional<double> overlap;
    OutputOptions output;
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
    else if (option == "-h" || option == "--help")
        o.help = true;
    else if (!readOutputOption(args, option, o.output))
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
    checkOutputOptions(options.output, "transition");
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

/// One output frame of the transition: the frames of both clips at its time as read, and
/// after the middle stage the frame shown in `first`.
struct TransitionStep {
    long index = 0;
    Frame first;
    Frame second;
};

// Reads the clips' frames for each output frame in turn: the first clip's while it lasts
// (a first clip shorter than its count holds its last frame), the second's from the start
// of the transition.
std::function<bool(TransitionStep&)> readSteps(VideoReader& first, const std::string& firstPath, RetimedClip& second,
                                               const Timeline& timeline)
{
    return
        [&first, firstPath, &second, timeline, held = Frame{}, ended = false, next = 0L](TransitionStep& step) mutable {
            if (next >= timeline.total()) return false;
            step.index = next++;
            const int width = first.width();
            const int height = first.height();
            if (step.index < timeline.firstFrames) {
                fitFrame(held, width, height);
                if (!ended && !first.read(held)) ended = true;
                if (ended && step.index == 0) throw CommandError("'" + firstPath + "': no frame could be decoded");
                fitFrame(step.first, width, height);
                std::copy(held.samples.begin(), held.samples.end(), step.first.samples.begin());
            }
            if (step.index >= timeline.transitionStart()) {
                fitFrame(step.second, width, height);
                second.read(step.index - timeline.transitionStart(), step.second);
            }
            return true;
        };
}

int transition(const TransitionOptions& o)
{
    const int threads = o.output.encode.threads;
    VideoReader first(o.first, threads);
    const double fps = first.frameRate();
    RetimedClip second(o.second, fps, threads);
    const long firstFrames = std::clamp<long>(long(VideoReader::countFrames(o.first)), 1L, kMaxFrames);
    const Timeline timeline = timelineOf(firstFrames, second.frameCount(), *o.overlap, fps);

    TransitionJob job(o.transition, first.width(), first.height());
    if (!job.playsScene()) throw CommandError(whyNoScene(o.transition));
    std::unique_ptr<VideoOutput> out;
    if (!o.output.discard) {
        const std::string inputs[] = {o.first, o.second};
        out = std::make_unique<VideoOutput>(o.output, inputs, first.width(), first.height(),
                                            constantRate(o.output.encode, fps));
    }
    const InterruptGuard interruption;
    ProgressBar bar("transition", timeline.total());
    const Stages<TransitionStep> stages{
        .read = readSteps(first, o.first, second, timeline),
        .middle =
            [&](TransitionStep& step) {
                if (step.index < timeline.transitionStart()) return;
                if (step.index >= timeline.firstFrames) {
                    std::swap(step.first, step.second);  // the second clip alone
                    return;
                }
                job.runInPlace(step.first, step.second, timeline.progress(step.index));
            },
        .write =
            [&](const TransitionStep& step) {
                if (out) out->writer().write(step.first);
                bar.update(step.index + 1);
            },
        .stopRequested = [] { return InterruptGuard::raised(); },
    };
    const long written = runStages(stages, threads != 1);
    if (out) out->finish();
    return exitCodeOfRun("transition", written, out ? out->target() : "");
}

}  // namespace

int runTransition(std::span<const std::string_view> args)
{
    return runCommand("transition", args, {kUsage, kOutputOptionsHelp}, parseOptions,
                      [](auto& options) { return transition(options); });
}

}  // namespace qx::qxfx
