#include "platform/gpu/SpirvToGlsl.h"

#include <spirv_cross/spirv_cross_c.h>

#include <memory>
#include <string>

namespace qx::gpu {

namespace {

const char* const kPixelEpilogueDeclarations = R"(
uniform int qx_fogEnable;
uniform vec4 qx_fogColor;
uniform int qx_alphaFunc;
uniform float qx_alphaRef;
bool qx_alphaPasses(float alpha)
{
    float value = floor(clamp(alpha, 0.0, 1.0) * 255.0 + 0.5);
    switch (qx_alphaFunc) {
    case 1: return false;
    case 2: return value < qx_alphaRef;
    case 3: return value == qx_alphaRef;
    case 4: return value <= qx_alphaRef;
    case 5: return value > qx_alphaRef;
    case 6: return value != qx_alphaRef;
    case 7: return value >= qx_alphaRef;
    default: return true;
    }
}
)";

using ContextOwner = std::unique_ptr<spvc_context_s, decltype(&spvc_context_destroy)>;

struct Placement {
    int location = -1;
    int builtIn = -1;  // SpvBuiltIn, when the varying is a built-in one
};

Placement placeVarying(StageKind kind, bool input, const StageVarying& varying, int order)
{
    const bool position = varying.semantic == "SV_POSITION" || (varying.semantic == "POSITION" && varying.index == 0);
    if (kind == StageKind::Vertex && input) return {order, -1};  // attributes are matched to declarations at draw time
    if (kind == StageKind::Vertex) {
        if (position) return {-1, SpvBuiltInPosition};
        if (varying.semantic == "PSIZE") return {-1, SpvBuiltInPointSize};
        return {varyingLocation(varying.semantic, varying.index), -1};
    }
    if (input) {
        if (position || varying.semantic == "VPOS") return {-1, SpvBuiltInFragCoord};
        return {varyingLocation(varying.semantic, varying.index), -1};
    }
    if (varying.semantic == "DEPTH" || varying.semantic == "SV_DEPTH") return {-1, SpvBuiltInFragDepth};
    if ((varying.semantic == "COLOR" || varying.semantic == "SV_TARGET") && varying.index < 4)
        return {varying.index, -1};
    return {};
}

// Places every input or output; false when one has no place.
bool placeInterface(spvc_compiler compiler, spvc_resources resources, StageKind kind, bool input,
                    std::vector<StageVarying>& placed)
{
    const spvc_reflected_resource* list = nullptr;
    size_t count = 0;
    spvc_resources_get_resource_list_for_type(
        resources, input ? SPVC_RESOURCE_TYPE_STAGE_INPUT : SPVC_RESOURCE_TYPE_STAGE_OUTPUT, &list, &count);
    for (size_t i = 0; i < count; ++i) {
        const char* semantic = spvc_compiler_get_decoration_string(compiler, list[i].id, SpvDecorationUserSemantic);
        StageVarying varying;
        splitSemantic(semantic ? semantic : "", varying.semantic, varying.index);
        varying.components =
            int(spvc_type_get_vector_size(spvc_compiler_get_type_handle(compiler, list[i].base_type_id)));
        const Placement placement = placeVarying(kind, input, varying, int(i));
        if (placement.builtIn >= 0) {
            spvc_compiler_unset_decoration(compiler, list[i].id, SpvDecorationLocation);
            spvc_compiler_set_decoration(compiler, list[i].id, SpvDecorationBuiltIn, unsigned(placement.builtIn));
            continue;
        }
        if (placement.location < 0) return false;
        varying.location = placement.location;
        spvc_compiler_set_decoration(compiler, list[i].id, SpvDecorationLocation, unsigned(placement.location));
        placed.push_back(varying);
    }
    return true;
}

// The $Global block becomes `uniform vec4 qx_vsConstants[n]` (or qx_psConstants); sampler
// locations are dropped so that the two stages' samplers never collide.
void prepareUniforms(spvc_compiler compiler, spvc_resources resources, StageKind kind)
{
    const spvc_reflected_resource* list = nullptr;
    size_t count = 0;
    spvc_resources_get_resource_list_for_type(resources, SPVC_RESOURCE_TYPE_UNIFORM_BUFFER, &list, &count);
    for (size_t i = 0; i < count; ++i) {
        // A flattened block takes the name of its type.
        const char* name = kind == StageKind::Vertex ? kVertexConstants : kPixelConstants;
        spvc_compiler_flatten_buffer_block(compiler, list[i].id);
        spvc_compiler_set_name(compiler, list[i].id, name);
        spvc_compiler_set_name(compiler, list[i].base_type_id, name);
    }
    spvc_resources_get_resource_list_for_type(resources, SPVC_RESOURCE_TYPE_SAMPLED_IMAGE, &list, &count);
    for (size_t i = 0; i < count; ++i) spvc_compiler_unset_decoration(compiler, list[i].id, SpvDecorationLocation);
}

std::string glslOf(spvc_compiler compiler)
{
    spvc_compiler_options options = nullptr;
    spvc_compiler_create_compiler_options(compiler, &options);
    spvc_compiler_options_set_uint(options, SPVC_COMPILER_OPTION_GLSL_VERSION, 450);
    spvc_compiler_options_set_bool(options, SPVC_COMPILER_OPTION_GLSL_ES, SPVC_FALSE);
    spvc_compiler_install_compiler_options(compiler, options);
    const char* source = nullptr;
    if (spvc_compiler_compile(compiler, &source) != SPVC_SUCCESS || !source) return {};
    return source;
}

const StageVarying* findVarying(const std::vector<StageVarying>& list, const char* semantic)
{
    for (const StageVarying& varying : list) {
        if (varying.semantic == semantic) return &varying;
    }
    return nullptr;
}

std::string vertexWrapper(const CompiledStage& stage)
{
    std::string text = "uniform vec2 qx_pixelOffset;\n";
    const bool writesFog = findVarying(stage.outputs, "FOG") != nullptr;
    if (!writesFog) text += "layout(location = " + std::to_string(kFogLocation) + ") out float qx_fogOut;\n";
    text += "void main()\n{\n    qx_stageMain();\n";
    if (!writesFog) text += "    qx_fogOut = 1.0;\n";
    // Direct3D 9 samples pixels at their integer corner: shift by half a pixel.
    text += "    gl_Position.xy += qx_pixelOffset * gl_Position.w;\n}\n";
    return text;
}

}  // namespace

std::string pixelEpilogue(const std::string& colourName, const std::string& fogName)
{
    std::string text = kPixelEpilogueDeclarations;
    std::string fog = fogName;
    if (fog.empty()) {
        text += "layout(location = " + std::to_string(kFogLocation) + ") in float qx_fogIn;\n";
        fog = "qx_fogIn";
    }
    text += "void main()\n{\n    qx_stageMain();\n";
    if (!colourName.empty()) {
        text += "    if (qx_fogEnable != 0)\n        " + colourName + ".rgb = mix(qx_fogColor.rgb, " + colourName +
                ".rgb, clamp(" + fog + ", 0.0, 1.0));\n";
        text += "    if (!qx_alphaPasses(" + colourName + ".a))\n        discard;\n";
    }
    return text + "}\n";
}

namespace {

// Names the colour output or the fog input `newName`, so the wrapper can use it; empty
// when the stage has none.
std::string nameInterface(spvc_compiler compiler, spvc_resources resources, bool input, const char* semantic,
                          const char* newName)
{
    const spvc_reflected_resource* list = nullptr;
    size_t count = 0;
    spvc_resources_get_resource_list_for_type(
        resources, input ? SPVC_RESOURCE_TYPE_STAGE_INPUT : SPVC_RESOURCE_TYPE_STAGE_OUTPUT, &list, &count);
    for (size_t i = 0; i < count; ++i) {
        const char* text = spvc_compiler_get_decoration_string(compiler, list[i].id, SpvDecorationUserSemantic);
        std::string name;
        int index = 0;
        splitSemantic(text ? text : "", name, index);
        if ((name == semantic || (name == "SV_TARGET" && std::string(semantic) == "COLOR")) && index == 0) {
            spvc_compiler_set_name(compiler, list[i].id, newName);
            return newName;
        }
    }
    return {};
}

}  // namespace

std::optional<CompiledStage> spirvToGlsl(const std::vector<uint32_t>& spirv, StageKind kind)
{
    spvc_context raw = nullptr;
    if (spvc_context_create(&raw) != SPVC_SUCCESS) return std::nullopt;
    ContextOwner context(raw, &spvc_context_destroy);
    spvc_parsed_ir ir = nullptr;
    spvc_compiler compiler = nullptr;
    spvc_resources resources = nullptr;
    if (spvc_context_parse_spirv(raw, spirv.data(), spirv.size(), &ir) != SPVC_SUCCESS ||
        spvc_context_create_compiler(raw, SPVC_BACKEND_GLSL, ir, SPVC_CAPTURE_MODE_TAKE_OWNERSHIP, &compiler) !=
            SPVC_SUCCESS ||
        spvc_compiler_create_shader_resources(compiler, &resources) != SPVC_SUCCESS)
        return std::nullopt;
    CompiledStage stage;
    stage.kind = kind;
    prepareUniforms(compiler, resources, kind);
    if (!placeInterface(compiler, resources, kind, true, stage.inputs) ||
        !placeInterface(compiler, resources, kind, false, stage.outputs))
        return std::nullopt;
    const std::string colourName =
        kind == StageKind::Pixel ? nameInterface(compiler, resources, false, "COLOR", "qx_colourOut") : "";
    const std::string fogName =
        kind == StageKind::Pixel ? nameInterface(compiler, resources, true, "FOG", "qx_fogFactor") : "";
    std::string glsl = glslOf(compiler);
    const size_t mainAt = glsl.rfind("void main()");
    if (glsl.empty() || mainAt == std::string::npos) return std::nullopt;
    glsl.replace(mainAt, 11, "void qx_stageMain()");
    glsl += kind == StageKind::Vertex ? vertexWrapper(stage) : pixelEpilogue(colourName, fogName);
    stage.glsl = std::move(glsl);
    return stage;
}

}  // namespace qx::gpu
