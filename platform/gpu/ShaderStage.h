#pragma once
// One shader stage of an effect, compiled from Direct3D 9 HLSL to GLSL 4.5: glslang's HLSL
// front end (DX9-compatible samplers) to SPIR-V, SPIRV-Cross back to GLSL. Constants
// declared with register(cN) become one vec4 array per stage, indexed by register;
// samplers keep register(sN) as their texture unit. Stage interfaces are placed by HLSL
// semantic, not by declaration order, so any vertex stage meets any pixel stage.
#include <optional>
#include <string>
#include <vector>

namespace qx::gpu {

enum class StageKind { Vertex, Pixel };

/// One input or output of a stage: its semantic split into name and index
/// ("TEXCOORD3": "TEXCOORD", 3), its location and its component count.
struct StageVarying {
    std::string semantic;
    int index = 0;
    int location = 0;
    int components = 4;
};

struct CompiledStage {
    StageKind kind = StageKind::Vertex;
    std::string glsl;
    std::vector<StageVarying> inputs;
    std::vector<StageVarying> outputs;
};

/// Names the generated stages share with the device.
inline constexpr const char* kVertexConstants = "qx_vsConstants";
inline constexpr const char* kPixelConstants = "qx_psConstants";
inline constexpr int kVertexConstantCount = 256;
inline constexpr int kPixelConstantCount = 224;
/// The varying location of the fog factor, and of the first colour.
inline constexpr int kFogLocation = 20;

/// The varying location of a semantic between the stages, -1 when it has none.
int varyingLocation(const std::string& semantic, int index);
/// Splits "TEXCOORD12" into "TEXCOORD" and 12, upper case; a bare name has index 0.
void splitSemantic(const std::string& text, std::string& name, int& index);

/// Compiles one entry point; nothing when the text does not compile.
std::optional<CompiledStage> compileStage(const std::string& hlsl, StageKind kind, const std::string& entry);

}  // namespace qx::gpu
