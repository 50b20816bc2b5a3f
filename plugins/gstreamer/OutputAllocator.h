#pragma once
// The allocator an element offers the filter's output: its one buffer is the element's
// output frame of the moment, which the filter writes directly.
#include "platform/media/MediaSample.h"

#include <span>

namespace qx::gst {

class OutputAllocator final : public com::ComObject<media::IMemAllocator> {
public:
    /// An allocator whose buffers hold `frameBytes`: what it gives when asked for more,
    /// so that a filter that needs more sees the shortfall.
    explicit OutputAllocator(size_t frameBytes) : frameBytes_(frameBytes) {}

    /// The memory the next GetBuffer hands out, once.
    void setTarget(std::span<uint8_t> memory) { target_ = memory; }

    HRESULT SetProperties(const media::ALLOCATOR_PROPERTIES* pRequest, media::ALLOCATOR_PROPERTIES* pActual) override;
    HRESULT GetProperties(media::ALLOCATOR_PROPERTIES* pProps) override;
    HRESULT Commit() override;
    HRESULT Decommit() override;
    HRESULT GetBuffer(media::IMediaSample** ppBuffer, const media::REFERENCE_TIME* pStartTime,
                      const media::REFERENCE_TIME* pEndTime, DWORD dwFlags) override;
    HRESULT ReleaseBuffer(media::IMediaSample* pBuffer) override;

private:
    size_t frameBytes_;
    media::ALLOCATOR_PROPERTIES actual_;
    bool committed_ = false;
    std::span<uint8_t> target_;
};

}  // namespace qx::gst
