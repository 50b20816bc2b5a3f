#pragma once
// The constant catalogue of the effect host: which effects exist, in which order the host
// reports them, and their categories. Each effect's facts live in its descriptor, beside
// its code; this table only lists them. Effect ids and table indexes are different
// numbers; every lookup goes through the table.
#include "effects/EffectDescriptor.h"

#include <array>

namespace qx {

struct CategoryDescriptor {
    LONG id;
    LONG nameStringId;
    LONG image;  // -1: no category has an image
};

inline constexpr LONG kEffectTableSize = 25;
inline constexpr LONG kCategoryTableSize = 5;
/// Effects offered to enumeration: the last row, the external filter, is left out.
inline constexpr LONG kEnumeratedEffects = 24;

extern const std::array<EffectDescriptor, kEffectTableSize> EffectTable;
extern const std::array<CategoryDescriptor, kCategoryTableSize> CategoryTable;

/// The ranges of ids that select a frame path, and the ids with a path of their own.
namespace effect_id {
inline constexpr LONG kVideoEffectFirst = 2000;  // served by CVideoEffect objects
inline constexpr LONG kVideoEffectEnd = 5000;
inline constexpr LONG kSceneFirst = 5000;  // served by the 3D clients
inline constexpr LONG kSceneEnd = 10000;
inline constexpr LONG kVectorAnimation = 15000;
}  // namespace effect_id

/// True when `index` names a row of a table of `size` rows; indexes compare as unsigned,
/// so a negative index counts as too large.
constexpr bool isValidIndex(LONG index, LONG size) { return ULONG(index) < ULONG(size); }

/// The first row with effect id `id`, or null.
const EffectDescriptor* findEffect(LONG id);

}  // namespace qx
