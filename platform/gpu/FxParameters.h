#pragma once
// The parameters of an effect that its text does not bind to registers, as D3DX binds
// them: every global constant without a `register(cN)` gets registers above those the
// text takes, every sampler without a `register(sN)` the lowest free sampler, and the
// `sampler_state` blocks become the states (and the texture parameter) of their sampler.
// The text is rewritten with those registers, so that the HLSL compiler places them.
#include "platform/gpu/FxParser.h"

#include <string>
#include <vector>

namespace qx::gpu {

/// Binds the parameters of `hlsl` (a text whose techniques are already cut out) and
/// rewrites it. Declarations this layer can't read are left to the compiler as they are.
FxBindings bindParameters(std::string& hlsl);

}  // namespace qx::gpu
