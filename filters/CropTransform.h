#pragma once
// CQXCropTransform: a transform filter for 32-bit RGB video that puts every input frame
// in the centre of a black frame of a fixed size, and can soften the picture against
// interlace flicker by a vertical blur. The output size is the one set with PutSize, or
// the input's size where PutSize left a side at 0. The filter pads; it does not scale.
#include "platform/media/FilterSetup.h"
#include "platform/media/TransformFilter.h"

#include <cstdint>

namespace qx {

struct IQXCropTransform : IUnknown {
    static constexpr IID iid = guid("{CAA6A444-2E84-4374-BEB1-D2769DCAC94C}");

    virtual HRESULT PutSize(LONG nWidth, LONG nHeight) = 0;
    virtual HRESULT SetAntiFlickeringLevel(int16_t Level) = 0;
    virtual HRESULT PutAspectRatio(float fAspectRatio) = 0;
    virtual HRESULT PutOutputSize(LONG nOutWidth, LONG nOutHeight) = 0;

protected:
    ~IQXCropTransform() = default;
};

class CQXCropTransform final : public media::CTransformFilter, public IQXCropTransform {
public:
    static constexpr CLSID clsid = guid("{47B46FED-2816-4215-8C15-3B7BA3EBE927}");
    /// The filter's registration: one RGB32 or ARGB32 input and output.
    static const media::AMOVIESETUP_FILTER kSetup;

    /// A new filter with one reference, which the caller owns; null when out of memory.
    static com::ComPtr<CQXCropTransform> Create();

    HRESULT QueryInterface(const IID& riid, void** ppv) override { return CTransformFilter::QueryInterface(riid, ppv); }
    ULONG AddRef() override { return CTransformFilter::AddRef(); }
    ULONG Release() override { return CTransformFilter::Release(); }

    // IQXCropTransform: plain stores; every member returns S_OK.
    HRESULT PutSize(LONG nWidth, LONG nHeight) override;
    HRESULT SetAntiFlickeringLevel(int16_t Level) override;
    HRESULT PutAspectRatio(float fAspectRatio) override;
    HRESULT PutOutputSize(LONG nOutWidth, LONG nOutHeight) override;

    HRESULT CheckInputType(const media::CMediaType* mtIn) override;
    HRESULT CheckTransform(const media::CMediaType* mtIn, const media::CMediaType* mtOut) override;
    HRESULT DecideBufferSize(media::IMemAllocator* pAllocator, media::ALLOCATOR_PROPERTIES* pProperties) override;
    HRESULT GetMediaType(int iPosition, media::CMediaType* pMediaType) override;
    HRESULT SetMediaType(media::PIN_DIRECTION direction, const media::CMediaType* pmt) override;
    HRESULT Transform(media::IMediaSample* pIn, media::IMediaSample* pOut) override;

    /// The output size as it stands: what PutSize stored, with a side of 0 replaced by
    /// the input's once the output type was worked out.
    LONG Width() const { return width; }
    LONG Height() const { return height; }

private:
    CQXCropTransform();

    HRESULT queryExtraInterface(const IID& riid, void** ppv) override;
    /// The output test: an accepted type whose frames have the set size.
    bool isOutputOfSetSize(const media::CMediaType& type);
    /// The output type from the input's, as GetMediaType and SetMediaType work it out.
    media::CMediaType outputTypeFromInput();

    LONG width = 0;
    LONG height = 0;
    int16_t antiFlickeringLevel = 0;
    float aspectRatio = 0.0f;
    LONG outputWidth = 0;
    LONG outputHeight = 0;
    media::CMediaType outputType;
};

}  // namespace qx
