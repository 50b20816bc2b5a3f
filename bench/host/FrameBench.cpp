// Whole frames through the effect host at 1920x1080: unpack, the effect, pack, as one
// Execute does.
#include "bench/common/Frames.h"
#include "host/DynamicEffect.h"

#include <benchmark/benchmark.h>

namespace qx {
namespace {

class HostFrame {
public:
    HostFrame(LONG id, std::u16string_view params)
        : input_(transform::DXSurface::create(bench::kFrameWidth, bench::kFrameHeight)),
          output_(transform::DXSurface::create(bench::kFrameWidth, bench::kFrameHeight)),
          effect_(CQXDynamicEffect::Create())
    {
        auto frame = bench::makeTestFrame(bench::kFrameWidth, bench::kFrameHeight);
        std::unique_ptr<transform::SurfaceLock> lock;
        input_->LockSurface(nullptr, 0, transform::DXLOCKF_READWRITE, lock);
        lock->PackRect({frame.data(), false, input_->GetBounds(), 0});
        lock.reset();
        effect_->put_Index(id);
        Bstr text(params);
        effect_->put_Params(text.get());
        const std::shared_ptr<transform::DXSurface> inputs[] = {input_};
        ok_ = effect_->Setup(inputs, output_, 0) == S_OK;
    }

    bool run(float progress)
    {
        effect_->put_Progress(progress);
        return ok_ && effect_->Execute(nullptr, nullptr, nullptr) == S_OK;
    }

private:
    std::shared_ptr<transform::DXSurface> input_;
    std::shared_ptr<transform::DXSurface> output_;
    com::ComPtr<CQXDynamicEffect> effect_;
    bool ok_ = false;
};

void runEffect(benchmark::State& state, LONG id, std::u16string_view params)
{
    HostFrame frame(id, params);
    int n = 0;
    for (auto _ : state) {
        if (!frame.run(float(n++ % 100) / 99.0f)) {
            state.SkipWithError("Execute failed");
            break;
        }
    }
}

void BM_ZoomOutFrame(benchmark::State& state) { runEffect(state, 0, u"100;100;900;900;"); }
BENCHMARK(BM_ZoomOutFrame)->Unit(benchmark::kMillisecond);

void BM_PanLeftToRightFrame(benchmark::State& state) { runEffect(state, 2, u"250;250;750;750;"); }
BENCHMARK(BM_PanLeftToRightFrame)->Unit(benchmark::kMillisecond);

void BM_FreeMoveFrame(benchmark::State& state) { runEffect(state, 6, u"0;0;500;500;500;500;1000;1000;"); }
BENCHMARK(BM_FreeMoveFrame)->Unit(benchmark::kMillisecond);

void BM_PassThroughFrame(benchmark::State& state) { runEffect(state, 5000, u""); }
BENCHMARK(BM_PassThroughFrame)->Unit(benchmark::kMillisecond);

// Each catalogue effect computed on pixels, with its default parameters.
void BM_FadeInFrame(benchmark::State& state) { runEffect(state, 7, u"255;"); }
BENCHMARK(BM_FadeInFrame)->Unit(benchmark::kMillisecond);
void BM_FadeOutFrame(benchmark::State& state) { runEffect(state, 8, u"0;"); }
BENCHMARK(BM_FadeOutFrame)->Unit(benchmark::kMillisecond);
void BM_ColorKeyFrame(benchmark::State& state) { runEffect(state, 15, u"3153936;16;"); }
BENCHMARK(BM_ColorKeyFrame)->Unit(benchmark::kMillisecond);
void BM_SpectrumImage(benchmark::State& state) { runEffect(state, 10, u""); }
BENCHMARK(BM_SpectrumImage)->Unit(benchmark::kMillisecond);
void BM_ColorizeImage(benchmark::State& state) { runEffect(state, 11, u""); }
BENCHMARK(BM_ColorizeImage)->Unit(benchmark::kMillisecond);
void BM_SaturationUpImage(benchmark::State& state) { runEffect(state, 13, u""); }
BENCHMARK(BM_SaturationUpImage)->Unit(benchmark::kMillisecond);
void BM_SaturationDownImage(benchmark::State& state) { runEffect(state, 14, u""); }
BENCHMARK(BM_SaturationDownImage)->Unit(benchmark::kMillisecond);
void BM_PuzzleFrame(benchmark::State& state) { runEffect(state, 12, u"4;3;12;0;"); }
BENCHMARK(BM_PuzzleFrame)->Unit(benchmark::kMillisecond);
void BM_OldFilmImage(benchmark::State& state) { runEffect(state, 9, u"20;5;10;30;30;50;20;0;2;"); }
BENCHMARK(BM_OldFilmImage)->Unit(benchmark::kMillisecond);
void BM_OldFilm2Frame(benchmark::State& state) { runEffect(state, 2000, u""); }
BENCHMARK(BM_OldFilm2Frame)->Unit(benchmark::kMillisecond);
void BM_WaterDropsFrame(benchmark::State& state) { runEffect(state, 2001, u"1;"); }
BENCHMARK(BM_WaterDropsFrame)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace qx
