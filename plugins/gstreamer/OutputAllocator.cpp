#include "plugins/gstreamer/OutputAllocator.h"

#include <algorithm>
#include <limits>

namespace qx::gst {

HRESULT OutputAllocator::SetProperties(const media::ALLOCATOR_PROPERTIES* pRequest,
                                       media::ALLOCATOR_PROPERTIES* pActual)
{
    if (!pRequest || !pActual) return E_POINTER;
    actual_ = *pRequest;
    actual_.cBuffers = 1;
    actual_.cbBuffer = LONG(std::min(frameBytes_, size_t(std::numeric_limits<LONG>::max())));
    *pActual = actual_;
    return S_OK;
}

HRESULT OutputAllocator::GetProperties(media::ALLOCATOR_PROPERTIES* pProps)
{
    if (!pProps) return E_POINTER;
    *pProps = actual_;
    return S_OK;
}

HRESULT OutputAllocator::Commit()
{
    committed_ = true;
    return S_OK;
}

HRESULT OutputAllocator::Decommit()
{
    committed_ = false;
    return S_OK;
}

HRESULT OutputAllocator::GetBuffer(media::IMediaSample** ppBuffer, const media::REFERENCE_TIME*,
                                   const media::REFERENCE_TIME*, DWORD)
{
    if (!ppBuffer) return E_POINTER;
    *ppBuffer = nullptr;
    if (!committed_) return media::VFW_E_NOT_COMMITTED;
    if (target_.empty()) return media::VFW_E_TIMEOUT;  // no output frame is waiting
    auto sample = media::CMediaSample::Wrap(std::exchange(target_, {}));
    if (!sample) return E_OUTOFMEMORY;
    sample->AddRef();
    *ppBuffer = sample.get();
    return S_OK;
}

HRESULT OutputAllocator::ReleaseBuffer(media::IMediaSample*)
{
    return S_OK;  // its samples are wrappers that go with their last reference
}

}  // namespace qx::gst
