#pragma once
// The colour key: samples within a tolerance of a colour become transparent black.
#include "effects/EffectDescriptor.h"

namespace qx {

/// Either parameter at -1 sets no key, and the frame is drawn unchanged.
void ColorKeyFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);

namespace effect_id {
inline constexpr LONG kColorKey = 15;
}  // namespace effect_id

struct ColorKeyParam {
    enum Slot : int { kColor, kTolerance };
};

// The routine reads both values, yet the default list is empty: the editor gives them.
// Without them the list holds zeros, and black is keyed exactly.
inline constexpr std::array<ParamDescriptor, 2> kColorKeyParams{{
    {ColorKeyParam::kColor, "colour", "Key colour as a COLORREF (0x00BBGGRR); -1 sets no key", 0, -1, kMaxColorRef,
     ParamKind::Color},
    {ColorKeyParam::kTolerance, "tolerance",
     "Largest difference per channel from the key colour that is still keyed; -1 sets no key", 0, -1, 255,
     ParamKind::Integer},
}};

inline constexpr EffectDescriptor kColorKeyEffect{.id = effect_id::kColorKey,
                                                  .frameRoutine = plainRoutine<ColorKeyFrame>,
                                                  .category = category_id::kAdvanced,
                                                  .params = kColorKeyParams,
                                                  .defaultsListed = false};

}  // namespace qx
