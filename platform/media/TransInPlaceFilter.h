#pragma once
// The in-place transform filter: each sample is worked on where it lies and passed on as
// it is, so the output's type is the input's, always. The output pin proposes the input's
// type and takes no other; it needs no buffers of its own. A filter writes
// CheckInputType and the one-sample Transform.
#include "platform/media/TransformFilter.h"

namespace qx::media {

class CTransInPlaceFilter : public CTransformFilter {
public:
    /// The copying Transform of the base stays in view beside the one that works in place.
    using CTransformFilter::Transform;
    /// Works on `pSample` in place. S_OK passes it on, S_FALSE drops it.
    virtual HRESULT Transform(IMediaSample* pSample) = 0;

    /// The output's type is the input's: the same type is accepted, none other.
    HRESULT CheckTransform(const CMediaType* mtIn, const CMediaType* mtOut) override;
    /// Never asked: the output pin proposes the input's type itself.
    HRESULT GetMediaType(int iPosition, CMediaType* pMediaType) override;
    /// Never asked: samples pass through, so the output has no allocator.
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pProperties) override;

    HRESULT Receive(IMediaSample* pSample) override;

    /// Whether Transform may change the samples' data, as the filter was made. A host
    /// whose buffers are shared must give such a filter writable copies.
    bool ModifiesData() const { return m_bModifiesData; }

protected:
    CTransInPlaceFilter(std::u16string name, const CLSID& clsid, bool bModifiesData);

private:
    const bool m_bModifiesData;
};

}  // namespace qx::media
