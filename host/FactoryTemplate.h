#pragma once
// A row of the module's table of DirectShow-style class factory templates: a class made
// by a plain creator and registered with its filter set-up data.
#include "platform/com/Unknown.h"
#include "platform/media/FilterSetup.h"

namespace qx {

/// Makes a new object inside `outer` (or alone when null), setting `*phr` on failure.
/// Gives the object's non-delegating IUnknown holding the one reference of its creator.
using LPFNNewCOMObject = IUnknown* (*)(IUnknown* outer, HRESULT* phr);
/// Called once as the module attaches to the process (true) and as it leaves (false).
using LPFNInitRoutine = void (*)(bool loading, const CLSID* clsid);

/// The creator of a class `T` with a static `Create()`: the object alone, or inside
/// `outer`, as the template factory expects it.
template <typename T>
IUnknown* NewObject(IUnknown* outer, HRESULT* phr)
{
    auto object = T::Create();
    if (!object) {
        *phr = E_OUTOFMEMORY;
        return nullptr;
    }
    T* created = object.detach();
    if (outer) return created->aggregate(outer);
    void* identity = nullptr;
    created->InternalQueryInterface(IUnknown::iid, &identity);
    created->InternalRelease();  // the identity's reference stays, as the creator's
    return static_cast<IUnknown*>(identity);
}

struct CFactoryTemplate {
    const char16_t* m_Name;
    const CLSID* m_ClsID;
    LPFNNewCOMObject m_lpfnNew;
    LPFNInitRoutine m_lpfnInit;
    const media::AMOVIESETUP_FILTER* m_pAMovieSetup_Filter;
};

}  // namespace qx
