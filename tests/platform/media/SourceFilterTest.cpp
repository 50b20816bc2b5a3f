// Source filters and their seeking: the stream thread's life (create, play, end of
// stream, stop while running, stop while its buffer is out), and how SetPositions reads
// its flags.
#include "platform/media/SourceFilter.h"
#include "platform/media/HostFilters.h"
#include "platform/media/SourceSeeking.h"
#include "tests/platform/media/TestGraph.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace qx::media {
namespace {

/// A stream of numbered 4-byte samples that ends after `count` of them.
class CountingSource final : public CSource {
public:
    class Stream final : public CSourceStream, public CSourceSeeking {
    public:
        Stream(CountingSource& owner, int count)
            : CSourceStream(u"Output", owner), CSourceSeeking(owner, lock, 100), count_(count)
        {}
        HRESULT GetMediaType(int iPosition, CMediaType* pMediaType) override
        {
            if (iPosition != 0) return VFW_S_NO_MORE_ITEMS;
            *pMediaType = testing::videoType(MEDIASUBTYPE_RGB32, 1, 1, 32);
            return S_OK;
        }
        HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
        HRESULT DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* request) override
        {
            request->cBuffers = 1;
            request->cbBuffer = 4;
            ALLOCATOR_PROPERTIES actual;
            return pAlloc->SetProperties(request, &actual);
        }
        HRESULT FillBuffer(IMediaSample* pSample) override
        {
            if (filled >= count_) return S_FALSE;
            BYTE* bytes = nullptr;
            pSample->GetPointer(&bytes);
            bytes[0] = BYTE(filled++);
            return S_OK;
        }
        HRESULT OnThreadCreate() override
        {
            ++created;
            return S_OK;
        }
        HRESULT OnThreadStartPlay() override
        {
            ++plays;
            return S_OK;
        }
        HRESULT ChangeStart() override
        {
            ++starts;
            return S_OK;
        }
        HRESULT ChangeStop() override
        {
            ++stops;
            return S_OK;
        }
        HRESULT ChangeRate() override { return S_OK; }
        using CSourceStream::Run;
        using CSourceStream::Stop;

        std::atomic<int> filled{0}, created{0}, plays{0}, starts{0}, stops{0};
        std::recursive_mutex lock;

    private:
        int count_;
    };

    explicit CountingSource(int count) : CSource(u"Counting", GUID_NULL), stream(*this, count) {}
    Stream stream;
};

template <typename Done>
bool waitFor(Done done)
{
    for (int i = 0; i < 2000 && !done(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return done();
}

TEST(SourceFilter, PlaysUntilTheEndOfItsStream)
{
    com::ComPtr<CountingSource> source(new CountingSource(5));
    std::vector<int> received;
    const auto sink = CHostSink::Create([](const CMediaType&) { return S_OK; },
                                        [&](IMediaSample& sample) {
                                            BYTE* bytes = nullptr;
                                            sample.GetPointer(&bytes);
                                            received.push_back(bytes[0]);
                                            return S_OK;
                                        });
    ASSERT_EQ(source->GetPinCount(), 1);
    ASSERT_EQ(source->stream.Connect(&sink->Input(), nullptr), S_OK);
    sink->Pause();
    ASSERT_EQ(source->Pause(), S_OK);
    ASSERT_TRUE(waitFor([&] { return sink->EndOfStreamCount() == 1; }));
    EXPECT_EQ(received, (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(source->stream.created, 1);
    EXPECT_EQ(source->stream.plays, 1);
    EXPECT_EQ(source->Stop(), S_OK);
    EXPECT_EQ(source->stream.Run(), E_FAIL) << "no thread once stopped";
}

// A sink that holds on to every sample leaves the one buffer out: stopping must not wait
// for it forever.
TEST(SourceFilter, StopsWhileItsBufferIsOut)
{
    com::ComPtr<CountingSource> source(new CountingSource(1000));
    std::vector<com::ComPtr<IMediaSample>> kept;
    const auto sink = CHostSink::Create([](const CMediaType&) { return S_OK; },
                                        [&](IMediaSample& sample) {
                                            kept.emplace_back(&sample);
                                            return S_OK;
                                        });
    ASSERT_EQ(source->stream.Connect(&sink->Input(), nullptr), S_OK);
    sink->Pause();
    ASSERT_EQ(source->Pause(), S_OK);
    ASSERT_TRUE(waitFor([&] { return source->stream.filled >= 1; }));
    EXPECT_EQ(source->Stop(), S_OK);
    EXPECT_EQ(source->stream.filled, 1);
    kept.clear();
    source->stream.Disconnect();
}

// Stopping the thread and running it again starts the loop of buffers over.
TEST(SourceFilter, RunsAgainAfterAStop)
{
    com::ComPtr<CountingSource> source(new CountingSource(3));
    const auto sink = CHostSink::Create([](const CMediaType&) { return S_OK; }, [](IMediaSample&) { return S_OK; });
    ASSERT_EQ(source->stream.Connect(&sink->Input(), nullptr), S_OK);
    sink->Pause();
    ASSERT_EQ(source->Pause(), S_OK);
    ASSERT_TRUE(waitFor([&] { return sink->EndOfStreamCount() == 1; }));
    EXPECT_EQ(source->stream.Stop(), S_OK);
    EXPECT_EQ(source->stream.Run(), S_OK);
    ASSERT_TRUE(waitFor([&] { return sink->EndOfStreamCount() == 2; }));
    EXPECT_EQ(source->stream.plays, 2);
    EXPECT_EQ(source->stream.created, 1);
    source->Stop();
}

TEST(SourceSeeking, ReadsPositionsByTheirFlags)
{
    com::ComPtr<CountingSource> source(new CountingSource(0));
    IMediaSeeking& seeking = source->stream;
    LONGLONG start = 30, stop = 20, current = 0, end = 0;
    EXPECT_EQ(seeking.SetPositions(&start, AM_SEEKING_AbsolutePositioning, &stop, AM_SEEKING_IncrementalPositioning),
              S_OK);
    seeking.GetPositions(&current, &end);
    EXPECT_EQ(current, 30);
    EXPECT_EQ(end, 50) << "incremental: from the new start";
    EXPECT_EQ(seeking.SetPositions(&start, AM_SEEKING_RelativePositioning, nullptr, AM_SEEKING_NoPositioning), S_OK);
    seeking.GetPositions(&current, &end);
    EXPECT_EQ(current, 60);
    EXPECT_EQ(source->stream.starts, 2);
    EXPECT_EQ(source->stream.stops, 1);
    EXPECT_EQ(seeking.SetPositions(&start, AM_SEEKING_IncrementalPositioning, nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(seeking.SetPositions(nullptr, AM_SEEKING_AbsolutePositioning, nullptr, 0), E_POINTER);
    EXPECT_EQ(seeking.SetPositions(nullptr, 0, &stop, AM_SEEKING_AbsolutePositioning | 8), E_INVALIDARG);
    EXPECT_EQ(seeking.SetRate(0.0), E_INVALIDARG);
    LONGLONG duration = 0;
    seeking.GetDuration(&duration);
    EXPECT_EQ(duration, 100);
    EXPECT_EQ(seeking.GetCurrentPosition(&current), E_NOTIMPL);
}

}  // namespace
}  // namespace qx::media
