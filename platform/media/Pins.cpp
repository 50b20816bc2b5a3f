#include "platform/media/Pins.h"

#include "platform/media/MemAllocator.h"

namespace qx::media {

namespace {

// A pin that keeps proposing types is not asked for more than this many.
constexpr int kMaxProposals = 1024;

// A check that answers a success other than S_OK refuses the type all the same.
HRESULT refusal(HRESULT check) { return FAILED(check) ? check : VFW_E_TYPE_NOT_ACCEPTED; }

}  // namespace

CBasePin::CBasePin(CBaseFilter& filter, std::u16string name, PIN_DIRECTION dir)
    : m_filter(filter), m_name(std::move(name)), m_dir(dir)
{}

CBasePin::~CBasePin()
{
    if (m_Connected) m_Connected->DisconnectSelf();
}

void CBasePin::DisconnectSelf()
{
    if (!m_Connected) return;
    BreakConnect();
    m_Connected = nullptr;
    m_mt = CMediaType();
}

HRESULT CBasePin::Disconnect()
{
    std::lock_guard lock(m_filter.FilterLock());
    if (!IsStopped()) return VFW_E_NOT_STOPPED;
    CBasePin* peer = m_Connected;
    if (!peer) return S_FALSE;
    DisconnectSelf();
    peer->DisconnectSelf();
    return S_OK;
}

HRESULT CBasePin::GetMediaType(int iPosition, CMediaType*)
{
    return iPosition < 0 ? E_INVALIDARG : VFW_S_NO_MORE_ITEMS;
}

HRESULT CBasePin::SetMediaType(const CMediaType* pmt)
{
    if (!pmt) return E_POINTER;
    m_mt = *pmt;
    return S_OK;
}

HRESULT CBasePin::CompleteConnect(CBasePin*) { return S_OK; }

HRESULT CBasePin::BreakConnect() { return S_OK; }

HRESULT CBasePin::Active() { return S_OK; }

HRESULT CBasePin::Inactive() { return S_OK; }

HRESULT CBaseInputPin::ReceiveConnection(CBasePin* pConnector, const CMediaType* pmt)
{
    if (!pConnector || !pmt) return E_POINTER;
    std::lock_guard lock(m_filter.FilterLock());
    if (IsConnected()) return VFW_E_ALREADY_CONNECTED;
    if (!IsStopped()) return VFW_E_NOT_STOPPED;
    if (const HRESULT hr = CheckMediaType(pmt); hr != S_OK) return refusal(hr);
    m_Connected = pConnector;
    HRESULT hr = SetMediaType(pmt);
    if (SUCCEEDED(hr)) hr = CompleteConnect(pConnector);
    if (FAILED(hr)) DisconnectSelf();
    return hr;
}

HRESULT CBaseInputPin::GetAllocator(IMemAllocator** ppAllocator)
{
    if (!ppAllocator) return E_POINTER;
    *ppAllocator = nullptr;
    if (!m_pAllocator) m_pAllocator = CMemAllocator::Create();
    if (!m_pAllocator) return E_OUTOFMEMORY;
    m_pAllocator->AddRef();
    *ppAllocator = m_pAllocator.get();
    return S_OK;
}

HRESULT CBaseInputPin::NotifyAllocator(IMemAllocator* pAllocator, bool bReadOnly)
{
    if (!pAllocator) return E_POINTER;
    m_pAllocator = pAllocator;
    m_bReadOnly = bReadOnly;
    return S_OK;
}

HRESULT CBaseInputPin::CheckStreaming()
{
    if (!IsConnected()) return VFW_E_NOT_CONNECTED;
    if (m_bFlushing) return S_FALSE;
    if (IsStopped()) return VFW_E_WRONG_STATE;
    return S_OK;
}

HRESULT CBaseInputPin::Receive(IMediaSample* pSample)
{
    if (!pSample) return E_POINTER;
    return CheckStreaming();
}

HRESULT CBaseInputPin::EndOfStream() { return S_OK; }

HRESULT CBaseInputPin::BeginFlush()
{
    m_bFlushing = true;
    return S_OK;
}

HRESULT CBaseInputPin::EndFlush()
{
    m_bFlushing = false;
    return S_OK;
}

HRESULT CBaseInputPin::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) { return S_OK; }

HRESULT CBaseInputPin::Inactive()
{
    m_bFlushing = false;
    if (m_pAllocator) return m_pAllocator->Decommit();
    return S_OK;
}

HRESULT CBaseInputPin::BreakConnect()
{
    if (m_pAllocator) m_pAllocator->Decommit();
    m_pAllocator.reset();
    return S_OK;
}

HRESULT CBaseOutputPin::Connect(CBaseInputPin* pReceivePin, const CMediaType* pmt)
{
    if (!pReceivePin) return E_POINTER;
    std::lock_guard lock(m_filter.FilterLock());
    if (IsConnected()) return VFW_E_ALREADY_CONNECTED;
    if (!IsStopped()) return VFW_E_NOT_STOPPED;
    if (pmt) return AttemptConnection(pReceivePin, pmt);
    for (int position = 0; position < kMaxProposals; ++position) {
        CMediaType proposal;
        if (GetMediaType(position, &proposal) != S_OK) break;
        if (SUCCEEDED(AttemptConnection(pReceivePin, &proposal))) return S_OK;
    }
    return VFW_E_NO_ACCEPTABLE_TYPES;
}

// Both pins check the type; this pin takes it before the receiver does, and the
// allocator is decided last. Any failure leaves both pins unconnected.
HRESULT CBaseOutputPin::AttemptConnection(CBaseInputPin* pReceivePin, const CMediaType* pmt)
{
    if (const HRESULT hr = CheckMediaType(pmt); hr != S_OK) return refusal(hr);
    m_Connected = pReceivePin;
    m_pInputPin = pReceivePin;
    HRESULT hr = SetMediaType(pmt);
    if (FAILED(hr)) {
        DisconnectSelf();
        return hr;
    }
    hr = pReceivePin->ReceiveConnection(this, pmt);
    if (FAILED(hr)) {
        DisconnectSelf();
        return hr;
    }
    hr = CompleteConnect(pReceivePin);
    if (FAILED(hr)) {
        static_cast<CBasePin*>(pReceivePin)->DisconnectSelf();
        DisconnectSelf();
    }
    return hr;
}

HRESULT CBaseOutputPin::CompleteConnect(CBasePin*) { return DecideAllocator(m_pInputPin, m_pAllocator); }

// The input pin's allocator first; when it has none or refuses the sizes, one of our own.
HRESULT CBaseOutputPin::DecideAllocator(CBaseInputPin* pPin, com::ComPtr<IMemAllocator>& allocator)
{
    const auto tryAllocator = [&](const com::ComPtr<IMemAllocator>& candidate) {
        ALLOCATOR_PROPERTIES request;
        request.cbAlign = 1;  // no alignment asked for
        HRESULT hr = DecideBufferSize(candidate.get(), &request);
        if (SUCCEEDED(hr)) hr = pPin->NotifyAllocator(candidate.get(), false);
        if (SUCCEEDED(hr)) allocator = candidate;
        return hr;
    };
    com::ComPtr<IMemAllocator> offered;
    if (SUCCEEDED(pPin->GetAllocator(offered.out())) && SUCCEEDED(tryAllocator(offered))) return S_OK;
    const auto own = CMemAllocator::Create();
    if (!own) return E_OUTOFMEMORY;
    return tryAllocator(own);
}

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** ppSample, const REFERENCE_TIME* pStartTime,
                                          const REFERENCE_TIME* pEndTime, DWORD dwFlags)
{
    if (!ppSample) return E_POINTER;
    *ppSample = nullptr;
    if (!m_pAllocator) return VFW_E_NO_ALLOCATOR;
    return m_pAllocator->GetBuffer(ppSample, pStartTime, pEndTime, dwFlags);
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* pSample)
{
    if (!m_pInputPin) return VFW_E_NOT_CONNECTED;
    return m_pInputPin->Receive(pSample);
}

HRESULT CBaseOutputPin::DeliverEndOfStream()
{
    if (!m_pInputPin) return VFW_E_NOT_CONNECTED;
    return m_pInputPin->EndOfStream();
}

HRESULT CBaseOutputPin::DeliverBeginFlush()
{
    if (!m_pInputPin) return VFW_E_NOT_CONNECTED;
    return m_pInputPin->BeginFlush();
}

HRESULT CBaseOutputPin::DeliverEndFlush()
{
    if (!m_pInputPin) return VFW_E_NOT_CONNECTED;
    return m_pInputPin->EndFlush();
}

HRESULT CBaseOutputPin::DeliverNewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate)
{
    if (!m_pInputPin) return VFW_E_NOT_CONNECTED;
    return m_pInputPin->NewSegment(tStart, tStop, dRate);
}

HRESULT CBaseOutputPin::BreakConnect()
{
    if (m_pAllocator) m_pAllocator->Decommit();
    m_pAllocator.reset();
    m_pInputPin = nullptr;
    return S_OK;
}

HRESULT CBaseOutputPin::Active()
{
    if (!m_pAllocator) return VFW_E_NO_ALLOCATOR;
    return m_pAllocator->Commit();
}

HRESULT CBaseOutputPin::Inactive()
{
    if (m_pAllocator) return m_pAllocator->Decommit();
    return S_OK;
}

}  // namespace qx::media
