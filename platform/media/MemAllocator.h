#pragma once
// The memory allocator of connections: a pool of equal buffers, made at Commit, each
// wrapped in a sample that returns to the pool on its last Release. A sample that is out
// holds a reference to the allocator, so the pool outlives the samples in use.
#include "platform/media/MediaSample.h"

#include <condition_variable>
#include <mutex>
#include <vector>

namespace qx::media {

class CMemAllocator final : public com::ComObject<IMemAllocator> {
public:
    /// The most buffers one pool holds.
    static constexpr LONG kMaxBuffers = 64;

    /// A new allocator with one reference, which the caller owns; null when out of memory.
    static com::ComPtr<IMemAllocator> Create();

    HRESULT SetProperties(const ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) override;
    HRESULT GetProperties(ALLOCATOR_PROPERTIES* pProps) override;
    HRESULT Commit() override;
    HRESULT Decommit() override;
    HRESULT GetBuffer(IMediaSample** ppBuffer, const REFERENCE_TIME* pStartTime, const REFERENCE_TIME* pEndTime,
                      DWORD dwFlags) override;
    HRESULT ReleaseBuffer(IMediaSample* pBuffer) override;

private:
    struct Buffer {
        std::unique_ptr<uint8_t[]> memory;
        std::unique_ptr<CMediaSample> sample;
    };

    CMemAllocator() = default;
    HRESULT allocateBuffers();
    void freeBuffersWhenAllBack();

    std::mutex lock_;
    std::condition_variable returned_;
    std::optional<ALLOCATOR_PROPERTIES> properties_;
    bool committed_ = false;
    std::vector<Buffer> buffers_;
    std::vector<CMediaSample*> free_;
};

}  // namespace qx::media
