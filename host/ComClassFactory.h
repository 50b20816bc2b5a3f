#pragma once
// The class factory of the object map's classes, in the form of ATL's CComClassFactory:
// one per row, made at the first request and kept by the module, creating objects with
// the row's instance creator.
#include "host/ObjectMap.h"

namespace qx {

class CComClassFactory final : public com::ComObject<IClassFactory> {
public:
    static com::ComPtr<CComClassFactory> Create(CreateInstanceFunction creator);

    HRESULT CreateInstance(IUnknown* outer, const IID& riid, void** ppv) override;
    HRESULT LockServer(bool lock) override;

private:
    explicit CComClassFactory(CreateInstanceFunction creator) : m_pfnCreateInstance(creator) {}

    CreateInstanceFunction m_pfnCreateInstance;
};

}  // namespace qx
