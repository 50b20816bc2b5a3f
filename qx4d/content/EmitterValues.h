#pragma once
// The value forms of emitter files: ranges of one, two and three axes, vectors, colour and
// byte ranges, each a string of numbers split on its own separators. A string that holds
// fewer numbers than its form needs leaves the value as it was: the pieces that are there
// are not enough to tell which is which.
#include "qx4d/core/Matrix.h"
#include "qx4d/core/String.h"

#include <array>
#include <cstdint>

namespace qx4d {

/// Two numbers, `min` and `max`; a value from it is (`max` - `min`) * r + `min`.
struct FloatRange {
    float min = 0.0f;
    float max = 0.0f;
};

/// One range an axis: X, Y (and Z).
using FloatRange2 = std::array<FloatRange, 2>;
using FloatRange3 = std::array<FloatRange, 3>;

/// A colour channel's range as spawning draws it: `base` + rand() % `span`.
struct ChannelRange {
    int32_t base = 255;
    int32_t span = 1;
};

/// Red, green, blue, alpha.
using ColorRange = std::array<ChannelRange, 4>;

/// A small count's range: `min` and `span` = larger - `min`.
struct ByteRange {
    uint8_t min = 0;
    uint8_t span = 0;
};

/// The separators of ranges, of `vectorp` and of four-number factors: ", ()".
inline constexpr const char16_t* kRangeSeparators = u", ()";
/// The separators of colour ranges, byte ranges and integer lists: ", ".
inline constexpr const char16_t* kListSeparators = u", ";
/// The separator of `vector`: a blank alone.
inline constexpr const char16_t* kBlank = u" ";

/// `range`: "1 2", "1, 2" and "(1, 2)" are equal.
void ParseRange(const String& text, FloatRange& out);
/// `range2`: X min, X max, Y min, Y max.
void ParseRange2(const String& text, FloatRange2& out);
/// `range3`: X, Y and Z pairs.
void ParseRange3(const String& text, FloatRange3& out);
/// Three numbers split on `separators` (`vector` and `vectorp`).
void ParseFloat3(const String& text, const char16_t* separators, Float3& out);
/// Four numbers split on ", ()".
void ParseFloat4(const String& text, std::array<float, 4>& out);
/// Up to eight integers: red, green, blue pairs and an optional alpha pair. Each pair
/// stores its smaller value as `base` and larger - smaller + 1 as `span`; without alpha
/// the alpha channel is 255 with a span of 1.
void ParseColorRange(const String& text, ColorRange& out);
/// Two integers: the smaller as `min`, the difference as `span` (low 8 bits of each).
void ParseByteRange(const String& text, ByteRange& out);

}  // namespace qx4d
