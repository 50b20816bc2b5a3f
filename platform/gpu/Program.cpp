#include "platform/gpu/Program.h"

#include "platform/gpu/GlApi.h"
#include "platform/gpu/PositionTStage.h"

#include <cstring>

namespace qx::gpu {

namespace {

GlName compileShader(const std::shared_ptr<Context>& context, GLenum type, const std::string& source)
{
    GlName shader = createGlName(context, GlKind::Shader, type);
    const char* text = source.c_str();
    glShaderSource(shader.get(), 1, &text, nullptr);
    glCompileShader(shader.get());
    GLint ok = GL_FALSE;
    glGetShaderiv(shader.get(), GL_COMPILE_STATUS, &ok);
    return ok == GL_TRUE ? std::move(shader) : GlName();
}

std::vector<AttributeSlot> slotsOfVertexStage(const CompiledStage& vertex)
{
    std::vector<AttributeSlot> slots;
    for (const StageVarying& input : vertex.inputs) {
        const int usage = usageOfSemantic(input.semantic);
        if (usage >= 0) slots.push_back({BYTE(usage), BYTE(input.index), GLuint(input.location)});
    }
    return slots;
}

void findUniforms(LinkedProgram& linked)
{
    const GLuint program = linked.program.get();
    linked.vertexConstants = glGetUniformLocation(program, kVertexConstants);
    linked.pixelConstants = glGetUniformLocation(program, kPixelConstants);
    linked.pixelOffset = glGetUniformLocation(program, "qx_pixelOffset");
    linked.viewport = glGetUniformLocation(program, "qx_viewport");
    linked.fogEnable = glGetUniformLocation(program, "qx_fogEnable");
    linked.fogColor = glGetUniformLocation(program, "qx_fogColor");
    linked.alphaFunc = glGetUniformLocation(program, "qx_alphaFunc");
    linked.alphaRef = glGetUniformLocation(program, "qx_alphaRef");
}

}  // namespace

int usageOfSemantic(const std::string& name)
{
    static const char* const kUsages[] = {"POSITION", "BLENDWEIGHT", "BLENDINDICES", "NORMAL",     "PSIZE",
                                          "TEXCOORD", "TANGENT",     "BINORMAL",     "TESSFACTOR", "POSITIONT",
                                          "COLOR",    "FOG",         "DEPTH",        "SAMPLE"};
    for (int usage = 0; usage < int(std::size(kUsages)); ++usage) {
        if (name == kUsages[usage]) return usage;
    }
    return -1;
}

bool hasPositionT(const std::vector<D3DVERTEXELEMENT9>& elements)
{
    for (const D3DVERTEXELEMENT9& element : elements) {
        if (element.Stream == 0xFF) break;
        if (element.Usage == D3DDECLUSAGE_POSITIONT) return true;
    }
    return false;
}

PassShaders::PassShaders(std::shared_ptr<Context> context, std::optional<CompiledStage> vertex,
                         std::optional<CompiledStage> pixel)
    : context_(std::move(context)), vertex_(std::move(vertex)),
      pixel_(pixel ? std::move(*pixel) : passThroughPixelStage())
{}

const LinkedProgram* PassShaders::programFor(const std::vector<D3DVERTEXELEMENT9>& elements)
{
    if (!hasPositionT(elements)) {
        if (!programmableTried_ && vertex_) programmable_ = link(vertex_->glsl, slotsOfVertexStage(*vertex_), false);
        programmableTried_ = true;
        return programmable_.get();
    }
    std::vector<uint8_t> key(elements.size() * sizeof(D3DVERTEXELEMENT9));
    std::memcpy(key.data(), elements.data(), key.size());
    auto found = positionT_.find(key);
    if (found == positionT_.end()) {
        std::vector<AttributeSlot> slots;
        const std::string glsl = positionTVertexStage(elements, pixel_, slots);
        found = positionT_.emplace(std::move(key), link(glsl, slots, true)).first;
    }
    return found->second.get();
}

std::unique_ptr<LinkedProgram> PassShaders::link(const std::string& vertexGlsl, const std::vector<AttributeSlot>& slots,
                                                 bool positionT) const
{
    if (!context_->makeCurrent()) return nullptr;
    const GlName vertexShader = compileShader(context_, GL_VERTEX_SHADER, vertexGlsl);
    const GlName pixelShader = compileShader(context_, GL_FRAGMENT_SHADER, pixel_.glsl);
    if (!vertexShader || !pixelShader) return nullptr;
    auto linked = std::make_unique<LinkedProgram>();
    linked->program = createGlName(context_, GlKind::Program);
    glAttachShader(linked->program.get(), vertexShader.get());
    glAttachShader(linked->program.get(), pixelShader.get());
    glLinkProgram(linked->program.get());
    GLint ok = GL_FALSE;
    glGetProgramiv(linked->program.get(), GL_LINK_STATUS, &ok);
    if (ok != GL_TRUE) return nullptr;
    linked->attributes = slots;
    linked->positionT = positionT;
    findUniforms(*linked);
    return linked;
}

}  // namespace qx::gpu
