#pragma once
// GLSL of the built-in vertex stage for pre-transformed (POSITIONT) vertices.
#include "platform/gpu/Program.h"

#include <string>
#include <vector>

namespace qx::gpu {

/// The stage's text, and in `slots` where each used element of the declaration goes.
std::string positionTVertexStage(const std::vector<D3DVERTEXELEMENT9>& elements, const CompiledStage& pixel,
                                 std::vector<AttributeSlot>& slots);
/// A pixel stage that passes COLOR0 through, for passes that set no pixel shader.
CompiledStage passThroughPixelStage();

}  // namespace qx::gpu
