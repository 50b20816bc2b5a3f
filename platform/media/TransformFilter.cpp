#include "platform/media/TransformFilter.h"

namespace qx::media {

CTransformInputPin::CTransformInputPin(CTransformFilter& filter) : CBaseInputPin(filter, u"Input"), m_transform(filter)
{}

HRESULT CTransformInputPin::CheckMediaType(const CMediaType* pmt)
{
    if (const HRESULT hr = m_transform.CheckInputType(pmt); hr != S_OK) return hr;
    CBaseOutputPin& output = m_transform.OutputPin();
    if (output.IsConnected()) return m_transform.CheckTransform(pmt, &output.CurrentMediaType());
    return S_OK;
}

HRESULT CTransformInputPin::SetMediaType(const CMediaType* pmt)
{
    if (const HRESULT hr = CBaseInputPin::SetMediaType(pmt); FAILED(hr)) return hr;
    return m_transform.SetMediaType(PINDIR_INPUT, pmt);
}

HRESULT CTransformInputPin::CompleteConnect(CBasePin* pReceivePin)
{
    if (const HRESULT hr = CBaseInputPin::CompleteConnect(pReceivePin); FAILED(hr)) return hr;
    return m_transform.CompleteConnect(PINDIR_INPUT, pReceivePin);
}

HRESULT CTransformInputPin::BreakConnect()
{
    m_transform.BreakConnect(PINDIR_INPUT);
    return CBaseInputPin::BreakConnect();
}

HRESULT CTransformInputPin::CheckStreaming()
{
    if (!m_transform.OutputPin().IsConnected()) return VFW_E_NOT_CONNECTED;
    return CBaseInputPin::CheckStreaming();
}

HRESULT CTransformInputPin::Receive(IMediaSample* pSample)
{
    std::lock_guard lock(m_transform.m_csReceive);
    const HRESULT hr = CBaseInputPin::Receive(pSample);
    if (hr != S_OK) return hr;
    return m_transform.Receive(pSample);
}

HRESULT CTransformInputPin::EndOfStream()
{
    std::lock_guard lock(m_transform.m_csReceive);
    const HRESULT hr = CheckStreaming();
    if (hr != S_OK) return hr;
    return m_transform.EndOfStream();
}

HRESULT CTransformInputPin::BeginFlush()
{
    std::lock_guard lock(m_filter.FilterLock());
    if (!IsConnected() || !m_transform.OutputPin().IsConnected()) return VFW_E_NOT_CONNECTED;
    CBaseInputPin::BeginFlush();
    return m_transform.BeginFlush();
}

HRESULT CTransformInputPin::EndFlush()
{
    std::lock_guard lock(m_filter.FilterLock());
    if (!IsConnected() || !m_transform.OutputPin().IsConnected()) return VFW_E_NOT_CONNECTED;
    CBaseInputPin::EndFlush();
    return m_transform.EndFlush();
}

HRESULT CTransformInputPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate)
{
    CBaseInputPin::NewSegment(tStart, tStop, dRate);
    return m_transform.NewSegment(tStart, tStop, dRate);
}

CTransformOutputPin::CTransformOutputPin(CTransformFilter& filter)
    : CBaseOutputPin(filter, u"Output"), m_transform(filter)
{}

HRESULT CTransformOutputPin::CheckMediaType(const CMediaType* pmt)
{
    CTransformInputPin& input = m_transform.InputPin();
    if (!input.IsConnected()) return E_INVALIDARG;
    return m_transform.CheckTransform(&input.CurrentMediaType(), pmt);
}

HRESULT CTransformOutputPin::GetMediaType(int iPosition, CMediaType* pMediaType)
{
    if (!m_transform.InputPin().IsConnected()) return VFW_S_NO_MORE_ITEMS;
    return m_transform.GetMediaType(iPosition, pMediaType);
}

HRESULT CTransformOutputPin::SetMediaType(const CMediaType* pmt)
{
    if (const HRESULT hr = CBaseOutputPin::SetMediaType(pmt); FAILED(hr)) return hr;
    return m_transform.SetMediaType(PINDIR_OUTPUT, pmt);
}

HRESULT CTransformOutputPin::CompleteConnect(CBasePin* pReceivePin)
{
    if (const HRESULT hr = CBaseOutputPin::CompleteConnect(pReceivePin); FAILED(hr)) return hr;
    return m_transform.CompleteConnect(PINDIR_OUTPUT, pReceivePin);
}

HRESULT CTransformOutputPin::BreakConnect()
{
    m_transform.BreakConnect(PINDIR_OUTPUT);
    return CBaseOutputPin::BreakConnect();
}

HRESULT CTransformOutputPin::DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* pProp)
{
    return m_transform.DecideBufferSize(pAlloc, pProp);
}

CTransformFilter::CTransformFilter(std::u16string name, const CLSID& clsid)
    : CBaseFilter(std::move(name), clsid), m_pInput(std::make_unique<CTransformInputPin>(*this)),
      m_pOutput(std::make_unique<CTransformOutputPin>(*this))
{}

CBasePin* CTransformFilter::GetPin(int n)
{
    if (n == 0) return m_pInput.get();
    if (n == 1) return m_pOutput.get();
    return nullptr;
}

HRESULT CTransformFilter::Stop()
{
    std::lock_guard lock(m_csFilter);
    if (m_State == State_Stopped) return S_OK;
    if (!m_pInput->IsConnected() || !m_pOutput->IsConnected()) {
        m_State = State_Stopped;
        return S_OK;
    }
    m_pInput->Inactive();
    // A sample being transformed finishes before the output's buffers go.
    std::lock_guard receiving(m_csReceive);
    m_pOutput->Inactive();
    const HRESULT hr = StopStreaming();
    if (SUCCEEDED(hr)) m_State = State_Stopped;
    return hr;
}

HRESULT CTransformFilter::Pause()
{
    std::lock_guard lock(m_csFilter);
    if (m_State == State_Stopped && m_pInput->IsConnected() && m_pOutput->IsConnected()) {
        if (const HRESULT hr = StartStreaming(); FAILED(hr)) return hr;
    }
    return CBaseFilter::Pause();
}

HRESULT CTransformFilter::Transform(IMediaSample*, IMediaSample*) { return E_UNEXPECTED; }

HRESULT CTransformFilter::SetMediaType(PIN_DIRECTION, const CMediaType*) { return S_OK; }

HRESULT CTransformFilter::CompleteConnect(PIN_DIRECTION, CBasePin*) { return S_OK; }

HRESULT CTransformFilter::BreakConnect(PIN_DIRECTION) { return S_OK; }

HRESULT CTransformFilter::StartStreaming() { return S_OK; }

HRESULT CTransformFilter::StopStreaming() { return S_OK; }

HRESULT CTransformFilter::Receive(IMediaSample* pSample)
{
    com::ComPtr<IMediaSample> output;
    HRESULT hr = InitializeOutputSample(pSample, output.out());
    if (FAILED(hr)) return hr;
    hr = Transform(pSample, output.get());
    if (hr == S_OK) {
        m_bSampleSkipped = false;
        return m_pOutput->Deliver(output.get());
    }
    if (hr == S_FALSE) {
        // Dropped: the next sample that goes out is marked as a discontinuity.
        m_bSampleSkipped = true;
        return S_OK;
    }
    return hr;
}

HRESULT CTransformFilter::InitializeOutputSample(IMediaSample* pSample, IMediaSample** ppOutSample)
{
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT times = pSample->GetTime(&start, &stop);
    const bool syncPoint = pSample->IsSyncPoint() == S_OK;
    DWORD flags = m_bSampleSkipped ? AM_GBF_PREVFRAMESKIPPED : 0;
    if (!syncPoint) flags |= AM_GBF_NOTASYNCPOINT;
    const bool hasStart = SUCCEEDED(times);
    const bool hasStop = times == S_OK;
    const HRESULT hr =
        m_pOutput->GetDeliveryBuffer(ppOutSample, hasStart ? &start : nullptr, hasStop ? &stop : nullptr, flags);
    if (FAILED(hr)) return hr;
    IMediaSample* out = *ppOutSample;
    if (hasStart) out->SetTime(&start, hasStop ? &stop : nullptr);
    if (syncPoint) out->SetSyncPoint(true);
    if (pSample->IsDiscontinuity() == S_OK || m_bSampleSkipped) out->SetDiscontinuity(true);
    if (pSample->IsPreroll() == S_OK) out->SetPreroll(true);
    LONGLONG mediaStart = 0;
    LONGLONG mediaStop = 0;
    if (SUCCEEDED(pSample->GetMediaTime(&mediaStart, &mediaStop))) out->SetMediaTime(&mediaStart, &mediaStop);
    return S_OK;
}

HRESULT CTransformFilter::EndOfStream() { return m_pOutput->DeliverEndOfStream(); }

HRESULT CTransformFilter::BeginFlush() { return m_pOutput->DeliverBeginFlush(); }

HRESULT CTransformFilter::EndFlush() { return m_pOutput->DeliverEndFlush(); }

HRESULT CTransformFilter::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate)
{
    return m_pOutput->DeliverNewSegment(tStart, tStop, dRate);
}

}  // namespace qx::media
