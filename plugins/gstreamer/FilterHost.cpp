#include "plugins/gstreamer/FilterHost.h"

namespace qx::gst {

HRESULT FilterHost::connect(const media::CMediaType& input, media::CHostSink::Acceptor acceptOutput,
                            media::CHostSink::Receiver receive, com::ComPtr<media::IMemAllocator> outputAllocator)
{
    disconnect();
    // The element's buffers are wrapped as they come: the source asks for none of its own.
    auto source = media::CHostSource::Create(input, 0, 0);
    auto sink = media::CHostSink::Create(std::move(acceptOutput), std::move(receive), std::move(outputAllocator));
    if (!source || !sink) return E_OUTOFMEMORY;
    HRESULT hr = source->Output().Connect(&filter_.InputPin(), &input);
    if (SUCCEEDED(hr)) hr = filter_.OutputPin().Connect(&sink->Input(), nullptr);
    if (SUCCEEDED(hr)) hr = sink->Run(0);
    if (SUCCEEDED(hr)) hr = filter_.Run(0);
    if (SUCCEEDED(hr)) hr = source->Run(0);
    source_ = std::move(source);
    sink_ = std::move(sink);
    if (FAILED(hr)) disconnect();
    return hr;
}

void FilterHost::disconnect()
{
    if (source_) source_->Stop();
    filter_.Stop();
    if (sink_) sink_->Stop();
    filter_.InputPin().Disconnect();
    filter_.OutputPin().Disconnect();
    source_.reset();
    sink_.reset();
}

HRESULT FilterHost::deliver(media::IMediaSample* sample)
{
    if (!connected()) return media::VFW_E_NOT_CONNECTED;
    return source_->Deliver(sample);
}

}  // namespace qx::gst
