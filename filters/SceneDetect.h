#pragma once
// CQXSceneDetect: a filter that an editor puts in a graph and plays a clip through. It
// passes YV12 video on untouched and, by comparing the histograms of each frame with
// those of the frame before, collects the times of the cuts, which GetScenes hands over
// when the run is over.
#include "platform/media/FilterSetup.h"
#include "platform/media/TransInPlaceFilter.h"
#include "platform/pixel/Histogram.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qx {

struct IQXSceneDetect : IUnknown {
    static constexpr IID iid = guid("{076B736D-E2F5-4F26-B048-5E046B84BEB6}");

    virtual HRESULT Reset() = 0;
    virtual HRESULT GetScenes(int64_t** Scenes, LONG* Count) = 0;

protected:
    ~IQXSceneDetect() = default;
};

class CQXSceneDetect final : public media::CTransInPlaceFilter, public IQXSceneDetect {
public:
    static constexpr CLSID clsid = guid("{DA50A963-4BB0-4257-8571-3016126133BB}");
    /// The filter's registration: one YV12 input and output.
    static const media::AMOVIESETUP_FILTER kSetup;
    /// What a cut's time adds to the graph's position: 0.1 second.
    static constexpr media::REFERENCE_TIME kCutOffset = 1000000;

    /// A new filter with one reference, which the caller owns; null when out of memory.
    static com::ComPtr<CQXSceneDetect> Create();

    HRESULT QueryInterface(const IID& riid, void** ppv) override
    {
        return CTransInPlaceFilter::QueryInterface(riid, ppv);
    }
    ULONG AddRef() override { return CTransInPlaceFilter::AddRef(); }
    ULONG Release() override { return CTransInPlaceFilter::Release(); }

    /// Forgets the last frame and the cuts found.
    HRESULT Reset() override;
    /// The cut times in the order found, in a block of task memory the caller frees:
    /// S_OK; S_FALSE with both arguments untouched when there is none; E_OUTOFMEMORY with
    /// a null block and the count untouched. The list stays, so the call can be repeated.
    HRESULT GetScenes(int64_t** Scenes, LONG* Count) override;

    HRESULT CheckInputType(const media::CMediaType* mtIn) override;
    /// Compares the frame with the last one; the sample goes on untouched (always S_OK).
    HRESULT Transform(media::IMediaSample* pSample) override;

    /// The sum over the bins of the differences of the histograms of `a` and `b`, each of
    /// `pixels` bytes counted in `bins` bins (1 to 256).
    static int32_t HistogramDistance(const uint8_t* a, const uint8_t* b, int32_t pixels, int32_t bins);

private:
    CQXSceneDetect();

    HRESULT queryExtraInterface(const IID& riid, void** ppv) override;
    /// Takes the first frame after a Reset: the plane sizes, and the frame as the last one.
    void takeFirstFrame(const uint8_t* current, int64_t available);
    bool IsCut(const uint8_t* current, const pixel::ByteHistogram& currentLuma) const;
    void appendCutAtGraphPosition();
    void keepAsPrevious(const uint8_t* current, const pixel::ByteHistogram& currentLuma);

    std::vector<int64_t> scenes;
    /// The last frame, as the comparison reads it: the histogram of its luma plane,
    /// which is all the luma comparison needs of it, and a copy of its two chroma planes.
    /// Null before the first frame.
    std::unique_ptr<uint8_t[]> previous;
    pixel::ByteHistogram previousLuma{};
    int32_t binsY = 16;
    int32_t binsA = 16;
    int32_t binsB = 16;
    double hardThreshold = 0.35;
    double softThreshold = 0.5;
    int32_t lumaSize = 0;
    int32_t chromaSize = 0;
};

}  // namespace qx
