// The two stateful frame effects on a 1920x1080 frame, one frame per iteration, the
// water and the scratches carrying on from one iteration to the next as in a clip.
#include "bench/common/Frames.h"
#include "effects/VideoAgging.h"
#include "effects/VideoRipple.h"

#include <benchmark/benchmark.h>

namespace {

using qx::bench::kFrameHeight;
using qx::bench::kFrameWidth;

void runFrames(benchmark::State& state, qx::CVideoEffect& effect)
{
    const auto input = qx::bench::makeTestFrame(kFrameWidth, kFrameHeight);
    std::vector<uint32_t> output(input.size());
    if (effect.Start() != 0) {
        state.SkipWithError("Start refused the frame");
        return;
    }
    for (auto _ : state) {
        effect.ProcessFrame(input.data(), output.data(), 0.5f);
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(input.size() * sizeof(uint32_t)));
}

void BM_VideoAgging(benchmark::State& state)
{
    qx::CVideoAgging effect(kFrameWidth, kFrameHeight);
    runFrames(state, effect);
}
BENCHMARK(BM_VideoAgging)->Unit(benchmark::kMillisecond);

void BM_VideoRipple(benchmark::State& state)
{
    qx::CVideoRipple effect(kFrameWidth, kFrameHeight);
    const qx::LONG params[] = {qx::LONG(state.range(0))};
    effect.SetParams(params);
    runFrames(state, effect);
}
BENCHMARK(BM_VideoRipple)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

}  // namespace
