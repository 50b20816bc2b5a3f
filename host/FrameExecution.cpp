// The frame path of the effect host: what Setup prepares for the selected effect, and how
// one Execute carries the input frame through the effect's routine or object to the
// output.
#include "host/DynamicEffect.h"
#include "host/VideoEffectFactory.h"
#include "platform/com/ClassRegistry.h"
#include "platform/draw2d/Bitmap.h"
#include "platform/imaging/BitmapHandle.h"
#include "platform/os/CRuntime.h"
#include "platform/pixel/FrameMemory.h"
#include "wrap3d/SceneBridge.h"

#include <ctime>
#include <new>

namespace qx {

namespace {

using transform::DXPACKEDRECTDESC;
using transform::SurfaceLock;

using FrameBuffer = pixel::FrameMemory;

// A frame buffer for one Execute, left uninitialised since it is filled at once.
FrameBuffer allocateFrame(LONG width, LONG height) { return pixel::allocateFrameMemory(size_t(width) * size_t(height)); }

DXPACKEDRECTDESC packedRect(const uint32_t* samples, LONG width, LONG height)
{
    // The lock only reads from the caller's samples when packing.
    return {const_cast<uint32_t*>(samples), false, {0, 0, width, height}, 0};
}

bool isVideoEffect(LONG id) { return id >= effect_id::kVideoEffectFirst && id < effect_id::kVideoEffectEnd; }
bool isSceneEffect(LONG id) { return id >= effect_id::kSceneFirst && id < effect_id::kSceneEnd; }

}  // namespace

HRESULT CQXDynamicEffect::OnSetup(DWORD)
{
    const EffectDescriptor* effect = currentEffect();
    if (!effect) return E_FAIL;  // the last Index put named no effect
    const transform::Bounds bounds = InputSurface()->GetBounds();
    const LONG id = effect->id;
    if (id == effect_id::kExternalFilter) return setupExternalFilter();
    if (isVideoEffect(id)) return setupVideoEffect(id, bounds.width(), bounds.height());
    if (isSceneEffect(id)) return setupSceneClient(id, bounds.width(), bounds.height());
    if (id != effect_id::kVectorAnimation) return setupFrameRoutine(id);
    return setupFlashAnimation(bounds.width(), bounds.height());
}

HRESULT CQXDynamicEffect::setupFlashAnimation(LONG width, LONG height)
{
    flashAnimation = std::make_unique<CSwfRenderer>();
    if (!flashAnimation->Load(source, width, height, 0)) {
        flashAnimation.reset();
        return E_FAIL;
    }
    flashAnimation->SetDuration(float(double(duration) / 10000000.0));
    return S_OK;
}

HRESULT CQXDynamicEffect::setupExternalFilter()
{
    externalFilter.reset();
    externalObject.reset();
    HRESULT hr = CoCreateInstance(CLSID_ExternalFilterObject, nullptr, CLSCTX_ALL, IUnknown::iid,
                                  reinterpret_cast<void**>(externalObject.out()));
    if (FAILED(hr)) return hr;
    hr = externalObject->QueryInterface(IExternalFilter::iid, reinterpret_cast<void**>(externalFilter.out()));
    if (FAILED(hr)) return hr;
    if (!externalFilter) return E_NOINTERFACE;
    externalFilter->OpenFilter(filterId, &externalFilterHandle);  // its result is not used
    return S_OK;
}

HRESULT CQXDynamicEffect::setupVideoEffect(LONG id, LONG width, LONG height)
{
    videoEffect.reset();
    if (!CreateVideoEffect(width, height, videoEffect, id) || !videoEffect) return E_FAIL;
    videoEffect->SetParams(std::span(params).first(size_t(paramCount)));
    videoEffect->Start();  // a failed start shows at the first frame, as the effect decides
    return S_OK;
}

HRESULT CQXDynamicEffect::setupSceneClient(LONG id, LONG width, LONG height)
{
    sceneClient = CreateClient(id, width, height);
    if (!sceneClient) return S_OK;  // frames pass through
    sceneClient->SetPath(source);
    sceneClient->SetDuration(float(double(duration) / 10000000.0));
    sceneClient->SetFps(fps);
    sceneClient->SetAspectRatio(aspectRatio > 0.0f ? aspectRatio : float(double(width) / double(height)));
    sceneClient->SetParams(params.data(), paramCount);
    if (sceneClient->Init() == 0) sceneClient.reset();
    return S_OK;
}

HRESULT CQXDynamicEffect::setupFrameRoutine(LONG id)
{
    // Every Setup of a pixel effect starts a new random sequence.
    os::srand(uint32_t(std::time(nullptr)));
    try {
        if (id == effect_id::kPuzzle) puzzleFrames = BuildPuzzleFrames(params[0], params[1], params[2]);
        if (id == effect_id::kOldFilm) filmState = std::make_unique<FilmState>();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

void* CQXDynamicEffect::routineState(LONG id)
{
    if (id == effect_id::kPuzzle) return &puzzleFrames;
    if (id == effect_id::kOldFilm) return filmState.get();
    if (id == effect_id::kExternalFilter) return this;
    return nullptr;
}

HRESULT CQXDynamicEffect::WorkProc(const transform::CDXTWorkInfoNTo1& workInfo, bool*)
{
    std::unique_ptr<SurfaceLock> input;
    HRESULT hr = InputSurface()->LockSurface(&workInfo.DoBnds, m_ulLockTimeOut, transform::DXLOCKF_READ, input);
    if (FAILED(hr)) return hr;
    std::unique_ptr<SurfaceLock> output;
    hr = OutputSurface()->LockSurface(&workInfo.OutputBnds, m_ulLockTimeOut, transform::DXLOCKF_READWRITE, output);
    if (FAILED(hr)) return hr;

    const LONG width = workInfo.DoBnds.width();
    const LONG height = workInfo.DoBnds.height();
    FrameBuffer frame = allocateFrame(width, height);
    if (!frame) return E_OUTOFMEMORY;
    input->UnpackRect(packedRect(frame.get(), width, height));
    const EffectDescriptor* effect = currentEffect();
    if (!effect) return S_OK;
    return dispatchFrame(*effect, std::move(frame), width, height, *output);
    // The output lock is released before the input lock, in reverse order of taking.
}

HRESULT CQXDynamicEffect::dispatchFrame(const EffectDescriptor& effect, FrameBuffer frame, LONG width, LONG height,
                                        SurfaceLock& output)
{
    const float progress = this->progress();
    if (isVideoEffect(effect.id) && videoEffect) {
        FrameBuffer result = allocateFrame(width, height);
        if (!result) return E_FAIL;
        videoEffect->ProcessFrame(frame.get(), result.get(), progress);
        output.PackRect(packedRect(result.get(), width, height));
        return S_OK;
    }
    if (effect.id == effect_id::kVectorAnimation) {
        // The animation's frame over the video: its magenta background keyed out.
        if (flashAnimation) flashAnimation->Draw(frame.get(), progress, 1, 0.0f, 0.0f, 1.0f, 1.0f);
        output.PackRect(packedRect(frame.get(), width, height));
        return S_OK;
    }
    if (isSceneEffect(effect.id)) {
        if (sceneClient) {
            sceneClient->frame = frame.get();
            sceneClient->firstImage = nullptr;
            sceneClient->secondImage = nullptr;
            sceneClient->progress = progress;
            sceneClient->Process();
        }
        output.PackRect(packedRect(frame.get(), width, height));
        return S_OK;
    }
    if (effect.frameRoutine) return runFrameRoutine(effect, std::move(frame), width, height, progress, output);
    if (effect.imageRoutine) return runImageRoutine(effect, std::move(frame), width, height, progress, output);
    return S_OK;  // nothing computes this effect: the output is left unwritten
}

HRESULT CQXDynamicEffect::runFrameRoutine(const EffectDescriptor& effect, FrameBuffer frame, LONG width, LONG height,
                                          float progress, SurfaceLock& output)
{
    draw2d::Bitmap bitmap(width, height, width * 4, frame.get());
    if (bitmap.status() != draw2d::Status::Ok) return S_OK;
    effect.frameRoutine(bitmap, progress, params.data(), paramCount, routineState(effect.id));
    draw2d::BitmapData bits;
    if (bitmap.lockBits(bits) != draw2d::Status::Ok || !bits.scan0) return E_FAIL;
    output.PackRect(packedRect(bits.scan0, width, height));
    bitmap.unlockBits();
    return S_OK;
}

// The frame goes to the routine as a bitmap handle built from a DIB header with a
// positive height: the top-down frame is declared bottom-up, so the routine sees it
// upside down, and the way back through the DIB block turns it over again.
HRESULT CQXDynamicEffect::runImageRoutine(const EffectDescriptor& effect, FrameBuffer frame, LONG width, LONG height,
                                          float progress, SurfaceLock& output)
{
    imaging::BitmapHandle handle;
    const size_t bytes = size_t(width) * size_t(height) * sizeof(uint32_t);
    const auto* bits = reinterpret_cast<const uint8_t*>(frame.get());
    if (handle.loadDib(imaging::frameDibHeader(width, height), {bits, bytes}) != 1) return E_FAIL;
    frame.reset();  // the handle has its own copy
    effect.imageRoutine(&handle, double(progress), params.data(), paramCount, routineState(effect.id));
    // The DIB block's rows, in its memory order, are the frame's rows: they are packed
    // straight from the handle, without making the block.
    if (handle.width() != width || handle.height() != height) return E_FAIL;
    for (LONG y = 0; y < height; ++y) {
        const auto row = handle.dibRow(y);
        output.PackRect({const_cast<uint32_t*>(row.data()), false, {0, y, width, y + 1}, 0});
    }
    return S_OK;
}

}  // namespace qx
