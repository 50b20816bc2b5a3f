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

struct FxText {
    std::vector<FxTechnique> techniques;
    std::string hlsl;
};

/// False on a technique block that does not close or says something unreadable.
/// States this layer does not know are skipped.
bool parseEffectText(const std::string& text, FxText& out);

}  // namespace qx::gpu
