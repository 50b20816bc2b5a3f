#pragma once
// "Puzzle": the picture cut into tiles, shuffled by sliding moves on Setup, and played
// backwards so that it finishes ordered.
#include "effects/EffectDescriptor.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace qx {

/// Per step, the tile at each grid position: `frames[i][p]` is the tile at position `p`
/// after `i` moves, positions and tiles counted row by row from the top left, tile 0 the
/// hole.
using PuzzleFrames = std::vector<std::vector<uint8_t>>;

/// The largest grid: positions and tiles are bytes.
inline constexpr LONG kMaxPuzzleCells = 256;

/// Builds the shuffle with the C runtime's `rand`, one move per step after the first.
/// A grid without cells, with more than 256 cells, or without steps gives no frames, and
/// the effect then passes the frame through.
PuzzleFrames BuildPuzzleFrames(LONG columns, LONG rows, LONG steps);

/// Draws the step of `frames` at `progress`. Frames built for another grid than the
/// current parameters name are not used: the frame passes through.
void PuzzleFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params, const PuzzleFrames& frames);

/// The puzzle's object: Setup builds the shuffle, which every frame of the run plays.
class PuzzleRoutine final : public FrameRoutine {
public:
    void setUp(ParamValues params) override;
    void draw(draw2d::Bitmap& bitmap, float progress, ParamValues params) override;

private:
    PuzzleFrames frames;
};

namespace effect_id {
inline constexpr LONG kPuzzle = 12;
}  // namespace effect_id

struct PuzzleParam {
    enum Slot : int { kColumns, kRows, kSteps, kBackground };
};

inline constexpr std::array<ParamDescriptor, 4> kPuzzleParams{{
    {PuzzleParam::kColumns, "columns", "Tiles across; columns times rows is at most 256", 4, 1, kMaxPuzzleCells,
     ParamKind::Integer},
    {PuzzleParam::kRows, "rows", "Tiles down; columns times rows is at most 256", 3, 1, kMaxPuzzleCells,
     ParamKind::Integer},
    {PuzzleParam::kSteps, "steps", "Positions the animation goes through: the shuffle makes one move less", 12, 1,
     std::numeric_limits<LONG>::max(), ParamKind::Integer},
    {PuzzleParam::kBackground, "background", "Colour behind the tiles, as a COLORREF (0x00BBGGRR)", 0, 0, kMaxColorRef,
     ParamKind::Color},
}};

inline constexpr EffectDescriptor kPuzzleEffect{.id = effect_id::kPuzzle,
                                                .nameStringId = 113,
                                                .frameRoutine = routineObject<PuzzleRoutine>,
                                                .category = category_id::kAdvanced,
                                                .params = kPuzzleParams};

}  // namespace qx
