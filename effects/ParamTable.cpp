#include "effects/ParamTable.h"

#include <algorithm>

namespace qx {

void WriteDefaults(ParamTable table, LONG* Params, LONG* nParams)
{
    const ParamList defaults = defaultList(table);
    if (Params) std::copy_n(defaults.values.begin(), defaults.count, Params);
    if (nParams) *nParams = defaults.count;
}

const char* kindName(ParamKind kind)
{
    switch (kind) {
    case ParamKind::Integer: return "integer";
    case ParamKind::Color: return "colour";
    case ParamKind::RectangleSide: return "rectangle side";
    case ParamKind::Percentage: return "percentage";
    case ParamKind::Boolean: return "boolean";
    }
    return "integer";
}

}  // namespace qx
