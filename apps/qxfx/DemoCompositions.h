#pragma once
// The compositions of the demo: the pack's slideshow and carousel, played with five
// pictures that the demo draws itself, into the demo's video and contact sheet.
#include "apps/qxfx/ContactSheet.h"
#include "apps/qxfx/VideoWriter.h"

#include <string>

namespace qx::qxfx {

struct DemoFrameOptions {
    std::string outDir;
    std::string dataPath;
    int width = 0;
    int height = 0;
    long frames = 0;  // per composition, spread over its whole length
};

/// Plays each composition into `video` and adds its pictures at the start, the middle and
/// the end to `sheet`; a composition that can't be played is noted on the sheet. The
/// pictures are written to DIR/pictures. Returns how many played.
int renderDemoCompositions(const DemoFrameOptions& o, VideoWriter& video, ContactSheet& sheet);

}  // namespace qx::qxfx
