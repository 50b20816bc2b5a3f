// The connection and streaming rules of the two transform bases, through small filters
// in real graphs of a source, the filter and a sink.
#include "platform/media/TransInPlaceFilter.h"
#include "tests/platform/media/TestGraph.h"

#include <gtest/gtest.h>

namespace qx::media {
namespace {

using testing::make;
using testing::SinkFilter;
using testing::SourceFilter;
using testing::videoType;

const CMediaType kRgb = videoType(MEDIASUBTYPE_RGB32, 2, 2, 32);
constexpr uint8_t kDropMarker = 0xEE;

/// Takes RGB32 and outputs it with every byte inverted; drops samples that start with
/// the drop marker.
class InvertFilter final : public CTransformFilter {
public:
    InvertFilter() : CTransformFilter(u"Invert", GUID_NULL) {}

    HRESULT CheckInputType(const CMediaType* mtIn) override
    {
        return mtIn->subtype == MEDIASUBTYPE_RGB32 ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    }
    HRESULT CheckTransform(const CMediaType* mtIn, const CMediaType* mtOut) override
    {
        return *mtIn == *mtOut ? S_OK : E_FAIL;
    }
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pProperties) override
    {
        pProperties->cBuffers = 1;
        pProperties->cbBuffer = LONG(m_pInput->CurrentMediaType().lSampleSize);
        ALLOCATOR_PROPERTIES actual;
        return pAllocator->SetProperties(pProperties, &actual);
    }
    HRESULT GetMediaType(int iPosition, CMediaType* pMediaType) override
    {
        if (iPosition != 0) return VFW_S_NO_MORE_ITEMS;
        *pMediaType = m_pInput->CurrentMediaType();
        return S_OK;
    }
    HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType*) override
    {
        typesSet.push_back(direction);
        return S_OK;
    }
    HRESULT Transform(IMediaSample* pIn, IMediaSample* pOut) override
    {
        BYTE* in = nullptr;
        BYTE* out = nullptr;
        pIn->GetPointer(&in);
        pOut->GetPointer(&out);
        if (in[0] == kDropMarker) return S_FALSE;
        for (LONG i = 0; i < pIn->GetActualDataLength(); ++i) out[i] = BYTE(~in[i]);
        pOut->SetActualDataLength(pIn->GetActualDataLength());
        return S_OK;
    }
    HRESULT StartStreaming() override
    {
        ++starts;
        return S_OK;
    }
    HRESULT StopStreaming() override
    {
        ++stops;
        return S_OK;
    }

    std::vector<PIN_DIRECTION> typesSet;
    int starts = 0;
    int stops = 0;
};

/// Adds 1 to every byte where it lies; drops samples that start with the drop marker.
class IncrementFilter final : public CTransInPlaceFilter {
public:
    IncrementFilter() : CTransInPlaceFilter(u"Increment", GUID_NULL, true) {}

    HRESULT CheckInputType(const CMediaType*) override { return S_OK; }
    HRESULT Transform(IMediaSample* pSample) override
    {
        BYTE* bytes = nullptr;
        pSample->GetPointer(&bytes);
        if (bytes[0] == kDropMarker) return S_FALSE;
        for (LONG i = 0; i < pSample->GetActualDataLength(); ++i) ++bytes[i];
        return S_OK;
    }
};

struct Graph {
    com::ComPtr<SourceFilter> source = make<SourceFilter>(kRgb, 16);
    com::ComPtr<SinkFilter> sink = make<SinkFilter>();

    HRESULT connect(CTransformFilter& filter)
    {
        if (const HRESULT hr = source->Output().Connect(&filter.InputPin(), nullptr); FAILED(hr)) return hr;
        return filter.OutputPin().Connect(&sink->Input(), nullptr);
    }
    void run(CTransformFilter& filter)
    {
        sink->Run(0);
        filter.Run(0);
        source->Run(0);
    }
};

TEST(TransformFilter, ConnectsTheOutputOnlyAfterTheInputWithAnAcceptedType)
{
    const auto filter = make<InvertFilter>();
    Graph graph;
    EXPECT_EQ(filter->OutputPin().Connect(&graph.sink->Input(), nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_EQ(filter->OutputPin().Connect(&graph.sink->Input(), &kRgb), E_INVALIDARG);

    const auto yv12 = make<SourceFilter>(videoType(MEDIASUBTYPE_YV12, 2, 2, 12), 6);
    EXPECT_EQ(yv12->Output().Connect(&filter->InputPin(), nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_FALSE(filter->InputPin().IsConnected());

    ASSERT_EQ(graph.connect(*filter.get()), S_OK);
    EXPECT_EQ(filter->OutputPin().CurrentMediaType(), kRgb);
    EXPECT_EQ(graph.sink->Input().CurrentMediaType(), kRgb);
    EXPECT_EQ(filter->typesSet, (std::vector<PIN_DIRECTION>{PINDIR_INPUT, PINDIR_OUTPUT}));
    EXPECT_EQ(graph.source->Output().Connect(&filter->InputPin(), nullptr), VFW_E_ALREADY_CONNECTED);
}

TEST(TransformFilter, AnOutputTypeTheSinkRefusesLeavesBothPinsUnconnected)
{
    const auto filter = make<InvertFilter>();
    const auto source = make<SourceFilter>(kRgb, 16);
    const auto picky = make<SinkFilter>([](const CMediaType&) { return VFW_E_TYPE_NOT_ACCEPTED; });
    ASSERT_EQ(source->Output().Connect(&filter->InputPin(), nullptr), S_OK);
    EXPECT_EQ(filter->OutputPin().Connect(&picky->Input(), nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_FALSE(filter->OutputPin().IsConnected());
    EXPECT_FALSE(picky->Input().IsConnected());
}

TEST(TransformFilter, NeitherConnectsNorDisconnectsWhileRunning)
{
    const auto filter = make<InvertFilter>();
    Graph graph;
    ASSERT_EQ(graph.connect(*filter.get()), S_OK);
    graph.run(*filter.get());
    EXPECT_EQ(filter->starts, 1);
    EXPECT_EQ(filter->OutputPin().Disconnect(), VFW_E_NOT_STOPPED);
    filter->Stop();
    EXPECT_EQ(filter->stops, 1);
    EXPECT_EQ(filter->OutputPin().Disconnect(), S_OK);
    EXPECT_FALSE(graph.sink->Input().IsConnected());
    filter->Run(0);
    EXPECT_EQ(filter->OutputPin().Connect(&graph.sink->Input(), nullptr), VFW_E_NOT_STOPPED);
}

TEST(TransformFilter, TakesSamplesOnlyWhileRunningAndNotFlushing)
{
    const auto filter = make<InvertFilter>();
    Graph graph;
    ASSERT_EQ(graph.connect(*filter.get()), S_OK);
    graph.source->Run(0);
    const uint8_t bytes[16] = {1, 2, 3};
    EXPECT_EQ(graph.source->deliver(bytes), VFW_E_WRONG_STATE);
    filter->Run(0);
    graph.sink->Run(0);
    filter->InputPin().BeginFlush();
    EXPECT_EQ(graph.source->deliver(bytes), S_FALSE);
    filter->InputPin().EndFlush();
    EXPECT_EQ(graph.source->deliver(bytes), S_OK);
    ASSERT_EQ(graph.sink->received().size(), 1u);
    EXPECT_EQ(graph.sink->received()[0].bytes[2], 0xFC);
}

TEST(TransformFilter, OutputSamplesCarryTheInputsTimesAndFlags)
{
    const auto filter = make<InvertFilter>();
    Graph graph;
    ASSERT_EQ(graph.connect(*filter.get()), S_OK);
    graph.run(*filter.get());
    const uint8_t bytes[16] = {};
    ASSERT_EQ(graph.source->deliver(bytes, 400000, 800000), S_OK);
    ASSERT_EQ(graph.source->deliver(bytes, 1200000), S_OK);
    ASSERT_EQ(graph.source->deliver(bytes), S_OK);
    const auto& out = graph.sink->received();
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0].timeResult, S_OK);
    EXPECT_EQ(out[0].start, 400000);
    EXPECT_EQ(out[0].stop, 800000);
    EXPECT_TRUE(out[0].syncPoint);
    EXPECT_EQ(out[1].timeResult, VFW_S_NO_STOP_TIME);
    EXPECT_EQ(out[1].start, 1200000);
    EXPECT_EQ(out[2].timeResult, VFW_E_SAMPLE_TIME_NOT_SET);
}

TEST(TransformFilter, ADroppedSampleMarksTheNextOneAsADiscontinuity)
{
    const auto filter = make<InvertFilter>();
    Graph graph;
    ASSERT_EQ(graph.connect(*filter.get()), S_OK);
    graph.run(*filter.get());
    uint8_t bytes[16] = {kDropMarker};
    EXPECT_EQ(graph.source->deliver(bytes), S_OK);
    bytes[0] = 0;
    EXPECT_EQ(graph.source->deliver(bytes), S_OK);
    EXPECT_EQ(graph.source->deliver(bytes), S_OK);
    const auto& out = graph.sink->received();
    ASSERT_EQ(out.size(), 2u);
    EXPECT_TRUE(out[0].discontinuity);
    EXPECT_FALSE(out[1].discontinuity);
}

TEST(TransformFilter, PassesEndOfStreamOnAndUsesItsOwnAllocatorWhenTheSinkHasNone)
{
    const auto filter = make<InvertFilter>();
    Graph graph;
    graph.sink->offersAllocator = false;
    ASSERT_EQ(graph.connect(*filter.get()), S_OK);
    graph.run(*filter.get());
    const uint8_t bytes[16] = {};
    EXPECT_EQ(graph.source->deliver(bytes), S_OK);
    EXPECT_EQ(graph.source->Output().DeliverEndOfStream(), S_OK);
    EXPECT_EQ(graph.sink->received().size(), 1u);
    EXPECT_EQ(graph.sink->endOfStreams(), 1);
}

TEST(TransformFilter, AFilterThatGoesLeavesItsPeersUnconnected)
{
    Graph graph;
    {
        const auto filter = make<InvertFilter>();
        ASSERT_EQ(graph.connect(*filter.get()), S_OK);
    }
    EXPECT_FALSE(graph.source->Output().IsConnected());
    EXPECT_FALSE(graph.sink->Input().IsConnected());
    const uint8_t bytes[16] = {};
    graph.source->Run(0);
    EXPECT_EQ(graph.source->deliver(bytes), VFW_E_NO_ALLOCATOR);
}

TEST(TransInPlaceFilter, OffersTheInputsTypeAndPassesTheSameSampleOn)
{
    const auto filter = make<IncrementFilter>();
    Graph graph;
    ASSERT_EQ(graph.connect(*filter.get()), S_OK);
    EXPECT_EQ(graph.sink->Input().CurrentMediaType(), kRgb);
    const CMediaType other = videoType(MEDIASUBTYPE_RGB32, 4, 2, 32);
    EXPECT_EQ(filter->CheckTransform(&kRgb, &other), VFW_E_TYPE_NOT_ACCEPTED);

    graph.run(*filter.get());
    com::ComPtr<IMediaSample> sample;
    ASSERT_EQ(graph.source->Output().GetDeliveryBuffer(sample.out(), nullptr, nullptr, 0), S_OK);
    BYTE* memory = nullptr;
    sample->GetPointer(&memory);
    std::fill_n(memory, 16, 41);
    ASSERT_EQ(graph.source->Output().Deliver(sample.get()), S_OK);
    memory[0] = kDropMarker;
    ASSERT_EQ(graph.source->Output().Deliver(sample.get()), S_OK);
    const auto& out = graph.sink->received();
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0].memory, memory);
    EXPECT_EQ(out[0].bytes, std::vector<uint8_t>(16, 42));
}

}  // namespace
}  // namespace qx::media
