#pragma once
// The external filter object of effect 10000. It is no part of this library: a host or a
// plug-in provides it under its class identifier. The effect host knows two of its
// methods: one that opens a filter by id and gives back a handle, and one that applies
// that filter to a bitmap handle.
#include "host/EffectCatalog.h"
#include "platform/com/Unknown.h"

namespace qx {

inline constexpr CLSID CLSID_ExternalFilterObject = guid("{EB570ABF-BD2A-4CAD-90C9-F1ADCCBB2CFB}");

struct IExternalFilter : IUnknown {
    static constexpr IID iid = guid("{C2123716-1449-4BD4-99ED-87B0356183B1}");
    /// Applies the filter opened as `filterHandle` to the bitmap (the ninth slot of the
    /// interface on Windows).
    virtual HRESULT ApplyFilter(DWORD filterHandle, imaging::BitmapHandle* bitmap, const LONG* params,
                                LONG paramCount) = 0;
    /// Opens filter `filterId` and writes its handle (the fifteenth slot on Windows).
    virtual HRESULT OpenFilter(LONG filterId, DWORD* filterHandle) = 0;
};

/// The image routine of effect 10000; `state` is the effect host. The progress is not
/// passed on.
HRESULT ExternalFilterImage(imaging::BitmapHandle* handle, double progress, const LONG* params, LONG paramCount,
                            void* state);

}  // namespace qx
