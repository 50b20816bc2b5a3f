// One frame of the 3D transition at 1920x1080 through the transform, as an editor drives
// it: both inputs unpacked and uploaded into the scene's two placeholder textures, the
// cube's frame, read-back, pack. The textured quad with read-back of the GPU layer stands
// beside it in the same run: a transition uploads one frame more than a scene effect.
#include "bench/common/Frames.h"
#include "filters/3DTransform.h"
#include "host/DynamicEffect.h"
#include "wrap3d/SceneBridge.h"

#include <benchmark/benchmark.h>

namespace {

using namespace qx;

std::shared_ptr<transform::DXSurface> surfaceWith(const std::vector<uint32_t>& samples)
{
    auto surface = transform::DXSurface::create(bench::kFrameWidth, bench::kFrameHeight);
    std::unique_ptr<transform::SurfaceLock> lock;
    if (!surface || FAILED(surface->LockSurface(nullptr, 0, transform::DXLOCKF_READWRITE, lock))) return nullptr;
    lock->PackRect({const_cast<uint32_t*>(samples.data()), false, surface->GetBounds(), 0});
    return surface;
}

void BM_CubeTransitionFrame1080p(benchmark::State& state)
{
    const Bstr dataPath(std::u16string(u"" QX_DATA_DIR));
    CQXDynamicEffect::Create()->SetGlobalDataPath(dataPath.get());
    const auto first = surfaceWith(bench::makeTestFrame(bench::kFrameWidth, bench::kFrameHeight));
    const auto second =
        surfaceWith(std::vector<uint32_t>(size_t(bench::kFrameWidth) * bench::kFrameHeight, 0xFF3080C0u));
    const auto output = transform::DXSurface::create(bench::kFrameWidth, bench::kFrameHeight);
    const auto transition = CQX3DTransform::Create();
    const Bstr scene(u"Transitions\\Cube.afx");
    transition->put_Source(scene.get());
    const std::shared_ptr<transform::DXSurface> inputs[] = {first, second};
    if (!first || !second || !output || FAILED(transition->Setup(inputs, output, 0)) || !transition->Client()) {
        state.SkipWithError("the transition scene can't play here");
        return;
    }
    float progress = 0.0f;
    for (auto _ : state) {
        transition->put_Progress(progress);
        transition->Execute(nullptr, nullptr, nullptr);
        progress = progress >= 1.0f ? 0.0f : progress + 0.01f;
    }
}
BENCHMARK(BM_CubeTransitionFrame1080p)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
