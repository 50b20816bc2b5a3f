#pragma once
// The colour effects: each is one operation of the imaging layer on the bitmap handle,
// with an argument that follows the progress. They take no parameters.
#include "effects/EffectDescriptor.h"

namespace qx {

/// "Spectre de couleurs": the hue turns once round the circle.
HRESULT SpectrumImage(imaging::BitmapHandle& handle, double progress, ParamValues params);
/// "Coloriser": a tint that goes once round the colour circle.
HRESULT ColorizeImage(imaging::BitmapHandle& handle, double progress, ParamValues params);
/// "Saturation, +": the colour comes in, from grey to the picture.
HRESULT SaturationUpImage(imaging::BitmapHandle& handle, double progress, ParamValues params);
/// "Saturation, -": the colour goes out, from the picture to grey.
HRESULT SaturationDownImage(imaging::BitmapHandle& handle, double progress, ParamValues params);

/// The tint of "Coloriser" at `progress`: red, green and blue in thousandths.
struct TintThousandths {
    LONG red;
    LONG green;
    LONG blue;
};
TintThousandths colorizeTint(double progress);

namespace effect_id {
inline constexpr LONG kSpectrum = 10;
inline constexpr LONG kColorize = 11;
inline constexpr LONG kSaturationUp = 13;
inline constexpr LONG kSaturationDown = 14;
}  // namespace effect_id

inline constexpr EffectDescriptor kSpectrumEffect{.id = effect_id::kSpectrum,
                                                  .nameStringId = 111,
                                                  .imageRoutine = plainRoutine<SpectrumImage>,
                                                  .category = category_id::kAdvanced};
inline constexpr EffectDescriptor kColorizeEffect{.id = effect_id::kColorize,
                                                  .nameStringId = 112,
                                                  .imageRoutine = plainRoutine<ColorizeImage>,
                                                  .category = category_id::kAdvanced};
inline constexpr EffectDescriptor kSaturationUpEffect{.id = effect_id::kSaturationUp,
                                                      .nameStringId = 125,
                                                      .imageRoutine = plainRoutine<SaturationUpImage>,
                                                      .category = category_id::kAdvanced};
inline constexpr EffectDescriptor kSaturationDownEffect{.id = effect_id::kSaturationDown,
                                                        .nameStringId = 126,
                                                        .imageRoutine = plainRoutine<SaturationDownImage>,
                                                        .category = category_id::kAdvanced};

}  // namespace qx
