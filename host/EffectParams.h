#pragma once
// The parameter list of an effect: at most 16 signed integers, which travel as text, each
// value in decimal followed by one semicolon ("100;100;900;900;").
#include "effects/EffectDescriptor.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qx {

/// Reads the text form. Each semicolon ends one value, read with `_wtol` (so an empty
/// field is 0 and "12abc" is 12); text after the last semicolon is dropped. Nothing when
/// the text holds more than 16 semicolons.
std::optional<ParamList> parseParams(std::u16string_view text);

/// The text form of `values`.
std::u16string formatParams(std::span<const LONG> values);

/// The default list of an effect, from its table; empty for an effect that leaves its
/// values to the editor. Scene effects report their client's list instead.
ParamList defaultParams(const EffectDescriptor& effect);

}  // namespace qx
