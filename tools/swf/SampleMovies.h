#pragma once
// Movies made with the writer: a sample animation that shows every kind of content the
// renderer draws, and small movies that seed the fuzzing corpus.
#include "tools/swf/SwfWriter.h"

#include <string>
#include <vector>

namespace qx::swftool {

/// A 640 by 360 animation of `frames` frames at 25 per second: a sliding bar with a
/// linear gradient, a circle with a radial gradient, a square morphing into a circle, a
/// sprite of its own (a turning, outlined square) that loops every 10 frames, a
/// checkerboard bitmap fill, and a masked stripe.
std::vector<uint8_t> sampleAnimation(int frames, Compression compression = Compression::None);

struct NamedMovie {
    std::string name;
    std::vector<uint8_t> bytes;
};

/// Small movies, one per kind of content and compression, for the fuzzing corpus.
std::vector<NamedMovie> corpusMovies();

/// A checkerboard of `cell`-sample squares in two straight ARGB colours.
std::vector<uint32_t> checkerboard(int width, int height, int cell, uint32_t first, uint32_t second);

}  // namespace qx::swftool
