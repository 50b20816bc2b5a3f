#pragma once
// SPIR-V of one HLSL stage to GLSL 4.5 through SPIRV-Cross: constants flattened into a
// vec4 register file named per stage, varyings placed by semantic, the position made the
// built-in one, and a wrapper main that adds what Direct3D 9 does around shaders: the
// half-pixel offset of its rasterisation after the vertex stage; fixed-function fog and
// alpha test after the pixel stage.
#include "platform/gpu/ShaderStage.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qx::gpu {

std::optional<CompiledStage> spirvToGlsl(const std::vector<uint32_t>& spirv, StageKind kind);

/// The main of a pixel stage whose own main was renamed qx_stageMain: it applies fog to
/// the colour output `colourName` by the fog input `fogName` (declared at the fog
/// location when empty) and the alpha test.
std::string pixelEpilogue(const std::string& colourName, const std::string& fogName);

}  // namespace qx::gpu
