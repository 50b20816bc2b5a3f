#include "platform/transform/DXBaseNTo1.h"

namespace qx::transform {

DXTransformCore::DXTransformCore(ULONG requiredInputs, ULONG maxInputs, LONG capabilities)
    : requiredInputs_(requiredInputs), maxInputs_(maxInputs), capabilities_(capabilities)
{}

HRESULT DXTransformCore::setup(std::span<const std::shared_ptr<DXSurface>> inputs,
                               const std::shared_ptr<DXSurface>& output, DWORD flags)
{
    if (inputs.empty() && !output) {
        inputs_.clear();
        output_.reset();
        return S_OK;
    }
    if (inputs.size() < requiredInputs_ || inputs.size() > maxInputs_ || !output) return E_INVALIDARG;
    for (ULONG i = 0; i < requiredInputs_; ++i) {
        if (!inputs[i]) return E_INVALIDARG;
    }
    inputs_.assign(inputs.begin(), inputs.end());
    output_ = output;
    {
        std::lock_guard lock(objectLock_);
        ++generationId_;
    }
    const HRESULT hr = OnSetup(flags);
    if (FAILED(hr)) {
        inputs_.clear();
        output_.reset();
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
