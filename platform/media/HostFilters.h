#pragma once
// The two ends of a graph that a host program builds around a filter: a source that
// offers one media type and delivers what the host gives it, and a sink that hands the
// host each sample that arrives. The command line, the GStreamer elements and the tests
// drive the filters through them, as an editor's graph drives them on Windows.
#include "platform/media/Pins.h"

#include <functional>

namespace qx::media {

class CHostSource final : public CBaseFilter {
public:
    /// A source of `type` that asks for `buffers` buffers of `bufferSize` bytes from the
    /// connection; with 0 buffers it asks for none and delivers only samples the host
    /// wraps around memory of its own. Null when out of memory.
    static com::ComPtr<CHostSource> Create(CMediaType type, LONG buffers, LONG bufferSize);

    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override;
    CBaseOutputPin& Output();

    /// An empty sample from the connection's allocator, for the host to fill.
    HRESULT GetBuffer(IMediaSample** ppSample);
    HRESULT Deliver(IMediaSample* pSample);

private:
    class Pin;
    CHostSource(CMediaType type, LONG buffers, LONG bufferSize);
    ~CHostSource() override;

    std::unique_ptr<Pin> pin_;
};

class CHostSink final : public CBaseFilter {
public:
    using Acceptor = std::function<HRESULT(const CMediaType&)>;
    using Receiver = std::function<HRESULT(IMediaSample&)>;

    /// A sink that takes the types `accept` answers S_OK for and gives `receive` each
    /// sample. Its input pin offers `allocator` to the connection, or a memory allocator
    /// when none is given, and takes no other. Null when out of memory.
    static com::ComPtr<CHostSink> Create(Acceptor accept, Receiver receive, com::ComPtr<IMemAllocator> allocator = {});

    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override;
    CBaseInputPin& Input();
    /// The times end of stream arrived.
    int EndOfStreamCount() const;

private:
    class Pin;
    CHostSink(Acceptor accept, Receiver receive, com::ComPtr<IMemAllocator> allocator);
    ~CHostSink() override;

    std::unique_ptr<Pin> pin_;
};

}  // namespace qx::media
