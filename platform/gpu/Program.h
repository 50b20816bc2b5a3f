#pragma once
// The linked OpenGL programs of one effect pass. A declaration with POSITIONT skips the
// vertex stage, as in Direct3D 9: a built-in vertex stage maps its pixels to clip space
// and hands the declaration's colours and texture coordinates to the pixel stage by
// semantic. Programs are linked on first use for each kind of declaration.
#include "platform/gpu/GlName.h"
#include "platform/gpu/ShaderStage.h"
#include "platform/gpu/Types.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qx::gpu {

/// Where a declaration's element goes: usage and usage index to an attribute location.
struct AttributeSlot {
    BYTE usage = 0;
    BYTE usageIndex = 0;
    uint32_t location = 0;
};

struct LinkedProgram {
    GlName program;
    std::vector<AttributeSlot> attributes;
    bool positionT = false;
    int32_t vertexConstants = -1;
    int32_t pixelConstants = -1;
    int32_t pixelOffset = -1;
    int32_t viewport = -1;
    int32_t fogEnable = -1;
    int32_t fogColor = -1;
    int32_t alphaFunc = -1;
    int32_t alphaRef = -1;
};

/// The usage code of an HLSL semantic name ("TEXCOORD": 5), -1 when it has none.
int usageOfSemantic(const std::string& name);
/// True when the declaration (up to its end marker) has an element of usage POSITIONT.
bool hasPositionT(const std::vector<D3DVERTEXELEMENT9>& elements);

class PassShaders {
public:
    /// Without a pixel stage, a built-in one passes the first colour through.
    PassShaders(std::shared_ptr<Context> context, std::optional<CompiledStage> vertex,
                std::optional<CompiledStage> pixel);
    /// Null when the pass cannot draw with this declaration (no vertex stage and no
    /// POSITIONT, or a link failure).
    const LinkedProgram* programFor(const std::vector<D3DVERTEXELEMENT9>& elements);

private:
    std::unique_ptr<LinkedProgram> link(const std::string& vertexGlsl, const std::vector<AttributeSlot>& slots,
                                        bool positionT) const;

    std::shared_ptr<Context> context_;
    std::optional<CompiledStage> vertex_;
    CompiledStage pixel_;
    std::unique_ptr<LinkedProgram> programmable_;
    bool programmableTried_ = false;
    std::map<std::vector<uint8_t>, std::unique_ptr<LinkedProgram>> positionT_;
};

}  // namespace qx::gpu
