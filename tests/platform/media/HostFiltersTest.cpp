// The host ends of a graph with a filter between them, as the command line and the
// GStreamer elements use them.
#include "platform/media/HostFilters.h"
#include "platform/media/MemAllocator.h"
#include "platform/media/TransInPlaceFilter.h"
#include "tests/platform/media/TestGraph.h"

#include <gtest/gtest.h>

namespace qx::media {
namespace {

using testing::make;
using testing::videoType;

/// Passes samples on, doubling the first byte.
class DoubleFirstByte final : public CTransInPlaceFilter {
public:
    DoubleFirstByte() : CTransInPlaceFilter(u"Double", GUID_NULL, true) {}
    HRESULT CheckInputType(const CMediaType*) override { return S_OK; }
    HRESULT Transform(IMediaSample* pSample) override
    {
        BYTE* bytes = nullptr;
        pSample->GetPointer(&bytes);
        bytes[0] = BYTE(bytes[0] * 2);
        return S_OK;
    }
};

struct HostGraph {
    com::ComPtr<CHostSource> source;
    com::ComPtr<DoubleFirstByte> filter = make<DoubleFirstByte>();
    com::ComPtr<CHostSink> sink;
    std::vector<int> firstBytes;

    HostGraph(LONG buffers, com::ComPtr<IMemAllocator> sinkAllocator = {})
        : source(CHostSource::Create(videoType(MEDIASUBTYPE_RGB32, 2, 1, 32), buffers, 8)),
          sink(CHostSink::Create([](const CMediaType&) { return S_OK; },
                                 [this](IMediaSample& sample) {
                                     BYTE* bytes = nullptr;
                                     sample.GetPointer(&bytes);
                                     firstBytes.push_back(bytes[0]);
                                     return S_OK;
                                 },
                                 std::move(sinkAllocator)))
    {}
    HRESULT connectAndRun()
    {
        if (const HRESULT hr = source->Output().Connect(&filter->InputPin(), nullptr); FAILED(hr)) return hr;
        if (const HRESULT hr = filter->OutputPin().Connect(&sink->Input(), nullptr); FAILED(hr)) return hr;
        sink->Run(0);
        filter->Run(0);
        return source->Run(0);
    }
};

TEST(HostFilters, CarrySamplesFromTheHostsBuffersThroughAFilter)
{
    HostGraph graph(2);
    ASSERT_EQ(graph.connectAndRun(), S_OK);
    for (BYTE value : {3, 5}) {
        com::ComPtr<IMediaSample> sample;
        ASSERT_EQ(graph.source->GetBuffer(sample.out()), S_OK);
        BYTE* bytes = nullptr;
        sample->GetPointer(&bytes);
        bytes[0] = value;
        EXPECT_EQ(graph.source->Deliver(sample.get()), S_OK);
    }
    EXPECT_EQ(graph.firstBytes, (std::vector<int>{6, 10}));
    EXPECT_EQ(graph.source->Output().DeliverEndOfStream(), S_OK);
    EXPECT_EQ(graph.sink->EndOfStreamCount(), 1);
}

TEST(HostFilters, ASourceWithoutBuffersDeliversMemoryTheHostWraps)
{
    HostGraph graph(0);
    ASSERT_EQ(graph.connectAndRun(), S_OK);
    com::ComPtr<IMediaSample> none;
    EXPECT_EQ(graph.source->GetBuffer(none.out()), VFW_E_NO_ALLOCATOR);
    uint8_t memory[8] = {21};
    EXPECT_EQ(graph.source->Deliver(CMediaSample::Wrap(memory).get()), S_OK);
    EXPECT_EQ(memory[0], 42);
    EXPECT_EQ(graph.firstBytes, (std::vector<int>{42}));
}

TEST(HostFilters, ASinkWithAnAllocatorOfItsOwnTakesNoOther)
{
    const auto offered = CMemAllocator::Create();
    HostGraph graph(1, offered);
    com::ComPtr<IMemAllocator> allocator;
    ASSERT_EQ(graph.sink->Input().GetAllocator(allocator.out()), S_OK);
    EXPECT_EQ(allocator.get(), offered.get());
    EXPECT_EQ(graph.sink->Input().NotifyAllocator(CMemAllocator::Create().get(), false), E_FAIL);
    EXPECT_EQ(graph.sink->Input().NotifyAllocator(offered.get(), false), S_OK);
}

}  // namespace
}  // namespace qx::media
