#pragma once
// CCustomSourceStream: the output pin of the composition source. Its thread renders one
// frame a sample from the position of the last seek on; time stamps start at 0 at each
// seek while the position in the composition goes on from the seek's start. Rates only
// above 1.0 are taken (fast play); the stream never ends by itself: the host stops it.
#include "platform/media/SourceFilter.h"
#include "platform/media/SourceSeeking.h"

#include <mutex>

namespace qx {

class CAnim3DVideoSource;

class CCustomSourceStream final : public media::CSourceStream, public media::CSourceSeeking {
public:
    /// A frame's length before the filter sets its rate: 100 seconds.
    static constexpr int32_t kInitialFramePeriod = 1000000000;
    static constexpr media::REFERENCE_TIME kSeekingDuration = 1000000000;

    CCustomSourceStream(CAnim3DVideoSource& filter);

    /// IMediaSeeking goes to the seeking state.
    HRESULT NonDelegatingQueryInterface(const IID& riid, void** ppv) override;

    /// The one type, at positions 0 and 1: RGB32 of the filter's size, bottom-up.
    HRESULT GetMediaType(int iPosition, media::CMediaType* pMediaType) override;
    HRESULT CheckMediaType(const media::CMediaType* pmt) override;
    HRESULT DecideBufferSize(media::IMemAllocator* pAlloc, media::ALLOCATOR_PROPERTIES* pProperties) override;

    /// Refuses any rate not above 1.0, 1.0 included.
    HRESULT SetRate(double dRate) override;

    void SetFramePeriod(int32_t period);
    /// The stream's times as they stand, for the host and tests.
    media::REFERENCE_TIME SampleTime();
    media::REFERENCE_TIME MediaTime();

protected:
    HRESULT FillBuffer(media::IMediaSample* pSample) override;
    HRESULT OnThreadCreate() override;
    HRESULT OnThreadStartPlay() override;

    HRESULT ChangeStart() override;
    HRESULT ChangeStop() override;
    HRESULT ChangeRate() override { return S_OK; }

private:
    /// Flushes downstream and runs the thread again from the new positions.
    void UpdateFromSeek();

    int32_t framePeriod = kInitialFramePeriod;
    CAnim3DVideoSource& filter;
    std::recursive_mutex sharedState;
    media::REFERENCE_TIME sampleTime = 0;
    media::REFERENCE_TIME mediaTime = 0;
};

}  // namespace qx
