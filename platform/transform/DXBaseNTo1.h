#pragma once
// The base of transforms with N inputs and one output. It keeps the surfaces, the
// progress and duration of IDXEffect, and turns Setup and Execute into the two calls a
// transform writes: OnSetup, and WorkProc once for the whole frame (one band, on the
// caller's thread).
#include "platform/transform/Transform.h"

#include <mutex>
#include <tuple>
#include <type_traits>
#include <vector>

namespace qx::transform {

/// What one WorkProc call renders: `DoBnds` of the inputs into `OutputBnds` of the output.
struct CDXTWorkInfoNTo1 {
    Bounds DoBnds;
    Bounds OutputBnds;
};

/// State and behaviour of the base, independent of the interfaces a transform exposes.
class DXTransformCore {
public:
    /// The default lock time-out of the base, in milliseconds.
    static constexpr ULONG kDefaultLockTimeOut = 10000;

    HRESULT setup(std::span<const std::shared_ptr<DXSurface>> inputs, const std::shared_ptr<DXSurface>& output,
                  DWORD flags, std::vector<com::ComPtr<IUnknown>> hostSurfaces = {});
    /// Setup over a host's IDXRawSurface objects, held while their memory is in use.
    HRESULT setupHostSurfaces(IUnknown* const* punkInputs, ULONG ulNumInputs, IUnknown* const* punkOutputs,
                              ULONG ulNumOutputs, DWORD dwFlags);
    HRESULT execute(const Bounds* clipBounds, const Point* placement);

    HRESULT getCapabilities(LONG* pVal) const;
    HRESULT getProgress(float* pVal);
    HRESULT putProgress(float newVal);
    HRESULT getStepResolution(float* pVal) const;
    HRESULT getDuration(float* pVal);
    HRESULT putDuration(float newVal);

    /// Raised by every change that makes the next Execute count as changed.
    DWORD generationId();

protected:
    DXTransformCore(ULONG requiredInputs, ULONG maxInputs, LONG capabilities);
    virtual ~DXTransformCore() = default;

    virtual HRESULT OnSetup(DWORD flags) = 0;
    virtual HRESULT WorkProc(const CDXTWorkInfoNTo1& workInfo, bool* continueProcessing) = 0;

    DXSurface* InputSurface(ULONG index = 0) const { return index < inputs_.size() ? inputs_[index].get() : nullptr; }
    DXSurface* OutputSurface() const { return output_.get(); }
    /// The progress as Execute should read it, taken under the object lock.
    float progress();

    ULONG m_ulLockTimeOut = kDefaultLockTimeOut;

private:
    const ULONG requiredInputs_;
    const ULONG maxInputs_;
    const LONG capabilities_;
    std::vector<std::shared_ptr<DXSurface>> inputs_;
    std::shared_ptr<DXSurface> output_;
    /// The host's objects whose memory `inputs_` and `output_` wrap.
    std::vector<com::ComPtr<IUnknown>> hostSurfaces_;
    std::mutex objectLock_;
    float progress_ = 0.0f;
    float duration_ = 1.0f;
    float stepResolution_ = 0.0f;
    DWORD generationId_ = 0;
};

/// The base class proper: implements IUnknown, IDXTransform and the IDXEffect members for
/// a transform whose own interfaces are `Interfaces`, the first of them an extension of
/// IDXEffect (the transform's dual interface repeats the IDXEffect members first).
template <typename... Interfaces>
class CDXBaseNTo1 : public com::ComObject<IDXTransform, Interfaces...>, public DXTransformCore {
    using Effect = std::tuple_element_t<0, std::tuple<Interfaces...>>;
    static_assert(std::is_base_of_v<IDXEffect, Effect>, "a transform's first interface extends IDXEffect");

public:
    // The dual interface may add members of the same names (the host's Duration in
    // seconds): they stay in view beside the ones implemented here.
    using Effect::get_Duration;
    using Effect::put_Duration;

    HRESULT Setup(std::span<const std::shared_ptr<DXSurface>> inputs, const std::shared_ptr<DXSurface>& output,
                  DWORD flags) override
    {
        return setup(inputs, output, flags);
    }
    HRESULT Setup(IUnknown* const* punkInputs, ULONG ulNumInputs, IUnknown* const* punkOutputs, ULONG ulNumOutputs,
                  DWORD dwFlags) override
    {
        return setupHostSurfaces(punkInputs, ulNumInputs, punkOutputs, ulNumOutputs, dwFlags);
    }
    HRESULT Execute(const GUID*, const Bounds* clipBounds, const Point* placement) override
    {
        return execute(clipBounds, placement);
    }

    HRESULT get_Capabilities(LONG* pVal) override { return getCapabilities(pVal); }
    HRESULT get_Progress(float* pVal) override { return getProgress(pVal); }
    HRESULT put_Progress(float newVal) override { return putProgress(newVal); }
    HRESULT get_StepResolution(float* pVal) override { return getStepResolution(pVal); }
    HRESULT get_Duration(float* pVal) override { return getDuration(pVal); }
    HRESULT put_Duration(float newVal) override { return putDuration(newVal); }

protected:
    CDXBaseNTo1(ULONG requiredInputs, ULONG maxInputs, LONG capabilities)
        : DXTransformCore(requiredInputs, maxInputs, capabilities)
    {}
};

}  // namespace qx::transform
