// The pixel shader of the effect text: base colour, alpha, the normal (with a normal
// map), lighting per pixel and ps_main.
#include "qx4d/content/ShaderKeys.h"
#include "qx4d/content/ShaderWriter.h"

namespace qx4d {

void ShaderWriter::WriteBaseColorAndAlpha()
{
    Emit("float3 GetBaseColor(VS_OUTPUT IN)");
    Emit("{");
    Emit("float3 baseColor = float3(1, 1, 1);");
    Emit("float opacity = 1;");
    bool first = true;
    for (const MaterialTexture& texture : material.textures) {
        if (texture.semanticName != kSemanticBaseColor) continue;
        // Later colour layers blend over the first with the second layer's opacity.
        if (first)
            Emit("baseColor = %s;", Sample(texture).c_str());
        else
            Emit("baseColor = lerp(baseColor, %s, g_pAlphaReflective.z);", Sample(texture).c_str());
        first = false;
    }
    Emit("return baseColor;");
    Emit("}");
    EmptyLine();

    Emit("float3 GetAlbedo(VS_OUTPUT IN)");
    Emit("{");
    Emit("return GetBaseColor(IN);");
    Emit("}");
    EmptyLine();

    Emit("float GetAlpha(VS_OUTPUT IN)");
    Emit("{");
    Emit("float alpha = g_pAlphaReflective.x;");
    for (const MaterialTexture& texture : material.textures) {
        if (texture.semanticName == kSemanticAlpha) Emit("alpha = %s;", Sample(texture).c_str());
    }
    Emit("return alpha;");
    Emit("}");
    EmptyLine();
}

void ShaderWriter::WriteNormal()
{
    Emit("float3 GetNormal(VS_OUTPUT IN)");
    Emit("{");
    Emit("float3 normal = float3(0.0, 0.0, 0.0);");
    if (material.flags & kMaterialPixelLighting) Emit("normal = normalize(IN.WorldNormal);");
    for (const MaterialTexture& texture : material.textures) {
        if (texture.semanticName != kSemanticNormal) continue;
        Emit("float3 t = normalize(IN.WorldTangent);");
        Emit("float3 n = normalize(IN.WorldNormal);");
        Emit("float3 b = cross(t, n);");
        Emit("float3x3 tbn = float3x3(t, b, n);");
        // The sampler is named g_pSampler here, not g_Sampler: the include file maps it.
        Emit("normal = tex2D(g_pSampler%d, IN.TexCoord%d + offset).xyz * 2.0 - 1.0;", texture.samplerSlot,
             texture.texCoordSlot);
        Emit("normal = normalize(normal);");
        Emit("normal = mul(normal, (float3x3)tbn);");
        break;
    }
    Emit("return normal;");
    Emit("}");
    EmptyLine();
}

void ShaderWriter::WriteLighting()
{
    const uint32_t flags = material.flags;
    Emit("void GetLighting(VS_OUTPUT IN, out float3 diffuseLighting, out float3 specularLighting, float2 offset)");
    Emit("{");
    Emit("diffuseLighting = float3(0.0, 0.0, 0.0);");
    Emit("specularLighting = float3(0.0, 0.0, 0.0);");
    if (!(flags & (kMaterialVertexLighting | kMaterialPixelLighting))) Emit("diffuseLighting = float3(1.0, 1.0, 1.0);");
    if (flags & kMaterialVertexLighting) {
        Emit("diffuseLighting += IN.Diffuse;");
        if (flags & kMaterialLit) Emit("specularLighting += IN.Specular;");
    }
    if (flags & kMaterialPixelLighting) {
        Emit("float3 normal = GetNormal(IN);");
        Emit("float3 viewDir = normalize(IN.WorldViewDir);");
        static constexpr LightingNames kPixelNames{"normal", "IN.WorldPos", "viewDir", "diffuseLighting",
                                                   "specularLighting"};
        int index = 0;
        for (const uint32_t key : material.shaderKeys) {
            if (key & kKeyPerPixel) EmitLightCall(key, index, kPixelNames);
            ++index;
        }
    }
    for (const MaterialTexture& texture : material.textures) {
        if ((flags & kMaterialLit) && texture.semanticName == kSemanticSpecularity)
            Emit("specularLighting *= %s;", Sample(texture).c_str());
    }
    for (const MaterialTexture& texture : material.textures) {
        if (material.reflective && texture.semanticName == kSemanticReflection)
            Emit("diffuseLighting += %s * g_pAlphaReflective.y;", Sample(texture).c_str());
    }
    Emit("}");
    EmptyLine();
}

void ShaderWriter::WritePixelMain()
{
    Emit("float4 ps_main(VS_OUTPUT IN) : COLOR0");
    Emit("{");
    Emit("float2 offset = float2(0.0, 0.0);");
    Emit("float3 albedo = GetAlbedo(IN);");
    Emit("float alpha = GetAlpha(IN);");
    Emit("float3 diffuseLighting;");
    Emit("float3 specularLighting;");
    Emit("GetLighting(IN, diffuseLighting, specularLighting, offset);");
    Emit("float3 diffuseComponent = albedo * diffuseLighting;");
    if (pixelFog)
        Emit("return float4(lerp(diffuseComponent + specularLighting, g_psFogColor.xyz, saturate(IN.Fog)), alpha);");
    else
        Emit("return float4(diffuseComponent + specularLighting, alpha);");
    Emit("}");
    EmptyLine();
}

}  // namespace qx4d
