#pragma once
// "Puzzle": the picture cut into tiles, shuffled by sliding moves on Setup, and played
// backwards so that it finishes ordered. params: columns, rows, steps, background colour.
#include "platform/com/HResult.h"

#include <cstdint>
#include <vector>

namespace qx::draw2d {
class Bitmap;
}

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

/// `state` is the PuzzleFrames built on Setup. Frames built for another grid than the
/// current parameters name are not used: the frame passes through.
void PuzzleFrame(draw2d::Bitmap& bitmap, float progress, const LONG* params, LONG paramCount, void* state);

}  // namespace qx
