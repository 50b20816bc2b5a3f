#include "platform/com/ClassLoader.h"

#include <dlfcn.h>

namespace qx::com {

namespace {

using GetClassObjectEntry = HRESULT (*)(const CLSID&, const IID&, void**);

/// A version-independent ProgID leads to its current version in at most this many steps;
/// a registry whose CurVer entries form a loop names no class.
constexpr int kMaxCurVerSteps = 8;

}  // namespace

HRESULT CLSIDFromProgID(const RegistryFile& registry, std::string_view progId, CLSID& clsid)
{
    std::string name(progId);
    for (int step = 0; step < kMaxCurVerSteps && RegistryFile::isValidKey(name); ++step) {
        if (const auto text = registry.text(name + "\\CLSID")) {
            const auto parsed = parseGuid(*text);
            if (!parsed) return CO_E_CLASSSTRING;
            clsid = *parsed;
            return S_OK;
        }
        const auto current = registry.text(name + "\\CurVer");
        if (!current) break;
        name = *current;
    }
    return CO_E_CLASSSTRING;
}

HRESULT GetClassObject(const std::filesystem::path& registryPath, const CLSID& clsid, const IID& riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    RegistryFile registry;
    const HRESULT loaded = RegistryFile::load(registryPath, registry);
    if (loaded == HRESULT_FILE_NOT_FOUND) return REGDB_E_CLASSNOTREG;
    if (FAILED(loaded)) return loaded;
    const auto server = registry.text("CLSID\\" + formatGuid(clsid) + "\\InprocServer32");
    if (!server || server->empty()) return REGDB_E_CLASSNOTREG;
    // Never closed: a server of this kind stays in the process once loaded.
    void* module = ::dlopen(server->c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) return CO_E_DLLNOTFOUND;
    const auto entry = reinterpret_cast<GetClassObjectEntry>(::dlsym(module, "DllGetClassObject"));
    if (!entry) return CO_E_ERRORINDLL;
    return entry(clsid, riid, ppv);
}

HRESULT CreateInstance(const std::filesystem::path& registryPath, const CLSID& clsid, IUnknown* outer, const IID& riid,
                       void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    ComPtr<IClassFactory> factory;
    const HRESULT hr = GetClassObject(registryPath, clsid, IClassFactory::iid, reinterpret_cast<void**>(factory.out()));
    if (FAILED(hr)) return hr;
    return factory->CreateInstance(outer, riid, ppv);
}

}  // namespace qx::com
