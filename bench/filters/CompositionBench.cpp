// The 2D composition player at 1920 by 1080 on one core: the pack's slideshow with five
// pictures of 2400 by 1600 (shrunk to the frame when loaded), frames taken across its
// twenty seconds, so that zooms, drifts and dissolves (two pictures drawn, one translucent)
// all count; and the same through the composition source, which also clears and flips the
// frame of the stream.
#include "bench/common/BmpFile.h"
#include "bench/common/Frames.h"
#include "filters/Anim3DVideoSource.h"
#include "filters/CompoPlayer.h"
#include "platform/media/HostFilters.h"
#include "wrap3d/DataPath.h"

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace {

using qx::bench::kFrameHeight;
using qx::bench::kFrameWidth;

constexpr int kPictureWidth = 2400, kPictureHeight = 1600;
constexpr int kFramesAcross = 100;  // frames spread over the twenty seconds

std::vector<std::u16string> pictures()
{
    std::vector<std::u16string> paths;
    const auto samples = qx::bench::makeTestFrame(kPictureWidth, kPictureHeight);
    for (int i = 0; i < 5; ++i) {
        const std::string path =
            qx::bench::writeBmp(samples, kPictureWidth, kPictureHeight, "qx-bench-photo" + std::to_string(i));
        paths.emplace_back(path.begin(), path.end());
    }
    return paths;
}

void BM_CompositionPlayerSlideshow1080p(benchmark::State& state)
{
    const std::vector<std::u16string> photos = pictures();
    qx3d::CompoPlayer player;
    player.Init(int32_t(photos.size()), photos.data(), kFrameWidth, kFrameHeight, 16.0f / 9.0f, 2);
    if (!player.Load(u"" QX_SOURCE_DIR "/data/Scenes/Compositions/Slideshow.cpo")) {
        state.SkipWithError("the slideshow can't be read");
        return;
    }
    std::vector<uint32_t> frame(size_t(kFrameWidth) * kFrameHeight);
    qx::draw2d::Bitmap target(kFrameWidth, kFrameHeight, kFrameWidth * 4, frame.data());
    int index = 0;
    for (auto _ : state) {
        qx::draw2d::Graphics graphics(target);
        graphics.clear(qx::draw2d::Color{0xFF000000u});
        player.Render(float(index++ % kFramesAcross) / kFramesAcross, graphics);
        benchmark::DoNotOptimize(frame.data());
    }
    state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_CompositionPlayerSlideshow1080p)->Unit(benchmark::kMillisecond)->Iterations(kFramesAcross);

// The source's stream thread renders into the sample; the sink takes each one as it comes.
void BM_CompositionSourceSlideshow1080p(benchmark::State& state)
{
    using namespace qx;
    SetDataPath(u"" QX_SOURCE_DIR "/data");
    const std::vector<std::u16string> photos = pictures();
    auto source = CAnim3DVideoSource::Create();
    Bstr composition(u"Compositions\\Slideshow.cpo");
    source->put_Source(composition.get());
    source->put_Width(kFrameWidth);
    source->put_Height(kFrameHeight);
    source->put_Duration(20.0);
    source->put_Fps(12.5f);  // 250 frames over the twenty seconds
    for (size_t i = 0; i < photos.size(); ++i) {
        Bstr photo(photos[i]);
        source->PutImage(i, photo.get());
    }
    std::mutex lock;
    std::condition_variable arrived;
    long received = 0;
    const long wanted = long(state.max_iterations);
    const auto sink = media::CHostSink::Create([](const media::CMediaType&) { return S_OK; },
                                               [&](media::IMediaSample&) {
                                                   std::lock_guard guard(lock);
                                                   ++received;
                                                   arrived.notify_all();
                                                   return received >= wanted ? S_FALSE : S_OK;
                                               });
    if (FAILED(source->Stream().Connect(&sink->Input(), nullptr))) {
        state.SkipWithError("no connection");
        return;
    }
    sink->Pause();
    for (auto _ : state) {
        if (received == 0) source->Pause();
        std::unique_lock wait(lock);
        const long before = received;
        arrived.wait(wait, [&] { return received > before || received >= wanted; });
    }
    source->Stop();
    sink->Stop();
    source->Stream().Disconnect();
    state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_CompositionSourceSlideshow1080p)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(250);

}  // namespace
