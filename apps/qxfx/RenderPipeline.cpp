#include "apps/qxfx/RenderPipeline.h"

#include "apps/qxfx/AudioTrack.h"
#include "apps/qxfx/EffectStage.h"
#include "apps/qxfx/FramePipeline.h"
#include "apps/qxfx/Messages.h"
#include "apps/qxfx/OutputOptions.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/qxfx/TestPattern.h"
#include "apps/session/ContentPack.h"
#include "platform/os/FilePath.h"
#include "platform/os/WideText.h"

#include <cmath>
#include <filesystem>
#include <memory>

namespace qx::qxfx {

namespace {

constexpr long kDefaultStillFrames = 50;
constexpr double kDefaultRate = 25.0;
constexpr int kDefaultWidth = 640;
constexpr int kDefaultHeight = 360;
// The span of an effect over an input of unknown length (a pipe) without --length.
constexpr double kUnknownLengthSpan = 10.0;

/// What is known of the output before rendering: when its last frame is shown and how
/// many frames it has (0: not known, as for a pipe).
struct Timeline {
    double lastFrame = 0.0;
    long frames = 0;
    bool known = false;
};

// The frames of the clip within the trim, from its packets; empty for a pipe.
std::vector<double> trimmedTimes(const std::string& input, const Trim& trim)
{
    std::vector<double> times;
    for (const double t : VideoReader::frameTimes(input)) {
        if (t >= trim.start - 5e-7 && t - trim.start < trim.length - 5e-7)
            times.push_back(std::max(0.0, t - trim.start));
    }
    return times;
}

// Sets the pacing that the input asks for (a still picture is held for 50 frames) and
// says where the output ends.
Timeline planClip(const RenderRequest& r, const VideoReader& reader, Pacing& pacing)
{
    pacing.inputRate = reader.frameRate();
    const std::vector<double> times = trimmedTimes(r.input, r.trim);
    if (times.size() == 1 && !pacing.count) pacing.count = kDefaultStillFrames;
    const double inputStep = 1.0 / pacing.inputRate;
    if (pacing.rate) {
        const double step = 1.0 / *pacing.rate;
        long frames = pacing.count.value_or(0);
        // Output frames come while their time is before the end of the last input frame.
        if (!frames && !times.empty()) frames = std::max(1L, long(std::ceil((times.back() + inputStep) / step - 1e-6)));
        return {double(std::max(0L, frames - 1)) * step, frames, frames > 0};
    }
    const long count = pacing.count.value_or(long(times.size()));
    if (!times.empty()) {
        const double last = size_t(count) <= times.size()
                                ? times[size_t(count) - 1]
                                : times.back() + double(count - long(times.size())) * inputStep;
        return {last, count, true};
    }
    if (pacing.count) return {double(count - 1) * inputStep, count, true};
    if (reader.duration() > 0.0) {
        const double length = std::min(reader.duration() - r.trim.start, r.trim.length);
        return {std::max(0.0, length - inputStep), long(reader.frameCountHint()), true};
    }
    return {};
}

EffectSpan spanOf(const RenderRequest& r, const Timeline& timeline)
{
    EffectSpan span{r.spanStart, r.spanLength.value_or(0.0)};
    if (!r.spanLength) {
        if (timeline.known) {
            span.length = std::max(0.0, timeline.lastFrame - r.spanStart);
        } else {
            warn("the input's length is not known: the effect's span is taken as " +
                 std::to_string(int(kUnknownLengthSpan)) + " s (give --length)");
            span.length = kUnknownLengthSpan;
        }
    }
    if (timeline.known && span.start > timeline.lastFrame + 1e-6)
        warn("the effect's span starts after the last frame: every frame passes untouched");
    return span;
}

// Sources are Windows-style paths, found without regard to case as the host finds them:
// scenes under the data path's Scenes folder ("Particles\\Sparks.afx"), animations under
// the data path itself, or a full path.
bool sourceExists(const EffectSettings& effect)
{
    const std::u16string source = os::fromUtf8(effect.source);
    return os::pathExists(source) || os::pathExists(os::fromUtf8(effect.dataPath + "/") + source) ||
           os::pathExists(os::fromUtf8(effect.dataPath + "/Scenes/") + source);
}

// Effects that play content of the data path pass frames through without it; that
// deserves a word rather than a silent copy of the input.
void warnOfMissingContent(const EffectSettings& effect)
{
    namespace fs = std::filesystem;
    if (!needsPack(effect.effectId)) return;
    std::error_code error;
    if (effect.dataPath.empty() || !fs::is_directory(effect.dataPath, error)) {
        warn("effect " + std::to_string(effect.effectId) + " plays content of the data path, and " +
             (effect.dataPath.empty() ? std::string("none was found") : "'" + effect.dataPath + "' is not a folder") +
             ": frames may pass through untouched");
    } else if (!effect.source.empty() && !sourceExists(effect)) {
        warn("the source '" + effect.source + "' is not under the data path '" + effect.dataPath +
             "': frames may pass through untouched");
    }
}

void warnOfWhatWasLost(const EffectStage& effect, const VideoReader* reader, LONG effectId)
{
    if (effect.rendered() > 1 && effect.unchanged() == effect.rendered()) {
        warn("effect " + std::to_string(effectId) +
             " changed no frame: its content or the 3D engine may be missing (see 'qxfx list')");
    }
    if (reader && reader->damagedSkipped() > 0)
        warn("the input is damaged: " + std::to_string(reader->damagedSkipped()) +
             " packets or frames were skipped or patched over");
}

EncodeSettings encodeSettings(const OutputOptions& output, double rate, const VideoReader* reader, bool keepTimes)
{
    EncodeSettings encode = output.encode;
    encode.frameRate = av_d2q(rate, 100000);
    if (reader) {
        encode.colour = reader->colourTags();
        if (keepTimes) encode.timeBase = reader->timeBase();
    }
    return encode;
}

/// The first stage: the clip's frames, or the test pattern's, and what is known of them.
struct RenderInput {
    std::unique_ptr<VideoReader> reader;
    std::unique_ptr<FrameSource> source;
    Timeline timeline;
    double rate = kDefaultRate;  // of the output, as far as it has one
};

// Pacing the request asks of the clip is set in `r.pacing`; the pattern is drawn at its
// rate and count already, and needs none.
RenderInput openInput(RenderRequest& r, int threads)
{
    RenderInput in;
    if (!r.input.empty()) in.reader = std::make_unique<VideoReader>(r.input, threads, r.inputFormat);
    if (in.reader) {
        if (r.patternSize) warn("--size is ignored with an input: frames keep the input's size");
        in.timeline = planClip(r, *in.reader, r.pacing);
        in.source = std::make_unique<ClipFrames>(*in.reader, r.trim);
        in.rate = r.pacing.rate.value_or(in.reader->frameRate());
        return in;
    }
    const auto [width, height] = r.patternSize.value_or(std::pair{kDefaultWidth, kDefaultHeight});
    const long frames = r.pacing.count.value_or(kDefaultStillFrames);
    in.rate = r.pacing.rate.value_or(kDefaultRate);
    in.timeline = {double(frames - 1) / in.rate, frames, true};
    in.source = std::make_unique<PatternFrames>(width, height, frames, in.rate);
    r.pacing = {};
    return in;
}

}  // namespace

int renderClip(RenderRequest r, const OutputOptions& output)
{
    RenderInput in = openInput(r, output.encode.threads);
    const std::unique_ptr<VideoReader>& reader = in.reader;
    const Timeline& timeline = in.timeline;
    const double rate = in.rate;
    FramePacer frames(*in.source, r.pacing);
    r.effect.fps = float(rate);
    const EffectSpan span = spanOf(r, timeline);
    if (r.effect.durationSeconds <= 0.0 && span.length > 0.0) r.effect.durationSeconds = span.length;
    warnOfMissingContent(r.effect);
    EffectStage effect(r.effect, frames.width(), frames.height(), span);

    std::unique_ptr<VideoOutput> out;
    std::unique_ptr<AudioTrack> audio;
    if (!output.discard) {
        const std::string inputs[] = {r.input};
        out = std::make_unique<VideoOutput>(output, inputs, frames.width(), frames.height(),
                                            encodeSettings(output, rate, reader.get(), reader && !r.pacing.rate));
        if (reader && r.audio) audio = AudioTrack::open(r.input, r.trim, out->writer());
        out->writer().start();
    }
    const InterruptGuard interruption;
    ProgressBar bar("render", timeline.frames);
    double lastShown = 0.0;
    const Stages<TimedFrame> stages{
        .read = [&frames](TimedFrame& frame) { return frames.next(frame); },
        .middle = [&effect](TimedFrame& frame) { effect.apply(frame); },
        .write =
            [&, written = 0L](const TimedFrame& frame) mutable {
                if (out) {
                    if (audio) audio->writeUntil(frame.seconds);
                    out->writer().write(frame.frame, frame.seconds);
                }
                lastShown = frame.seconds;
                bar.update(++written);
            },
        .stopRequested = [] { return InterruptGuard::raised(); },
    };
    const long written = runStages(stages, output.encode.threads != 1);
    if (written == 0) throw CommandError("'" + r.input + "': no frame could be decoded");
    warnOfWhatWasLost(effect, reader.get(), r.effect.effectId);
    const bool interrupted = InterruptGuard::raised();
    if (out) {
        // Sound goes on to its own end unless the picture was cut short.
        const bool cut = interrupted || r.pacing.count;
        if (audio) audio->finish(cut ? lastShown + 1.0 / rate : INFINITY);
        out->finish();
    }
    return exitCodeOfRun("render", written, out ? out->target() : "");
}

}  // namespace qx::qxfx
