#pragma once
// The transform filter: one input pin, one output pin, and for each sample that arrives
// a new output sample that the filter's Transform fills. A filter writes the checks and
// the Transform; the base holds the connection rules:
// - the input takes a type that CheckInputType accepts;
// - the output needs a connected input; it proposes GetMediaType's types and takes one
//   that CheckTransform accepts with the input's type; DecideBufferSize sizes its
//   allocator;
// - each direction's type is told to the filter through SetMediaType;
// - a sample is taken only while both pins are connected and the filter is not
//   stopped; the output sample comes from the output's allocator with the input's
//   times, media times and flags (InitializeOutputSample), and goes on when Transform
//   answers S_OK (S_FALSE drops it);
// - end of stream, flushes and new segments are passed downstream.
#include "platform/media/Pins.h"

#include <memory>

namespace qx::media {

class CTransformFilter;

class CTransformInputPin : public CBaseInputPin {
public:
    explicit CTransformInputPin(CTransformFilter& filter);

    HRESULT CheckMediaType(const CMediaType* pmt) override;
    HRESULT SetMediaType(const CMediaType* pmt) override;
    HRESULT CompleteConnect(CBasePin* pReceivePin) override;
    HRESULT BreakConnect() override;
    HRESULT Receive(IMediaSample* pSample) override;
    HRESULT EndOfStream() override;
    HRESULT BeginFlush() override;
    HRESULT EndFlush() override;
    HRESULT NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

protected:
    HRESULT CheckStreaming() override;

private:
    CTransformFilter& m_transform;
};

class CTransformOutputPin : public CBaseOutputPin {
public:
    explicit CTransformOutputPin(CTransformFilter& filter);

    HRESULT CheckMediaType(const CMediaType* pmt) override;
    HRESULT GetMediaType(int iPosition, CMediaType* pMediaType) override;
    HRESULT SetMediaType(const CMediaType* pmt) override;
    HRESULT CompleteConnect(CBasePin* pReceivePin) override;
    HRESULT BreakConnect() override;
    HRESULT DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* pProp) override;

protected:
    CTransformFilter& m_transform;
};

class CTransformFilter : public CBaseFilter {
public:
    int GetPinCount() override { return 2; }
    CBasePin* GetPin(int n) override;
    CTransformInputPin& InputPin() { return *m_pInput; }
    CBaseOutputPin& OutputPin() { return *m_pOutput; }

    HRESULT Stop() override;
    HRESULT Pause() override;

    /// Fills `pOut` from `pIn`. S_OK delivers `pOut`, S_FALSE drops it.
    virtual HRESULT Transform(IMediaSample* pIn, IMediaSample* pOut);
    virtual HRESULT CheckInputType(const CMediaType* mtIn) = 0;
    virtual HRESULT CheckTransform(const CMediaType* mtIn, const CMediaType* mtOut) = 0;
    virtual HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pProperties) = 0;
    virtual HRESULT GetMediaType(int iPosition, CMediaType* pMediaType) = 0;
    /// The type a pin's connection takes; nothing to do by default.
    virtual HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType* pmt);
    virtual HRESULT CompleteConnect(PIN_DIRECTION direction, CBasePin* pReceivePin);
    virtual HRESULT BreakConnect(PIN_DIRECTION direction);
    /// Around the streaming: when the filter leaves the stopped state and enters it.
    virtual HRESULT StartStreaming();
    virtual HRESULT StopStreaming();

    virtual HRESULT Receive(IMediaSample* pSample);
    virtual HRESULT EndOfStream();
    virtual HRESULT BeginFlush();
    virtual HRESULT EndFlush();
    virtual HRESULT NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate);

protected:
    CTransformFilter(std::u16string name, const CLSID& clsid);

    /// An output sample from the output's allocator, with the properties of `pSample`.
    HRESULT InitializeOutputSample(IMediaSample* pSample, IMediaSample** ppOutSample);

    /// Held while a sample is transformed, so that Stop waits for it.
    std::mutex m_csReceive;
    bool m_bSampleSkipped = false;
    std::unique_ptr<CTransformInputPin> m_pInput;
    /// The base's output pin, unless a derived base puts one of its own kind here.
    std::unique_ptr<CBaseOutputPin> m_pOutput;

private:
    friend class CTransformInputPin;
};

}  // namespace qx::media
