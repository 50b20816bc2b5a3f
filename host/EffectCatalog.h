#pragma once
// The constant catalogue of the effect host: which effects exist, their display names,
// the routine that computes each, and their categories. Effect ids and table indexes are
// different numbers; every lookup goes through the table.
#include "platform/com/HResult.h"

#include <array>
#include <span>

namespace qx::draw2d {
class Bitmap;
}
namespace qx::imaging {
class BitmapHandle;
}

namespace qx {

/// A routine that redraws the frame through a bitmap over the frame buffer.
using FrameRoutine = void (*)(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount,
                              void* state);
/// A routine that works on a bitmap handle holding a copy of the frame, upside down.
using ImageRoutine = HRESULT (*)(imaging::BitmapHandle* handle, double progress, const LONG* params,
                                 LONG paramCount, void* state);

struct EffectDescriptor {
    LONG id;
    LONG nameStringId;  // 0: the effect has no display name
    FrameRoutine frameRoutine;
    ImageRoutine imageRoutine;
    LONG hasDialog;
    LONG category;
};

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

/// Effect ids with a meaning of their own in the frame path.
namespace effect_id {
inline constexpr LONG kOldFilm = 9;
inline constexpr LONG kPuzzle = 12;
inline constexpr LONG kVideoEffectFirst = 2000;  // served by CVideoEffect objects
inline constexpr LONG kVideoEffectEnd = 5000;
inline constexpr LONG kOldFilm2 = 2000;
inline constexpr LONG kWaterDrops = 2001;
inline constexpr LONG kSceneFirst = 5000;  // served by the 3D clients
inline constexpr LONG kSceneEnd = 10000;
inline constexpr LONG kExternalFilter = 10000;
inline constexpr LONG kVectorAnimation = 15000;
}  // namespace effect_id

/// True when `index` names a row of a table of `size` rows; indexes compare as unsigned,
/// so a negative index counts as too large.
constexpr bool isValidIndex(LONG index, LONG size) { return ULONG(index) < ULONG(size); }

}  // namespace qx
