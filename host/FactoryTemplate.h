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

struct CFactoryTemplate {
    const char16_t* m_Name;
    const CLSID* m_ClsID;
    LPFNNewCOMObject m_lpfnNew;
    LPFNInitRoutine m_lpfnInit;
    const media::AMOVIESETUP_FILTER* m_pAMovieSetup_Filter;
};

}  // namespace qx
