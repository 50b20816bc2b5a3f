// The frame of the effect text: emitting lines, the vertex structures, the globals with
// their registers, texture samples, light calls and the technique.
#include "qx4d/content/ShaderWriter.h"

#include "qx4d/content/ShaderKeys.h"
#include "qx4d/core/FileManager.h"

#include <cstdarg>
#include <cstdio>

namespace qx4d {

namespace gpu = qx::gpu;

namespace {

constexpr uint8_t kEndStream = 0xFF;
constexpr int kTexCoordSlots = 16;

}  // namespace

bool Generate(const Material& material, std::span<const gpu::D3DVERTEXELEMENT9> declaration, int32_t fogType,
              std::string& text)
{
    FileManager* files = FileManager::Instance();
    size_t size = 0;
    const std::unique_ptr<uint8_t[]> head = files ? files->Load(u"EFFECTS:common.fxh", size) : nullptr;
    if (!head) return false;
    ShaderWriter writer(material, declaration, fogType);
    text = writer.Write(std::string(reinterpret_cast<const char*>(head.get()), size));
    return true;
}

ShaderWriter::ShaderWriter(const Material& source, std::span<const gpu::D3DVERTEXELEMENT9> declaration,
                           int32_t sceneFogType)
    : material(source), fogType(sceneFogType)
{
    for (const gpu::D3DVERTEXELEMENT9& record : declaration) {
        if (record.Stream == kEndStream) break;
        records.push_back(record);
    }
}

std::string ShaderWriter::Write(std::string head)
{
    text = std::move(head);
    WriteVertexInput();
    WriteVertexOutput();
    WriteGlobals();
    WriteVertexMain();
    WriteBaseColorAndAlpha();
    WriteNormal();
    WriteLighting();
    WritePixelMain();
    WriteTechnique();
    return std::move(text);
}

// The indent is 1 inside a "{" block and 0 outside: it is a state, not a depth, so the
// lines of a pass inside the technique are indented once, like any other block, and the
// technique's own lines after a pass's "}" are not indented.
void ShaderWriter::Emit(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    char line[512];
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (length < 0) return;
    const std::string_view body(line, std::min<size_t>(size_t(length), sizeof line - 1));
    if (!body.empty() && body.front() == '}') indent = 0;
    text.append(size_t(indent), '\t');
    text.append(body);
    text.push_back('\n');
    if (!body.empty() && body.front() == '{') indent = 1;
}

bool ShaderWriter::Has(int usage, int index) const
{
    for (const gpu::D3DVERTEXELEMENT9& record : records) {
        if (record.Usage == usage && record.UsageIndex == index) return true;
    }
    return false;
}

bool ShaderWriter::HasTexture(uint8_t semantic) const
{
    for (const MaterialTexture& texture : material.textures) {
        if (texture.semanticName == semantic) return true;
    }
    return false;
}

int ShaderWriter::TakeFreeTexCoord()
{
    for (int slot = 0; slot < kTexCoordSlots; ++slot) {
        if (!texCoordUsed[size_t(slot)]) {
            texCoordUsed[size_t(slot)] = true;
            return slot;
        }
    }
    return -1;
}

std::string ShaderWriter::Sample(const MaterialTexture& texture) const
{
    static constexpr const char* kOne[] = {"x", "y", "z", "w"};
    static constexpr const char* kThree[] = {"xyz", "yzw"};
    const char* swizzle = nullptr;
    if (texture.componentCount == 1 && texture.startComponent < 4)
        swizzle = kOne[texture.startComponent];
    else if (texture.componentCount == 3 && texture.startComponent < 2)
        swizzle = kThree[texture.startComponent];
    if (!swizzle) return std::string();
    char sample[96];
    std::snprintf(sample, sizeof sample, "tex2D(g_Sampler%d, IN.TexCoord%d).%s", texture.samplerSlot,
                  texture.texCoordSlot, swizzle);
    return sample;
}

void ShaderWriter::EmitLightCall(uint32_t key, int index, const LightingNames& names)
{
    const bool specular = key & kKeySpecular;
    const char* soft = (key & kKeySoftEdge) ? "true" : "false";
    const LightingNames& n = names;
    switch (LightKindOf(key)) {
    case KeyLightKind::None: Emit("%s += g_Light%d.Diffuse;", n.diffuse, index); break;
    case KeyLightKind::Distant:
        if (specular)
            Emit("DoDistantLightSpec(%s, %s, g_Light%d, %s, %s);", n.normal, n.viewDir, index, n.diffuse, n.specular);
        else
            Emit("DoDistantLight(%s, g_Light%d, %s);", n.normal, index, n.diffuse);
        break;
    case KeyLightKind::Point:
        if (specular)
            Emit("DoPointLightSpec(%s, %s, %s, g_Light%d, %s, %s, %s);", n.normal, n.position, n.viewDir, index,
                 n.diffuse, n.specular, "FALL_OFF");
        else
            Emit("DoPointLight(%s, %s, g_Light%d, %s, %s);", n.normal, n.position, index, n.diffuse, "FALL_OFF");
        break;
    case KeyLightKind::Spot:
        if (specular)
            Emit("DoSpotLightSpec(%s, %s, %s, g_Light%d, %s, %s, %s, %s);", n.normal, n.position, n.viewDir, index,
                 n.diffuse, n.specular, "FALL_OFF", soft);
        else
            Emit("DoSpotLight(%s, %s, g_Light%d, %s, %s, %s);", n.normal, n.position, index, n.diffuse, "FALL_OFF",
                 soft);
        break;
    }
}

void ShaderWriter::WriteVertexInput()
{
    Emit("struct VS_INPUT");
    Emit("{");
    for (const gpu::D3DVERTEXELEMENT9& record : records) {
        const int index = record.UsageIndex;
        switch (record.Usage) {
        case gpu::D3DDECLUSAGE_POSITION: Emit("float3 Pos%d : POSITION%d;", index, index); break;
        case gpu::D3DDECLUSAGE_NORMAL: Emit("float3 Normal%d : NORMAL%d;", index, index); break;
        case gpu::D3DDECLUSAGE_TEXCOORD: Emit("float2 TexCoord%d : TEXCOORD%d;", index, index); break;
        case gpu::D3DDECLUSAGE_TANGENT: Emit("float3 Tangent%d : TANGENT%d;", index, index); break;
        case gpu::D3DDECLUSAGE_BINORMAL: Emit("float3 Binormal%d : BINORMAL%d;", index, index); break;
        case gpu::D3DDECLUSAGE_COLOR: Emit("float3 Color%d : COLOR%d;", index, index); break;
        case gpu::D3DDECLUSAGE_BLENDWEIGHT: Emit("float4 BoneWeights : BLENDWEIGHT;"); break;
        case gpu::D3DDECLUSAGE_BLENDINDICES: Emit("float4 BoneIndices : BLENDINDICES;"); break;
        default: break;
        }
    }
    Emit("};");
    EmptyLine();
}

void ShaderWriter::WriteVertexOutput()
{
    const uint32_t flags = material.flags;
    Emit("struct VS_OUTPUT");
    Emit("{");
    Emit("float4 Pos : POSITION;");
    if (material.FogActive(fogType)) Emit("float Fog : FOG;");
    for (const gpu::D3DVERTEXELEMENT9& record : records) {
        if (record.Usage != gpu::D3DDECLUSAGE_TEXCOORD) continue;
        Emit("float2 TexCoord%d : TEXCOORD%d;", record.UsageIndex, record.UsageIndex);
        texCoordUsed[record.UsageIndex] = true;
        nextTexCoord = std::max(nextTexCoord, record.UsageIndex + 1);
    }
    if (material.reflective) {
        Emit("float2 TexCoord%d : TEXCOORD%d;", nextTexCoord, nextTexCoord);
        if (size_t(nextTexCoord) < texCoordUsed.size()) texCoordUsed[size_t(nextTexCoord)] = true;
    }
    if (flags & kMaterialVertexLighting) {
        if (!(flags & kMaterialLightingInTexCoords)) {
            Emit("float3 Diffuse : COLOR0;");
            if (flags & kMaterialLit) Emit("float3 Specular : COLOR1;");
        } else {
            Emit("float3 Diffuse : TEXCOORD%d;", TakeFreeTexCoord());
            if (flags & kMaterialLit) Emit("float3 Specular : TEXCOORD%d;", TakeFreeTexCoord());
        }
    }
    if (flags & kMaterialPixelLighting) {
        Emit("float3 WorldNormal : TEXCOORD%d;", TakeFreeTexCoord());
        Emit("float3 WorldPos : TEXCOORD%d;", TakeFreeTexCoord());
        if (HasTexture(kSemanticNormal)) Emit("float3 WorldTangent : TEXCOORD%d;", TakeFreeTexCoord());
        if (flags & kMaterialLit) Emit("float3 WorldViewDir : TEXCOORD%d;", TakeFreeTexCoord());
    }
    Emit("};");
}

void ShaderWriter::WriteGlobals()
{
    Emit("float4 g_Fog : register(c1);");
    Emit("float4 g_pAlphaReflective : register(c%d);", psConstant++);
    Emit("float4 g_psFogColor : register(c%d);", psConstant++);
    for (const MaterialTexture& texture : material.textures) {
        if (samplerUsed[texture.samplerSlot]) continue;
        Emit("sampler g_Sampler%d : register(s%d);", texture.samplerSlot, texture.samplerSlot);
        samplerUsed[texture.samplerSlot] = true;
    }
    Emit("float4x4 g_ViewProj : register(c%d);", vsConstant);
    vsConstant += 4;
    if (material.flags & kMaterialEyePosition) {
        Emit("float3 g_vEyePos : register(c%d);", vsConstant++);
        Emit("float3 g_pEyePos : register(c%d);", psConstant++);
    }
    Emit("float3 g_GlobalAmbient : register(c%d);", vsConstant++);
    WriteLightGlobals();
    if (material.bones > 0) {
        Emit("float4x3 g_Model[%d] : register(c%d);", material.bones, vsConstant);
    } else {
        // g_Model takes three registers; the inverse transpose follows it, as the draw
        // writes them in one run.
        Emit("float4x3 g_Model : register(c%d);", vsConstant);
        vsConstant += 3;
        if (material.flags & kMaterialModelIT) Emit("float3x3 g_ModelIT : register(c%d);", vsConstant);
    }
    EmptyLine();
}

void ShaderWriter::WriteLightGlobals()
{
    int index = 0;
    for (const uint32_t key : material.shaderKeys) {
        const char* suffix = (key & kKeySpecular) ? "Spec" : "";
        int& counter = (key & kKeyPerPixel) ? psConstant : vsConstant;
        const int extra = (key & kKeySpecular) ? 1 : 0;
        switch (LightKindOf(key)) {
        case KeyLightKind::Spot:
            Emit("SpotLight%s g_Light%d : register(c%d);", suffix, index, counter);
            counter += 3 + extra;
            break;
        case KeyLightKind::Point:
            Emit("PointLight%s g_Light%d : register(c%d);", suffix, index, counter);
            counter += 2 + extra;
            break;
        case KeyLightKind::Distant:
            Emit("DistantLight%s g_Light%d : register(c%d);", suffix, index, counter);
            counter += 2 + extra;
            break;
        case KeyLightKind::None: break;
        }
        ++index;
    }
}

void ShaderWriter::WriteTechnique()
{
    const bool fog = material.FogActive(fogType);
    Emit("technique t0");
    Emit("{");
    Emit("pass p0");
    Emit("{");
    if (material.cullMode == 1)
        Emit("CullMode = NONE;");
    else if (material.cullMode == 2)
        Emit("CullMode = CW;");
    if (fog) Emit("FogEnable = TRUE;");
    if (material.alphaBlendEnable) {
        Emit("AlphaBlendEnable = TRUE;");
        WriteBlend("SrcBlend", material.srcBlend);
        WriteBlend("DestBlend", material.destBlend);
    }
    if (!material.depthEnable) Emit("ZEnable = FALSE;");
    if (!material.depthWriteEnable) Emit("ZWriteEnable = FALSE;");
    Emit("VertexShader = compile vs_1_1 vs_main();");
    int baseColors = 0;
    for (const MaterialTexture& texture : material.textures)
        baseColors += texture.semanticName == kSemanticBaseColor ? 1 : 0;
    if (baseColors >= 2)
        Emit("PixelShader = compile ps_1_4 ps_main();");
    else
        Emit("PixelShader = compile ps_1_1 ps_main();");
    Emit("}");
    Emit("pass restore");
    Emit("{");
    if (material.cullMode != 3) Emit("CullMode = CCW;");
    if (fog) Emit("FogEnable = FALSE;");
    if (material.alphaBlendEnable) Emit("AlphaBlendEnable = FALSE;");
    if (!material.depthEnable) Emit("ZEnable = TRUE;");
    if (!material.depthWriteEnable) Emit("ZWriteEnable = TRUE;");
    Emit("}");
    Emit("}");
}

// Codes 1 to 10 have a line; any other code writes none.
void ShaderWriter::WriteBlend(const char* state, int32_t code)
{
    static constexpr const char* kNames[] = {"ZERO",        "ONE",       "SRCCOLOR",     "INVSRCCOLOR", "SRCALPHA",
                                             "INVSRCALPHA", "DESTALPHA", "INVDESTALPHA", "DESTCOLOR",   "INVDESTCOLOR"};
    if (code >= 1 && code <= 10) Emit("%s = %s;", state, kNames[code - 1]);
}

}  // namespace qx4d
