// One frame of a scene effect at 1920x1080 through the effect host, as an editor drives
// it: unpack, upload into the placeholder texture, the scene's frame, read-back, pack. The
// textured quad with read-back of the GPU layer stands beside it in the same run: the
// engine should add little beyond that draw and read-back.
#include "bench/common/Frames.h"
#include "tests/host/EffectHarness.h"
#include "wrap3d/SceneBridge.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace qx;

/// Frames of effect `id` with `source`; `warmUp` frames are played first, for scenes that
/// build up over time (particles).
void SceneFrame(benchmark::State& state, LONG id, std::u16string_view source, int warmUp = 0)
{
    test::EffectHarness harness(qx::bench::kFrameWidth, qx::bench::kFrameHeight);
    Bstr dataPath(std::u16string(u"" QX_DATA_DIR));
    harness.effect().SetGlobalDataPath(dataPath.get());
    if (!IsContextReady()) {
        state.SkipWithError("the scene context can't start here");
        return;
    }
    LONG index = 0, values[16] = {}, count = 0;
    harness.effect().GetIndexFromID(id, &index);
    harness.effect().GetEffectDefaults(index, values, &count);
    std::u16string params;
    for (LONG i = 0; i < count; ++i)
        for (const char c : std::to_string(values[i]) + ";") params.push_back(char16_t(c));
    harness.select(id, params);
    Bstr path(source);
    harness.effect().put_Source(path.get());
    harness.setInput(qx::bench::makeTestFrame(qx::bench::kFrameWidth, qx::bench::kFrameHeight));
    if (FAILED(harness.setup())) {
        state.SkipWithError("Setup failed");
        return;
    }
    float progress = 0.0f;
    for (int frame = 0; frame < warmUp; ++frame) harness.execute(0.0f);
    for (auto _ : state) {
        harness.execute(progress);
        progress = progress >= 1.0f ? 0.0f : progress + 0.01f;
    }
}

void BM_CubeFrameThroughHost1080p(benchmark::State& state) { SceneFrame(state, 5000, u""); }
BENCHMARK(BM_CubeFrameThroughHost1080p)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FlagFrameThroughHost1080p(benchmark::State& state) { SceneFrame(state, 5004, u"Effects\\Drapeau.afx"); }
BENCHMARK(BM_FlagFrameThroughHost1080p)->Unit(benchmark::kMillisecond)->UseRealTime();

// The downpour keeps 10,000 particles in the air once a second of it has played.
void BM_DownpourFrameThroughHost1080p(benchmark::State& state)
{
    SceneFrame(state, 5003, u"Particles\\Averse.afx", 30);
}
BENCHMARK(BM_DownpourFrameThroughHost1080p)->Unit(benchmark::kMillisecond)->UseRealTime();

// A chain of two filters, one of them the bloom with its eleven passes.
void BM_BloomFrameThroughHost1080p(benchmark::State& state) { SceneFrame(state, 5004, u"Effects\\Eclat.afx"); }
BENCHMARK(BM_BloomFrameThroughHost1080p)->Unit(benchmark::kMillisecond)->UseRealTime();

// The sun's flare with every option, its occlusion query waited for each frame.
void BM_FlareFrameThroughHost1080p(benchmark::State& state) { SceneFrame(state, 5004, u"Effects\\Soleil.afx"); }
BENCHMARK(BM_FlareFrameThroughHost1080p)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
