#include "filters/SceneDetect.h"

#include "platform/com/TaskMemory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace qx {

using namespace media;

namespace {

const AMOVIESETUP_MEDIATYPE kPinTypes[] = {{&MEDIATYPE_Video, &MEDIASUBTYPE_YV12}};

const AMOVIESETUP_PIN kPins[] = {
    {u"Input", false, false, false, false, &GUID_NULL, nullptr, 1, kPinTypes},
    {u"Output", false, true, false, false, &GUID_NULL, nullptr, 1, kPinTypes},
};

/// The largest luma plane taken, in bytes: a distance, which reaches twice the plane,
/// stays within its 32-bit count.
constexpr int64_t kMaxLumaSize = INT32_MAX / 2;

int32_t distance(const pixel::ByteHistogram& a, const pixel::ByteHistogram& b, int32_t bins)
{
    int32_t sum = 0;
    for (size_t k = 0; k < size_t(bins); ++k) sum += std::abs(a[k] - b[k]);
    return sum;
}

}  // namespace

const AMOVIESETUP_FILTER CQXSceneDetect::kSetup = {&CQXSceneDetect::clsid, u"QXSceneDetect", 0x200000, 2, kPins};

com::ComPtr<CQXSceneDetect> CQXSceneDetect::Create()
{
    return com::ComPtr<CQXSceneDetect>(new (std::nothrow) CQXSceneDetect());
}

// Made with the flag that it may modify data, as the in-place base takes it; its
// Transform only reads.
CQXSceneDetect::CQXSceneDetect() : CTransInPlaceFilter(u"QXSceneDetect", clsid, true) {}

HRESULT CQXSceneDetect::queryExtraInterface(const IID& riid, void** ppv)
{
    if (riid != IQXSceneDetect::iid) return E_NOINTERFACE;
    *ppv = static_cast<IQXSceneDetect*>(this);
    AddRef();
    return S_OK;
}

HRESULT CQXSceneDetect::Reset()
{
    previous.reset();
    scenes.clear();
    return S_OK;
}

HRESULT CQXSceneDetect::GetScenes(int64_t** Scenes, LONG* Count)
{
    if (scenes.empty()) return S_FALSE;
    if (!Scenes || !Count) return E_POINTER;
    auto* block = static_cast<int64_t*>(CoTaskMemAlloc(scenes.size() * sizeof(int64_t)));
    *Scenes = block;
    if (!block) return E_OUTOFMEMORY;
    std::copy(scenes.begin(), scenes.end(), block);
    *Count = LONG(scenes.size());
    return S_OK;
}

HRESULT CQXSceneDetect::CheckInputType(const CMediaType* mtIn)
{
    if (!mtIn) return E_POINTER;
    const bool yv12 = mtIn->majortype == MEDIATYPE_Video && mtIn->formattype == FORMAT_VideoInfo &&
                      mtIn->subtype == MEDIASUBTYPE_YV12;
    // The frame size is read from the format block, which must hold a whole header.
    return yv12 && mtIn->VideoInfo() ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

int32_t CQXSceneDetect::HistogramDistance(const uint8_t* a, const uint8_t* b, int32_t pixels, int32_t bins)
{
    if (pixels <= 0 || bins < 1 || bins > 256 || pixels > kMaxLumaSize) return 0;
    const auto countsA = pixel::countBins({a, size_t(pixels)}, bins);
    const auto countsB = pixel::countBins({b, size_t(pixels)}, bins);
    return distance(countsA, countsB, bins);
}

HRESULT CQXSceneDetect::Transform(IMediaSample* pSample)
{
    BYTE* current = nullptr;
    if (!pSample || FAILED(pSample->GetPointer(&current)) || !current) return S_OK;
    const int64_t available = pSample->GetActualDataLength();
    if (!previous) {
        takeFirstFrame(current, available);
        return S_OK;
    }
    // The sizes stay those of the first frame: a later change of type goes unnoticed.
    // A frame too short for those planes is passed on without being compared.
    if (available < int64_t(lumaSize) + 2 * int64_t(chromaSize)) return S_OK;
    const auto currentLuma = pixel::countBins({current, size_t(lumaSize)}, binsY);
    if (IsCut(current, currentLuma) && m_pGraph) appendCutAtGraphPosition();
    keepAsPrevious(current, currentLuma);
    return S_OK;
}

// The first frame is no cut. The planes are taken from the input's current type: luma
// of width times height bytes, then two chroma planes of a quarter of that each.
void CQXSceneDetect::takeFirstFrame(const uint8_t* current, int64_t available)
{
    const auto info = m_pInput->CurrentMediaType().VideoInfo();
    if (!info) return;
    const int64_t luma = int64_t(info->bmiHeader.biWidth) * int64_t(info->bmiHeader.biHeight);
    // A size that is not positive, or planes longer than the sample, cannot be taken.
    if (luma <= 0 || luma > kMaxLumaSize || available < luma + 2 * (luma >> 2)) return;
    lumaSize = int32_t(luma);
    chromaSize = lumaSize >> 2;
    previous.reset(new (std::nothrow) uint8_t[size_t(2) * size_t(chromaSize)]);
    if (!previous) return;
    keepAsPrevious(current, pixel::countBins({current, size_t(lumaSize)}, binsY));
}

// With the thresholds as they are made, a distance above the soft one is above the hard
// one too, so the chroma comparison is never reached; it stays, as the filter has it.
bool CQXSceneDetect::IsCut(const uint8_t* current, const pixel::ByteHistogram& currentLuma) const
{
    const int32_t d = distance(previousLuma, currentLuma, binsY);
    const auto hard = int32_t(lumaSize * hardThreshold);
    if (d > hard) return true;
    const auto soft = int32_t(lumaSize * softThreshold);
    if (d <= soft) return false;
    const uint8_t* previousA = previous.get();
    const uint8_t* currentA = current + lumaSize;
    if (HistogramDistance(previousA, currentA, chromaSize, binsA) > (soft >> 2)) return true;
    return HistogramDistance(previousA + chromaSize, currentA + chromaSize, chromaSize, binsB) > (soft >> 2);
}

// The time is the graph's position, not the sample's time stamp, plus 0.1 second. A
// graph without a seeking interface drops the cut; the position is taken as the call
// leaves it (0 when it fails).
void CQXSceneDetect::appendCutAtGraphPosition()
{
    com::ComPtr<IMediaSeeking> seeking;
    if (FAILED(m_pGraph->QueryInterface(IMediaSeeking::iid, reinterpret_cast<void**>(seeking.out())))) return;
    LONGLONG position = 0;
    seeking->GetCurrentPosition(&position);
    try {
        scenes.push_back(int64_t(uint64_t(position) + uint64_t(kCutOffset)));  // wraps like the 64-bit sum
    } catch (const std::bad_alloc&) {
        // Out of memory: the cut is dropped, as a failed query drops it.
    }
}

void CQXSceneDetect::keepAsPrevious(const uint8_t* current, const pixel::ByteHistogram& currentLuma)
{
    previousLuma = currentLuma;
    std::memcpy(previous.get(), current + lumaSize, size_t(2) * size_t(chromaSize));
}

}  // namespace qx
