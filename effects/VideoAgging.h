#pragma once
// "Film ancien 2": ages each frame like worn film stock. The colours lose a quarter of
// their contrast and take a grain, vertical scratches run for a few frames, pits and
// dust specks appear, all drawn from the shared fast generator. No parameters; the
// progress is not used.
#include "effects/EffectDescriptor.h"
#include "effects/VideoEffect.h"

#include <array>
#include <cstdint>

namespace qx {

class CVideoAgging : public CVideoEffect {
public:
    CVideoAgging(LONG frameWidth, LONG frameHeight);

    /// -1 for frames under 2 by 2 (or beyond the usable sizes): the effect then passes
    /// frames through.
    LONG Start() override;
    LONG Stop() override;
    LONG ProcessFrame(const uint32_t* src, uint32_t* dst, float progress) override;

protected:
    struct Scratch {
        LONG life;  ///< frames still to come; 0 for a free record
        LONG x;     ///< column in 1/256 of a sample
        LONG dx;    ///< move per frame, in 1/256
        LONG init;  ///< first row in the scratch's first frame, then 0
    };
    static constexpr LONG kScratchRecords = 7;

    LONG running = 0;
    LONG areaScale = 1;
    LONG agingMode = 0;
    std::array<Scratch, kScratchRecords> scratches{};
    LONG scratchCount = kScratchRecords;
    std::array<LONG, 8> dustDirX{1, 1, 0, -1, -1, -1, 0, 1};
    std::array<LONG, 8> dustDirY{0, -1, -1, -1, 0, 1, 1, 1};
    uint32_t dustInterval = 0;
    uint32_t pitInterval = 0;

private:
    bool fitsFrame() const;
    void ageColours(const uint32_t* src, uint32_t* dst) const;
    void drawScratches(uint32_t* dst);
    void startScratch(Scratch& scratch) const;
    void drawPits(uint32_t* dst);
    void drawDust(uint32_t* dst);
    bool inFrame(LONG x, LONG y) const { return x >= 0 && x < width && y >= 0 && y < height; }
};

namespace effect_id {
inline constexpr LONG kOldFilm2 = 2000;
}  // namespace effect_id

inline constexpr EffectDescriptor kOldFilm2Effect{.id = effect_id::kOldFilm2,
                                                  .nameStringId = 114,
                                                  .category = category_id::kAdvanced,
                                                  .videoEffect = videoEffectOf<CVideoAgging>};

}  // namespace qx
