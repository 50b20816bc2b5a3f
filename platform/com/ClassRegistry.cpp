#include "platform/com/ClassRegistry.h"

#include <map>
#include <mutex>
#include <tuple>

namespace qx {

namespace {

struct GuidLess {
    bool operator()(const GUID& a, const GUID& b) const
    {
        return std::tie(a.Data1, a.Data2, a.Data3, a.Data4) < std::tie(b.Data1, b.Data2, b.Data3, b.Data4);
    }
};

struct Registry {
    std::mutex lock;
    std::map<CLSID, com::ComPtr<IClassFactory>, GuidLess> classes;
};

Registry& registry()
{
    static Registry instance;
    return instance;
}

}  // namespace

HRESULT CoRegisterClassObject(const CLSID& clsid, IClassFactory* factory)
{
    if (!factory) return E_POINTER;
    auto& r = registry();
    std::lock_guard guard(r.lock);
    r.classes[clsid] = com::ComPtr<IClassFactory>(factory);
    return S_OK;
}

HRESULT CoRevokeClassObject(const CLSID& clsid)
{
    auto& r = registry();
    std::lock_guard guard(r.lock);
    return r.classes.erase(clsid) ? S_OK : E_INVALIDARG;
}

HRESULT CoCreateInstance(const CLSID& clsid, IUnknown* outer, DWORD, const IID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    com::ComPtr<IClassFactory> factory;
    {
        auto& r = registry();
        std::lock_guard guard(r.lock);
        const auto it = r.classes.find(clsid);
        if (it == r.classes.end()) return REGDB_E_CLASSNOTREG;
        factory = it->second;
    }
    return factory->CreateInstance(outer, riid, ppv);
}

}  // namespace qx
