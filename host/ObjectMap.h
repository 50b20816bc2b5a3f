#pragma once
// The module's object map, in the form of ATL's: one row per class made by an ATL-style
// class factory, with what its registry script writes. A row for a class `C` (with its
// static `clsid` and `Create()`) is `objectEntry<C>({coclass, version, script})`.
#include "platform/com/ClassRegistry.h"

#include <span>
#include <string>

namespace qx {

/// What a class's registry script names: the coclass, whose description is "<coclass>
/// Class" and whose ProgIDs are "QXDynamicEffects.<coclass>" and that with ".<version>",
/// and the script's resource number.
struct CoclassScript {
    const char* coclass;
    int version;
    int resourceId;

    std::string description() const { return std::string(coclass) + " Class"; }
    std::string versionIndependentProgId() const { return std::string("QXDynamicEffects.") + coclass; }
    std::string progId() const { return versionIndependentProgId() + "." + std::to_string(version); }
};

using CreateInstanceFunction = HRESULT (*)(IUnknown* outer, const IID& riid, void** ppv);
/// Makes the class object of a row, which creates its objects with `creator`.
using GetClassObjectFunction = com::ComPtr<IClassFactory> (*)(CreateInstanceFunction creator);

/// The ATL-style class factory (CComClassFactory) over `creator`; null without memory.
com::ComPtr<IClassFactory> CreateClassFactory(CreateInstanceFunction creator);

struct ObjectMapEntry {
    const CLSID* pclsid;
    CoclassScript script;  // what the row's registry function writes
    GetClassObjectFunction pfnGetClassObject;
    CreateInstanceFunction pfnCreateInstance;
    const char* description = nullptr;
    const void* categoryMap = nullptr;
};

/// Makes a `T` alone, or inside `outer` (which then gets its inner IUnknown).
template <typename T>
HRESULT CreateObject(IUnknown* outer, const IID& riid, void** ppv)
{
    auto object = T::Create();
    if (!object) return E_OUTOFMEMORY;
    if (outer) {
        *ppv = object.detach()->aggregate(outer);
        return S_OK;
    }
    return object->QueryInterface(riid, ppv);
}

template <typename T>
constexpr ObjectMapEntry objectEntry(CoclassScript script)
{
    return {&T::clsid, script, &CreateClassFactory, &CreateObject<T>};
}

/// The module's rows.
std::span<const ObjectMapEntry> ObjectMap();

}  // namespace qx
