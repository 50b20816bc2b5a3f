#include "platform/media/MemAllocator.h"
#include "tests/platform/media/TestGraph.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

namespace qx::media {
namespace {

using testing::videoType;

TEST(MediaType, ReadsAVideoInfoOnlyFromAWholeHeaderOfItsFormatType)
{
    CMediaType type = videoType(MEDIASUBTYPE_RGB32, 320, -240, 32);
    ASSERT_TRUE(type.VideoInfo());
    EXPECT_EQ(type.FormatLength(), 88u);
    EXPECT_EQ(type.VideoInfo()->bmiHeader.biHeight, -240);
    EXPECT_EQ(type.VideoInfo()->bmiHeader.biSizeImage, 320u * 240u * 4u);

    CMediaType shortBlock = type;
    shortBlock.SetFormat(type.Format().first(87));
    EXPECT_FALSE(shortBlock.VideoInfo());
    CMediaType otherFormat = type;
    otherFormat.formattype = GUID_NULL;
    EXPECT_FALSE(otherFormat.VideoInfo());
    CMediaType larger = type;
    larger.AllocFormatBuffer(1128);
    larger.SetFormat(type.Format());
    EXPECT_TRUE(larger.VideoInfo());
}

TEST(MediaType, CompareByGuidsAndFormatBytes)
{
    const CMediaType a = videoType(MEDIASUBTYPE_RGB32, 16, 8, 32);
    CMediaType b = a;
    b.lSampleSize = 7;  // not part of the comparison
    EXPECT_EQ(a, b);
    EXPECT_FALSE(a == videoType(MEDIASUBTYPE_ARGB32, 16, 8, 32));
    EXPECT_FALSE(a == videoType(MEDIASUBTYPE_RGB32, 16, 9, 32));
}

TEST(MediaSample, TellsWhichTimesItHas)
{
    std::vector<uint8_t> memory(16);
    const auto sample = CMediaSample::Wrap(memory);
    REFERENCE_TIME start = -1;
    REFERENCE_TIME stop = -1;
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
    const REFERENCE_TIME t0 = 400000;
    const REFERENCE_TIME t1 = 800000;
    sample->SetTime(&t0, nullptr);
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(start, t0);
    EXPECT_EQ(stop, t0 + 1);
    sample->SetTime(&t0, &t1);
    EXPECT_EQ(sample->GetTime(&start, &stop), S_OK);
    EXPECT_EQ(stop, t1);
    sample->SetTime(nullptr, nullptr);
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);

    LONGLONG mediaStart = 0;
    LONGLONG mediaStop = 0;
    EXPECT_EQ(sample->GetMediaTime(&mediaStart, &mediaStop), VFW_E_MEDIA_TIME_NOT_SET);
    const LONGLONG m0 = 10;
    const LONGLONG m1 = 11;
    sample->SetMediaTime(&m0, &m1);
    EXPECT_EQ(sample->GetMediaTime(&mediaStart, &mediaStop), S_OK);
    EXPECT_EQ(mediaStop, 11);
}

TEST(MediaSample, KeepsFlagsLengthAndTypeUntilReset)
{
    std::vector<uint8_t> memory(16);
    CMediaSample sample(memory, nullptr);
    EXPECT_EQ(sample.IsSyncPoint(), S_FALSE);
    sample.SetSyncPoint(true);
    sample.SetPreroll(true);
    sample.SetDiscontinuity(true);
    EXPECT_EQ(sample.IsSyncPoint(), S_OK);
    EXPECT_EQ(sample.IsPreroll(), S_OK);
    EXPECT_EQ(sample.IsDiscontinuity(), S_OK);

    EXPECT_EQ(sample.GetActualDataLength(), 16);
    EXPECT_EQ(sample.SetActualDataLength(17), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample.SetActualDataLength(-1), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample.SetActualDataLength(5), S_OK);

    CMediaType type;
    EXPECT_EQ(sample.GetMediaType(&type), S_FALSE);
    const CMediaType attached = videoType(MEDIASUBTYPE_YV12, 4, 4, 12);
    sample.SetMediaType(&attached);
    EXPECT_EQ(sample.GetMediaType(&type), S_OK);
    EXPECT_EQ(type, attached);

    sample.ResetProperties();
    EXPECT_EQ(sample.IsSyncPoint(), S_FALSE);
    EXPECT_EQ(sample.IsDiscontinuity(), S_FALSE);
    EXPECT_EQ(sample.GetActualDataLength(), 16);
    EXPECT_EQ(sample.GetMediaType(&type), S_FALSE);
}

ALLOCATOR_PROPERTIES request(LONG buffers, LONG bytes, LONG align = 1)
{
    ALLOCATOR_PROPERTIES p;
    p.cBuffers = buffers;
    p.cbBuffer = bytes;
    p.cbAlign = align;
    return p;
}

TEST(MemAllocator, RefusesRequestsItCannotServe)
{
    const auto allocator = CMemAllocator::Create();
    ALLOCATOR_PROPERTIES actual;
    auto p = request(1, 64, 3);
    EXPECT_EQ(allocator->SetProperties(&p, &actual), VFW_E_BADALIGN);
    p = request(0, 64);
    EXPECT_EQ(allocator->SetProperties(&p, &actual), E_INVALIDARG);
    p = request(1, -64);
    EXPECT_EQ(allocator->SetProperties(&p, &actual), E_INVALIDARG);
    com::ComPtr<IMediaSample> sample;
    EXPECT_EQ(allocator->Commit(), VFW_E_SIZENOTSET);

    p = request(2, 64, 32);
    ASSERT_EQ(allocator->SetProperties(&p, &actual), S_OK);
    EXPECT_EQ(actual.cBuffers, 2);
    EXPECT_EQ(allocator->GetBuffer(sample.out(), nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
    ASSERT_EQ(allocator->Commit(), S_OK);
    EXPECT_EQ(allocator->SetProperties(&p, &actual), VFW_E_ALREADY_COMMITTED);
    ASSERT_EQ(allocator->GetBuffer(sample.out(), nullptr, nullptr, 0), S_OK);
    BYTE* memory = nullptr;
    sample->GetPointer(&memory);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(memory) % 32, 0u);
    EXPECT_EQ(sample->GetSize(), 64);
    allocator->Decommit();
    EXPECT_EQ(allocator->SetProperties(&p, &actual), VFW_E_BUFFERS_OUTSTANDING);
}

TEST(MemAllocator, HandsOutEachBufferOnceUntilItComesBackCleared)
{
    const auto allocator = CMemAllocator::Create();
    ALLOCATOR_PROPERTIES actual;
    const auto p = request(1, 8);
    allocator->SetProperties(&p, &actual);
    allocator->Commit();
    com::ComPtr<IMediaSample> first;
    ASSERT_EQ(allocator->GetBuffer(first.out(), nullptr, nullptr, 0), S_OK);
    first->SetSyncPoint(true);
    com::ComPtr<IMediaSample> second;
    EXPECT_EQ(allocator->GetBuffer(second.out(), nullptr, nullptr, AM_GBF_NOWAIT), VFW_E_TIMEOUT);
    IMediaSample* const handedOut = first.get();
    first.reset();
    ASSERT_EQ(allocator->GetBuffer(second.out(), nullptr, nullptr, AM_GBF_NOWAIT), S_OK);
    EXPECT_EQ(second.get(), handedOut);
    EXPECT_EQ(second->IsSyncPoint(), S_FALSE);
}

TEST(MemAllocator, WakesAWaitingCallerOnReturnAndOnDecommit)
{
    const auto allocator = CMemAllocator::Create();
    ALLOCATOR_PROPERTIES actual;
    const auto p = request(1, 8);
    allocator->SetProperties(&p, &actual);
    allocator->Commit();
    com::ComPtr<IMediaSample> held;
    allocator->GetBuffer(held.out(), nullptr, nullptr, 0);

    auto waiting = std::async(std::launch::async, [&] {
        com::ComPtr<IMediaSample> sample;
        return allocator->GetBuffer(sample.out(), nullptr, nullptr, 0);
    });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    held.reset();
    EXPECT_EQ(waiting.get(), S_OK);

    allocator->GetBuffer(held.out(), nullptr, nullptr, 0);
    waiting = std::async(std::launch::async, [&] {
        com::ComPtr<IMediaSample> sample;
        return allocator->GetBuffer(sample.out(), nullptr, nullptr, 0);
    });
    allocator->Decommit();
    EXPECT_EQ(waiting.get(), VFW_E_NOT_COMMITTED);
}

TEST(MemAllocator, LivesWhileOneOfItsSamplesIsOut)
{
    com::ComPtr<IMediaSample> sample;
    {
        const auto allocator = CMemAllocator::Create();
        ALLOCATOR_PROPERTIES actual;
        const auto p = request(1, 8);
        allocator->SetProperties(&p, &actual);
        allocator->Commit();
        allocator->GetBuffer(sample.out(), nullptr, nullptr, 0);
    }
    BYTE* memory = nullptr;
    sample->GetPointer(&memory);
    memory[7] = 1;  // still the allocator's memory: the sanitizers would see a use after free
    sample.reset();
}

}  // namespace
}  // namespace qx::media
