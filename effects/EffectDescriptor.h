#pragma once
// One effect of the catalogue as data: what the host reports of it (id, display name,
// dialog, category), what computes it, and the table of its parameters. Each effect
// defines its descriptor beside its code, by designated initializers; the host's
// catalogue lists the descriptors in table order.
#include "effects/ParamTable.h"
#include "effects/Routine.h"

#include <memory>

namespace qx {

class CVideoEffect;

/// Ids of the rows of the host's category table.
namespace category_id {
inline constexpr LONG kStandard = 0;
inline constexpr LONG kAdvanced = 1;
inline constexpr LONG kParticles = 2;
inline constexpr LONG kAnimations = 3;
inline constexpr LONG kAnimatedObjects = 4;
}  // namespace category_id

/// Makes the frame effect with state of an id from 2000 to 4999, for frames of a size.
using MakeVideoEffect = std::unique_ptr<CVideoEffect> (*)(LONG width, LONG height);

struct EffectDescriptor {
    /// Stable: hosts store it in their projects, and its range selects the frame path.
    LONG id;
    LONG nameStringId = 0;  ///< the display name in the string table; 0: none
    MakeFrameRoutine frameRoutine = nullptr;
    MakeImageRoutine imageRoutine = nullptr;
    LONG hasDialog = 0;  ///< 0 or 1
    LONG category = category_id::kStandard;
    MakeVideoEffect videoEffect = nullptr;
    /// The slots the effect reads, from slot 0 in order.
    ParamTable params{};
    /// Whether the host's default list holds the table's defaults; an effect that leaves
    /// its values to the editor has an empty default list.
    bool defaultsListed = true;
};

/// Maker of a video effect, for descriptors: `videoEffectOf<CVideoRipple>`.
template <typename Effect>
std::unique_ptr<CVideoEffect> videoEffectOf(LONG width, LONG height)
{
    return std::make_unique<Effect>(width, height);
}

}  // namespace qx
