// The streaming filters on 1920x1080 frames, one frame per iteration, through a graph of
// a host source, the filter and a host sink, on one core:
// - scene detection on YV12 frames, against a plain four-way scalar histogram of 16 bins
//   over the same frame's luma plane (the plane the detection counts), and over the
//   whole frame;
// - the crop transform with anti-flicker, against the memcpy of a BGRA frame
//   (BM_MemcpyFrame, from bench/common).
#include "bench/common/Frames.h"
#include "filters/CropTransform.h"
#include "filters/SceneDetect.h"
#include "platform/com/TaskMemory.h"
#include "platform/media/HostFilters.h"
#include "platform/pixel/Histogram.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <vector>

namespace {

using namespace qx;
using namespace qx::media;
using qx::bench::kFrameHeight;
using qx::bench::kFrameWidth;

constexpr size_t kLuma = size_t(kFrameWidth) * kFrameHeight;
constexpr size_t kYv12Bytes = kLuma + kLuma / 2;
constexpr int kClipFrames = 8;

CMediaType videoType(const GUID& subtype, LONG width, LONG height, uint16_t bits)
{
    CMediaType type;
    type.majortype = MEDIATYPE_Video;
    type.subtype = subtype;
    VIDEOINFOHEADER info;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height;
    info.bmiHeader.biBitCount = bits;
    info.bmiHeader.biSizeImage = DWORD(int64_t(width) * height * bits / 8);
    type.SetVideoInfo(info);
    type.lSampleSize = info.bmiHeader.biSizeImage;
    return type;
}

/// A short clip of YV12 frames with detail in every plane that moves from frame to frame
/// without a cut: luma from the test picture's channels, chroma from its colours.
std::vector<std::vector<uint8_t>> yv12Clip()
{
    const auto picture = qx::bench::makeTestFrame(kFrameWidth, kFrameHeight);
    std::vector<std::vector<uint8_t>> clip;
    for (int f = 0; f < kClipFrames; ++f) {
        std::vector<uint8_t> frame(kYv12Bytes);
        for (size_t i = 0; i < kLuma; ++i) {
            const uint32_t s = picture[(i + size_t(f) * 37) % kLuma];
            frame[i] = uint8_t(((s & 0xFF) + ((s >> 8) & 0xFF) * 2 + ((s >> 16) & 0xFF)) / 4);
        }
        for (size_t i = 0; i < kLuma / 2; ++i) frame[kLuma + i] = uint8_t(picture[(i * 4 + size_t(f)) % kLuma] >> 16);
        clip.push_back(std::move(frame));
    }
    return clip;
}

/// The host's graph: a source of `type` delivering wrapped memory, `filter`, and a sink
/// that drops what it gets from a one-buffer memory allocator.
struct BenchGraph {
    com::ComPtr<CHostSource> source;
    com::ComPtr<CHostSink> sink =
        CHostSink::Create([](const CMediaType&) { return S_OK; }, [](IMediaSample&) { return S_OK; });

    BenchGraph(const CMediaType& type, CTransformFilter& filter) : source(CHostSource::Create(type, 0, 0))
    {
        ok = source->Output().Connect(&filter.InputPin(), nullptr) == S_OK &&
             filter.OutputPin().Connect(&sink->Input(), nullptr) == S_OK;
        sink->Run(0);
        filter.Run(0);
        source->Run(0);
    }
    bool ok = false;
};

/// A graph position that moves on with each frame, as playback does.
class PlayingGraph final : public com::ComObject<IFilterGraph, IMediaSeeking> {
public:
    HRESULT GetCurrentPosition(LONGLONG* pCurrent) override
    {
        *pCurrent = position;
        return S_OK;
    }
    LONGLONG position = 0;
};

void BM_SceneDetect(benchmark::State& state)
{
    auto clip = yv12Clip();
    const auto detect = CQXSceneDetect::Create();
    const com::ComPtr<PlayingGraph> graph(new PlayingGraph);
    detect->JoinFilterGraph(graph.get(), nullptr);
    BenchGraph host(videoType(MEDIASUBTYPE_YV12, kFrameWidth, kFrameHeight, 12), *detect.get());
    if (!host.ok) {
        state.SkipWithError("the graph did not connect");
        return;
    }
    std::vector<com::ComPtr<IMediaSample>> samples;
    for (auto& frame : clip) samples.push_back(CMediaSample::Wrap(frame));
    size_t next = 0;
    for (auto _ : state) {
        host.source->Deliver(samples[next].get());
        next = (next + 1) % samples.size();
        graph->position += 400000;
    }
    int64_t* scenes = nullptr;
    LONG count = 0;
    if (detect->GetScenes(&scenes, &count) == S_OK) CoTaskMemFree(scenes);
    state.counters["cuts"] = double(count);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SceneDetect)->Unit(benchmark::kMillisecond);

/// The yardstick: a histogram of 16 bins, one byte at a time, four sets of counters.
std::array<int32_t, 16> scalarHistogram(const uint8_t* bytes, size_t n)
{
    std::array<std::array<int32_t, 16>, 4> partial{};
    size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        ++partial[0][bytes[i] >> 4];
        ++partial[1][bytes[i + 1] >> 4];
        ++partial[2][bytes[i + 2] >> 4];
        ++partial[3][bytes[i + 3] >> 4];
    }
    for (; i < n; ++i) ++partial[0][bytes[i] >> 4];
    std::array<int32_t, 16> sum{};
    for (const auto& part : partial)
        for (size_t k = 0; k < 16; ++k) sum[k] += part[k];
    return sum;
}

void BM_ScalarHistogram16(benchmark::State& state)
{
    const auto clip = yv12Clip();
    const size_t bytes = state.range(0) ? kYv12Bytes : kLuma;
    size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(scalarHistogram(clip[next].data(), bytes));
        next = (next + 1) % clip.size();
    }
    state.SetLabel(state.range(0) ? "whole frame" : "luma plane");
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ScalarHistogram16)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_HistogramKernel(benchmark::State& state)
{
    const auto kernel = pixel::HistogramKernel(state.range(0));
    if (int(kernel) < int(pixel::histogramKernel())) {
        state.SkipWithError("the processor lacks this kernel");
        return;
    }
    const auto clip = yv12Clip();
    size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(pixel::countSixteenBins({clip[next].data(), kLuma}, kernel));
        next = (next + 1) % clip.size();
    }
    state.SetLabel(kernel == pixel::HistogramKernel::avx512 ? "avx512"
                   : kernel == pixel::HistogramKernel::avx2 ? "avx2"
                                                            : "scalar");
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_HistogramKernel)
    ->Arg(int(pixel::HistogramKernel::avx512))
    ->Arg(int(pixel::HistogramKernel::avx2))
    ->Arg(int(pixel::HistogramKernel::scalar))
    ->Unit(benchmark::kMillisecond);

/// The crop of a frame of `inputWidth` x 1080 into 1920 x 1080, at an anti-flicker level.
void BM_CropTransform(benchmark::State& state)
{
    const LONG inputWidth = LONG(state.range(0));
    const auto level = int16_t(state.range(1));
    auto frame = qx::bench::makeTestFrame(int(inputWidth), kFrameHeight);
    const auto crop = CQXCropTransform::Create();
    crop->PutSize(kFrameWidth, kFrameHeight);
    crop->SetAntiFlickeringLevel(level);
    BenchGraph host(videoType(MEDIASUBTYPE_RGB32, inputWidth, kFrameHeight, 32), *crop.get());
    if (!host.ok) {
        state.SkipWithError("the graph did not connect");
        return;
    }
    const auto sample = CMediaSample::Wrap({reinterpret_cast<uint8_t*>(frame.data()), frame.size() * 4});
    for (auto _ : state) {
        host.source->Deliver(sample.get());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kFrameWidth) * kFrameHeight * 4);
}
BENCHMARK(BM_CropTransform)
    ->ArgNames({"input_width", "level"})
    ->Args({1920, 0})
    ->Args({1920, 10})
    ->Args({1440, 10})
    ->Args({1920, 100})
    ->Unit(benchmark::kMillisecond);

}  // namespace
