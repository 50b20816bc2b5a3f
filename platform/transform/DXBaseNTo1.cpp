#include "platform/transform/DXBaseNTo1.h"

namespace qx::transform {

DXTransformCore::DXTransformCore(ULONG requiredInputs, ULONG maxInputs, LONG capabilities)
    : requiredInputs_(requiredInputs), maxInputs_(maxInputs), capabilities_(capabilities)
{}

namespace {

/// A surface over the memory that a host's IDXRawSurface describes, with the object kept
/// in `holders`; E_INVALIDARG for an object that is no such surface or describes none.
HRESULT wrapHostSurface(IUnknown* object, std::shared_ptr<DXSurface>& surface,
                        std::vector<com::ComPtr<IUnknown>>& holders)
{
    if (!object) return E_POINTER;
    com::ComPtr<IDXRawSurface> raw;
    if (FAILED(object->QueryInterface(IDXRawSurface::iid, reinterpret_cast<void**>(raw.out())))) {
        return E_INVALIDARG;
    }
    DXRAWSURFACEINFO info;
    const HRESULT hr = raw->GetSurfaceInfo(&info);
    if (FAILED(hr)) return hr;
    if (!info.pSamples || info.width <= 0 || info.height <= 0) return E_INVALIDARG;
    surface = DXSurface::wrap({info.pSamples, size_t(info.width) * size_t(info.height)}, info.width, info.height);
    if (!surface) return E_OUTOFMEMORY;
    holders.emplace_back(object);
    return S_OK;
}

}  // namespace

HRESULT DXTransformCore::setupHostSurfaces(IUnknown* const* punkInputs, ULONG ulNumInputs, IUnknown* const* punkOutputs,
                                           ULONG ulNumOutputs, DWORD dwFlags)
{
    if ((ulNumInputs > 0 && !punkInputs) || (ulNumOutputs > 0 && !punkOutputs)) return E_POINTER;
    if (ulNumOutputs > 1) return E_INVALIDARG;
    std::vector<com::ComPtr<IUnknown>> holders;
    std::vector<std::shared_ptr<DXSurface>> inputs(ulNumInputs);
    for (ULONG i = 0; i < ulNumInputs; ++i) {
        // An optional input may be left out; a required one fails in setup.
        if (!punkInputs[i]) continue;
        const HRESULT hr = wrapHostSurface(punkInputs[i], inputs[i], holders);
        if (FAILED(hr)) return hr;
    }
    std::shared_ptr<DXSurface> output;
    if (ulNumOutputs == 1) {
        const HRESULT hr = wrapHostSurface(punkOutputs[0], output, holders);
        if (FAILED(hr)) return hr;
    }
    return setup(inputs, output, dwFlags, std::move(holders));
}

HRESULT DXTransformCore::setup(std::span<const std::shared_ptr<DXSurface>> inputs,
                               const std::shared_ptr<DXSurface>& output, DWORD flags,
                               std::vector<com::ComPtr<IUnknown>> hostSurfaces)
{
    if (inputs.empty() && !output) {
        inputs_.clear();
        output_.reset();
        hostSurfaces_.clear();
        return S_OK;
    }
    if (inputs.size() < requiredInputs_ || inputs.size() > maxInputs_ || !output) return E_INVALIDARG;
    for (ULONG i = 0; i < requiredInputs_; ++i) {
        if (!inputs[i]) return E_INVALIDARG;
    }
    inputs_.assign(inputs.begin(), inputs.end());
    output_ = output;
    hostSurfaces_ = std::move(hostSurfaces);
    {
        std::lock_guard lock(objectLock_);
        ++generationId_;
    }
    const HRESULT hr = OnSetup(flags);
    if (FAILED(hr)) {
        inputs_.clear();
        output_.reset();
        hostSurfaces_.clear();
    }
    return hr;
}

HRESULT DXTransformCore::execute(const Bounds* clipBounds, const Point* placement)
{
    if (!output_ || inputs_.size() < requiredInputs_ || (requiredInputs_ > 0 && !inputs_[0])) {
        return DXTERR_UNINITIALIZED;
    }
    const Bounds whole = inputs_.empty() ? output_->GetBounds() : inputs_[0]->GetBounds();
    const Bounds doBounds = clipBounds ? *clipBounds : whole;
    const Point at = placement ? *placement : Point{};
    const Bounds outputBounds{doBounds.left + at.x, doBounds.top + at.y, doBounds.right + at.x, doBounds.bottom + at.y};
    if (!whole.contains(doBounds) || !output_->GetBounds().contains(outputBounds) || doBounds.empty()) {
        return E_INVALIDARG;
    }
    bool continueProcessing = true;
    return WorkProc({doBounds, outputBounds}, &continueProcessing);
}

HRESULT DXTransformCore::getCapabilities(LONG* pVal) const
{
    if (!pVal) return E_POINTER;
    *pVal = capabilities_;
    return S_OK;
}

HRESULT DXTransformCore::getProgress(float* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = progress();
    return S_OK;
}

float DXTransformCore::progress()
{
    std::lock_guard lock(objectLock_);
    return progress_;
}

HRESULT DXTransformCore::putProgress(float newVal)
{
    if (!(newVal >= 0.0f && newVal <= 1.0f)) return E_INVALIDARG;
    std::lock_guard lock(objectLock_);
    progress_ = newVal;
    ++generationId_;
    return S_OK;
}

HRESULT DXTransformCore::getStepResolution(float* pVal) const
{
    if (!pVal) return E_POINTER;
    *pVal = stepResolution_;
    return S_OK;
}

HRESULT DXTransformCore::getDuration(float* pVal)
{
    if (!pVal) return E_POINTER;
    std::lock_guard lock(objectLock_);
    *pVal = duration_;
    return S_OK;
}

HRESULT DXTransformCore::putDuration(float newVal)
{
    if (!(newVal > 0.0f)) return E_INVALIDARG;
    std::lock_guard lock(objectLock_);
    if (newVal != duration_) {
        duration_ = newVal;
        ++generationId_;
    }
    return S_OK;
}

DWORD DXTransformCore::generationId()
{
    std::lock_guard lock(objectLock_);
    return generationId_;
}

}  // namespace qx::transform
