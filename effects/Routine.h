#pragma once
// The objects of the effects that the host computes by routine: a frame routine redraws
// the frame through a bitmap over the frame buffer, an image routine changes a bitmap
// handle that holds the frame upside down. Setup makes one object for the selected effect
// and prepares the state that its frames share; every Execute hands it the frame and the
// host's parameter list of that moment. An object that Setup has not prepared is the
// effect as it runs before its first Setup.
#include "effects/ParamTable.h"

#include <concepts>
#include <memory>

namespace qx::draw2d {
class Bitmap;
}
namespace qx::imaging {
class BitmapHandle;
}

namespace qx {

class FrameRoutine {
public:
    virtual ~FrameRoutine() = default;
    /// Prepares the state of the frames from the list at Setup; std::bad_alloc when the
    /// memory for it cannot be had.
    virtual void setUp(ParamValues) {}
    virtual void draw(draw2d::Bitmap& bitmap, float progress, ParamValues params) = 0;
};

class ImageRoutine {
public:
    virtual ~ImageRoutine() = default;
    /// As FrameRoutine::setUp.
    virtual void setUp(ParamValues) {}
    virtual HRESULT apply(imaging::BitmapHandle& handle, double progress, ParamValues params) = 0;
};

/// What a descriptor holds to make the object of its routine.
using MakeFrameRoutine = std::unique_ptr<FrameRoutine> (*)();
using MakeImageRoutine = std::unique_ptr<ImageRoutine> (*)();

using FrameRoutineFunction = void (*)(draw2d::Bitmap& bitmap, float progress, ParamValues params);
using ImageRoutineFunction = HRESULT (*)(imaging::BitmapHandle& handle, double progress, ParamValues params);

/// The object of a routine that keeps nothing between frames.
template <FrameRoutineFunction Routine>
class PlainFrameRoutine final : public FrameRoutine {
public:
    void draw(draw2d::Bitmap& bitmap, float progress, ParamValues params) override
    {
        Routine(bitmap, progress, params);
    }
};

template <ImageRoutineFunction Routine>
class PlainImageRoutine final : public ImageRoutine {
public:
    HRESULT apply(imaging::BitmapHandle& handle, double progress, ParamValues params) override
    {
        return Routine(handle, progress, params);
    }
};

/// Makers for descriptors: `plainRoutine<ZoomOutFrame>` for a routine without state,
/// `routineObject<PuzzleRoutine>` for a class that keeps state.
template <FrameRoutineFunction Routine>
std::unique_ptr<FrameRoutine> plainRoutine()
{
    return std::make_unique<PlainFrameRoutine<Routine>>();
}

template <ImageRoutineFunction Routine>
std::unique_ptr<ImageRoutine> plainRoutine()
{
    return std::make_unique<PlainImageRoutine<Routine>>();
}

template <std::derived_from<FrameRoutine> Object>
std::unique_ptr<FrameRoutine> routineObject()
{
    return std::make_unique<Object>();
}

template <std::derived_from<ImageRoutine> Object>
std::unique_ptr<ImageRoutine> routineObject()
{
    return std::make_unique<Object>();
}

}  // namespace qx
