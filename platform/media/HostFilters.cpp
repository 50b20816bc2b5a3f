#include "platform/media/HostFilters.h"

#include <new>

namespace qx::media {

class CHostSource::Pin final : public CBaseOutputPin {
public:
    Pin(CBaseFilter& filter, CMediaType type, LONG buffers, LONG bufferSize)
        : CBaseOutputPin(filter, u"Output"), type_(std::move(type)), buffers_(buffers), bufferSize_(bufferSize)
    {}

    HRESULT CheckMediaType(const CMediaType* pmt) override
    {
        if (!pmt) return E_POINTER;
        return *pmt == type_ ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    }
    HRESULT GetMediaType(int iPosition, CMediaType* pMediaType) override
    {
        if (!pMediaType) return E_POINTER;
        if (iPosition != 0) return CBaseOutputPin::GetMediaType(iPosition, pMediaType);
        *pMediaType = type_;
        return S_OK;
    }
    HRESULT DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* request) override
    {
        request->cBuffers = buffers_;
        request->cbBuffer = bufferSize_;
        ALLOCATOR_PROPERTIES actual;
        if (const HRESULT hr = pAlloc->SetProperties(request, &actual); FAILED(hr)) return hr;
        return actual.cBuffers >= buffers_ && actual.cbBuffer >= bufferSize_ ? S_OK : E_FAIL;
    }
    HRESULT DecideAllocator(CBaseInputPin* pPin, com::ComPtr<IMemAllocator>& allocator) override
    {
        if (buffers_ == 0) return S_OK;  // the host delivers memory of its own
        return CBaseOutputPin::DecideAllocator(pPin, allocator);
    }
    HRESULT Active() override { return buffers_ == 0 ? S_OK : CBaseOutputPin::Active(); }

private:
    CMediaType type_;
    LONG buffers_;
    LONG bufferSize_;
};

com::ComPtr<CHostSource> CHostSource::Create(CMediaType type, LONG buffers, LONG bufferSize)
{
    return com::ComPtr<CHostSource>(new (std::nothrow) CHostSource(std::move(type), buffers, bufferSize));
}

CHostSource::CHostSource(CMediaType type, LONG buffers, LONG bufferSize)
    : CBaseFilter(u"Host source", GUID_NULL), pin_(std::make_unique<Pin>(*this, std::move(type), buffers, bufferSize))
{}

CHostSource::~CHostSource() = default;

CBasePin* CHostSource::GetPin(int n) { return n == 0 ? pin_.get() : nullptr; }

CBaseOutputPin& CHostSource::Output() { return *pin_; }

HRESULT CHostSource::GetBuffer(IMediaSample** ppSample)
{
    return pin_->GetDeliveryBuffer(ppSample, nullptr, nullptr, 0);
}

HRESULT CHostSource::Deliver(IMediaSample* pSample)
{
    if (!pSample) return E_POINTER;
    return pin_->Deliver(pSample);
}

class CHostSink::Pin final : public CBaseInputPin {
public:
    Pin(CBaseFilter& filter, Acceptor accept, Receiver receive, com::ComPtr<IMemAllocator> allocator)
        : CBaseInputPin(filter, u"Input"), accept_(std::move(accept)), receive_(std::move(receive)),
          offered_(std::move(allocator))
    {}

    HRESULT CheckMediaType(const CMediaType* pmt) override
    {
        if (!pmt) return E_POINTER;
        return accept_(*pmt);
    }
    HRESULT GetAllocator(IMemAllocator** ppAllocator) override
    {
        if (!offered_) return CBaseInputPin::GetAllocator(ppAllocator);
        if (!ppAllocator) return E_POINTER;
        offered_->AddRef();
        *ppAllocator = offered_.get();
        return S_OK;
    }
    HRESULT NotifyAllocator(IMemAllocator* pAllocator, bool bReadOnly) override
    {
        if (offered_ && pAllocator != offered_.get()) return E_FAIL;
        return CBaseInputPin::NotifyAllocator(pAllocator, bReadOnly);
    }
    HRESULT Receive(IMediaSample* pSample) override
    {
        if (const HRESULT hr = CBaseInputPin::Receive(pSample); hr != S_OK) return hr;
        return receive_(*pSample);
    }
    HRESULT EndOfStream() override
    {
        ++endOfStreams;
        return S_OK;
    }

    int endOfStreams = 0;

private:
    Acceptor accept_;
    Receiver receive_;
    com::ComPtr<IMemAllocator> offered_;
};

com::ComPtr<CHostSink> CHostSink::Create(Acceptor accept, Receiver receive, com::ComPtr<IMemAllocator> allocator)
{
    return com::ComPtr<CHostSink>(new (std::nothrow)
                                      CHostSink(std::move(accept), std::move(receive), std::move(allocator)));
}

CHostSink::CHostSink(Acceptor accept, Receiver receive, com::ComPtr<IMemAllocator> allocator)
    : CBaseFilter(u"Host sink", GUID_NULL),
      pin_(std::make_unique<Pin>(*this, std::move(accept), std::move(receive), std::move(allocator)))
{}

CHostSink::~CHostSink() = default;

CBasePin* CHostSink::GetPin(int n) { return n == 0 ? pin_.get() : nullptr; }

CBaseInputPin& CHostSink::Input() { return *pin_; }

int CHostSink::EndOfStreamCount() const { return pin_->endOfStreams; }

}  // namespace qx::media
