#pragma once
// A filter of the streaming layer inside an element: a host source before its input, a
// host sink after its output, connected for the caps the element negotiated and run
// while the element streams. Samples the element wraps around its buffers go in through
// the source; the sink hands the element what comes out.
#include "platform/media/HostFilters.h"
#include "platform/media/TransformFilter.h"

namespace qx::gst {

class FilterHost {
public:
    explicit FilterHost(media::CTransformFilter& filter) : filter_(filter) {}
    FilterHost(const FilterHost&) = delete;
    FilterHost& operator=(const FilterHost&) = delete;
    ~FilterHost() { disconnect(); }

    /// Connects the graph: the filter's input takes `input`, its output goes to a sink
    /// that accepts what `acceptOutput` answers S_OK for and gives each sample to
    /// `receive`, offering `outputAllocator` when one is given. The first failure.
    HRESULT connect(const media::CMediaType& input, media::CHostSink::Acceptor acceptOutput,
                    media::CHostSink::Receiver receive, com::ComPtr<media::IMemAllocator> outputAllocator = {});
    /// Stops the graph and takes it apart; the filter keeps its state.
    void disconnect();
    bool connected() const { return source_ && sink_; }

    /// Sends one sample through the filter.
    HRESULT deliver(media::IMediaSample* sample);

private:
    media::CTransformFilter& filter_;
    com::ComPtr<media::CHostSource> source_;
    com::ComPtr<media::CHostSink> sink_;
};

}  // namespace qx::gst
