#include "apps/qxfx/ScenesCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/qxfx/VideoReader.h"
#include "filters/SceneDetect.h"
#include "platform/com/TaskMemory.h"
#include "platform/media/HostFilters.h"

#include <cstdio>
#include <string>
#include <vector>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx scenes -i INPUT [options]\n"
    "Plays a video through the scene detector and prints its cuts: the number of the\n"
    "first frame of each new scene (from 0) and the cut time the detector reports, in\n"
    "seconds, which is 0.1 s after the start of that frame.\n"
    "  -i, --input PATH     the video (anything FFmpeg reads)\n"
    "      --json           the cuts as JSON\n"
    "      --threads N      FFmpeg decoding threads (default 0: automatic)\n";

struct ScenesOptions {
    std::string input;
    bool json = false;
    int threads = 0;
    bool help = false;
};

ScenesOptions parseOptions(std::span<const std::string_view> arguments)
{
    ScenesOptions o;
    ArgReader args(arguments);
    while (!args.done()) {
        const std::string_view option = args.take();
        if (option == "-i" || option == "--input")
            o.input = args.value(option);
        else if (option == "--json")
            o.json = true;
        else if (option == "--threads")
            o.threads = int(args.integer(option, 0, 64));
        else if (option == "-h" || option == "--help")
            o.help = true;
        else
            throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx scenes --help')");
    }
    if (!o.help && o.input.empty()) throw CommandError("give the video with -i (see 'qxfx scenes --help')");
    return o;
}

/// The graph the detector plays in: its position is the start of the frame being shown.
class PlaybackGraph final : public com::ComObject<media::IFilterGraph, media::IMediaSeeking> {
public:
    HRESULT GetCurrentPosition(media::LONGLONG* pCurrent) override
    {
        if (!pCurrent) return E_POINTER;
        *pCurrent = position;
        return S_OK;
    }
    media::LONGLONG position = 0;
};

struct Cut {
    long frame;
    int64_t time;  ///< as the detector reports it, in 100 ns units
};

media::CMediaType yv12Type(const VideoReader& reader)
{
    media::CMediaType type;
    type.majortype = media::MEDIATYPE_Video;
    type.subtype = media::MEDIASUBTYPE_YV12;
    media::VIDEOINFOHEADER info;
    info.bmiHeader.biWidth = reader.width();
    info.bmiHeader.biHeight = reader.height();
    info.bmiHeader.biBitCount = 12;
    info.bmiHeader.biSizeImage = DWORD(reader.yv12Size());
    info.AvgTimePerFrame = media::REFERENCE_TIME(double(media::kUnitsPerSecond) / reader.frameRate());
    type.SetVideoInfo(info);
    type.lSampleSize = info.bmiHeader.biSizeImage;
    return type;
}

/// The detector's cut times with the frames they were found at: a cut's time is the
/// position of its frame plus the detector's offset.
std::vector<Cut> cutsOf(CQXSceneDetect& detect, const std::vector<int64_t>& frameTimes)
{
    int64_t* times = nullptr;
    LONG count = 0;
    const HRESULT hr = detect.GetScenes(&times, &count);
    if (hr == S_FALSE) return {};
    if (hr != S_OK) throw CommandError("the scene detector could not hand over its cuts");
    std::vector<Cut> cuts;
    size_t next = 0;
    for (LONG i = 0; i < count; ++i) {
        const int64_t position = times[i] - CQXSceneDetect::kCutOffset;
        while (next < frameTimes.size() && frameTimes[next] != position) ++next;
        cuts.push_back({next < frameTimes.size() ? long(next) : -1, times[i]});
    }
    CoTaskMemFree(times);
    return cuts;
}

std::vector<Cut> detect(const ScenesOptions& o, long& frames, double& fps)
{
    VideoReader reader(o.input, o.threads);
    fps = reader.frameRate();
    const auto detector = CQXSceneDetect::Create();
    const com::ComPtr<PlaybackGraph> graph(new PlaybackGraph);
    const auto source = media::CHostSource::Create(yv12Type(reader), 1, LONG(reader.yv12Size()));
    const auto sink = media::CHostSink::Create([](const media::CMediaType&) { return S_OK; },
                                               [](media::IMediaSample&) { return S_OK; });
    if (!detector || !source || !sink) throw CommandError("out of memory");
    detector->JoinFilterGraph(graph.get(), u"scenes");
    if (FAILED(source->Output().Connect(&detector->InputPin(), nullptr)) ||
        FAILED(detector->OutputPin().Connect(&sink->Input(), nullptr)) || FAILED(sink->Run(0)) ||
        FAILED(detector->Run(0)) || FAILED(source->Run(0))) {
        throw CommandError("the scene detector does not take " + std::to_string(reader.width()) + "x" +
                           std::to_string(reader.height()) + " video");
    }
    // The container's count is enough for a progress bar; counting the packets would
    // read the file twice.
    ProgressBar bar("scenes", long(reader.frameCountHint()));
    std::vector<int64_t> frameTimes;
    for (frames = 0;; ++frames) {
        com::ComPtr<media::IMediaSample> sample;
        BYTE* bytes = nullptr;
        if (FAILED(source->GetBuffer(sample.out())) || FAILED(sample->GetPointer(&bytes))) {
            throw CommandError("no buffer for the next frame");
        }
        if (!reader.readYv12({bytes, size_t(sample->GetSize())})) break;
        graph->position = reader.lastFrameTime();
        frameTimes.push_back(graph->position);
        source->Deliver(sample.get());
        bar.update(frames + 1);
    }
    if (frames == 0) throw CommandError("'" + o.input + "': no frame could be decoded");
    detector->JoinFilterGraph(nullptr, nullptr);
    return cutsOf(*detector.get(), frameTimes);
}

std::string jsonString(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        if (static_cast<unsigned char>(c) < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            quoted += escaped;
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

void print(const ScenesOptions& o, const std::vector<Cut>& cuts, long frames, double fps)
{
    if (o.json) {
        std::printf("{\"input\": %s, \"frames\": %ld, \"fps\": %.6g, \"cuts\": [", jsonString(o.input).c_str(), frames,
                    fps);
        for (size_t i = 0; i < cuts.size(); ++i) {
            std::printf("%s{\"frame\": %ld, \"seconds\": %.7f}", i ? ", " : "", cuts[i].frame,
                        double(cuts[i].time) / double(media::kUnitsPerSecond));
        }
        std::printf("]}\n");
        return;
    }
    std::printf("%zu cut%s in %ld frame%s\n", cuts.size(), cuts.size() == 1 ? "" : "s", frames, frames == 1 ? "" : "s");
    if (cuts.empty()) return;
    std::printf("%8s %12s\n", "frame", "seconds");
    for (const Cut& cut : cuts)
        std::printf("%8ld %12.3f\n", cut.frame, double(cut.time) / double(media::kUnitsPerSecond));
}

}  // namespace

int runScenes(std::span<const std::string_view> args)
{
    return runCommand("scenes", args, {kUsage}, parseOptions, [](const auto& options) {
        long frames = 0;
        double fps = 0.0;
        const auto cuts = detect(options, frames, fps);
        print(options, cuts, frames, fps);
        return 0;
    });
}

}  // namespace qx::qxfx
