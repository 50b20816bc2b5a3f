#pragma once
// A composition with the user's pictures played by the composition source, as an editor's
// graph plays it: the source's stream thread renders the frames, and each one that reaches
// the sink end of the graph goes to the caller, top-down, on the caller's thread while the
// stream thread renders the next.
#include "apps/session/Frame.h"

#include <functional>
#include <string>
#include <vector>

namespace qx::qxfx {

struct AnimSettings {
    std::string composition;          // a ".cpo3d" under the pack's Scenes, or a 2D composition file
    std::vector<std::string> images;  // up to five pictures
    std::string dataPath;             // the content pack
    int width = 1280;
    int height = 720;
    double fps = 25.0;
    double duration = 0.0;  // seconds the composition is played over; 0: its own length
    double start = 0.0;     // seconds into that length where the frames begin
    int stretchMode = 1;    // 0 stretch, 2 fit inside, any other fill and crop
};

/// The composition's own length in seconds (<= 0 when it can't be read).
double compositionDuration(const AnimSettings& settings);

/// Renders `frames` frames from `settings.start` on, handing each to `receive` with its
/// number, until `receive` returns false. CommandError when the composition can't be
/// used or a frame does not come.
void renderComposition(const AnimSettings& settings, long frames,
                       const std::function<bool(const Frame&, long index)>& receive);

}  // namespace qx::qxfx
