#include "platform/media/MediaSample.h"

#include <algorithm>
#include <limits>
#include <new>
#include <tuple>

namespace qx::media {

namespace {

/// Sizes are counted in 32-bit LONGs: a larger buffer is seen as its first 2 GiB.
std::span<uint8_t> countable(std::span<uint8_t> buffer)
{
    return buffer.first(std::min(buffer.size(), size_t(std::numeric_limits<LONG>::max())));
}

}  // namespace

com::ComPtr<IMediaSample> CMediaSample::Wrap(std::span<uint8_t> buffer)
{
    auto* sample = new (std::nothrow) CMediaSample(buffer, nullptr);
    return com::ComPtr<IMediaSample>(sample);
}

CMediaSample::CMediaSample(std::span<uint8_t> buffer, IMemAllocator* allocator)
    : buffer_(countable(buffer)), allocator_(allocator), actualLength_(LONG(buffer_.size()))
{}

HRESULT CMediaSample::QueryInterface(const IID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    if (riid != IUnknown::iid && riid != IMediaSample::iid) return E_NOINTERFACE;
    *ppv = static_cast<IMediaSample*>(this);
    AddRef();
    return S_OK;
}

ULONG CMediaSample::AddRef() { return ++references_; }

ULONG CMediaSample::Release()
{
    const ULONG left = --references_;
    if (left > 0) return left;
    if (allocator_)
        allocator_->ReleaseBuffer(this);
    else
        delete this;
    return 0;
}

HRESULT CMediaSample::GetPointer(BYTE** ppBuffer)
{
    if (!ppBuffer) return E_POINTER;
    *ppBuffer = buffer_.data();
    return S_OK;
}

HRESULT CMediaSample::GetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd)
{
    if (!pTimeStart || !pTimeEnd) return E_POINTER;
    if (!start_) return VFW_E_SAMPLE_TIME_NOT_SET;
    *pTimeStart = *start_;
    if (!stop_) {
        *pTimeEnd = *start_ + 1;
        return VFW_S_NO_STOP_TIME;
    }
    *pTimeEnd = *stop_;
    return S_OK;
}

HRESULT CMediaSample::SetTime(const REFERENCE_TIME* pTimeStart, const REFERENCE_TIME* pTimeEnd)
{
    start_.reset();
    stop_.reset();
    if (!pTimeStart) return S_OK;
    start_ = *pTimeStart;
    if (pTimeEnd) stop_ = *pTimeEnd;
    return S_OK;
}

HRESULT CMediaSample::SetSyncPoint(bool bIsSyncPoint)
{
    syncPoint_ = bIsSyncPoint;
    return S_OK;
}

HRESULT CMediaSample::SetPreroll(bool bIsPreroll)
{
    preroll_ = bIsPreroll;
    return S_OK;
}

HRESULT CMediaSample::SetDiscontinuity(bool bDiscontinuity)
{
    discontinuity_ = bDiscontinuity;
    return S_OK;
}

HRESULT CMediaSample::SetActualDataLength(LONG length)
{
    if (length < 0 || length > GetSize()) return VFW_E_BUFFER_OVERFLOW;
    actualLength_ = length;
    return S_OK;
}

HRESULT CMediaSample::GetMediaType(CMediaType* pMediaType)
{
    if (!pMediaType) return E_POINTER;
    if (!mediaType_) return S_FALSE;
    *pMediaType = *mediaType_;
    return S_OK;
}

HRESULT CMediaSample::SetMediaType(const CMediaType* pMediaType)
{
    if (!pMediaType) {
        mediaType_.reset();
        return S_OK;
    }
    auto copy = std::unique_ptr<CMediaType>(new (std::nothrow) CMediaType(*pMediaType));
    if (!copy) return E_OUTOFMEMORY;
    mediaType_ = std::move(copy);
    return S_OK;
}

HRESULT CMediaSample::GetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd)
{
    if (!pTimeStart || !pTimeEnd) return E_POINTER;
    if (!mediaTime_) return VFW_E_MEDIA_TIME_NOT_SET;
    std::tie(*pTimeStart, *pTimeEnd) = *mediaTime_;
    return S_OK;
}

HRESULT CMediaSample::SetMediaTime(const LONGLONG* pTimeStart, const LONGLONG* pTimeEnd)
{
    if (!pTimeStart && !pTimeEnd) {
        mediaTime_.reset();
        return S_OK;
    }
    if (!pTimeStart || !pTimeEnd) return E_POINTER;
    mediaTime_ = std::pair(*pTimeStart, *pTimeEnd);
    return S_OK;
}

void CMediaSample::ResetProperties()
{
    start_.reset();
    stop_.reset();
    mediaTime_.reset();
    syncPoint_ = preroll_ = discontinuity_ = false;
    actualLength_ = GetSize();
    mediaType_.reset();
}

}  // namespace qx::media
