#include "platform/media/MemAllocator.h"

#include <bit>
#include <new>

namespace qx::media {

com::ComPtr<IMemAllocator> CMemAllocator::Create()
{
    return com::ComPtr<IMemAllocator>(new (std::nothrow) CMemAllocator());
}

HRESULT CMemAllocator::SetProperties(const ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual)
{
    if (!pRequest || !pActual) return E_POINTER;
    std::lock_guard lock(lock_);
    if (committed_) return VFW_E_ALREADY_COMMITTED;
    if (free_.size() != buffers_.size()) return VFW_E_BUFFERS_OUTSTANDING;
    if (pRequest->cbAlign <= 0 || !std::has_single_bit(uint32_t(pRequest->cbAlign))) return VFW_E_BADALIGN;
    if (pRequest->cBuffers <= 0 || pRequest->cBuffers > kMaxBuffers || pRequest->cbBuffer < 0 ||
        pRequest->cbPrefix < 0) {
        return E_INVALIDARG;
    }
    buffers_.clear();
    free_.clear();
    properties_ = *pRequest;
    *pActual = *pRequest;
    return S_OK;
}

HRESULT CMemAllocator::GetProperties(ALLOCATOR_PROPERTIES* pProps)
{
    if (!pProps) return E_POINTER;
    std::lock_guard lock(lock_);
    *pProps = properties_.value_or(ALLOCATOR_PROPERTIES{});
    return S_OK;
}

HRESULT CMemAllocator::Commit()
{
    std::lock_guard lock(lock_);
    if (!properties_) return VFW_E_SIZENOTSET;
    if (buffers_.empty()) {
        if (const HRESULT hr = allocateBuffers(); FAILED(hr)) return hr;
    }
    committed_ = true;
    return S_OK;
}

// Each buffer holds the prefix, then the data at the requested alignment.
HRESULT CMemAllocator::allocateBuffers()
{
    const ALLOCATOR_PROPERTIES& p = *properties_;
    const size_t span = size_t(p.cbPrefix) + size_t(p.cbBuffer) + size_t(p.cbAlign) - 1;
    for (LONG i = 0; i < p.cBuffers; ++i) {
        Buffer buffer;
        buffer.memory.reset(new (std::nothrow) uint8_t[span]);
        if (!buffer.memory) {
            buffers_.clear();
            free_.clear();
            return E_OUTOFMEMORY;
        }
        const uintptr_t afterPrefix = uintptr_t(buffer.memory.get()) + uintptr_t(p.cbPrefix);
        const uintptr_t aligned = (afterPrefix + uintptr_t(p.cbAlign) - 1) & ~uintptr_t(p.cbAlign - 1);
        uint8_t* data = buffer.memory.get() + (aligned - uintptr_t(buffer.memory.get()));
        buffer.sample = std::make_unique<CMediaSample>(std::span<uint8_t>(data, size_t(p.cbBuffer)), this);
        free_.push_back(buffer.sample.get());
        buffers_.push_back(std::move(buffer));
    }
    return S_OK;
}

HRESULT CMemAllocator::Decommit()
{
    {
        std::lock_guard lock(lock_);
        committed_ = false;
        freeBuffersWhenAllBack();
    }
    returned_.notify_all();
    return S_OK;
}

void CMemAllocator::freeBuffersWhenAllBack()
{
    if (committed_ || free_.size() != buffers_.size()) return;
    free_.clear();
    buffers_.clear();
}

HRESULT CMemAllocator::GetBuffer(IMediaSample** ppBuffer, const REFERENCE_TIME*, const REFERENCE_TIME*, DWORD dwFlags)
{
    if (!ppBuffer) return E_POINTER;
    *ppBuffer = nullptr;
    std::unique_lock lock(lock_);
    while (true) {
        if (!committed_) return VFW_E_NOT_COMMITTED;
        if (!free_.empty()) break;
        if (dwFlags & AM_GBF_NOWAIT) return VFW_E_TIMEOUT;
        returned_.wait(lock);
    }
    CMediaSample* sample = free_.back();
    free_.pop_back();
    sample->ResetProperties();
    sample->AddRef();
    AddRef();  // held while the sample is out
    *ppBuffer = sample;
    return S_OK;
}

HRESULT CMemAllocator::ReleaseBuffer(IMediaSample* pBuffer)
{
    if (!pBuffer) return E_POINTER;
    {
        std::lock_guard lock(lock_);
        free_.push_back(static_cast<CMediaSample*>(pBuffer));
        freeBuffersWhenAllBack();
    }
    returned_.notify_one();
    Release();  // may be the last reference: nothing of this object is used after it
    return S_OK;
}

}  // namespace qx::media
