#pragma once
// The parameter list of an effect: at most 16 signed integers, which travel as text, each
// value in decimal followed by one semicolon ("100;100;900;900;").
#include "platform/com/HResult.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qx {

inline constexpr LONG kMaxParams = 16;

struct ParamList {
    std::array<LONG, kMaxParams> values{};
    LONG count = 0;
};

/// Reads the text form. Each semicolon ends one value, read with `_wtol` (so an empty
/// field is 0 and "12abc" is 12); text after the last semicolon is dropped. Nothing when
/// the text holds more than 16 semicolons.
std::optional<ParamList> parseParams(std::u16string_view text);

/// The text form of `values`.
std::u16string formatParams(std::span<const LONG> values);

/// The default list of the effects below id 2000 and of the video effects (2000 to 4999);
/// an id without defaults gives the empty list.
ParamList defaultParams(LONG effectId);

}  // namespace qx
