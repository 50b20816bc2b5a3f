#include "host/ExternalFilter.h"

#include "host/DynamicEffect.h"

namespace qx {

HRESULT ExternalFilterImage(imaging::BitmapHandle* handle, double, const LONG* params, LONG paramCount, void* state)
{
    const auto* host = static_cast<const CQXDynamicEffect*>(state);
    if (!host || !host->ExternalFilter()) return E_FAIL;
    return host->ExternalFilter()->ApplyFilter(host->ExternalFilterHandle(), handle, params, paramCount);
}

}  // namespace qx
