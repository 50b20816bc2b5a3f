#pragma once
// The external filter object of effect 10000. It is no part of this library: a host or a
// plug-in provides it under its class identifier. The effect host knows two of its
// methods: one that opens a filter by id and gives back a handle, and one that applies
// that filter to a bitmap handle.
#include "effects/EffectDescriptor.h"
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

/// The object of effect 10000: the external object, its filter interface and the handle
/// of the filter it opened. Until it is opened every frame fails inside, and the host then
/// packs the frame as it was.
class ExternalFilterImage final : public ImageRoutine {
public:
    /// Creates the external object and opens filter `filterId` (FilterID) with it; the
    /// status of the creation or of the query for the filter interface.
    HRESULT open(LONG filterId);
    /// Hands the handle to the filter with the list; the progress is not passed on.
    HRESULT apply(imaging::BitmapHandle& handle, double progress, ParamValues params) override;

private:
    // The filter interface is released before the object, in this order of members.
    com::ComPtr<IUnknown> externalObject;
    com::ComPtr<IExternalFilter> externalFilter;
    DWORD externalFilterHandle = 0;
};

namespace effect_id {
inline constexpr LONG kExternalFilter = 10000;
}  // namespace effect_id

inline constexpr EffectDescriptor kExternalFilterEffect{.id = effect_id::kExternalFilter,
                                                        .imageRoutine = routineObject<ExternalFilterImage>,
                                                        .category = category_id::kAdvanced};

}  // namespace qx
