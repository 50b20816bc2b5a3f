#pragma once
// The pictures of lens flares and particles, drawn in code: glows, rings, polygons,
// streaks and stars for the flares, soft sprites and a sheet of shapes for the particles,
// and the tone ramp of the sepia filter. Flare pictures are white light on black, which
// the flare tints and adds to the frame.
#include "tools/contentpack/PackImages.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace qx4d::tools {

/// Every lens-flare picture, by its name under "IMAGES:" ("LensFlare\\glow.dds", ...).
std::vector<std::pair<std::string, Picture>> FlarePictures();
/// Every particle picture, by its name under "IMAGES:" ("particles\\spark.dds", ...).
std::vector<std::pair<std::string, Picture>> ParticlePictures();
/// The sepia filter's ramp: 256 tones from dark brown to cream, left to right.
Picture SepiaRamp();

/// The picture as an uncompressed 32-bit TGA file, top row first.
std::vector<uint8_t> TgaOf(const Picture& picture);

}  // namespace qx4d::tools
