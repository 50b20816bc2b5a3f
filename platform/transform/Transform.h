#pragma once
// The interfaces of a transform with inputs and one output: IDXTransform to set up and
// execute it, IDXEffect for its progress and duration.
#include "platform/com/Unknown.h"
#include "platform/transform/Surface.h"

#include <memory>
#include <span>

namespace qx::transform {

/// The transform kind a morphing effect reports in `Capabilities`.
inline constexpr LONG DXTET_MORPH = 2;

struct Point {
    LONG x = 0;
    LONG y = 0;
};

/// What a host's surface tells of its memory: `width * height` samples of 32 bits, bytes
/// B, G, R, A, not premultiplied, top-down, rows without padding.
struct DXRAWSURFACEINFO {
    uint32_t* pSamples = nullptr;
    LONG width = 0;
    LONG height = 0;
};

/// A surface that a host makes over its own frame memory and hands to Setup through the
/// component interface. The transform holds a reference to it, and reads or writes the
/// memory, from Setup to the next Setup or its release.
struct IDXRawSurface : IUnknown {
    static constexpr IID iid = guid("{6C0E9D2B-4F3A-4B8E-9A51-2D7C3E8F1A60}");
    virtual HRESULT GetSurfaceInfo(DXRAWSURFACEINFO* pSurfaceInfo) = 0;
};

struct IDXTransform : IUnknown {
    static constexpr IID iid = guid("{30A5FB78-E11F-11D1-9064-00C04FC2D0EC}");
    /// Setup as a host calls it through the component interface: input and output
    /// surfaces as objects that answer IDXRawSurface, at most one output. No inputs and
    /// no outputs together undo the set-up.
    virtual HRESULT Setup(IUnknown* const* punkInputs, ULONG ulNumInputs, IUnknown* const* punkOutputs,
                          ULONG ulNumOutputs, DWORD dwFlags) = 0;
    /// Renders the output: the part `clipBounds` of it (all when null), placed at
    /// `placement` in the output surface (its origin when null).
    virtual HRESULT Execute(const GUID* requestId, const Bounds* clipBounds, const Point* placement) = 0;
    /// Setup for code of this library: the surfaces themselves.
    virtual HRESULT Setup(std::span<const std::shared_ptr<DXSurface>> inputs, const std::shared_ptr<DXSurface>& output,
                          DWORD flags) = 0;
};

struct IDXEffect : IUnknown {
    static constexpr IID iid = guid("{E31FB81B-1335-11D1-8189-0000F87557DB}");
    virtual HRESULT get_Capabilities(LONG* pVal) = 0;
    virtual HRESULT get_Progress(float* pVal) = 0;
    virtual HRESULT put_Progress(float newVal) = 0;
    virtual HRESULT get_StepResolution(float* pVal) = 0;
    virtual HRESULT get_Duration(float* pVal) = 0;
    virtual HRESULT put_Duration(float newVal) = 0;
};

}  // namespace qx::transform
