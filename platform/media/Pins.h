#pragma once
// Pins and the rules of a connection. An output pin connects to an input pin by trying
// media types: its own proposals in order (GetMediaType from position 0), or the one
// type it is given. A type must pass the output pin's CheckMediaType, then the input
// pin's; both pins then hold it. The output pin goes on to decide an allocator: it takes
// the input pin's, sizes it with DecideBufferSize and tells the input pin. While the
// filter runs, samples go out through Deliver to the input pin's Receive; end of
// stream, flushes and new segments follow the same road.
#include "platform/media/BaseFilter.h"
#include "platform/media/MediaSample.h"

#include <string>

namespace qx::media {

class CBasePin {
public:
    CBasePin(const CBasePin&) = delete;
    CBasePin& operator=(const CBasePin&) = delete;
    /// A pin that goes while connected leaves its peer unconnected.
    virtual ~CBasePin();

    PIN_DIRECTION Direction() const { return m_dir; }
    const std::u16string& Name() const { return m_name; }
    CBaseFilter& Filter() const { return m_filter; }
    bool IsConnected() const { return m_Connected != nullptr; }
    CBasePin* ConnectedTo() const { return m_Connected; }
    /// The type of the connection; empty while unconnected.
    const CMediaType& CurrentMediaType() const { return m_mt; }

    /// Breaks the connection on both sides; VFW_E_NOT_STOPPED while the filter runs,
    /// S_FALSE when there was none.
    HRESULT Disconnect();

    /// S_OK for a type this pin can take.
    virtual HRESULT CheckMediaType(const CMediaType* pmt) = 0;
    /// The pin's proposal at `iPosition`: S_OK, VFW_S_NO_MORE_ITEMS past the last one,
    /// E_INVALIDARG for a negative position. None by default.
    virtual HRESULT GetMediaType(int iPosition, CMediaType* pMediaType);
    /// Stores the type of the connection being made.
    virtual HRESULT SetMediaType(const CMediaType* pmt);
    /// The last step of a connection, once both pins agreed on the type.
    virtual HRESULT CompleteConnect(CBasePin* pReceivePin);
    /// Undoes what the connection set up.
    virtual HRESULT BreakConnect();
    /// The filter leaves or enters the stopped state.
    virtual HRESULT Active();
    virtual HRESULT Inactive();

protected:
    CBasePin(CBaseFilter& filter, std::u16string name, PIN_DIRECTION dir);
    bool IsStopped() const { return m_filter.IsStopped(); }
    /// Forgets the connection on this side only.
    void DisconnectSelf();

    CBaseFilter& m_filter;
    CBasePin* m_Connected = nullptr;
    CMediaType m_mt;

private:
    friend class CBaseOutputPin;
    std::u16string m_name;
    PIN_DIRECTION m_dir;
};

class CBaseInputPin : public CBasePin {
public:
    CBaseInputPin(CBaseFilter& filter, std::u16string name) : CBasePin(filter, std::move(name), PINDIR_INPUT) {}

    /// An output pin offers a connection with `pmt`.
    HRESULT ReceiveConnection(CBasePin* pConnector, const CMediaType* pmt);
    /// The allocator this pin offers the output pin; a memory allocator of its own.
    virtual HRESULT GetAllocator(IMemAllocator** ppAllocator);
    /// The allocator the output pin decided on.
    virtual HRESULT NotifyAllocator(IMemAllocator* pAllocator, bool bReadOnly);

    /// A sample arrives; the base checks that the pin may take one (CheckStreaming).
    virtual HRESULT Receive(IMediaSample* pSample);
    virtual HRESULT EndOfStream();
    virtual HRESULT BeginFlush();
    virtual HRESULT EndFlush();
    virtual HRESULT NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate);

    bool IsFlushing() const { return m_bFlushing; }
    HRESULT Inactive() override;
    HRESULT BreakConnect() override;

protected:
    /// S_OK when a sample may be taken; VFW_E_NOT_CONNECTED, S_FALSE while flushing,
    /// VFW_E_WRONG_STATE while stopped.
    virtual HRESULT CheckStreaming();

    com::ComPtr<IMemAllocator> m_pAllocator;
    std::atomic<bool> m_bFlushing{false};
    bool m_bReadOnly = false;
};

class CBaseOutputPin : public CBasePin {
public:
    CBaseOutputPin(CBaseFilter& filter, std::u16string name) : CBasePin(filter, std::move(name), PINDIR_OUTPUT) {}

    /// Connects to `pReceivePin` with `pmt`, or with the first of this pin's proposals
    /// that both pins accept when `pmt` is null. VFW_E_ALREADY_CONNECTED,
    /// VFW_E_NOT_STOPPED, VFW_E_TYPE_NOT_ACCEPTED for a given type that fails,
    /// VFW_E_NO_ACCEPTABLE_TYPES when no proposal does, or the failure of a later step.
    HRESULT Connect(CBaseInputPin* pReceivePin, const CMediaType* pmt);

    /// Sizes the buffers of `pAlloc` for this connection.
    virtual HRESULT DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* ppropInputRequest) = 0;
    /// Chooses and sizes the allocator of the connection; the input pin's by default.
    virtual HRESULT DecideAllocator(CBaseInputPin* pPin, com::ComPtr<IMemAllocator>& allocator);

    /// A buffer for the next sample from the connection's allocator.
    HRESULT GetDeliveryBuffer(IMediaSample** ppSample, const REFERENCE_TIME* pStartTime, const REFERENCE_TIME* pEndTime,
                              DWORD dwFlags);
    virtual HRESULT Deliver(IMediaSample* pSample);
    virtual HRESULT DeliverEndOfStream();
    virtual HRESULT DeliverBeginFlush();
    virtual HRESULT DeliverEndFlush();
    virtual HRESULT DeliverNewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate);

    HRESULT CompleteConnect(CBasePin* pReceivePin) override;
    HRESULT BreakConnect() override;
    /// Commits the allocator, so that buffers can be had.
    HRESULT Active() override;
    HRESULT Inactive() override;

protected:
    CBaseInputPin* m_pInputPin = nullptr;
    com::ComPtr<IMemAllocator> m_pAllocator;

private:
    HRESULT AttemptConnection(CBaseInputPin* pReceivePin, const CMediaType* pmt);
};

}  // namespace qx::media
