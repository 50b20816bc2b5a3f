#include "effects/Puzzle.h"

#include "effects/ColorRef.h"
#include "platform/draw2d/Graphics.h"
#include "platform/os/CRuntime.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace qx {

namespace {

// The direction of the last move, as the shuffle records it.
enum Move : int { kNone = -10, kLeft = 0, kRight = 1, kUp = 2, kDown = 3 };

// The next hole position for a wanted direction `r` (0 left, 1 right, 2 up, 3 down). A
// move that the grid stops, or that would undo the last one, turns into a move along the
// other axis.
int nextHole(int r, int hole, int lastMove, int columns, int rows)
{
    const bool firstColumn = hole % columns == 0;
    const bool lastColumn = hole % columns == columns - 1;
    const bool topRow = hole < columns;
    const bool bottomRow = hole >= (rows - 1) * columns;
    const int vertical = topRow ? hole + columns : hole - columns;
    const int horizontal = lastColumn ? hole - 1 : hole + 1;
    switch (r) {
    case 0: return firstColumn ? (lastMove == kLeft ? vertical : hole + 1) : (lastMove == kRight ? vertical : hole - 1);
    case 1: return lastColumn ? (lastMove == kRight ? vertical : hole - 1) : (lastMove == kLeft ? vertical : hole + 1);
    case 2:
        return topRow ? (lastMove == kUp ? horizontal : hole + columns)
                      : (lastMove == kDown ? horizontal : hole - columns);
    default:
        return bottomRow ? (lastMove == kDown ? horizontal : hole - columns)
                         : (lastMove == kUp ? horizontal : hole + columns);
    }
}

int moveOf(int delta, int columns)
{
    if (delta == -1) return kLeft;
    if (delta == 1) return kRight;
    if (delta == columns) return kDown;
    return kUp;
}

struct Grid {
    LONG columns;
    LONG rows;
    float tileWidth;
    float tileHeight;

    draw2d::RectF place(int position) const
    {
        return {float(double(position % columns) * tileWidth), float(double(position / columns) * tileHeight),
                tileWidth, tileHeight};
    }
};

bool framesFit(const PuzzleFrames& frames, LONG columns, LONG rows, LONG steps)
{
    return !frames.empty() && columns > 0 && rows > 0 && LONG(frames.size()) == steps &&
           LONG(frames.front().size()) == columns * rows;
}

}  // namespace

PuzzleFrames BuildPuzzleFrames(LONG columns, LONG rows, LONG steps)
{
    if (columns <= 0 || rows <= 0 || steps <= 0 || int64_t(columns) * rows > kMaxPuzzleCells) return {};
    const int cells = int(columns * rows);
    PuzzleFrames frames(size_t(steps), std::vector<uint8_t>(size_t(cells), 0));
    std::iota(frames[0].begin(), frames[0].end(), uint8_t(0));
    int hole = 0;
    int lastMove = kNone;
    for (size_t i = 1; i < frames.size(); ++i) {
        frames[i] = frames[i - 1];
        const int next = nextHole(os::rand() % 4, hole, lastMove, int(columns), int(rows));
        // A grid of one row or one column can ask for a place outside it: that move is
        // not made.
        if (next < 0 || next >= cells) continue;
        std::swap(frames[i][size_t(hole)], frames[i][size_t(next)]);
        lastMove = moveOf(next - hole, int(columns));
        hole = uint8_t(next);
    }
    return frames;
}

void PuzzleFrame(draw2d::Bitmap& bitmap, float progress, ParamValues params, const PuzzleFrames& frames)
{
    const LONG columns = params[PuzzleParam::kColumns];
    const LONG rows = params[PuzzleParam::kRows];
    const LONG steps = params[PuzzleParam::kSteps];
    if (!framesFit(frames, columns, rows, steps)) return;
    const auto clone = bitmap.clone();
    if (!clone) return;
    draw2d::Graphics graphics(bitmap);
    const float W = float(bitmap.width());
    const float H = float(bitmap.height());
    const Grid grid{columns, rows, W / float(columns), H / float(rows)};

    const float v = float((steps - 1) * (1.0 - progress));
    const int k = int(std::floor(v));
    const float f = float(1.0 - (v - std::floor(v)));  // the share of the current move that is done
    graphics.clear(colorFromColorRef(params[PuzzleParam::kBackground], 255));

    const auto& current = frames[size_t(k)];
    int slot = -1;  // where the moving tile stands while on its way
    if (k < steps - 1) {
        const auto& next = frames[size_t(k + 1)];
        slot = int(std::find(next.begin(), next.end(), uint8_t(0)) - next.begin());
    }
    for (int p = 0; p < int(current.size()); ++p) {
        const int tile = current[size_t(p)];
        if (tile != 0 && p != slot) {
            graphics.drawImage(*clone, grid.place(p), grid.place(tile));
        } else if (tile == 0 && slot >= 0) {
            draw2d::RectF destination = grid.place(p);
            const float direction = p >= slot ? -1.0f : 1.0f;
            if (std::abs(p - slot) < columns) {
                destination.X = float(destination.X + double(direction) * f * grid.tileWidth);
            } else {
                destination.Y = float(destination.Y + double(direction) * f * grid.tileHeight);
            }
            graphics.drawImage(*clone, destination, grid.place(current[size_t(slot)]));
        }
    }
}

void PuzzleRoutine::setUp(ParamValues params)
{
    frames = BuildPuzzleFrames(params[PuzzleParam::kColumns], params[PuzzleParam::kRows], params[PuzzleParam::kSteps]);
}

void PuzzleRoutine::draw(draw2d::Bitmap& bitmap, float progress, ParamValues params)
{
    PuzzleFrame(bitmap, progress, params, frames);
}

}  // namespace qx
