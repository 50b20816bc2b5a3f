#include "host/ComClassFactory.h"

#include <atomic>
#include <new>

namespace qx {

namespace {

/// The module's lock count; nothing reads it, as the module stays loaded anyway.
std::atomic<LONG> moduleLocks{0};

}  // namespace

com::ComPtr<CComClassFactory> CComClassFactory::Create(CreateInstanceFunction creator)
{
    return com::ComPtr<CComClassFactory>(new (std::nothrow) CComClassFactory(creator));
}

com::ComPtr<IClassFactory> CreateClassFactory(CreateInstanceFunction creator)
{
    return CComClassFactory::Create(creator).get();
}

HRESULT CComClassFactory::CreateInstance(IUnknown* outer, const IID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    // An outer object may only ask for the inner IUnknown. The module answers
    // E_NOINTERFACE here as its template factory does, for every class alike.
    if (outer && riid != IUnknown::iid) return E_NOINTERFACE;
    return m_pfnCreateInstance(outer, riid, ppv);
}

HRESULT CComClassFactory::LockServer(bool lock)
{
    if (lock) {
        ++moduleLocks;
    } else {
        --moduleLocks;
    }
    return S_OK;
}

}  // namespace qx
