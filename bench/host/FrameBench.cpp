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

}  // namespace
}  // namespace qx
