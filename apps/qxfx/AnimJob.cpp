#include "apps/qxfx/AnimJob.h"

#include "apps/qxfx/StageQueue.h"

#include "filters/Anim3DVideoSource.h"
#include "platform/media/HostFilters.h"
#include "platform/os/FilePath.h"
#include "platform/os/WideText.h"
#include "platform/pixel/Alpha.h"
#include "wrap3d/DataPath.h"

#include <chrono>
#include <exception>
#include <filesystem>

namespace qx::qxfx {
namespace {

namespace fs = std::filesystem;

constexpr auto kFrameTimeout = std::chrono::seconds(120);

bool is3D(const std::string& path) { return os::asciiLower(os::extensionOf(os::fromUtf8(path))) == u".cpo3d"; }

/// The composition as the source wants it: a ".cpo3d" under the pack's Scenes as named; a
/// 2D composition file that exists anywhere as a path from the pack's Scenes folder.
std::u16string sourceName(const AnimSettings& settings)
{
    if (is3D(settings.composition) || !fs::exists(settings.composition)) return os::fromUtf8(settings.composition);
    const fs::path scenes = fs::path(settings.dataPath) / "Scenes";
    return os::fromUtf8(fs::relative(fs::absolute(settings.composition), scenes).string());
}

void useDataPath(const std::string& dataPath)
{
    if (dataPath.empty()) throw CommandError("no content pack found (give --data PATH)");
    // Process-wide, and read by the scene context when it starts: set before any frame.
    SetDataPathBuffer(os::fromUtf8(dataPath));
    SetDataPath(os::fromUtf8(dataPath));
}

com::ComPtr<CAnim3DVideoSource> makeSource(const AnimSettings& settings)
{
    auto source = CAnim3DVideoSource::Create();
    if (!source) throw CommandError("not enough memory for the composition source");
    Bstr composition(sourceName(settings));
    source->put_Source(composition.get());
    source->put_Width(settings.width);
    source->put_Height(settings.height);
    source->put_Fps(float(settings.fps));
    source->put_Duration(settings.duration > 0.0 ? settings.duration : compositionDuration(settings));
    source->put_StretchMode(BYTE(settings.stretchMode));
    for (size_t i = 0; i < settings.images.size(); ++i) {
        Bstr picture(os::fromUtf8(fs::absolute(settings.images[i]).string()));
        source->PutImage(i, picture.get());
    }
    return source;
}

/// Frames between the source's stream thread, which renders them into spare buffers, and
/// the caller, which hands each on (encodes it) while the next one is rendered.
struct Delivery {
    // One frame rendered, one waiting, one handed on.
    static constexpr int kBuffers = 3;

    StageQueue<Frame> spare;
    StageQueue<Frame> ready;
    long wanted = 0;
    long delivered = 0;  // by the stream thread
};

// The sample's bottom-up rows, top-down; RGB32 carries no alpha.
void copyUpright(const uint32_t* bottomUp, Frame& frame)
{
    const size_t row = size_t(frame.width);
    for (int y = 0; y < frame.height; ++y) {
        const std::span in(bottomUp + size_t(frame.height - 1 - y) * row, row);
        pixel::copyOpaque(in, std::span(frame.samples).subspan(size_t(y) * row, row));
    }
}

}  // namespace

double compositionDuration(const AnimSettings& settings)
{
    useDataPath(settings.dataPath);
    auto source = CAnim3DVideoSource::Create();
    if (!source) return 0.0;
    Bstr composition(sourceName(settings));
    float seconds = 0.0f;
    source->GetSceneDuration(composition.get(), &seconds);
    return seconds;
}

void renderComposition(const AnimSettings& settings, long frames,
                       const std::function<bool(const Frame&, long index)>& receive)
{
    useDataPath(settings.dataPath);
    const auto source = makeSource(settings);
    Delivery delivery;
    delivery.wanted = frames;
    for (int i = 0; i < Delivery::kBuffers; ++i) {
        Frame buffer = makeFrame(settings.width, settings.height);
        delivery.spare.give(buffer);
    }
    const auto takeSample = [&delivery](media::IMediaSample& sample) -> HRESULT {
        Frame frame;
        // No spare buffer comes back once the caller has stopped.
        if (delivery.delivered >= delivery.wanted || !delivery.spare.take(frame)) return S_FALSE;
        BYTE* bytes = nullptr;
        sample.GetPointer(&bytes);
        copyUpright(reinterpret_cast<const uint32_t*>(bytes), frame);
        delivery.ready.give(frame);
        return ++delivery.delivered >= delivery.wanted ? S_FALSE : S_OK;
    };
    const auto sink = media::CHostSink::Create([](const media::CMediaType&) { return S_OK; }, takeSample);
    if (!sink || FAILED(source->Stream().Connect(&sink->Input(), nullptr))) {
        throw CommandError("the composition source cannot make frames of that size");
    }
    void* seeking = nullptr;
    source->Stream().NonDelegatingQueryInterface(media::IMediaSeeking::iid, &seeking);
    const auto positions = com::ComPtr<media::IMediaSeeking>::adopt(static_cast<media::IMediaSeeking*>(seeking));
    media::LONGLONG start = media::LONGLONG(settings.start * 1e7);
    if (positions) positions->SetPositions(&start, media::AM_SEEKING_AbsolutePositioning, nullptr, 0);
    sink->Pause();
    source->Pause();
    bool stalled = false;
    bool goOn = true;
    std::exception_ptr failure;
    for (long index = 0; index < frames && goOn && !stalled && !failure; ++index) {
        Frame frame;
        stalled = !delivery.ready.takeWithin(frame, kFrameTimeout);
        if (stalled) break;
        try {
            goOn = receive(frame, index);
        } catch (...) {
            failure = std::current_exception();
        }
        delivery.spare.give(frame);
    }
    // The stream thread, waiting for a buffer or about to, stops at its next sample.
    delivery.spare.close();
    source->Stop();
    sink->Stop();
    source->Stream().Disconnect();
    if (failure) std::rethrow_exception(failure);
    if (stalled) throw CommandError("the composition source stopped making frames");
}

}  // namespace qx::qxfx
