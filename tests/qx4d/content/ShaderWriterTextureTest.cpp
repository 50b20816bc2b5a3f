// The generated effect text for textures and texture coordinates: reflection, normal
// and height maps, colour layers, sample swizzles, and coordinate sets that run out.
// Four spaces in the expected text stand for a tab.
#include "tests/qx4d/content/ShaderWriterFixture.h"

namespace qx4d::test {
namespace {

TEST_F(ShaderWriterTest, Reflective)
{
    Material material;
    material.flags = 0x10003;
    material.reflective = true;
    material.textures = {Texture(kSemanticBaseColor, 0, 0), Texture(kSemanticReflection, 1, 1)};
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}, {kTex, 0}}));
    EXPECT_EQ(Section(text, "struct VS_OUTPUT", "};"), Tabbed(R"(struct VS_OUTPUT
{
    float4 Pos : POSITION;
    float2 TexCoord0 : TEXCOORD0;
    float2 TexCoord1 : TEXCOORD1;
};
)"));
    EXPECT_EQ(Section(text, "float4 g_psFogColor : register(c1);", "float4x4 g_ViewProj : register(c2);"),
              R"(float4 g_psFogColor : register(c1);
sampler g_Sampler0 : register(s0);
sampler g_Sampler1 : register(s1);
float4x4 g_ViewProj : register(c2);
)");
    EXPECT_EQ(Section(text, "OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);", "}"),
              Tabbed(R"(    OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);
    float3 worldViewDir = normalize(g_vEyePos - worldPos);
    OUT.TexCoord0 = IN.TexCoord0;
    float3 refl = reflect(worldViewDir, worldNormal);
    refl.z = abs(refl.z);
    refl.z += 1;
    float f = 2 * length(refl);
    OUT.TexCoord1 = float2(0.5, 0.5) + refl.xy / f;
}
)"));
    EXPECT_NE(text.find("\tbaseColor = tex2D(g_Sampler0, IN.TexCoord0).xyz;\n"), std::string::npos);
    EXPECT_EQ(Section(text, "specularLighting = float3(0.0, 0.0, 0.0);", "}"),
              Tabbed(R"(    specularLighting = float3(0.0, 0.0, 0.0);
    diffuseLighting = float3(1.0, 1.0, 1.0);
    diffuseLighting += tex2D(g_Sampler1, IN.TexCoord1).xyz * g_pAlphaReflective.y;
}
)"));
    // A reflection texture on a material that isn't reflective adds nothing.
    material.reflective = false;
    EXPECT_EQ(Generated(material, Declaration({{kPos, 0}, {kNormal, 0}, {kTex, 0}})).find("g_pAlphaReflective.y"),
              std::string::npos);
}

// A normal map with a per-pixel light; the specularity map scales specular light, and a
// height map (here sharing the colour's sampler) adds nothing.
TEST_F(ShaderWriterTest, NormalMapPerPixel)
{
    Material material;
    material.shaderKeys = {0x61200};
    material.flags = 0x10053;
    material.textures = {Texture(kSemanticBaseColor, 0, 0), Texture(kSemanticNormal, 1, 0),
                         Texture(kSemanticSpecularity, 2, 0, 0, 1), Texture(kSemanticHeight, 0, 0)};
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}, {kTex, 0}, {kTangent, 0}}));
    EXPECT_EQ(Section(text, "struct VS_OUTPUT", "};"), Tabbed(R"(struct VS_OUTPUT
{
    float4 Pos : POSITION;
    float2 TexCoord0 : TEXCOORD0;
    float3 WorldNormal : TEXCOORD1;
    float3 WorldPos : TEXCOORD2;
    float3 WorldTangent : TEXCOORD3;
    float3 WorldViewDir : TEXCOORD4;
};
)"));
    EXPECT_EQ(Section(text, "float4 g_psFogColor : register(c1);", "float3x3 g_ModelIT : register(c11);"),
              R"(float4 g_psFogColor : register(c1);
sampler g_Sampler0 : register(s0);
sampler g_Sampler1 : register(s1);
sampler g_Sampler2 : register(s2);
float4x4 g_ViewProj : register(c2);
float3 g_vEyePos : register(c6);
float3 g_pEyePos : register(c2);
float3 g_GlobalAmbient : register(c7);
DistantLightSpec g_Light0 : register(c3);
float4x3 g_Model : register(c8);
float3x3 g_ModelIT : register(c11);
)");
    EXPECT_EQ(Section(text, "void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)", "}"),
              Tabbed(R"(void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)
{
    float3 pos = IN.Pos0;
    float3 normal = IN.Normal0;
    float3 tangent = IN.Tangent0;
    float4x3 model = g_Model;
    float3x3 modelIT = g_ModelIT;
    float3 worldPos = mul(float4(pos, 1.0), model);
    float3 worldNormal = normalize(mul(normal, modelIT));
    float3 worldTangent = normalize(mul(tangent, modelIT));
    float3 worldBinormal = cross(worldTangent, worldNormal);
    OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);
    float3 worldViewDir = normalize(g_vEyePos - worldPos);
    OUT.TexCoord0 = IN.TexCoord0;
    OUT.WorldNormal = worldNormal;
    OUT.WorldPos = worldPos;
    OUT.WorldViewDir = worldViewDir;
    OUT.WorldTangent = worldTangent;
}
)"));
    EXPECT_EQ(Section(text, "float3 GetNormal(VS_OUTPUT IN)", "}"), Tabbed(R"(float3 GetNormal(VS_OUTPUT IN)
{
    float3 normal = float3(0.0, 0.0, 0.0);
    normal = normalize(IN.WorldNormal);
    float3 t = normalize(IN.WorldTangent);
    float3 n = normalize(IN.WorldNormal);
    float3 b = cross(t, n);
    float3x3 tbn = float3x3(t, b, n);
    normal = tex2D(g_pSampler1, IN.TexCoord0 + offset).xyz * 2.0 - 1.0;
    normal = normalize(normal);
    normal = mul(normal, (float3x3)tbn);
    return normal;
}
)"));
    EXPECT_EQ(Section(text, "float3 viewDir = normalize(IN.WorldViewDir);", "}"),
              Tabbed(R"(    float3 viewDir = normalize(IN.WorldViewDir);
    DoDistantLightSpec(normal, viewDir, g_Light0, diffuseLighting, specularLighting);
    specularLighting *= tex2D(g_Sampler2, IN.TexCoord0).x;
}
)"));
}

// A height map is read from no line of the text: all it adds is its sampler.
TEST_F(ShaderWriterTest, HeightTextureAddsOnlyItsSampler)
{
    Material material;
    material.shaderKeys = {0x61200};
    material.flags = 0x10053;
    const auto declaration = Declaration({{kPos, 0}, {kNormal, 0}, {kTex, 0}});
    std::string expected = Generated(material, declaration);
    const std::string fogColor = "float4 g_psFogColor : register(c1);\n";
    expected.insert(expected.find(fogColor) + fogColor.size(), "sampler g_Sampler3 : register(s3);\n");
    material.textures = {Texture(kSemanticHeight, 3, 0)};
    EXPECT_EQ(Generated(material, declaration), expected);
}

TEST_F(ShaderWriterTest, ThreeBaseColorTextures)
{
    Material material;
    material.flags = 3;
    material.textures = {Texture(kSemanticBaseColor, 0, 0), Texture(kSemanticBaseColor, 1, 1),
                         Texture(kSemanticBaseColor, 2, 0, 1, 3), Texture(kSemanticAlpha, 0, 0, 3, 1)};
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kTex, 0}, {kTex, 1}}));
    EXPECT_EQ(Section(text, "float3 GetBaseColor(VS_OUTPUT IN)", "}"), Tabbed(R"(float3 GetBaseColor(VS_OUTPUT IN)
{
    float3 baseColor = float3(1, 1, 1);
    float opacity = 1;
    baseColor = tex2D(g_Sampler0, IN.TexCoord0).xyz;
    baseColor = lerp(baseColor, tex2D(g_Sampler1, IN.TexCoord1).xyz, g_pAlphaReflective.z);
    baseColor = lerp(baseColor, tex2D(g_Sampler2, IN.TexCoord0).yzw, g_pAlphaReflective.z);
    return baseColor;
}
)"));
    EXPECT_EQ(Section(text, "float GetAlpha(VS_OUTPUT IN)", "}"), Tabbed(R"(float GetAlpha(VS_OUTPUT IN)
{
    float alpha = g_pAlphaReflective.x;
    alpha = tex2D(g_Sampler0, IN.TexCoord0).w;
    return alpha;
}
)"));
    EXPECT_NE(text.find("\tPixelShader = compile ps_1_4 ps_main();\n"), std::string::npos);
    EXPECT_NE(text.find("\tOUT.TexCoord0 = IN.TexCoord0;\n\tOUT.TexCoord1 = IN.TexCoord1;\n"), std::string::npos);
}

TEST_F(ShaderWriterTest, SampleSwizzles)
{
    Material material;
    material.textures = {Texture(kSemanticAlpha, 4, 1, 0, 1), Texture(kSemanticAlpha, 4, 1, 1, 1),
                         Texture(kSemanticAlpha, 4, 1, 2, 1), Texture(kSemanticAlpha, 4, 1, 4, 1),
                         Texture(kSemanticAlpha, 4, 1, 2, 3), Texture(kSemanticAlpha, 4, 1, 0, 2)};
    EXPECT_EQ(Section(Generated(material, Declaration({{kPos, 0}})), "float GetAlpha(VS_OUTPUT IN)", "}"),
              Tabbed(R"(float GetAlpha(VS_OUTPUT IN)
{
    float alpha = g_pAlphaReflective.x;
    alpha = tex2D(g_Sampler4, IN.TexCoord1).x;
    alpha = tex2D(g_Sampler4, IN.TexCoord1).y;
    alpha = tex2D(g_Sampler4, IN.TexCoord1).z;
    alpha = ;
    alpha = ;
    alpha = ;
    return alpha;
}
)"));
}

// Sixteen coordinate sets and the reflection's make seventeen: lighting that travels in
// texture coordinates finds none left and writes -1.
TEST_F(ShaderWriterTest, SeventeenTexCoordsLeaveNoneForLighting)
{
    Material material;
    material.shaderKeys = {0x21200, 0x61200};
    material.flags = 0x100DB;
    material.reflective = true;
    std::vector<gpu::D3DVERTEXELEMENT9> declaration = Declaration({{kPos, 0}, {kNormal, 0}});
    for (uint8_t i = 0; i < 16; ++i)
        declaration.insert(declaration.end() - 1, {0, 0, gpu::D3DDECLTYPE_FLOAT2, 0, gpu::D3DDECLUSAGE_TEXCOORD, i});
    const std::string text = Generated(material, declaration);
    std::string expected = "struct VS_OUTPUT\n{\n    float4 Pos : POSITION;\n";
    for (int i = 0; i <= 16; ++i)
        expected += "    float2 TexCoord" + std::to_string(i) + " : TEXCOORD" + std::to_string(i) + ";\n";
    expected += R"(    float3 Diffuse : TEXCOORD-1;
    float3 Specular : TEXCOORD-1;
    float3 WorldNormal : TEXCOORD-1;
    float3 WorldPos : TEXCOORD-1;
    float3 WorldViewDir : TEXCOORD-1;
};
)";
    EXPECT_EQ(Section(text, "struct VS_OUTPUT", "};"), Tabbed(expected));
    // Only the first three sets are copied through.
    EXPECT_NE(text.find("\tOUT.TexCoord2 = IN.TexCoord2;\n\tfloat3 refl"), std::string::npos);
    EXPECT_EQ(text.find("OUT.TexCoord3 = IN.TexCoord3;"), std::string::npos);
    EXPECT_NE(text.find("\tOUT.TexCoord16 = float2(0.5, 0.5) + refl.xy / f;\n"), std::string::npos);
}

// Lighting in texture coordinates takes the lowest free sets, around those in use.
TEST_F(ShaderWriterTest, LightingTakesTheLowestFreeTexCoords)
{
    Material material;
    material.shaderKeys = {0x21200, 0x61200};
    material.flags = 0x100DB;
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}, {kTex, 0}, {kTex, 2}}));
    EXPECT_EQ(Section(text, "struct VS_OUTPUT", "};"), Tabbed(R"(struct VS_OUTPUT
{
    float4 Pos : POSITION;
    float2 TexCoord0 : TEXCOORD0;
    float2 TexCoord2 : TEXCOORD2;
    float3 Diffuse : TEXCOORD1;
    float3 Specular : TEXCOORD3;
    float3 WorldNormal : TEXCOORD4;
    float3 WorldPos : TEXCOORD5;
    float3 WorldViewDir : TEXCOORD6;
};
)"));
}

// Slots are bytes in the material and in the declaration: the largest ones are written
// as they stand, with no fault.
TEST_F(ShaderWriterTest, LargestSlotsAreWrittenAsTheyStand)
{
    Material material;
    material.reflective = true;
    material.textures = {Texture(kSemanticBaseColor, 255, 255), Texture(kSemanticBaseColor, 255, 0)};
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}, {kTex, 255}}));
    EXPECT_NE(text.find("\tfloat2 TexCoord255 : TEXCOORD255;\n\tfloat2 TexCoord256 : TEXCOORD256;\n"),
              std::string::npos);
    EXPECT_NE(text.find("float4 g_psFogColor : register(c1);\nsampler g_Sampler255 : register(s255);\nfloat4x4"),
              std::string::npos);
}

}  // namespace
}  // namespace qx4d::test
