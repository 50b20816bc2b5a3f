#include "host/MyClassFactory.h"

#include <new>

namespace qx {

namespace {

/// The module-wide count of LockServer. Nothing reads it: the module stays loaded anyway.
std::atomic<LONG> serverLocks{0};

}  // namespace

CMyClassFactory* CMyClassFactory::Create(const CFactoryTemplate* row)
{
    return new (std::nothrow) CMyClassFactory(row);
}

HRESULT CMyClassFactory::QueryInterface(const IID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    if (riid != IUnknown::iid && riid != IClassFactory::iid) return E_NOINTERFACE;
    *ppv = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}

ULONG CMyClassFactory::AddRef() { return ++m_cRef; }

ULONG CMyClassFactory::Release()
{
    const ULONG left = --m_cRef;
    if (left == 0) delete this;
    return left;
}

HRESULT CMyClassFactory::CreateInstance(IUnknown* outer, const IID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    // An outer object may only ask for the inner IUnknown, which it keeps.
    if (outer && riid != IUnknown::iid) return E_NOINTERFACE;
    HRESULT hr = S_OK;
    IUnknown* object = m_pTemplate->m_lpfnNew(outer, &hr);
    if (!object) return SUCCEEDED(hr) ? E_OUTOFMEMORY : hr;
    if (FAILED(hr)) {
        object->Release();
        return hr;
    }
    // The creator's reference plays the non-delegating AddRef: the object lives past the
    // query only if the query took a reference of its own.
    hr = object->QueryInterface(riid, ppv);
    object->Release();
    return hr;
}

HRESULT CMyClassFactory::LockServer(bool lock)
{
    if (lock) {
        ++serverLocks;
    } else {
        --serverLocks;
    }
    return S_OK;
}

}  // namespace qx
