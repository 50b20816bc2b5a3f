#pragma once
// Reads the technique and pass blocks of an effect text: their state assignments and
// compile statements. The blocks are cut out of the text (replaced by spaces, lines kept)
// because the HLSL compiler does not know them; the rest is the shaders' HLSL.
#include "platform/gpu/Types.h"

#include <string>
#include <vector>

namespace qx::gpu {

/// One state of a pass: a render state, or a sampler state of one sampler.
struct StateAssignment {
    bool sampler = false;
    DWORD index = 0;  // sampler number
    DWORD state = 0;  // D3DRENDERSTATETYPE or D3DSAMPLERSTATETYPE
    DWORD value = 0;
};

struct FxPass {
    std::string name;
    std::vector<StateAssignment> states;
    std::string vertexEntry;  // empty: no vertex shader
    std::string vertexProfile;
    std::string pixelEntry;  // empty: no pixel shader
    std::string pixelProfile;
};

struct FxTechnique {
    std::string name;
    std::vector<FxPass> passes;
};

/// A global constant that the effect sets by name.
struct FxParameter {
    std::string name;
    DWORD firstRegister = 0;
    DWORD registerCount = 0;
    /// Elements of one array entry: rows and columns (a vector has one row).
    DWORD rows = 1;
    DWORD columns = 1;
    /// Matrices are column-major unless declared `row_major`: a register holds a column.
    bool columnMajor = false;
    /// Four floats a register, from the declaration's initialiser (zeros without one).
    std::vector<float> defaults;
};

/// A sampler that the text declares.
struct FxSampler {
    std::string name;
    DWORD stage = 0;
    /// The texture parameter of its `sampler_state` block; empty without one.
    std::string texture;
    std::vector<StateAssignment> states;
};

struct FxBindings {
    std::vector<FxParameter> parameters;
    std::vector<FxSampler> samplers;
};

struct FxText {
    std::vector<FxTechnique> techniques;
    std::string hlsl;
    FxBindings bindings;
};

/// False on a technique block that does not close or says something unreadable.
/// States this layer does not know are skipped. Parameters without registers are bound
/// (see FxParameters.h) before the blocks are cut out.
bool parseEffectText(const std::string& text, FxText& out);

}  // namespace qx::gpu
