#include "host/FramePaths.h"

#include "effects/VideoEffect.h"
#include "filters/SwfRenderer.h"
#include "platform/draw2d/Bitmap.h"
#include "platform/imaging/BitmapHandle.h"
#include "wrap3d/4DTransform.h"

namespace qx {

namespace {

using transform::DXPACKEDRECTDESC;

DXPACKEDRECTDESC packedRect(const uint32_t* samples, LONG width, LONG height)
{
    // The lock only reads from the caller's samples when packing.
    return {const_cast<uint32_t*>(samples), false, {0, 0, width, height}, 0};
}

void packFrame(FrameWork& work) { work.output.PackRect(packedRect(work.frame.get(), work.width, work.height)); }

}  // namespace

pixel::FrameMemory allocateFrame(LONG width, LONG height)
{
    return pixel::allocateFrameMemory(size_t(width) * size_t(height));
}

HRESULT PassThroughRunner::run(FrameWork& work)
{
    packFrame(work);
    return S_OK;
}

VideoEffectRunner::VideoEffectRunner(std::unique_ptr<CVideoEffect> effect, LONG width, LONG height)
    : effect_(std::move(effect)), width_(width), height_(height)
{}

VideoEffectRunner::~VideoEffectRunner() = default;

HRESULT VideoEffectRunner::run(FrameWork& work)
{
    // The effect's buffers have the size of Setup; a part of the frame (Execute with
    // bounds) would be read and written past its end.
    if (work.width != width_ || work.height != height_) return E_INVALIDARG;
    // The effect writes every sample of its output: straight into the output surface
    // when the lock holds whole rows, which saves a frame's copy.
    const std::span<uint32_t> inPlace = work.output.wholeRowsInPlace();
    if (inPlace.size() == size_t(work.width) * size_t(work.height)) {
        effect_->ProcessFrame(work.source(), inPlace.data(), work.progress);
        return S_OK;
    }
    const pixel::FrameMemory result = allocateFrame(work.width, work.height);
    if (!result) return E_FAIL;
    effect_->ProcessFrame(work.source(), result.get(), work.progress);
    work.output.PackRect(packedRect(result.get(), work.width, work.height));
    return S_OK;
}

SceneClientRunner::SceneClientRunner(std::unique_ptr<C4DTransform> client, LONG width, LONG height)
    : client_(std::move(client)), width_(width), height_(height)
{}

SceneClientRunner::~SceneClientRunner() = default;

HRESULT SceneClientRunner::run(FrameWork& work)
{
    if (client_) {
        // The client renders frames of the size of Setup, as the video effects do.
        if (work.width != width_ || work.height != height_) return E_INVALIDARG;
        client_->frame = work.frame.get();
        client_->firstImage = nullptr;
        client_->secondImage = nullptr;
        client_->progress = work.progress;
        client_->Process();
    }
    packFrame(work);
    return S_OK;
}

FlashAnimationRunner::FlashAnimationRunner(std::unique_ptr<CSwfRenderer> animation, LONG width, LONG height)
    : animation_(std::move(animation)), width_(width), height_(height)
{}

FlashAnimationRunner::~FlashAnimationRunner() = default;

HRESULT FlashAnimationRunner::run(FrameWork& work)
{
    // The renderer draws frames of the size of Setup, as the video effects do.
    if (work.width != width_ || work.height != height_) return E_INVALIDARG;
    // The animation's frame over the video: its magenta background keyed out.
    animation_->Draw(work.frame.get(), work.progress, 1, 0.0f, 0.0f, 1.0f, 1.0f);
    packFrame(work);
    return S_OK;
}

HRESULT FrameRoutineRunner::run(FrameWork& work)
{
    draw2d::Bitmap bitmap(work.width, work.height, work.width * 4, work.canvas());
    if (bitmap.status() != draw2d::Status::Ok) return S_OK;
    routine_->draw(bitmap, work.progress, work.params);
    draw2d::BitmapData bits;
    if (bitmap.lockBits(bits) != draw2d::Status::Ok || !bits.scan0) return E_FAIL;
    if (!work.inOutput) work.output.PackRect(packedRect(bits.scan0, work.width, work.height));
    bitmap.unlockBits();
    return S_OK;
}

// The frame goes to the routine as a bitmap handle built from a DIB header with a
// positive height: the top-down frame is declared bottom-up, so the routine sees it
// upside down, and the way back through the DIB block turns it over again.
HRESULT ImageRoutineRunner::run(FrameWork& work)
{
    const LONG width = work.width;
    const LONG height = work.height;
    imaging::BitmapHandle handle;
    const size_t bytes = size_t(width) * size_t(height) * sizeof(uint32_t);
    const auto* bits = reinterpret_cast<const uint8_t*>(work.frame.get());
    if (handle.loadDib(imaging::frameDibHeader(width, height), {bits, bytes}) != 1) return E_FAIL;
    work.frame.reset();                                           // the handle has its own copy
    routine_->apply(handle, double(work.progress), work.params);  // the routine's status is not used
    // The DIB block's rows, in its memory order, are the frame's rows: they are packed
    // straight from the handle, without making the block.
    if (handle.width() != width || handle.height() != height) return E_FAIL;
    for (LONG y = 0; y < height; ++y) {
        const auto row = handle.dibRow(y);
        work.output.PackRect({const_cast<uint32_t*>(row.data()), false, {0, y, width, y + 1}, 0});
    }
    return S_OK;
}

}  // namespace qx
