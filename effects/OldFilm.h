#pragma once
// "Film ancien": worn film drawn on the picture (shake, hair curves, a vertical scratch,
// flashes) followed by posterise, noise, desaturation and blur. Draws from the C
// runtime's `rand`; ignores the progress.
#include "effects/EffectDescriptor.h"

#include <array>
#include <optional>

namespace qx {

/// The vertical scratch kept from frame to frame: position (0 to 1000, beyond when
/// finished), speed, start column, end column.
using FilmState = std::array<float, 4>;

/// One frame of old film; without `film` no vertical scratch is drawn.
HRESULT OldFilmImage(imaging::BitmapHandle& handle, double progress, ParamValues params, FilmState* film);

/// The old film's object: Setup starts the scratch state at zero.
class OldFilmRoutine final : public ImageRoutine {
public:
    void setUp(ParamValues params) override;
    HRESULT apply(imaging::BitmapHandle& handle, double progress, ParamValues params) override;

private:
    std::optional<FilmState> film;
};

namespace effect_id {
inline constexpr LONG kOldFilm = 9;
}  // namespace effect_id

struct OldFilmParam {
    enum Slot : int {
        kShakeLevel,
        kShakeStrength,
        kHairCount,
        kScratchFactor,
        kFlashStrength,
        kNoiseLevel,
        kPosterize,
        kDesaturation,
        kBlur,
    };
};

// The ranges are those of the dialog "Film ancien".
inline constexpr std::array<ParamDescriptor, 9> kOldFilmParams{{
    {OldFilmParam::kShakeLevel, "shake level", "Chance in percent that a frame shakes", 20, 0, 100,
     ParamKind::Percentage, "Niveau du tremblement :"},
    {OldFilmParam::kShakeStrength, "shake strength", "Largest shake, in rows", 5, 1, 20, ParamKind::Integer,
     "Intensité du tremblement :"},
    {OldFilmParam::kHairCount, "hair count", "Upper bound of the hair curves drawn on a frame", 10, 0, 50,
     ParamKind::Integer, "Intensité brouillage :"},
    {OldFilmParam::kScratchFactor, "scratch factor", "Chance in percent that a new vertical scratch starts", 30, 0, 100,
     ParamKind::Percentage, "Facteur ligne :"},
    {OldFilmParam::kFlashStrength, "flash strength", "Chance in percent of a flash", 30, 0, 100, ParamKind::Percentage,
     "Intensité du flash :"},
    {OldFilmParam::kNoiseLevel, "noise level", "Level of the noise added to every channel", 50, 0, 100,
     ParamKind::Integer, "Niveau du bruit :"},
    {OldFilmParam::kPosterize, "posterize", "Levels per channel after posterising", 20, 2, 64, ParamKind::Integer,
     "Postérisation :"},
    {OldFilmParam::kDesaturation, "desaturation", "Colour taken out, in percent: 100 gives grey", 0, 0, 100,
     ParamKind::Percentage, "Saturation :"},
    {OldFilmParam::kBlur, "blur", "Size of the blur", 2, 0, 20, ParamKind::Integer, "Flou :"},
}};

inline constexpr EffectDescriptor kOldFilmEffect{.id = effect_id::kOldFilm,
                                                 .nameStringId = 110,
                                                 .imageRoutine = routineObject<OldFilmRoutine>,
                                                 .hasDialog = 1,
                                                 .category = category_id::kAdvanced,
                                                 .params = kOldFilmParams};

}  // namespace qx
