#include "platform/media/TransInPlaceFilter.h"

namespace qx::media {

namespace {

/// The output pin of an in-place filter: it offers the input's type, and the samples it
/// delivers are those that came in, so it decides no allocator.
class CTransInPlaceOutputPin final : public CTransformOutputPin {
public:
    using CTransformOutputPin::CTransformOutputPin;

    HRESULT GetMediaType(int iPosition, CMediaType* pMediaType) override
    {
        if (!pMediaType) return E_POINTER;
        if (iPosition < 0) return E_INVALIDARG;
        const CTransformInputPin& input = m_transform.InputPin();
        if (iPosition > 0 || !input.IsConnected()) return VFW_S_NO_MORE_ITEMS;
        *pMediaType = input.CurrentMediaType();
        return S_OK;
    }
    HRESULT CompleteConnect(CBasePin* pReceivePin) override
    {
        return m_transform.CompleteConnect(PINDIR_OUTPUT, pReceivePin);
    }
    HRESULT Active() override { return S_OK; }
};

}  // namespace

CTransInPlaceFilter::CTransInPlaceFilter(std::u16string name, const CLSID& clsid, bool bModifiesData)
    : CTransformFilter(std::move(name), clsid), m_bModifiesData(bModifiesData)
{
    m_pOutput = std::make_unique<CTransInPlaceOutputPin>(*this);
}

HRESULT CTransInPlaceFilter::CheckTransform(const CMediaType* mtIn, const CMediaType* mtOut)
{
    if (!mtIn || !mtOut) return E_POINTER;
    return *mtIn == *mtOut ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CTransInPlaceFilter::GetMediaType(int, CMediaType*) { return E_UNEXPECTED; }

HRESULT CTransInPlaceFilter::DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) { return E_UNEXPECTED; }

HRESULT CTransInPlaceFilter::Receive(IMediaSample* pSample)
{
    const HRESULT hr = Transform(pSample);
    if (hr == S_OK) {
        m_bSampleSkipped = false;
        return m_pOutput->Deliver(pSample);
    }
    if (hr == S_FALSE) {
        m_bSampleSkipped = true;
        return S_OK;
    }
    return hr;
}

}  // namespace qx::media
