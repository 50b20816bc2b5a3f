#include "platform/gpu/PositionTStage.h"

#include "platform/gpu/GlApi.h"
#include "platform/gpu/SpirvToGlsl.h"

namespace qx::gpu {

namespace {

const char* vectorType(int components)
{
    static const char* const kTypes[] = {"float", "vec2", "vec3", "vec4"};
    return kTypes[(components >= 1 && components <= 4 ? components : 4) - 1];
}

const char* swizzle(int components)
{
    static const char* const kSwizzles[] = {".x", ".xy", ".xyz", ""};
    return kSwizzles[(components >= 1 && components <= 4 ? components : 4) - 1];
}

const D3DVERTEXELEMENT9* findElement(const std::vector<D3DVERTEXELEMENT9>& elements, int usage, int index)
{
    for (const D3DVERTEXELEMENT9& element : elements) {
        if (element.Stream == 0xFF) break;
        if (element.Usage == usage && element.UsageIndex == index) return &element;
    }
    return nullptr;
}

}  // namespace

std::string positionTVertexStage(const std::vector<D3DVERTEXELEMENT9>& elements, const CompiledStage& pixel,
                                 std::vector<AttributeSlot>& slots)
{
    std::string head = "#version 450\nuniform vec4 qx_viewport;\nlayout(location = 0) in vec4 qx_positionT;\n";
    head += "layout(location = " + std::to_string(kFogLocation) + ") out float qx_fogOut;\n";
    std::string body =
        "void main()\n{\n"
        "    float w = qx_positionT.w != 0.0 ? 1.0 / qx_positionT.w : 1.0;\n"
        // Pixel coordinates of the target; Direct3D 9 samples at the integer corner. The
        // shift stays a sub-pixel step short of a half, so that an edge through a pixel's
        // centre keeps Direct3D's top-left rule whatever OpenGL's rule for ties.
        "    vec2 pixel = qx_positionT.xy + (0.5 - 1.0 / 256.0) - qx_viewport.xy;\n"
        "    vec2 ndc = vec2(pixel.x / qx_viewport.z * 2.0 - 1.0, 1.0 - pixel.y / qx_viewport.w * 2.0);\n"
        "    gl_Position = vec4(ndc * w, qx_positionT.z * w, w);\n"
        "    qx_fogOut = 1.0;\n";
    slots.push_back({D3DDECLUSAGE_POSITIONT, 0, 0});
    GLuint nextLocation = 1;
    for (const StageVarying& input : pixel.inputs) {
        const int usage = usageOfSemantic(input.semantic);
        if (input.location == kFogLocation || usage < 0) continue;
        const std::string name = "qx_out" + std::to_string(input.location);
        head += "layout(location = " + std::to_string(input.location) + ") out " + vectorType(input.components) + " " +
                name + ";\n";
        std::string value = usage == D3DDECLUSAGE_COLOR ? "vec4(1.0)" : "vec4(0.0, 0.0, 0.0, 1.0)";
        if (findElement(elements, usage, input.index)) {
            value = "qx_in" + std::to_string(nextLocation);
            head += "layout(location = " + std::to_string(nextLocation) + ") in vec4 " + value + ";\n";
            slots.push_back({BYTE(usage), BYTE(input.index), nextLocation++});
        }
        body += "    " + name + " = " + value + swizzle(input.components) + ";\n";
    }
    return head + body + "}\n";
}

CompiledStage passThroughPixelStage()
{
    CompiledStage stage;
    stage.kind = StageKind::Pixel;
    stage.inputs.push_back({"COLOR", 0, 16, 4});
    stage.glsl =
        "#version 450\nlayout(location = 16) in vec4 qx_colour;\nlayout(location = 0) out vec4 qx_target;\n"
        "void qx_stageMain()\n{\n    qx_target = qx_colour;\n}\n" +
        pixelEpilogue("qx_target", "");
    return stage;
}

}  // namespace qx::gpu
