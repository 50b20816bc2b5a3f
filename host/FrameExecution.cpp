// The frame path of the effect host: what Setup prepares for the selected effect, and how
// one Execute carries the input frame through the effect's routine or object to the
// output. Setup chooses the path once, by the tests on the effect's id; Execute only
// unpacks, runs that path and leaves the packing to it.
#include "filters/SwfRenderer.h"
#include "host/DynamicEffect.h"
#include "host/ExternalFilter.h"
#include "host/FramePaths.h"
#include "host/VideoEffectFactory.h"
#include "platform/os/CRuntime.h"
#include "wrap3d/4DTransform.h"
#include "wrap3d/SceneBridge.h"

#include <ctime>
#include <new>

namespace qx {

namespace {

bool isVideoEffect(LONG id) { return id >= effect_id::kVideoEffectFirst && id < effect_id::kVideoEffectEnd; }
bool isSceneEffect(LONG id) { return id >= effect_id::kSceneFirst && id < effect_id::kSceneEnd; }

// The path of a row that no Setup prepared, as the frame path finds it before the
// effect's first Setup: no video effect and no client exist, and a routine has none of
// the state that Setup makes.
std::unique_ptr<EffectRunner> runnerBeforeSetup(const EffectDescriptor* effect)
{
    if (!effect || isVideoEffect(effect->id)) return std::make_unique<IdleRunner>();
    if (isSceneEffect(effect->id)) return std::make_unique<SceneClientRunner>(nullptr, 0, 0);
    if (effect->id == effect_id::kVectorAnimation) return std::make_unique<PassThroughRunner>();
    if (effect->frameRoutine) return std::make_unique<FrameRoutineRunner>(effect->frameRoutine());
    if (effect->imageRoutine) return std::make_unique<ImageRoutineRunner>(effect->imageRoutine());
    return std::make_unique<IdleRunner>();
}

}  // namespace

void CQXDynamicEffect::followSelection()
{
    if (!runner) return;  // not set up: Execute is refused anyway
    standIn = effectIndex == runnerIndex ? nullptr : runnerBeforeSetup(currentEffect());
}

HRESULT CQXDynamicEffect::OnSetup(DWORD)
{
    // The path of the last Setup goes first: its client or object may hold what the new
    // one needs.
    standIn.reset();
    runner.reset();
    runnerIndex = -1;
    const EffectDescriptor* effect = currentEffect();
    if (!effect) return E_FAIL;  // the last Index put named no effect
    const transform::Bounds bounds = InputSurface()->GetBounds();
    const HRESULT hr = setupRunner(*effect, bounds.width(), bounds.height());
    if (SUCCEEDED(hr)) runnerIndex = effectIndex;
    return hr;
}

// The tests on the id, in the order of the frame path.
HRESULT CQXDynamicEffect::setupRunner(const EffectDescriptor& effect, LONG width, LONG height)
{
    const LONG id = effect.id;
    if (id == effect_id::kExternalFilter) return setupExternalFilter();
    if (isVideoEffect(id)) return setupVideoEffect(id, width, height);
    if (isSceneEffect(id)) {
        setupSceneClient(id, width, height);
        return S_OK;
    }
    if (id != effect_id::kVectorAnimation) return setupRoutine(effect);
    return setupFlashAnimation(width, height);
}

HRESULT CQXDynamicEffect::setupFlashAnimation(LONG width, LONG height)
{
    auto animation = std::make_unique<CSwfRenderer>();
    if (!animation->Load(source, width, height, 0)) return E_FAIL;
    animation->SetDuration(float(double(duration) / 10000000.0));
    runner = std::make_unique<FlashAnimationRunner>(std::move(animation), width, height);
    return S_OK;
}

HRESULT CQXDynamicEffect::setupExternalFilter()
{
    auto filter = std::make_unique<ExternalFilterImage>();
    if (const HRESULT hr = filter->open(filterId); FAILED(hr)) return hr;
    runner = std::make_unique<ImageRoutineRunner>(std::move(filter));
    return S_OK;
}

HRESULT CQXDynamicEffect::setupVideoEffect(LONG id, LONG width, LONG height)
{
    std::unique_ptr<CVideoEffect> effect;
    if (!CreateVideoEffect(width, height, effect, id) || !effect) return E_FAIL;
    effect->SetParams(std::span(params).first(size_t(paramCount)));
    effect->Start();  // a failed start shows at the first frame, as the effect decides
    runner = std::make_unique<VideoEffectRunner>(std::move(effect), width, height);
    return S_OK;
}

// Setup succeeds without a client too: the frames then pass through.
void CQXDynamicEffect::setupSceneClient(LONG id, LONG width, LONG height)
{
    std::unique_ptr<C4DTransform> client = CreateClient(id, width, height);
    if (client) {
        client->SetPath(source);
        client->SetDuration(float(double(duration) / 10000000.0));
        client->SetFps(fps);
        client->SetAspectRatio(aspectRatio > 0.0f ? aspectRatio : float(double(width) / double(height)));
        client->SetParams(params.data(), paramCount);
        if (client->Init() == 0) client.reset();
    }
    runner = std::make_unique<SceneClientRunner>(std::move(client), width, height);
}

HRESULT CQXDynamicEffect::setupRoutine(const EffectDescriptor& effect)
{
    // Every Setup of a pixel effect starts a new random sequence.
    os::srand(uint32_t(std::time(nullptr)));
    try {
        if (effect.frameRoutine) {
            std::unique_ptr<FrameRoutine> routine = effect.frameRoutine();
            routine->setUp(paramValues());
            runner = std::make_unique<FrameRoutineRunner>(std::move(routine));
        } else if (effect.imageRoutine) {
            std::unique_ptr<ImageRoutine> routine = effect.imageRoutine();
            routine->setUp(paramValues());
            runner = std::make_unique<ImageRoutineRunner>(std::move(routine));
        } else {
            runner = std::make_unique<IdleRunner>();  // nothing computes this row
        }
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

HRESULT CQXDynamicEffect::WorkProc(const transform::CDXTWorkInfoNTo1& workInfo, bool*)
{
    std::unique_ptr<transform::SurfaceLock> input;
    HRESULT hr = InputSurface()->LockSurface(&workInfo.DoBnds, m_ulLockTimeOut, transform::DXLOCKF_READ, input);
    if (FAILED(hr)) return hr;
    std::unique_ptr<transform::SurfaceLock> output;
    hr = OutputSurface()->LockSurface(&workInfo.OutputBnds, m_ulLockTimeOut, transform::DXLOCKF_READWRITE, output);
    if (FAILED(hr)) return hr;

    const LONG width = workInfo.DoBnds.width();
    const LONG height = workInfo.DoBnds.height();
    EffectRunner* path = standIn ? standIn.get() : runner.get();
    const size_t frameSamples = size_t(width) * size_t(height);
    // A host may wrap one buffer as both input and output: in-place work then needs a copy.
    const auto inPlace = input->wholeRowsToRead();
    const auto written = output->wholeRowsInPlace();
    const bool shared = !written.empty() && inPlace.data() < written.data() + written.size() &&
                        written.data() < inPlace.data() + inPlace.size();
    if (path && path->readsInputOnly() && inPlace.size() == frameSamples && !shared) {
        // Whole rows of the input are read where they are, which saves a frame's copy.
        FrameWork work{{}, width, height, progress(), paramValues(), *output, inPlace.data()};
        return path->run(work);
    }
    if (path && path->drawsOnTheFrame() && written.size() == frameSamples && !shared) {
        // The input is unpacked straight into the output's samples and drawn on there,
        // which saves packing a frame back.
        input->UnpackRect({written.data(), false, {0, 0, width, height}, 0});
        FrameWork work{{}, width, height, progress(), paramValues(), *output};
        work.inOutput = written.data();
        return path->run(work);
    }
    pixel::FrameMemory frame = allocateFrame(width, height);
    if (!frame) return E_OUTOFMEMORY;
    input->UnpackRect({frame.get(), false, {0, 0, width, height}, 0});
    if (!path) return S_OK;
    FrameWork work{std::move(frame), width, height, progress(), paramValues(), *output};
    return path->run(work);
    // The output lock is released before the input lock, in reverse order of taking.
}

}  // namespace qx
