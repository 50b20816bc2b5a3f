// The image operations that the colour effects and the old film call, each on a
// 1920x1080 bitmap handle, in place, once per iteration.
#include "bench/common/Frames.h"
#include "platform/imaging/BitmapHandle.h"
#include "platform/imaging/ColorOps.h"
#include "platform/imaging/Filters.h"

#include <benchmark/benchmark.h>

#include <functional>

namespace {

using qx::imaging::BitmapHandle;

BitmapHandle makeFrameBitmap()
{
    const auto frame = qx::bench::makeTestFrame(qx::bench::kFrameWidth, qx::bench::kFrameHeight);
    BitmapHandle bitmap;
    bitmap.loadDib(qx::imaging::frameDibHeader(qx::bench::kFrameWidth, qx::bench::kFrameHeight),
                   {reinterpret_cast<const uint8_t*>(frame.data()), frame.size() * sizeof(uint32_t)});
    return bitmap;
}

void runOperation(benchmark::State& state, const std::function<bool(BitmapHandle&)>& operation)
{
    BitmapHandle bitmap = makeFrameBitmap();
    for (auto _ : state) {
        benchmark::DoNotOptimize(operation(bitmap));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bitmap.pixels().size_bytes()));
}

void BM_ImagingHue(benchmark::State& state)
{
    runOperation(state, [](BitmapHandle& b) { return qx::imaging::changeHue(b, 137); });
}
BENCHMARK(BM_ImagingHue)->Unit(benchmark::kMillisecond);

void BM_ImagingSaturation(benchmark::State& state)
{
    runOperation(state, [](BitmapHandle& b) { return qx::imaging::changeSaturation(b, -300); });
}
BENCHMARK(BM_ImagingSaturation)->Unit(benchmark::kMillisecond);

void BM_ImagingTint(benchmark::State& state)
{
    runOperation(state, [](BitmapHandle& b) { return qx::imaging::tint(b, 0, 500, 500, 1000, 400, 0); });
}
BENCHMARK(BM_ImagingTint)->Unit(benchmark::kMillisecond);

void BM_ImagingPosterize(benchmark::State& state)
{
    runOperation(state, [](BitmapHandle& b) { return qx::imaging::posterize(b, 20); });
}
BENCHMARK(BM_ImagingPosterize)->Unit(benchmark::kMillisecond);

void BM_ImagingNoise(benchmark::State& state)
{
    runOperation(state, [](BitmapHandle& b) { return qx::imaging::addNoise(b, 50, 0); });
}
BENCHMARK(BM_ImagingNoise)->Unit(benchmark::kMillisecond);

void BM_ImagingBlur(benchmark::State& state)
{
    const auto size = int32_t(state.range(0));
    runOperation(state, [size](BitmapHandle& b) { return qx::imaging::blur(b, size); });
}
// 2 and 20 take the 16-bit sums of small windows; 130 the general way.
BENCHMARK(BM_ImagingBlur)->Arg(2)->Arg(20)->Arg(130)->Unit(benchmark::kMillisecond);

void BM_ImagingDibRoundTrip(benchmark::State& state)
{
    const auto frame = qx::bench::makeTestFrame(qx::bench::kFrameWidth, qx::bench::kFrameHeight);
    const std::span<const uint8_t> bits(reinterpret_cast<const uint8_t*>(frame.data()), frame.size() * 4);
    const auto header = qx::imaging::frameDibHeader(qx::bench::kFrameWidth, qx::bench::kFrameHeight);
    for (auto _ : state) {
        BitmapHandle bitmap;
        bitmap.loadDib(header, bits);
        auto block = bitmap.toDib();
        benchmark::DoNotOptimize(block.data());
    }
}
BENCHMARK(BM_ImagingDibRoundTrip)->Unit(benchmark::kMillisecond);

}  // namespace
