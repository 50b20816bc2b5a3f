#pragma once
// The meshes of the default content pack, built in code: a box whose faces each show a
// whole picture, a plane seen from both sides, and a flag that waves as MDD frames.
#include "tools/objectfile/ObjectModel.h"

#include <string>

namespace qx4d::tools {

/// A surface lit by the scene's lights, textured with `texture` (under "IMAGES:").
SurfaceModel TexturedSurface(float luminosity, float specular);

/// A box of side 1 centred on the origin. Each face spans the whole texture, upright as a
/// viewer outside it sees it; face order front (-z), back, left, right, top, bottom.
/// `faceTextures` gives the texture of each face in that order: faces with the same name
/// share a mesh, an empty name leaves the face out.
ObjectModel Box(const std::string (&faceTextures)[6], const SurfaceModel& surface);

/// A square of side 1 in the plane z = 0 facing -z, and its back facing +z, both showing
/// the texture upright from their side.
ObjectModel TwoSidedPlane(const std::string& texture, const SurfaceModel& surface);

/// A flag of `columns` by `rows` quads, 4:3, facing -z, whose surface waves along x:
/// `frames` stored frames over one period, played at 30 frames a second, the timeline
/// running through `periods` periods.
ObjectModel WavingFlag(const std::string& texture, const SurfaceModel& surface, int columns, int rows, int frames,
                       int periods);

}  // namespace qx4d::tools
