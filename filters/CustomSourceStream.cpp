#include "filters/CustomSourceStream.h"

#include "filters/Anim3DVideoSource.h"

#include <cstring>

namespace qx {

using media::REFERENCE_TIME;

CCustomSourceStream::CCustomSourceStream(CAnim3DVideoSource& owner)
    : CSourceStream(u"Output", owner),
      CSourceSeeking(static_cast<IAnim3DVideoSource&>(owner), sharedState, kSeekingDuration), filter(owner)
{}

HRESULT CCustomSourceStream::NonDelegatingQueryInterface(const IID& riid, void** ppv)
{
    if (riid == media::IMediaSeeking::iid) return CSourceSeeking::QueryInterface(riid, ppv);
    return CSourceStream::NonDelegatingQueryInterface(riid, ppv);
}

HRESULT CCustomSourceStream::GetMediaType(int iPosition, media::CMediaType* pMediaType)
{
    std::lock_guard lock(m_pFilter.StateLock());
    if (!pMediaType) return E_POINTER;
    if (iPosition < 0) return E_INVALIDARG;
    if (iPosition > 1) return media::VFW_S_NO_MORE_ITEMS;
    const LONG bytes = filter.FrameBytes();
    if (bytes == 0) return E_UNEXPECTED;  // no frame of that size can be carried
    media::VIDEOINFOHEADER info;
    info.bmiHeader.biSize = 40;
    info.bmiHeader.biWidth = filter.width;
    info.bmiHeader.biHeight = filter.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = 0;
    info.bmiHeader.biSizeImage = DWORD(bytes);
    *pMediaType = media::CMediaType();
    pMediaType->majortype = media::MEDIATYPE_Video;
    pMediaType->subtype = media::MEDIASUBTYPE_RGB32;
    pMediaType->formattype = media::FORMAT_VideoInfo;
    // The block of a VIDEOINFO (the header and room for a palette), zeroed.
    std::vector<uint8_t> block(1128, 0);
    std::memcpy(block.data(), &info, sizeof info);
    pMediaType->SetFormat(block);
    pMediaType->bTemporalCompression = false;
    pMediaType->bFixedSizeSamples = true;
    pMediaType->lSampleSize = ULONG(bytes);
    return S_OK;
}

HRESULT CCustomSourceStream::CheckMediaType(const media::CMediaType* pmt)
{
    std::lock_guard lock(m_pFilter.StateLock());
    if (!pmt) return E_POINTER;
    if (pmt->majortype != media::MEDIATYPE_Video || !pmt->bFixedSizeSamples ||
        pmt->subtype != media::MEDIASUBTYPE_RGB32 || pmt->FormatLength() == 0) {
        return E_INVALIDARG;
    }
    return S_OK;
}

HRESULT CCustomSourceStream::DecideBufferSize(media::IMemAllocator* pAlloc, media::ALLOCATOR_PROPERTIES* pProperties)
{
    std::lock_guard lock(m_pFilter.StateLock());
    if (!pAlloc || !pProperties) return E_POINTER;
    pProperties->cBuffers = 1;
    pProperties->cbBuffer = filter.FrameBytes();
    media::ALLOCATOR_PROPERTIES actual;
    return pAlloc->SetProperties(pProperties, &actual);
}

HRESULT CCustomSourceStream::SetRate(double dRate)
{
    if (!(dRate > 1.0)) return E_INVALIDARG;
    {
        std::lock_guard lock(m_pLock);
        m_dRateSeeking = dRate;
    }
    UpdateFromSeek();
    return S_OK;
}

void CCustomSourceStream::SetFramePeriod(int32_t period)
{
    std::lock_guard lock(sharedState);
    framePeriod = period;
}

REFERENCE_TIME CCustomSourceStream::SampleTime()
{
    std::lock_guard lock(sharedState);
    return sampleTime;
}

REFERENCE_TIME CCustomSourceStream::MediaTime()
{
    std::lock_guard lock(sharedState);
    return mediaTime;
}

HRESULT CCustomSourceStream::FillBuffer(media::IMediaSample* pSample)
{
    std::lock_guard lock(sharedState);
    BYTE* buffer = nullptr;
    if (FAILED(pSample->GetPointer(&buffer))) return E_FAIL;
    std::memset(buffer, 0, size_t(pSample->GetSize()));
    const REFERENCE_TIME startStamp = REFERENCE_TIME(double(sampleTime) / m_dRateSeeking);
    REFERENCE_TIME stopStamp = startStamp + int32_t(double(framePeriod) / m_dRateSeeking);
    // A buffer smaller than the frame (a size changed after the connection) stays black.
    if (pSample->GetSize() >= filter.FrameBytes()) filter.RenderFrame(buffer, mediaTime);
    pSample->SetTime(&startStamp, &stopStamp);
    sampleTime += framePeriod;
    mediaTime += framePeriod;
    pSample->SetSyncPoint(true);
    return S_OK;
}

HRESULT CCustomSourceStream::OnThreadCreate()
{
    std::lock_guard lock(sharedState);
    sampleTime = 0;
    mediaTime = m_rtStart;
    return S_OK;
}

HRESULT CCustomSourceStream::OnThreadStartPlay()
{
    REFERENCE_TIME segmentStart, segmentStop;
    double rate;
    {
        std::lock_guard lock(sharedState);
        segmentStart = m_rtStart;
        segmentStop = m_rtStop;
        rate = m_dRateSeeking;
    }
    DeliverNewSegment(segmentStart, segmentStop, rate);
    return S_OK;
}

HRESULT CCustomSourceStream::ChangeStart()
{
    {
        std::lock_guard lock(sharedState);
        sampleTime = 0;
        mediaTime = m_rtStart;
    }
    UpdateFromSeek();
    return S_OK;
}

HRESULT CCustomSourceStream::ChangeStop()
{
    {
        std::lock_guard lock(sharedState);
        if (mediaTime < m_rtStop) return S_OK;
    }
    UpdateFromSeek();
    return S_OK;
}

void CCustomSourceStream::UpdateFromSeek()
{
    if (!ThreadExists()) return;
    DeliverBeginFlush();
    Stop();
    DeliverEndFlush();
    Run();
}

}  // namespace qx
