#pragma once
// Fades through a colour: the colour of the parameter list (a COLORREF, black by default)
// covers the frame with an opacity that follows the progress.
#include "effects/EffectDescriptor.h"

namespace qx {

/// "Apparition en fondu": the colour covers the frame at the start and is gone at the end.
void FadeInFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);
/// "Disparition en fondu": the reverse.
void FadeOutFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params);

namespace effect_id {
inline constexpr LONG kFadeIn = 7;
inline constexpr LONG kFadeOut = 8;
}  // namespace effect_id

struct FadeParam {
    enum Slot : int { kColor };
};

inline constexpr std::array<ParamDescriptor, 1> kFadeParams{{
    {FadeParam::kColor, "colour", "Colour the frame fades from or to, as a COLORREF (0x00BBGGRR)", 0, 0, kMaxColorRef,
     ParamKind::Color, "Couleur du fondu"},
}};

inline constexpr EffectDescriptor kFadeInEffect{.id = effect_id::kFadeIn,
                                                .nameStringId = 108,
                                                .frameRoutine = plainRoutine<FadeInFrame>,
                                                .hasDialog = 1,
                                                .params = kFadeParams};
inline constexpr EffectDescriptor kFadeOutEffect{.id = effect_id::kFadeOut,
                                                 .nameStringId = 109,
                                                 .frameRoutine = plainRoutine<FadeOutFrame>,
                                                 .hasDialog = 1,
                                                 .params = kFadeParams};

}  // namespace qx
