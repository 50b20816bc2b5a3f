#pragma once
// Makes the stateful frame effect of an effect id for frames of a given size.
#include "effects/VideoEffect.h"

#include <memory>

namespace qx {

/// Stores a new effect in `slot` for an id whose descriptor makes one (2000 and 2001); for
/// any other id leaves it as it was. Returns whether it made one.
bool CreateVideoEffect(LONG width, LONG height, std::unique_ptr<CVideoEffect>& slot, LONG id);

}  // namespace qx
