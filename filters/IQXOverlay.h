#pragma once
// The overlay's dual interface: the members of IDXEffect and nothing of its own.
#include "platform/transform/Transform.h"

namespace qx {

struct IQXOverlay : transform::IDXEffect {
    static constexpr IID iid = guid("{A69ABC00-03E9-423A-AE17-1144D08603CD}");
};

}  // namespace qx
