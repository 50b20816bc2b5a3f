#pragma once
// The plain property accessors of dual interfaces: a get that copies a field out (E_POINTER
// for nowhere to write), and text fields handed out as new BSTRs.
#include "platform/com/Bstr.h"

#include <string_view>

namespace qx::com {

template <typename T>
HRESULT getProperty(const T& field, T* out)
{
    if (!out) return E_POINTER;
    *out = field;
    return S_OK;
}

/// A new BSTR holding `text`; E_OUTOFMEMORY when none can be made.
inline HRESULT newBstr(std::u16string_view text, BSTR* out)
{
    if (!out) return E_POINTER;
    *out = SysAllocStringLen(text.data(), UINT(text.size()));
    return *out ? S_OK : E_OUTOFMEMORY;
}

/// The characters of a BSTR; a null BSTR is the empty text.
inline std::u16string_view bstrView(BSTR text)
{
    return text ? std::u16string_view(text, SysStringLen(text)) : std::u16string_view();
}

}  // namespace qx::com
