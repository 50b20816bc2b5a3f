#include "host/EffectCatalog.h"

#include "effects/ColorEffects.h"
#include "effects/ColorKey.h"
#include "effects/Fades.h"
#include "effects/OldFilm.h"
#include "effects/PanZoom.h"
#include "effects/Puzzle.h"
#include "host/ExternalFilter.h"

namespace qx {

// Not in id order on purpose: hosts store ids, and "Film ancien 2" (2000) sits at index 10.
const std::array<EffectDescriptor, kEffectTableSize> EffectTable{{
    {0, 101, ZoomOutFrame, nullptr, 1, 0},
    {1, 102, ZoomInFrame, nullptr, 1, 0},
    {2, 103, PanLeftToRightFrame, nullptr, 1, 0},
    {3, 104, PanRightToLeftFrame, nullptr, 1, 0},
    {4, 105, PanTopToBottomFrame, nullptr, 1, 0},
    {5, 106, PanBottomToTopFrame, nullptr, 1, 0},
    {6, 107, FreeMoveFrame, nullptr, 1, 0},
    {7, 108, FadeInFrame, nullptr, 1, 0},
    {8, 109, FadeOutFrame, nullptr, 1, 0},
    {9, 110, nullptr, OldFilmImage, 1, 1},
    {2000, 114, nullptr, nullptr, 0, 1},
    {10, 111, nullptr, SpectrumImage, 0, 1},
    {11, 112, nullptr, ColorizeImage, 0, 1},
    {13, 125, nullptr, SaturationUpImage, 0, 1},
    {14, 126, nullptr, SaturationDownImage, 0, 1},
    {12, 113, PuzzleFrame, nullptr, 0, 1},
    {2001, 118, nullptr, nullptr, 1, 1},
    {15, 0, ColorKeyFrame, nullptr, 0, 1},
    {5002, 115, nullptr, nullptr, 1, 1},
    {5000, 116, nullptr, nullptr, 1, 1},
    {5003, 0, nullptr, nullptr, 0, 2},
    {5004, 0, nullptr, nullptr, 0, 1},
    {5005, 0, nullptr, nullptr, 0, 3},
    {15000, 0, nullptr, nullptr, 0, 4},
    {10000, 0, nullptr, ExternalFilterImage, 0, 1},
}};

const std::array<CategoryDescriptor, kCategoryTableSize> CategoryTable{{
    {0, 122, -1},
    {1, 123, -1},
    {2, 124, -1},
    {3, 127, -1},
    {4, 128, -1},
}};

}  // namespace qx
