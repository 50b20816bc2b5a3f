#include "host/EffectCatalog.h"

#include "effects/ColorEffects.h"
#include "effects/ColorKey.h"
#include "effects/Fades.h"
#include "effects/OldFilm.h"
#include "effects/PanZoom.h"
#include "effects/Puzzle.h"
#include "effects/VideoAgging.h"
#include "effects/VideoRipple.h"
#include "host/ExternalFilter.h"
#include "wrap3d/SceneEffects.h"

#include <algorithm>

namespace qx {

namespace {

// The vector animation, which CSwfRenderer plays from the Source file; it has no parameters.
constexpr EffectDescriptor kVectorAnimationEffect{.id = effect_id::kVectorAnimation,
                                                  .category = category_id::kAnimatedObjects};

}  // namespace

// Not in id order on purpose: hosts store ids, and "Film ancien 2" (2000) sits at index 10.
constinit const std::array<EffectDescriptor, kEffectTableSize> EffectTable{{
    kZoomOutEffect,        kZoomInEffect,     kPanLeftToRightEffect, kPanRightToLeftEffect,  kPanTopToBottomEffect,
    kPanBottomToTopEffect, kFreeMoveEffect,   kFadeInEffect,         kFadeOutEffect,         kOldFilmEffect,
    kOldFilm2Effect,       kSpectrumEffect,   kColorizeEffect,       kSaturationUpEffect,    kSaturationDownEffect,
    kPuzzleEffect,         kWaterDropsEffect, kColorKeyEffect,       kMove3DEffect,          kCubeEffect,
    kParticles3DEffect,    kScene3DEffect,    kAnimation3DEffect,    kVectorAnimationEffect, kExternalFilterEffect,
}};

constinit const std::array<CategoryDescriptor, kCategoryTableSize> CategoryTable{{
    {category_id::kStandard, 122, -1},
    {category_id::kAdvanced, 123, -1},
    {category_id::kParticles, 124, -1},
    {category_id::kAnimations, 127, -1},
    {category_id::kAnimatedObjects, 128, -1},
}};

const EffectDescriptor* findEffect(LONG id)
{
    const auto row = std::ranges::find(EffectTable, id, &EffectDescriptor::id);
    return row == EffectTable.end() ? nullptr : &*row;
}

}  // namespace qx
