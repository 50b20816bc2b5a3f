#include "platform/gpu/ShaderStage.h"

#include "platform/gpu/SpirvToGlsl.h"

#include <glslang/Public/ResourceLimits.h>
#include <glslang/Public/ShaderLang.h>
#include <glslang/SPIRV/GlslangToSpv.h>

#include <algorithm>
#include <cctype>

namespace qx::gpu {

namespace {

/// glslang's process-wide tables (its built-in symbols), made on first use and freed with
/// this library's statics: a host that unloads a plugin holding the library gets them
/// back, where without the finalisation they would stay behind, out of anyone's reach.
struct GlslangProcess {
    GlslangProcess() { glslang::InitializeProcess(); }
    ~GlslangProcess() { glslang::FinalizeProcess(); }
    GlslangProcess(const GlslangProcess&) = delete;
    GlslangProcess& operator=(const GlslangProcess&) = delete;
};

void initialiseGlslangOnce() { static const GlslangProcess process; }

std::vector<uint32_t> hlslToSpirv(const std::string& hlsl, StageKind kind, const std::string& entry)
{
    initialiseGlslangOnce();
    const EShLanguage language = kind == StageKind::Vertex ? EShLangVertex : EShLangFragment;
    glslang::TShader shader(language);
    const char* text = hlsl.c_str();
    const int length = int(hlsl.size());
    shader.setStringsWithLengths(&text, &length, 1);
    shader.setEntryPoint(entry.c_str());
    shader.setEnvInput(glslang::EShSourceHlsl, language, glslang::EShClientOpenGL, 100);
    shader.setEnvClient(glslang::EShClientOpenGL, glslang::EShTargetOpenGL_450);
    shader.setEnvTarget(glslang::EShTargetSpv, glslang::EShTargetSpv_1_0);
    // Keeps the HLSL semantics in the SPIR-V, which is how stages are matched.
    shader.setEnvTargetHlslFunctionality1();
    shader.setAutoMapLocations(true);
    shader.setAutoMapBindings(true);
    // register(cN) globals land at offset 16 * N of the $Global block.
    const auto messages = EShMessages(EShMsgReadHlsl | EShMsgHlslDX9Compatible | EShMsgSpvRules | EShMsgHlslOffsets);
    if (!shader.parse(GetDefaultResources(), 100, false, messages)) return {};
    glslang::TProgram program;
    program.addShader(&shader);
    if (!program.link(messages) || !program.mapIO()) return {};
    std::vector<uint32_t> spirv;
    glslang::GlslangToSpv(*program.getIntermediate(language), spirv);
    return spirv;
}

}  // namespace

void splitSemantic(const std::string& text, std::string& name, int& index)
{
    size_t digits = text.size();
    while (digits > 0 && std::isdigit(static_cast<unsigned char>(text[digits - 1]))) --digits;
    name = text.substr(0, digits);
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return char(std::toupper(c)); });
    index = 0;
    // At most four digits: semantic indices are small, and this keeps the number in range.
    for (size_t i = digits; i < text.size() && i < digits + 4; ++i) index = index * 10 + (text[i] - '0');
}

int varyingLocation(const std::string& semantic, int index)
{
    struct Range {
        const char* name;
        int first;
        int count;
    };
    // Texture coordinates first, as Direct3D 9 numbers its interpolators; the rest after.
    static constexpr Range kRanges[] = {{"TEXCOORD", 0, 16},    {"COLOR", 16, 4},        {"FOG", kFogLocation, 1},
                                        {"NORMAL", 21, 2},      {"TANGENT", 23, 1},      {"BINORMAL", 24, 1},
                                        {"BLENDWEIGHT", 25, 1}, {"BLENDINDICES", 26, 1}, {"POSITION", 27, 4}};
    for (const Range& range : kRanges) {
        if (semantic == range.name && index >= 0 && index < range.count) return range.first + index;
    }
    return -1;
}

std::optional<CompiledStage> compileStage(const std::string& hlsl, StageKind kind, const std::string& entry)
{
    const std::vector<uint32_t> spirv = hlslToSpirv(hlsl, kind, entry);
    if (spirv.empty()) return std::nullopt;
    return spirvToGlsl(spirv, kind);
}

}  // namespace qx::gpu
