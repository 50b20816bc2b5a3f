#pragma once
// The two ends of a test graph, built on the streaming layer as a host builds them: a
// source whose output pin offers one type and delivers the bytes a test gives, and a
// sink whose input pin takes what a test allows and keeps a copy of every sample. Also
// graphs that report a position, or have no seeking at all.
#include "platform/media/Pins.h"

#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace qx::media::testing {

/// A video type of `subtype` whose VIDEOINFOHEADER describes `width` x `height` frames of
/// `bitCount` bits.
inline CMediaType videoType(const GUID& subtype, LONG width, LONG height, uint16_t bitCount)
{
    CMediaType type;
    type.majortype = MEDIATYPE_Video;
    type.subtype = subtype;
    VIDEOINFOHEADER info;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height;
    info.bmiHeader.biBitCount = bitCount;
    info.bmiHeader.biSizeImage = DWORD(int64_t(width) * std::abs(int64_t(height)) * bitCount / 8);
    type.SetVideoInfo(info);
    type.lSampleSize = info.bmiHeader.biSizeImage;
    return type;
}

/// Properties a sample carries, as a sink saw them.
struct SampleRecord {
    std::vector<uint8_t> bytes;
    const uint8_t* memory = nullptr;  ///< where the bytes were, to tell a sample passed on from a copy
    HRESULT timeResult = S_OK;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    HRESULT mediaTimeResult = S_OK;
    LONGLONG mediaStart = 0;
    LONGLONG mediaStop = 0;
    bool syncPoint = false;
    bool preroll = false;
    bool discontinuity = false;
    std::optional<CMediaType> type;
};

class SourceFilter final : public CBaseFilter {
public:
    /// A source that offers `type` and asks for `buffers` buffers of `bufferSize` bytes.
    SourceFilter(CMediaType type, LONG bufferSize, LONG buffers = 1)
        : CBaseFilter(u"Source", GUID_NULL), pin_(*this, std::move(type), bufferSize, buffers)
    {}

    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override { return n == 0 ? &pin_ : nullptr; }
    CBaseOutputPin& Output() { return pin_; }

    /// Delivers a sample holding `bytes` (cut to the buffer), with the times given.
    HRESULT deliver(std::span<const uint8_t> bytes, std::optional<REFERENCE_TIME> start = std::nullopt,
                    std::optional<REFERENCE_TIME> stop = std::nullopt)
    {
        com::ComPtr<IMediaSample> sample;
        if (const HRESULT hr = pin_.GetDeliveryBuffer(sample.out(), nullptr, nullptr, 0); FAILED(hr)) return hr;
        BYTE* memory = nullptr;
        sample->GetPointer(&memory);
        const size_t length = std::min(bytes.size(), size_t(sample->GetSize()));
        std::copy_n(bytes.begin(), length, memory);
        sample->SetActualDataLength(LONG(length));
        if (start) sample->SetTime(&*start, stop ? &*stop : nullptr);
        sample->SetSyncPoint(true);
        return pin_.Deliver(sample.get());
    }

private:
    class Pin final : public CBaseOutputPin {
    public:
        Pin(CBaseFilter& filter, CMediaType type, LONG bufferSize, LONG buffers)
            : CBaseOutputPin(filter, u"Output"), type_(std::move(type)), bufferSize_(bufferSize), buffers_(buffers)
        {}
        HRESULT CheckMediaType(const CMediaType* pmt) override { return *pmt == type_ ? S_OK : S_FALSE; }
        HRESULT GetMediaType(int iPosition, CMediaType* pMediaType) override
        {
            if (iPosition != 0) return CBaseOutputPin::GetMediaType(iPosition, pMediaType);
            *pMediaType = type_;
            return S_OK;
        }
        HRESULT DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* request) override
        {
            request->cBuffers = buffers_;
            request->cbBuffer = bufferSize_;
            ALLOCATOR_PROPERTIES actual;
            return pAlloc->SetProperties(request, &actual);
        }

    private:
        CMediaType type_;
        LONG bufferSize_;
        LONG buffers_;
    };

    Pin pin_;
};

class SinkFilter final : public CBaseFilter {
public:
    using Acceptor = std::function<HRESULT(const CMediaType&)>;

    /// A sink that takes every type `accept` answers S_OK for (by default, any).
    explicit SinkFilter(Acceptor accept = [](const CMediaType&) { return S_OK; })
        : CBaseFilter(u"Sink", GUID_NULL), pin_(*this, std::move(accept))
    {}

    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override { return n == 0 ? &pin_ : nullptr; }
    CBaseInputPin& Input() { return pin_; }

    const std::vector<SampleRecord>& received() const { return pin_.received; }
    int endOfStreams() const { return pin_.endOfStreams; }
    bool offersAllocator = true;

private:
    class Pin final : public CBaseInputPin {
    public:
        Pin(SinkFilter& filter, Acceptor accept)
            : CBaseInputPin(filter, u"Input"), sink_(filter), accept_(std::move(accept))
        {}
        HRESULT CheckMediaType(const CMediaType* pmt) override { return accept_(*pmt); }
        HRESULT GetAllocator(IMemAllocator** ppAllocator) override
        {
            if (!sink_.offersAllocator) return VFW_E_NO_ALLOCATOR;
            return CBaseInputPin::GetAllocator(ppAllocator);
        }
        HRESULT Receive(IMediaSample* pSample) override
        {
            if (const HRESULT hr = CBaseInputPin::Receive(pSample); hr != S_OK) return hr;
            received.push_back(record(*pSample));
            return S_OK;
        }
        HRESULT EndOfStream() override
        {
            ++endOfStreams;
            return S_OK;
        }

        std::vector<SampleRecord> received;
        int endOfStreams = 0;

    private:
        static SampleRecord record(IMediaSample& sample)
        {
            SampleRecord r;
            BYTE* memory = nullptr;
            sample.GetPointer(&memory);
            r.memory = memory;
            r.bytes.assign(memory, memory + sample.GetActualDataLength());
            r.timeResult = sample.GetTime(&r.start, &r.stop);
            r.mediaTimeResult = sample.GetMediaTime(&r.mediaStart, &r.mediaStop);
            r.syncPoint = sample.IsSyncPoint() == S_OK;
            r.preroll = sample.IsPreroll() == S_OK;
            r.discontinuity = sample.IsDiscontinuity() == S_OK;
            CMediaType type;
            if (sample.GetMediaType(&type) == S_OK) r.type = type;
            return r;
        }

        SinkFilter& sink_;
        Acceptor accept_;
    };

    Pin pin_;
};

/// A graph whose seeking reports the position a test sets.
class PositionGraph final : public com::ComObject<IFilterGraph, IMediaSeeking> {
public:
    HRESULT GetCurrentPosition(LONGLONG* pCurrent) override
    {
        *pCurrent = position;
        return S_OK;
    }
    LONGLONG position = 0;
};

/// A graph that answers no seeking interface.
class PlainGraph final : public com::ComObject<IFilterGraph> {};

/// Owns a new component object the way a host does: one reference, released at the end.
template <typename T, typename... Args>
com::ComPtr<T> make(Args&&... args)
{
    return com::ComPtr<T>(new T(std::forward<Args>(args)...));
}

}  // namespace qx::media::testing
