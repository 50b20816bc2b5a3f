#include "host/ExternalFilter.h"

#include "platform/com/ClassRegistry.h"

namespace qx {

HRESULT ExternalFilterImage::open(LONG filterId)
{
    externalFilter.reset();
    externalObject.reset();
    HRESULT hr = CoCreateInstance(CLSID_ExternalFilterObject, nullptr, CLSCTX_ALL, IUnknown::iid,
                                  reinterpret_cast<void**>(externalObject.out()));
    if (FAILED(hr)) return hr;
    hr = externalObject->QueryInterface(IExternalFilter::iid, reinterpret_cast<void**>(externalFilter.out()));
    if (FAILED(hr)) return hr;
    if (!externalFilter) return E_NOINTERFACE;
    externalFilter->OpenFilter(filterId, &externalFilterHandle);  // its result is not used
    return S_OK;
}

HRESULT ExternalFilterImage::apply(imaging::BitmapHandle& handle, double, ParamValues params)
{
    if (!externalFilter) return E_FAIL;
    return externalFilter->ApplyFilter(externalFilterHandle, &handle, params.values.data(), params.count);
}

}  // namespace qx
