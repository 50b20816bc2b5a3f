// The vertex shader of the effect text: blended positions, the model matrix, world
// geometry, fog, texture coordinates, the reflection lookup and vertex lighting.
#include "qx4d/content/ShaderKeys.h"
#include "qx4d/content/ShaderWriter.h"

namespace qx4d {

namespace gpu = qx::gpu;

void ShaderWriter::WriteVertexMain()
{
    Emit("void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)");
    Emit("{");
    WriteBlendedGeometry();
    WriteWorldGeometry();
    WriteVertexOutputs();
    WriteVertexLighting();
    Emit("}");
    EmptyLine();
}

// Two position streams are tweened or added, and so are the normals, tangents and
// binormals after them, as long as each has its second stream: the first one missing
// stops the chain.
void ShaderWriter::WriteBlendedGeometry()
{
    bool blended = false;
    for (const gpu::D3DVERTEXELEMENT9& record : records)
        blended = blended || (record.Usage == gpu::D3DDECLUSAGE_POSITION && record.UsageIndex > 0);
    if (!blended) {
        Emit("float3 pos = IN.Pos0;");
        if (!Has(gpu::D3DDECLUSAGE_NORMAL, 0)) return;
        Emit("float3 normal = IN.Normal0;");
        if (!Has(gpu::D3DDECLUSAGE_TANGENT, 0)) return;
        Emit("float3 tangent = IN.Tangent0;");
        if (Has(gpu::D3DDECLUSAGE_BINORMAL, 0)) Emit("float3 binormal = IN.Binormal0;");
        return;
    }
    if (material.flags & kMaterialTween) {
        Emit("float3 pos = lerp(IN.Pos0, IN.Pos1, g_TweenFactor);");
        if (!Has(gpu::D3DDECLUSAGE_NORMAL, 1)) return;
        Emit("float3 normal = normalize(lerp(IN.Normal0, IN.Normal1, g_TweenFactor));");
        if (!Has(gpu::D3DDECLUSAGE_TANGENT, 1)) return;
        Emit("float3 tangent = normalize(lerp(IN.Tangent0, IN.Tangent1, g_TweenFactor));");
        if (Has(gpu::D3DDECLUSAGE_BINORMAL, 1))
            Emit("float3 binormal = normalize(lerp(IN.Binormal0, IN.Binormal1, g_TweenFactor));");
        return;
    }
    Emit("float3 pos = IN.Pos0 + IN.Pos1;");
    if (!Has(gpu::D3DDECLUSAGE_NORMAL, 1)) return;
    Emit("float3 normal = IN.Normal0 + IN.Normal1;");
    if (!Has(gpu::D3DDECLUSAGE_TANGENT, 1)) return;
    Emit("float3 tangent = IN.Tangent0 + IN.Tangent1;");
    if (Has(gpu::D3DDECLUSAGE_BINORMAL, 1)) Emit("float3 binormal = IN.Binormal0 + IN.Binormal1;");
}

void ShaderWriter::WriteWorldGeometry()
{
    const uint32_t flags = material.flags;
    if (Has(gpu::D3DDECLUSAGE_BLENDWEIGHT, 0) && Has(gpu::D3DDECLUSAGE_BLENDINDICES, 0)) {
        Emit("float4x3 model = g_Model[IN.BoneIndices[0]] * IN.BoneWeights[0];");
        for (int i = 1; i <= 3; ++i) Emit("model += g_Model[IN.BoneIndices[%d]] * IN.BoneWeights[%d];", i, i);
        Emit("float3x3 modelIT = (float3x3)model;");
    } else {
        Emit("float4x3 model = g_Model;");
        if (flags & kMaterialModelIT)
            Emit("float3x3 modelIT = g_ModelIT;");
        else
            Emit("float3x3 modelIT = (float3x3)g_Model;");
    }
    Emit("float3 worldPos = mul(float4(pos, 1.0), model);");
    if (Has(gpu::D3DDECLUSAGE_NORMAL, 0)) {
        const bool normalised = flags & kMaterialNormalize;
        Emit(normalised ? "float3 worldNormal = normalize(mul(normal, modelIT));"
                        : "float3 worldNormal = mul(normal, modelIT);");
        if (Has(gpu::D3DDECLUSAGE_TANGENT, 0)) {
            Emit(normalised ? "float3 worldTangent = normalize(mul(tangent, modelIT));"
                            : "float3 worldTangent = mul(tangent, modelIT);");
            if (Has(gpu::D3DDECLUSAGE_BINORMAL, 0))
                Emit(normalised ? "float3 worldBinormal = normalize(mul(binormal, modelIT));"
                                : "float3 worldBinormal = mul(binormal, modelIT);");
            else
                Emit("float3 worldBinormal = cross(worldTangent, worldNormal);");
        }
    }
    Emit("OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);");
    if ((flags & kMaterialEyePosition) || material.reflective)
        Emit("float3 worldViewDir = normalize(g_vEyePos - worldPos);");
}

void ShaderWriter::WriteVertexOutputs()
{
    static constexpr const char* kFogModes[] = {"FOG_LINEAR", "FOG_EXP", "FOG_EXP_2"};
    if (material.fogEnable && fogType >= 1 && fogType <= 3)
        Emit("OUT.Fog = DoFog(distance(g_vEyePos, worldPos), g_Fog.x, g_Fog.y, %s);", kFogModes[fogType - 1]);
    for (int i = 0; i < 3; ++i) {
        if (Has(gpu::D3DDECLUSAGE_TEXCOORD, i)) Emit("OUT.TexCoord%d = IN.TexCoord%d;", i, i);
    }
    if (material.reflective) {
        Emit("float3 refl = reflect(worldViewDir, worldNormal);");
        Emit("refl.z = abs(refl.z);");
        Emit("refl.z += 1;");
        Emit("float f = 2 * length(refl);");
        Emit("OUT.TexCoord%d = float2(0.5, 0.5) + refl.xy / f;", nextTexCoord);
    }
}

void ShaderWriter::WriteVertexLighting()
{
    const uint32_t flags = material.flags;
    if (flags & kMaterialVertexLighting) {
        Emit("OUT.Diffuse = g_GlobalAmbient;");
        if (flags & kMaterialLit) Emit("OUT.Specular = float3(0.0, 0.0, 0.0);");
        static constexpr LightingNames kVertexNames{"worldNormal", "worldPos", "worldViewDir", "OUT.Diffuse",
                                                    "OUT.Specular"};
        int index = 0;
        for (const uint32_t key : material.shaderKeys) {
            if (!(key & kKeyPerPixel)) EmitLightCall(key, index, kVertexNames);
            ++index;
        }
    }
    if (flags & kMaterialPixelLighting) {
        Emit("OUT.WorldNormal = worldNormal;");
        Emit("OUT.WorldPos = worldPos;");
        if (flags & kMaterialLit) Emit("OUT.WorldViewDir = worldViewDir;");
        if (HasTexture(kSemanticNormal)) Emit("OUT.WorldTangent = worldTangent;");
    }
}

}  // namespace qx4d
