#pragma once
// The paths of one frame through the effect host, one class for each: OnSetup chooses
// and makes the path of the selected effect once, with the effect's object in it, and
// every WorkProc hands it the unpacked input frame. A path packs its result into the
// output, or leaves the output unwritten.
#include "effects/Routine.h"
#include "platform/pixel/FrameMemory.h"
#include "platform/transform/Surface.h"

#include <memory>

namespace qx {

class C4DTransform;
class CSwfRenderer;
class CVideoEffect;

/// One Execute: the input frame, unpacked into a buffer of its own, and what the path
/// needs to render it.
struct FrameWork {
    pixel::FrameMemory frame;
    LONG width;
    LONG height;
    float progress;
    ParamValues params;  ///< the host's list at this Execute
    transform::SurfaceLock& output;
    /// The input's samples themselves, for a runner that only reads them (`frame` is then
    /// null); null when `frame` holds a copy.
    const uint32_t* input = nullptr;
    /// The output's own samples holding a copy of the input, for a runner that draws on
    /// the frame: it draws there and packs nothing (`frame` is then null).
    uint32_t* inOutput = nullptr;

    const uint32_t* source() const { return input ? input : frame.get(); }
    /// The frame a runner draws on: the output's samples, or the copy to pack.
    uint32_t* canvas() { return inOutput ? inOutput : frame.get(); }
};

class EffectRunner {
public:
    virtual ~EffectRunner() = default;
    virtual HRESULT run(FrameWork& work) = 0;
    /// True for a runner that only reads the input frame, and may read it in place.
    virtual bool readsInputOnly() const { return false; }
    /// True for a runner that draws on a copy of the input frame, and may draw on it in
    /// the output's own samples.
    virtual bool drawsOnTheFrame() const { return false; }
};

/// A frame buffer for one Execute, left uninitialised since it is filled at once; null
/// when memory runs out.
pixel::FrameMemory allocateFrame(LONG width, LONG height);

/// Nothing computes the effect: the output is not written.
class IdleRunner final : public EffectRunner {
public:
    HRESULT run(FrameWork&) override { return S_OK; }
};

/// The input goes to the output unchanged: the vector animation before a Setup made its
/// renderer.
class PassThroughRunner final : public EffectRunner {
public:
    HRESULT run(FrameWork& work) override;
};

/// A stateful effect (ids 2000 to 4999) computes the output from the input into a second
/// buffer.
class VideoEffectRunner final : public EffectRunner {
public:
    VideoEffectRunner(std::unique_ptr<CVideoEffect> effect, LONG width, LONG height);
    ~VideoEffectRunner() override;
    HRESULT run(FrameWork& work) override;
    bool readsInputOnly() const override { return true; }

private:
    std::unique_ptr<CVideoEffect> effect_;
    LONG width_;
    LONG height_;
};

/// A 3D client renders into the frame buffer, which then goes to the output; without a
/// client the frame passes through.
class SceneClientRunner final : public EffectRunner {
public:
    SceneClientRunner(std::unique_ptr<C4DTransform> client, LONG width, LONG height);
    ~SceneClientRunner() override;
    HRESULT run(FrameWork& work) override;

private:
    std::unique_ptr<C4DTransform> client_;
    LONG width_;
    LONG height_;
};

/// The vector animation draws its frame over the frame buffer, which then goes to the
/// output.
class FlashAnimationRunner final : public EffectRunner {
public:
    FlashAnimationRunner(std::unique_ptr<CSwfRenderer> animation, LONG width, LONG height);
    ~FlashAnimationRunner() override;
    HRESULT run(FrameWork& work) override;

private:
    std::unique_ptr<CSwfRenderer> animation_;
    LONG width_;
    LONG height_;
};

/// A frame routine draws on a bitmap over the frame buffer.
class FrameRoutineRunner final : public EffectRunner {
public:
    explicit FrameRoutineRunner(std::unique_ptr<FrameRoutine> routine) : routine_(std::move(routine)) {}
    HRESULT run(FrameWork& work) override;
    bool drawsOnTheFrame() const override { return true; }

private:
    std::unique_ptr<FrameRoutine> routine_;
};

/// An image routine works on a bitmap handle made from the frame, which sees the frame
/// upside down.
class ImageRoutineRunner final : public EffectRunner {
public:
    explicit ImageRoutineRunner(std::unique_ptr<ImageRoutine> routine) : routine_(std::move(routine)) {}
    HRESULT run(FrameWork& work) override;

private:
    std::unique_ptr<ImageRoutine> routine_;
};

}  // namespace qx
