#pragma once
// "Gouttes d'eau": drops fall on a water surface simulated at half the frame's
// resolution, the wave equation runs twice per frame, and the frame is refracted through
// the surface. The water keeps its state from frame to frame; the progress is not used.
#include "effects/EffectDescriptor.h"
#include "effects/VideoEffect.h"

#include <array>
#include <cstdint>
#include <vector>

namespace qx {

class CVideoRipple : public CVideoEffect {
public:
    CVideoRipple(LONG frameWidth, LONG frameHeight);

    /// Makes the water flat. -1 for frames under 8 by 8 (a drop needs two cells of margin
    /// around its 3 by 3 cells) or when the maps cannot be allocated: frames then pass
    /// through. Odd sizes are accepted: the last column or row is filled from its
    /// neighbour block's vectors without writing past the frame.
    LONG Start() override;
    LONG Stop() override;
    LONG ProcessFrame(const uint32_t* src, uint32_t* dst, float progress) override;

protected:
    /// One refraction vector (dx, dy) per cell, in samples, kept as two planes so
    /// that the rendering reads each as a plain run.
    struct VectorPlanes {
        std::vector<int8_t> dx;
        std::vector<int8_t> dy;
    };

    /// Height of a drop for a draw of the generator, scaled to the frame's area.
    LONG dropHeight(uint32_t draw) const;
    /// Sets the cells of one drop, at a random place two cells from the border.
    void Drop(LONG dropHeight);

    LONG running = 0;
    VectorPlanes vectorMap;
    std::vector<int32_t> cells;
    int32_t* map1 = nullptr;
    int32_t* map2 = nullptr;
    int32_t* map3 = nullptr;
    LONG mapHeight;
    LONG mapWidth;
    std::array<LONG, 256> squareTable{};
    LONG point = 16;
    LONG impact = 2;
    LONG decay = 8;
    LONG loopCount = 2;

private:
    void fillSquareTable();
    void stepWater();
    void computeVectors();
    /// Where the blocks of one block row take their samples, into four runs of
    /// `blocksPerRow` from `upperLeft`: upper left, upper right, lower left, lower right.
    void findBlockSources(LONG blockRow, int32_t* upperLeft) const;
    void copyBlockRow(const uint32_t* src, uint32_t* dst, LONG y, const int32_t* upperLeft) const;
    void refract(const uint32_t* src, uint32_t* dst);

    LONG blocksPerRow = 0;
};

namespace effect_id {
inline constexpr LONG kWaterDrops = 2001;
}  // namespace effect_id

struct RippleParam {
    enum Slot : int { kDropsPerFrame };
};

// The range is that of the dialog's slider; the effect also takes 0, and then no drop falls.
inline constexpr std::array<ParamDescriptor, 1> kRippleParams{{
    {RippleParam::kDropsPerFrame, "drops", "Drops that fall on the water at each frame", 1, 1, 10, ParamKind::Integer,
     "Intensité de l'effet"},
}};

inline constexpr EffectDescriptor kWaterDropsEffect{.id = effect_id::kWaterDrops,
                                                    .nameStringId = 118,
                                                    .hasDialog = 1,
                                                    .category = category_id::kAdvanced,
                                                    .videoEffect = videoEffectOf<CVideoRipple>,
                                                    .params = kRippleParams};

}  // namespace qx
