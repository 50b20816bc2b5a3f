// Feeds arbitrary bytes to the streaming filters as a host would hand them: a media type
// with any format block, the filter's settings, and samples of any length. Whatever the
// type says about the frames, no filter may read or write outside a sample.
//
// Layout of an input: byte 0 picks the filter (even: crop, odd: scene detection); bytes
// 1 to 6 are the crop's width, height (each 0 to 63) and anti-flicker level; byte 7 the
// length of the format block (0 to 255) that follows; byte 8 the subtype (RGB32, ARGB32,
// YV12 or another); the rest is cut into samples of the length its first byte gives.
#include "filters/CropTransform.h"
#include "filters/SceneDetect.h"
#include "platform/com/TaskMemory.h"
#include "platform/media/HostFilters.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace {

using namespace qx;
using namespace qx::media;

constexpr size_t kHeaderBytes = 9;
// Frames the crop may be asked to make from a type's own size; larger ones are left out
// so that a run stays small.
constexpr int64_t kMaxOutputBytes = 1 << 22;

const GUID& subtypeOf(uint8_t choice)
{
    static const GUID kOther{0x12345678};
    switch (choice % 4) {
    case 0: return MEDIASUBTYPE_RGB32;
    case 1: return MEDIASUBTYPE_ARGB32;
    case 2: return MEDIASUBTYPE_YV12;
    default: return kOther;
    }
}

CMediaType typeOf(std::span<const uint8_t> format, uint8_t subtype)
{
    CMediaType type;
    type.majortype = MEDIATYPE_Video;
    type.subtype = subtypeOf(subtype);
    type.formattype = FORMAT_VideoInfo;
    type.SetFormat(format);
    return type;
}

/// Runs `filter` on `samples` in a graph of host ends; the sink drops what it gets.
void play(CTransformFilter& filter, const CMediaType& type, std::span<const uint8_t> samples)
{
    const auto source = CHostSource::Create(type, 0, 0);
    const auto sink = CHostSink::Create([](const CMediaType&) { return S_OK; }, [](IMediaSample&) { return S_OK; });
    if (source->Output().Connect(&filter.InputPin(), nullptr) != S_OK) return;
    if (filter.OutputPin().Connect(&sink->Input(), nullptr) != S_OK) return;
    sink->Run(0);
    filter.Run(0);
    source->Run(0);
    std::vector<uint8_t> buffer;
    while (!samples.empty()) {
        const size_t length = std::min<size_t>(samples.size(), size_t(samples[0]) * 16 + 1);
        buffer.assign(samples.begin(), samples.begin() + std::ptrdiff_t(length));  // exact size, so overruns show
        source->Deliver(CMediaSample::Wrap(buffer).get());
        samples = samples.subspan(length);
    }
    filter.Stop();
    filter.InputPin().Disconnect();
    filter.OutputPin().Disconnect();
}

/// A graph whose position moves with each question, so that cuts are kept.
class MovingGraph final : public com::ComObject<IFilterGraph, IMediaSeeking> {
public:
    HRESULT GetCurrentPosition(LONGLONG* pCurrent) override
    {
        *pCurrent = position_ += 400000;
        return S_OK;
    }

private:
    LONGLONG position_ = 0;
};

bool outputTooLarge(const CMediaType& type, LONG width, LONG height)
{
    const auto info = type.VideoInfo();
    if (!info) return false;
    // Sides of 32 bits, either sign (a negative height is a top-down frame): their
    // product holds in 64 bits, four bytes a sample might not.
    const int64_t w = width ? width : info->bmiHeader.biWidth;
    const int64_t h = height ? height : info->bmiHeader.biHeight;
    return std::abs(w) * std::abs(h) > kMaxOutputBytes / 4;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::span<const uint8_t> input(data, size);
    if (input.size() < kHeaderBytes) return 0;
    const size_t formatLength = std::min<size_t>(input[7], input.size() - kHeaderBytes);
    const CMediaType type = typeOf(input.subspan(kHeaderBytes, formatLength), input[8]);
    const auto samples = input.subspan(kHeaderBytes + formatLength);
    if (input[0] % 2 == 0) {
        const auto crop = CQXCropTransform::Create();
        const LONG width = input[1] % 64;
        const LONG height = input[2] % 64;
        if (outputTooLarge(type, width, height)) return 0;
        crop->PutSize(width, height);
        crop->SetAntiFlickeringLevel(int16_t(input[3] | input[4] << 8));
        play(*crop.get(), type, samples);
    } else {
        const auto detect = CQXSceneDetect::Create();
        const com::ComPtr<MovingGraph> graph(new MovingGraph);
        detect->JoinFilterGraph(graph.get(), nullptr);
        play(*detect.get(), type, samples);
        int64_t* scenes = nullptr;
        LONG count = 0;
        if (detect->GetScenes(&scenes, &count) == S_OK) CoTaskMemFree(scenes);
    }
    return 0;
}
