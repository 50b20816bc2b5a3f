// The crop transform in graphs of a source, the filter and a sink, as an editor builds
// them: negotiation of the output type and buffers, and frames whose expected samples
// follow from where the input lands in the output.
#include "filters/CropTransform.h"
#include "tests/platform/media/TestGraph.h"

#include <gtest/gtest.h>

#include <cstring>

namespace qx {
namespace {

using namespace media;
using media::testing::make;
using media::testing::SinkFilter;
using media::testing::SourceFilter;
using media::testing::videoType;

/// Frames as the filter sees them: samples in storage order (bottom-up, as the type's
/// positive height says), `width` to a row.
using Samples = std::vector<uint32_t>;

std::vector<uint8_t> bytesOf(const Samples& samples)
{
    std::vector<uint8_t> bytes(samples.size() * 4);
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

Samples samplesOf(const std::vector<uint8_t>& bytes)
{
    Samples samples(bytes.size() / 4);
    std::memcpy(samples.data(), bytes.data(), samples.size() * 4);
    return samples;
}

/// Every sample different: its storage position, opaque.
Samples numbered(LONG width, LONG height)
{
    Samples samples(size_t(width * height));
    for (size_t i = 0; i < samples.size(); ++i) samples[i] = 0xFF000000u | uint32_t(i + 1);
    return samples;
}

struct CropGraph {
    com::ComPtr<CQXCropTransform> crop = CQXCropTransform::Create();
    com::ComPtr<SourceFilter> source;
    com::ComPtr<SinkFilter> sink = make<SinkFilter>();

    CropGraph(LONG width, LONG height, const GUID& subtype = MEDIASUBTYPE_RGB32)
        : source(make<SourceFilter>(videoType(subtype, width, height, 32), width * height * 4))
    {}
    HRESULT connect()
    {
        if (const HRESULT hr = source->Output().Connect(&crop->InputPin(), nullptr); FAILED(hr)) return hr;
        return crop->OutputPin().Connect(&sink->Input(), nullptr);
    }
    /// Connects, runs and sends one frame; the output frame that came out.
    Samples run(const Samples& frame)
    {
        EXPECT_EQ(connect(), S_OK);
        sink->Run(0);
        crop->Run(0);
        source->Run(0);
        EXPECT_EQ(source->deliver(bytesOf(frame), 0, 400000), S_OK);
        if (sink->received().empty()) return {};
        return samplesOf(sink->received().back().bytes);
    }
};

TEST(CropTransform, AnswersItsInterfacesAndStoresWhatItIsGiven)
{
    const auto crop = CQXCropTransform::Create();
    com::ComPtr<IQXCropTransform> control;
    ASSERT_EQ(crop->QueryInterface(IQXCropTransform::iid, reinterpret_cast<void**>(control.out())), S_OK);
    com::ComPtr<IUnknown> viaFilter;
    com::ComPtr<IUnknown> viaControl;
    crop->QueryInterface(IUnknown::iid, reinterpret_cast<void**>(viaFilter.out()));
    control->QueryInterface(IUnknown::iid, reinterpret_cast<void**>(viaControl.out()));
    EXPECT_EQ(viaFilter.get(), viaControl.get());
    EXPECT_EQ(control->PutSize(720, 576), S_OK);
    EXPECT_EQ(control->SetAntiFlickeringLevel(-3), S_OK);
    EXPECT_EQ(control->PutAspectRatio(1.5f), S_OK);
    EXPECT_EQ(control->PutOutputSize(1, 2), S_OK);
    EXPECT_EQ(crop->Width(), 720);
    EXPECT_EQ(crop->Height(), 576);
}

TEST(CropTransform, TakesOnly32BitRgbVideo)
{
    const auto crop = CQXCropTransform::Create();
    const auto check = [&](CMediaType type) { return crop->CheckInputType(&type); };
    EXPECT_EQ(check(videoType(MEDIASUBTYPE_RGB32, 8, 8, 32)), S_OK);
    EXPECT_EQ(check(videoType(MEDIASUBTYPE_ARGB32, 8, -8, 32)), S_OK);
    EXPECT_EQ(check(videoType(MEDIASUBTYPE_RGB32, 8, 8, 24)), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(check(videoType(MEDIASUBTYPE_YV12, 8, 8, 32)), VFW_E_TYPE_NOT_ACCEPTED);
    CMediaType audio = videoType(MEDIASUBTYPE_RGB32, 8, 8, 32);
    audio.majortype = GUID_NULL;
    EXPECT_EQ(check(audio), VFW_E_TYPE_NOT_ACCEPTED);
    CMediaType noFormat = videoType(MEDIASUBTYPE_RGB32, 8, 8, 32);
    noFormat.SetFormat({});
    EXPECT_EQ(check(noFormat), VFW_E_TYPE_NOT_ACCEPTED);
}

TEST(CropTransform, WorksOutNoOutputTypeOrBuffersBeforeTheInputIsConnected)
{
    const auto crop = CQXCropTransform::Create();
    CMediaType type;
    EXPECT_EQ(crop->GetMediaType(0, &type), E_UNEXPECTED);
    ALLOCATOR_PROPERTIES properties;
    EXPECT_EQ(crop->DecideBufferSize(nullptr, &properties), E_UNEXPECTED);
}

TEST(CropTransform, OffersOneOutputTypeOfTheSetSize)
{
    CropGraph graph(320, 240);
    graph.crop->PutSize(720, 576);
    ASSERT_EQ(graph.source->Output().Connect(&graph.crop->InputPin(), nullptr), S_OK);
    CMediaType type;
    EXPECT_EQ(graph.crop->GetMediaType(-1, &type), E_INVALIDARG);
    EXPECT_EQ(graph.crop->GetMediaType(1, &type), VFW_S_NO_MORE_ITEMS);
    ASSERT_EQ(graph.crop->GetMediaType(0, &type), S_OK);
    EXPECT_EQ(type.subtype, MEDIASUBTYPE_RGB32);
    EXPECT_EQ(type.FormatLength(), 88u);
    const VIDEOINFOHEADER info = *type.VideoInfo();
    EXPECT_EQ(info.rcSource, (RECT{0, 0, 720, 576}));
    EXPECT_EQ(info.rcTarget, (RECT{0, 0, 720, 576}));
    EXPECT_EQ(info.bmiHeader.biWidth, 720);
    EXPECT_EQ(info.bmiHeader.biHeight, 576);
    EXPECT_EQ(info.bmiHeader.biSizeImage, 720u * 576u * 4u);
    EXPECT_EQ(type.lSampleSize, 720u * 576u * 4u);
}

TEST(CropTransform, ASideLeftAtZeroTakesTheInputsForGood)
{
    CropGraph graph(320, 240);
    graph.crop->PutSize(0, 300);
    ASSERT_EQ(graph.connect(), S_OK);
    const auto info = *graph.sink->Input().CurrentMediaType().VideoInfo();
    EXPECT_EQ(info.bmiHeader.biWidth, 320);
    EXPECT_EQ(info.bmiHeader.biHeight, 300);
    // The width stays 320 when an input of another size comes later.
    graph.crop->Stop();
    graph.crop->InputPin().Disconnect();
    graph.crop->OutputPin().Disconnect();
    const auto wider = make<SourceFilter>(videoType(MEDIASUBTYPE_RGB32, 640, 480, 32), 640 * 480 * 4);
    ASSERT_EQ(wider->Output().Connect(&graph.crop->InputPin(), nullptr), S_OK);
    CMediaType type;
    ASSERT_EQ(graph.crop->GetMediaType(0, &type), S_OK);
    EXPECT_EQ(type.VideoInfo()->bmiHeader.biWidth, 320);
    EXPECT_EQ(graph.crop->Width(), 320);
}

TEST(CropTransform, RefusesAnOutputOfAnotherSize)
{
    const auto crop = CQXCropTransform::Create();
    crop->PutSize(64, 48);
    const CMediaType input = videoType(MEDIASUBTYPE_RGB32, 32, 24, 32);
    const auto check = [&](CMediaType output) { return crop->CheckTransform(&input, &output); };
    EXPECT_EQ(check(videoType(MEDIASUBTYPE_RGB32, 64, 48, 32)), S_OK);
    EXPECT_EQ(check(videoType(MEDIASUBTYPE_RGB32, 64, 47, 32)), E_FAIL);
    EXPECT_EQ(check(videoType(MEDIASUBTYPE_RGB32, 64, 48, 24)), E_FAIL);
}

/// An allocator that answers SetProperties as a test says, to see what the filter asks
/// for and what it does with the answer.
class ScriptedAllocator final : public com::ComObject<IMemAllocator> {
public:
    HRESULT SetProperties(const ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) override
    {
        asked = *pRequest;
        *pActual = *pRequest;
        pActual->cbBuffer -= shortBy;
        return answer;
    }
    HRESULT GetProperties(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    HRESULT Commit() override { return E_NOTIMPL; }
    HRESULT Decommit() override { return E_NOTIMPL; }
    HRESULT GetBuffer(IMediaSample**, const REFERENCE_TIME*, const REFERENCE_TIME*, DWORD) override
    {
        return E_NOTIMPL;
    }
    HRESULT ReleaseBuffer(IMediaSample*) override { return E_NOTIMPL; }

    ALLOCATOR_PROPERTIES asked;
    HRESULT answer = S_OK;
    LONG shortBy = 0;
};

TEST(CropTransform, AsksForOneBufferOfTheOutputFrame)
{
    CropGraph graph(32, 24);
    graph.crop->PutSize(64, 48);
    ASSERT_EQ(graph.source->Output().Connect(&graph.crop->InputPin(), nullptr), S_OK);
    const auto allocator = make<ScriptedAllocator>();
    ALLOCATOR_PROPERTIES properties;
    properties.cbAlign = 1;
    EXPECT_EQ(graph.crop->DecideBufferSize(allocator.get(), nullptr), E_POINTER);
    EXPECT_EQ(graph.crop->DecideBufferSize(allocator.get(), &properties), S_OK);
    EXPECT_EQ(allocator->asked.cBuffers, 1);
    EXPECT_EQ(allocator->asked.cbBuffer, 64 * 48 * 4);
    allocator->shortBy = 1;
    EXPECT_EQ(graph.crop->DecideBufferSize(allocator.get(), &properties), E_FAIL);
    allocator->answer = E_OUTOFMEMORY;
    EXPECT_EQ(graph.crop->DecideBufferSize(allocator.get(), &properties), E_OUTOFMEMORY);
    // A size no 32-bit buffer count holds cannot be had at all.
    graph.crop->PutSize(65536, 65536);
    EXPECT_EQ(graph.crop->DecideBufferSize(allocator.get(), &properties), E_OUTOFMEMORY);
}

TEST(CropTransform, ANegativeSizeCannotConnect)
{
    CropGraph graph(32, 24);
    graph.crop->PutSize(-64, 48);
    EXPECT_TRUE(FAILED(graph.connect()));
    EXPECT_FALSE(graph.sink->Input().IsConnected());
}

TEST(CropTransform, ZeroSizeCopiesTheFrameRowForRow)
{
    CropGraph graph(5, 3);
    const Samples frame = numbered(5, 3);
    EXPECT_EQ(graph.run(frame), frame);
}

TEST(CropTransform, CentresTheFrameOnTransparentBlack)
{
    // 3 x 2 into 8 x 5: x = (8 - 3) / 2 = 2, y = (5 - 2) / 2 = 1, so the extra column is
    // on the right and the extra row at the end of the buffer.
    CropGraph graph(3, 2);
    graph.crop->PutSize(8, 5);
    Samples expected(40, 0u);
    for (size_t row = 0; row < 2; ++row)
        for (size_t column = 0; column < 3; ++column)
            expected[(1 + row) * 8 + 2 + column] = 0xFF000000u | uint32_t(row * 3 + column + 1);
    EXPECT_EQ(graph.run(numbered(3, 2)), expected);

    // Whatever the output buffer held is gone, up to its end past the frame.
    auto input = bytesOf(numbered(3, 2));
    std::vector<uint8_t> output(40 * 4 + 12, 0xAB);
    ASSERT_EQ(graph.crop->Transform(CMediaSample::Wrap(input).get(), CMediaSample::Wrap(output).get()), S_OK);
    expected.resize(43, 0u);
    EXPECT_EQ(samplesOf(output), expected);
}

TEST(CropTransform, AnOutputSmallerThanTheInputKeepsItsMiddle)
{
    CropGraph graph(6, 5);
    graph.crop->PutSize(2, 2);
    const Samples out = graph.run(numbered(6, 5));
    // x = (2 - 6) / 2 = -2 and y = (2 - 5) / 2 = -1: storage rows 1 and 2, columns 2 and 3.
    EXPECT_EQ(out, (Samples{0xFF000000u | 9, 0xFF000000u | 10, 0xFF000000u | 15, 0xFF000000u | 16}));
}

TEST(CropTransform, CopiesTheSamplesPropertiesAndTheOutputTypeOntoEachFrame)
{
    CropGraph graph(4, 4);
    graph.crop->PutSize(6, 6);
    graph.run(numbered(4, 4));
    ASSERT_EQ(graph.sink->received().size(), 1u);
    const auto& out = graph.sink->received()[0];
    EXPECT_EQ(out.timeResult, S_OK);
    EXPECT_EQ(out.stop, 400000);
    EXPECT_TRUE(out.syncPoint);
    ASSERT_TRUE(out.type);
    EXPECT_EQ(*out.type, graph.sink->Input().CurrentMediaType());
}

/// A sample whose flags answer what a test says, over a sample of memory.
class FlakySample final : public com::ComObject<IMediaSample> {
public:
    explicit FlakySample(std::span<uint8_t> memory) : inner_(CMediaSample::Wrap(memory)) {}

    HRESULT GetPointer(BYTE** ppBuffer) override { return inner_->GetPointer(ppBuffer); }
    LONG GetSize() override { return inner_->GetSize(); }
    HRESULT GetTime(REFERENCE_TIME* a, REFERENCE_TIME* b) override { return inner_->GetTime(a, b); }
    HRESULT SetTime(const REFERENCE_TIME* a, const REFERENCE_TIME* b) override { return inner_->SetTime(a, b); }
    HRESULT IsSyncPoint() override { return syncAnswer; }
    HRESULT SetSyncPoint(bool v) override { return inner_->SetSyncPoint(v); }
    HRESULT IsPreroll() override { return prerollAnswer; }
    HRESULT SetPreroll(bool v) override { return inner_->SetPreroll(v); }
    HRESULT IsDiscontinuity() override { return S_OK; }
    HRESULT SetDiscontinuity(bool v) override { return inner_->SetDiscontinuity(v); }
    LONG GetActualDataLength() override { return inner_->GetActualDataLength(); }
    HRESULT SetActualDataLength(LONG v) override { return inner_->SetActualDataLength(v); }
    HRESULT GetMediaType(CMediaType* t) override { return inner_->GetMediaType(t); }
    HRESULT SetMediaType(const CMediaType* t) override { return inner_->SetMediaType(t); }
    HRESULT GetMediaTime(LONGLONG* a, LONGLONG* b) override { return inner_->GetMediaTime(a, b); }
    HRESULT SetMediaTime(const LONGLONG* a, const LONGLONG* b) override { return inner_->SetMediaTime(a, b); }

    HRESULT syncAnswer = S_OK;
    HRESULT prerollAnswer = S_OK;

private:
    com::ComPtr<IMediaSample> inner_;
};

TEST(CropTransform, AnUnclearFlagEndsTheCopyingButNotTheFrame)
{
    CropGraph graph(2, 2);
    ASSERT_EQ(graph.connect(), S_OK);
    auto input = bytesOf(numbered(2, 2));
    std::vector<uint8_t> outputMemory(16, 0xAB);
    const auto in = make<FlakySample>(input);
    const auto out = CMediaSample::Wrap(outputMemory);
    const REFERENCE_TIME start = 5;
    const REFERENCE_TIME stop = 9;
    in->SetTime(&start, nullptr);  // a start alone is not copied: only both times are
    in->prerollAnswer = E_FAIL;
    ASSERT_EQ(graph.crop->Transform(in.get(), out.get()), S_OK);
    REFERENCE_TIME a = 0;
    REFERENCE_TIME b = 0;
    EXPECT_EQ(out->GetTime(&a, &b), VFW_E_SAMPLE_TIME_NOT_SET);
    EXPECT_EQ(out->IsSyncPoint(), S_OK);
    CMediaType type;
    EXPECT_EQ(out->GetMediaType(&type), S_OK);
    EXPECT_EQ(out->IsDiscontinuity(), S_FALSE);  // after the preroll's unclear answer
    EXPECT_EQ(samplesOf(outputMemory), numbered(2, 2));

    in->SetTime(&start, &stop);
    in->syncAnswer = E_UNEXPECTED;
    ASSERT_EQ(out->SetMediaType(nullptr), S_OK);
    ASSERT_EQ(graph.crop->Transform(in.get(), out.get()), S_OK);
    EXPECT_EQ(out->GetTime(&a, &b), S_OK);
    EXPECT_EQ(out->GetMediaType(&type), S_FALSE);
}

TEST(CropTransform, AShortInputSampleFails)
{
    CropGraph graph(4, 4);
    ASSERT_EQ(graph.connect(), S_OK);
    std::vector<uint8_t> input(4 * 4 * 4 - 1);
    std::vector<uint8_t> output(4 * 4 * 4);
    EXPECT_EQ(graph.crop->Transform(CMediaSample::Wrap(input).get(), CMediaSample::Wrap(output).get()), E_FAIL);
}

/// A frame of `rows` rows (2 samples wide) that is black but for one white picture row
/// `litRow` counted from the top; the frame is stored bottom-up.
Samples lineFrame(LONG rows, LONG litRow)
{
    Samples frame(size_t(rows) * 2, 0xFF000000u);
    const size_t storageRow = size_t(rows - 1 - litRow);
    frame[storageRow * 2] = frame[storageRow * 2 + 1] = 0xFFFFFFFFu;
    return frame;
}

/// The grey of each picture row (top first) of a 2-sample-wide bottom-up frame.
std::vector<int> greyOfRows(const Samples& frame)
{
    std::vector<int> grey;
    const size_t rows = frame.size() / 2;
    for (size_t r = 0; r < rows; ++r) grey.push_back(int(frame[(rows - 1 - r) * 2] & 0xFF));
    return grey;
}

TEST(CropTransform, AntiFlickerBlursAlongTheColumnsByTheHeightAndLevel)
{
    // On 480 rows the length is 4.8 times the level over 10, rounded up: level 10 gives 5
    // rows, each row averaging itself and the 4 rows above it, so a white line reaches
    // the 4 rows below it at a fifth of its brightness.
    CropGraph graph(2, 480);
    graph.crop->SetAntiFlickeringLevel(10);
    const auto grey = greyOfRows(graph.run(lineFrame(480, 100)));
    for (int r = 0; r < 480; ++r) EXPECT_EQ(grey[size_t(r)], r >= 100 && r <= 104 ? 51 : 0) << "row " << r;
}

TEST(CropTransform, AntiFlickerLevelsThatMakeARunOfOneOrLessChangeNothing)
{
    for (const int16_t level : {int16_t(-5), int16_t(0), int16_t(1), int16_t(2)}) {
        // 480 rows: level 1 gives 0.48 and level 2 0.96, both rounded up to 1.
        CropGraph graph(2, 480);
        graph.crop->SetAntiFlickeringLevel(level);
        const Samples frame = lineFrame(480, 7);
        EXPECT_EQ(graph.run(frame), frame) << "level " << level;
    }
    CropGraph graph(2, 480);
    graph.crop->SetAntiFlickeringLevel(3);  // 1.44: a run of 2, half the line below it
    const auto grey = greyOfRows(graph.run(lineFrame(480, 7)));
    EXPECT_EQ(grey[7], 128);
    EXPECT_EQ(grey[8], 128);
    EXPECT_EQ(grey[9], 0);
}

}  // namespace
}  // namespace qx
