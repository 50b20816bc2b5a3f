// The generated effect text against text written by hand from the generator's rules:
// one whole text, then the parts that lights, fog, the technique's states, bones and
// position streams change. Four spaces in the expected text stand for a tab.
#include "tests/qx4d/content/ShaderWriterFixture.h"

namespace qx4d::test {
namespace {

TEST_F(ShaderWriterTest, NoLightNoFogWholeText)
{
    Material material;
    material.flags = 3;
    const std::string expected = Tabbed(R"(// head
struct VS_INPUT
{
    float3 Pos0 : POSITION0;
    float3 Normal0 : NORMAL0;
};

struct VS_OUTPUT
{
    float4 Pos : POSITION;
};
float4 g_Fog : register(c1);
float4 g_pAlphaReflective : register(c0);
float4 g_psFogColor : register(c1);
float4x4 g_ViewProj : register(c2);
float3 g_GlobalAmbient : register(c6);
float4x3 g_Model : register(c7);
float3x3 g_ModelIT : register(c10);

void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)
{
    float3 pos = IN.Pos0;
    float3 normal = IN.Normal0;
    float4x3 model = g_Model;
    float3x3 modelIT = g_ModelIT;
    float3 worldPos = mul(float4(pos, 1.0), model);
    float3 worldNormal = normalize(mul(normal, modelIT));
    OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);
}

float3 GetBaseColor(VS_OUTPUT IN)
{
    float3 baseColor = float3(1, 1, 1);
    float opacity = 1;
    return baseColor;
}

float3 GetAlbedo(VS_OUTPUT IN)
{
    return GetBaseColor(IN);
}

float GetAlpha(VS_OUTPUT IN)
{
    float alpha = g_pAlphaReflective.x;
    return alpha;
}

float3 GetNormal(VS_OUTPUT IN)
{
    float3 normal = float3(0.0, 0.0, 0.0);
    return normal;
}

void GetLighting(VS_OUTPUT IN, out float3 diffuseLighting, out float3 specularLighting, float2 offset)
{
    diffuseLighting = float3(0.0, 0.0, 0.0);
    specularLighting = float3(0.0, 0.0, 0.0);
    diffuseLighting = float3(1.0, 1.0, 1.0);
}

float4 ps_main(VS_OUTPUT IN) : COLOR0
{
    float2 offset = float2(0.0, 0.0);
    float3 albedo = GetAlbedo(IN);
    float alpha = GetAlpha(IN);
    float3 diffuseLighting;
    float3 specularLighting;
    GetLighting(IN, diffuseLighting, specularLighting, offset);
    float3 diffuseComponent = albedo * diffuseLighting;
    return float4(diffuseComponent + specularLighting, alpha);
}

technique t0
{
    pass p0
    {
    AlphaBlendEnable = TRUE;
    SrcBlend = SRCALPHA;
    DestBlend = INVSRCALPHA;
    VertexShader = compile vs_1_1 vs_main();
    PixelShader = compile ps_1_1 ps_main();
}
pass restore
{
    AlphaBlendEnable = FALSE;
}
}
)");
    EXPECT_EQ(Generated(material, Declaration({{kPos, 0}, {kNormal, 0}})), expected);
}

TEST_F(ShaderWriterTest, MissingIncludeFileFails)
{
    std::filesystem::remove(folder.path / "Effects/common.fxh");
    Material material;
    std::string text = "untouched";
    EXPECT_FALSE(Generate(material, Declaration({{kPos, 0}}), 0, text));
    EXPECT_EQ(text, "untouched");
}

TEST_F(ShaderWriterTest, InputRecordsInDeclarationOrderUpToTheEndMarker)
{
    Material material;
    auto declaration = Declaration({{kPos, 0},
                                    {gpu::D3DDECLUSAGE_COLOR, 1},
                                    {gpu::D3DDECLUSAGE_PSIZE, 0},
                                    {kBinormal, 2},
                                    {kTangent, 1},
                                    {kTex, 3}});
    // A record after the end marker is not read.
    declaration.push_back({0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, kNormal, 0});
    EXPECT_EQ(Section(Generated(material, declaration), "struct VS_INPUT", "};"), Tabbed(R"(struct VS_INPUT
{
    float3 Pos0 : POSITION0;
    float3 Color1 : COLOR1;
    float3 Binormal2 : BINORMAL2;
    float3 Tangent1 : TANGENT1;
    float2 TexCoord3 : TEXCOORD3;
};
)"));
    // A list with no marker at all ends with the span.
    const gpu::D3DVERTEXELEMENT9 unmarked[] = {{0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, kPos, 0}};
    std::string text;
    ASSERT_TRUE(Generate(material, unmarked, 0, text));
    EXPECT_EQ(Section(text, "struct VS_INPUT", "};"), Tabbed("struct VS_INPUT\n{\n    float3 Pos0 : POSITION0;\n};\n"));
}

// Distant, point and spot lights, with and without specular, all per vertex.
TEST_F(ShaderWriterTest, LightsPerVertex)
{
    Material material;
    material.shaderKeys = {0x21200, 0x20400, 0x31800, 0x20800};
    material.flags = 0x1004B;
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}}));
    EXPECT_EQ(Section(text, "struct VS_OUTPUT", "};"), Tabbed(R"(struct VS_OUTPUT
{
    float4 Pos : POSITION;
    float3 Diffuse : COLOR0;
    float3 Specular : COLOR1;
};
)"));
    EXPECT_EQ(Section(text, "float4 g_Fog : register(c1);", "float3x3 g_ModelIT : register(c23);"),
              R"(float4 g_Fog : register(c1);
float4 g_pAlphaReflective : register(c0);
float4 g_psFogColor : register(c1);
float4x4 g_ViewProj : register(c2);
float3 g_vEyePos : register(c6);
float3 g_pEyePos : register(c2);
float3 g_GlobalAmbient : register(c7);
DistantLightSpec g_Light0 : register(c8);
PointLight g_Light1 : register(c11);
SpotLightSpec g_Light2 : register(c13);
SpotLight g_Light3 : register(c17);
float4x3 g_Model : register(c20);
float3x3 g_ModelIT : register(c23);
)");
    EXPECT_EQ(Section(text, "void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)", "}"),
              Tabbed(R"(void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)
{
    float3 pos = IN.Pos0;
    float3 normal = IN.Normal0;
    float4x3 model = g_Model;
    float3x3 modelIT = g_ModelIT;
    float3 worldPos = mul(float4(pos, 1.0), model);
    float3 worldNormal = normalize(mul(normal, modelIT));
    OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);
    float3 worldViewDir = normalize(g_vEyePos - worldPos);
    OUT.Diffuse = g_GlobalAmbient;
    OUT.Specular = float3(0.0, 0.0, 0.0);
    DoDistantLightSpec(worldNormal, worldViewDir, g_Light0, OUT.Diffuse, OUT.Specular);
    DoPointLight(worldNormal, worldPos, g_Light1, OUT.Diffuse, FALL_OFF);
    DoSpotLightSpec(worldNormal, worldPos, worldViewDir, g_Light2, OUT.Diffuse, OUT.Specular, FALL_OFF, true);
    DoSpotLight(worldNormal, worldPos, g_Light3, OUT.Diffuse, FALL_OFF, false);
}
)"));
    EXPECT_EQ(
        Section(
            text,
            "void GetLighting(VS_OUTPUT IN, out float3 diffuseLighting, out float3 specularLighting, float2 offset)",
            "}"),
        Tabbed(R"(void GetLighting(VS_OUTPUT IN, out float3 diffuseLighting, out float3 specularLighting, float2 offset)
{
    diffuseLighting = float3(0.0, 0.0, 0.0);
    specularLighting = float3(0.0, 0.0, 0.0);
    diffuseLighting += IN.Diffuse;
    specularLighting += IN.Specular;
}
)"));
}

// The same four lights per pixel: their registers come from the pixel counter.
TEST_F(ShaderWriterTest, LightsPerPixel)
{
    Material material;
    material.shaderKeys = {0x61200, 0x60400, 0x71800, 0x60800};
    material.flags = 0x10053;
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}}));
    EXPECT_EQ(Section(text, "struct VS_OUTPUT", "};"), Tabbed(R"(struct VS_OUTPUT
{
    float4 Pos : POSITION;
    float3 WorldNormal : TEXCOORD0;
    float3 WorldPos : TEXCOORD1;
    float3 WorldViewDir : TEXCOORD2;
};
)"));
    EXPECT_EQ(Section(text, "float3 g_GlobalAmbient : register(c7);", "float3x3 g_ModelIT : register(c11);"),
              R"(float3 g_GlobalAmbient : register(c7);
DistantLightSpec g_Light0 : register(c3);
PointLight g_Light1 : register(c6);
SpotLightSpec g_Light2 : register(c8);
SpotLight g_Light3 : register(c12);
float4x3 g_Model : register(c8);
float3x3 g_ModelIT : register(c11);
)");
    EXPECT_EQ(Section(text, "float3 worldViewDir = normalize(g_vEyePos - worldPos);", "}"),
              Tabbed(R"(    float3 worldViewDir = normalize(g_vEyePos - worldPos);
    OUT.WorldNormal = worldNormal;
    OUT.WorldPos = worldPos;
    OUT.WorldViewDir = worldViewDir;
}
)"));
    EXPECT_EQ(Section(text, "float3 GetNormal(VS_OUTPUT IN)", "}"), Tabbed(R"(float3 GetNormal(VS_OUTPUT IN)
{
    float3 normal = float3(0.0, 0.0, 0.0);
    normal = normalize(IN.WorldNormal);
    return normal;
}
)"));
    EXPECT_EQ(
        Section(
            text,
            "void GetLighting(VS_OUTPUT IN, out float3 diffuseLighting, out float3 specularLighting, float2 offset)",
            "}"),
        Tabbed(R"(void GetLighting(VS_OUTPUT IN, out float3 diffuseLighting, out float3 specularLighting, float2 offset)
{
    diffuseLighting = float3(0.0, 0.0, 0.0);
    specularLighting = float3(0.0, 0.0, 0.0);
    float3 normal = GetNormal(IN);
    float3 viewDir = normalize(IN.WorldViewDir);
    DoDistantLightSpec(normal, viewDir, g_Light0, diffuseLighting, specularLighting);
    DoPointLight(normal, IN.WorldPos, g_Light1, diffuseLighting, FALL_OFF);
    DoSpotLightSpec(normal, IN.WorldPos, viewDir, g_Light2, diffuseLighting, specularLighting, FALL_OFF, true);
    DoSpotLight(normal, IN.WorldPos, g_Light3, diffuseLighting, FALL_OFF, false);
}
)"));
}

// Vertex and pixel lights interleaved: each takes its registers from its own counter,
// and each shader handles only its own keys.
TEST_F(ShaderWriterTest, MixedVertexAndPixelLights)
{
    Material material;
    material.shaderKeys = {0x20200, 0x61400, 0x21400, 0x60200};
    material.flags = 0x1005B;
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}}));
    EXPECT_EQ(Section(text, "struct VS_OUTPUT", "};"), Tabbed(R"(struct VS_OUTPUT
{
    float4 Pos : POSITION;
    float3 Diffuse : COLOR0;
    float3 Specular : COLOR1;
    float3 WorldNormal : TEXCOORD0;
    float3 WorldPos : TEXCOORD1;
    float3 WorldViewDir : TEXCOORD2;
};
)"));
    EXPECT_EQ(Section(text, "float3 g_GlobalAmbient : register(c7);", "float3x3 g_ModelIT : register(c16);"),
              R"(float3 g_GlobalAmbient : register(c7);
DistantLight g_Light0 : register(c8);
PointLightSpec g_Light1 : register(c3);
PointLightSpec g_Light2 : register(c10);
DistantLight g_Light3 : register(c6);
float4x3 g_Model : register(c13);
float3x3 g_ModelIT : register(c16);
)");
    EXPECT_EQ(Section(text, "OUT.Diffuse = g_GlobalAmbient;", "}"), Tabbed(R"(    OUT.Diffuse = g_GlobalAmbient;
    OUT.Specular = float3(0.0, 0.0, 0.0);
    DoDistantLight(worldNormal, g_Light0, OUT.Diffuse);
    DoPointLightSpec(worldNormal, worldPos, worldViewDir, g_Light2, OUT.Diffuse, OUT.Specular, FALL_OFF);
    OUT.WorldNormal = worldNormal;
    OUT.WorldPos = worldPos;
    OUT.WorldViewDir = worldViewDir;
}
)"));
    EXPECT_EQ(Section(text, "diffuseLighting += IN.Diffuse;", "}"), Tabbed(R"(    diffuseLighting += IN.Diffuse;
    specularLighting += IN.Specular;
    float3 normal = GetNormal(IN);
    float3 viewDir = normalize(IN.WorldViewDir);
    DoPointLightSpec(normal, IN.WorldPos, viewDir, g_Light1, diffuseLighting, specularLighting, FALL_OFF);
    DoDistantLight(normal, g_Light3, diffuseLighting);
}
)"));
}

// A key with no type bit declares no global but still adds the light's Diffuse.
TEST_F(ShaderWriterTest, KeyWithoutTypeAddsItsDiffuse)
{
    Material material;
    material.shaderKeys = {0x21000};
    material.flags = 0x1004B;
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}}));
    EXPECT_EQ(text.find("g_Light0 : register"), std::string::npos);
    EXPECT_EQ(Section(text, "OUT.Diffuse = g_GlobalAmbient;", "}"), Tabbed(R"(    OUT.Diffuse = g_GlobalAmbient;
    OUT.Specular = float3(0.0, 0.0, 0.0);
    OUT.Diffuse += g_Light0.Diffuse;
}
)"));
}

TEST_F(ShaderWriterTest, FogModes)
{
    const char* const modes[] = {"FOG_LINEAR", "FOG_EXP", "FOG_EXP_2"};
    Material material;
    material.flags = 0x10023;
    for (int mode = 1; mode <= 3; ++mode) {
        const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}}), mode);
        EXPECT_EQ(Section(text, "struct VS_OUTPUT", "};"),
                  Tabbed("struct VS_OUTPUT\n{\n    float4 Pos : POSITION;\n    float Fog : FOG;\n};\n"));
        EXPECT_EQ(Section(text, "OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);", "}"),
                  Tabbed(std::string(R"(    OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);
    float3 worldViewDir = normalize(g_vEyePos - worldPos);
    OUT.Fog = DoFog(distance(g_vEyePos, worldPos), g_Fog.x, g_Fog.y, )") +
                         modes[mode - 1] + ");\n}\n"));
        EXPECT_EQ(Section(text, "technique t0", "}"), Tabbed(R"(technique t0
{
    pass p0
    {
    FogEnable = TRUE;
    AlphaBlendEnable = TRUE;
    SrcBlend = SRCALPHA;
    DestBlend = INVSRCALPHA;
    VertexShader = compile vs_1_1 vs_main();
    PixelShader = compile ps_1_1 ps_main();
}
)"));
        EXPECT_NE(text.find(Tabbed("pass restore\n{\n    FogEnable = FALSE;\n    AlphaBlendEnable = FALSE;\n}\n}\n")),
                  std::string::npos);
    }
    // A fog mode the generator doesn't know still declares the output, but writes none.
    const std::string unknown = Generated(material, Declaration({{kPos, 0}}), 4);
    EXPECT_NE(unknown.find("\tfloat Fog : FOG;\n"), std::string::npos);
    EXPECT_EQ(unknown.find("OUT.Fog"), std::string::npos);
    // Fog switched off in the material: nothing of it anywhere.
    material.fogEnable = false;
    const std::string off = Generated(material, Declaration({{kPos, 0}}), 1);
    EXPECT_EQ(off.find("Fog : FOG"), std::string::npos);
    EXPECT_EQ(off.find("OUT.Fog"), std::string::npos);
    EXPECT_EQ(off.find("FogEnable"), std::string::npos);
}

TEST_F(ShaderWriterTest, TechniqueStates)
{
    Material material;
    material.cullMode = 1;
    material.alphaBlendEnable = false;
    material.depthEnable = false;
    material.depthWriteEnable = false;
    EXPECT_EQ(Section(Generated(material, Declaration({{kPos, 0}})), "technique t0", "pass restore"),
              Tabbed(R"(technique t0
{
    pass p0
    {
    CullMode = NONE;
    ZEnable = FALSE;
    ZWriteEnable = FALSE;
    VertexShader = compile vs_1_1 vs_main();
    PixelShader = compile ps_1_1 ps_main();
}
pass restore
)"));
    EXPECT_NE(Generated(material, Declaration({{kPos, 0}}))
                  .find(Tabbed(
                      "pass restore\n{\n    CullMode = CCW;\n    ZEnable = TRUE;\n    ZWriteEnable = TRUE;\n}\n}\n")),
              std::string::npos);

    Material blended;
    blended.cullMode = 2;
    blended.srcBlend = 2;
    blended.destBlend = 10;
    const std::string text = Generated(blended, Declaration({{kPos, 0}}));
    EXPECT_NE(
        text.find("\tCullMode = CW;\n\tAlphaBlendEnable = TRUE;\n\tSrcBlend = ONE;\n\tDestBlend = INVDESTCOLOR;\n"),
        std::string::npos);
    blended.srcBlend = 11;  // no line for codes beyond 10
    blended.destBlend = 0;
    EXPECT_NE(Generated(blended, Declaration({{kPos, 0}})).find("\tAlphaBlendEnable = TRUE;\n\tVertexShader"),
              std::string::npos);
}

TEST_F(ShaderWriterTest, Bones)
{
    Material material;
    material.flags = 3;
    material.bones = 4;
    const std::string text = Generated(
        material,
        Declaration(
            {{kPos, 0}, {kNormal, 0}, {gpu::D3DDECLUSAGE_BLENDWEIGHT, 0}, {gpu::D3DDECLUSAGE_BLENDINDICES, 0}}));
    EXPECT_EQ(Section(text, "struct VS_INPUT", "};"), Tabbed(R"(struct VS_INPUT
{
    float3 Pos0 : POSITION0;
    float3 Normal0 : NORMAL0;
    float4 BoneWeights : BLENDWEIGHT;
    float4 BoneIndices : BLENDINDICES;
};
)"));
    EXPECT_EQ(Section(text, "float3 g_GlobalAmbient : register(c6);", ""),
              "float3 g_GlobalAmbient : register(c6);\nfloat4x3 g_Model[4] : register(c7);\n\n");
    EXPECT_EQ(Section(text, "void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)", "}"),
              Tabbed(R"(void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)
{
    float3 pos = IN.Pos0;
    float3 normal = IN.Normal0;
    float4x3 model = g_Model[IN.BoneIndices[0]] * IN.BoneWeights[0];
    model += g_Model[IN.BoneIndices[1]] * IN.BoneWeights[1];
    model += g_Model[IN.BoneIndices[2]] * IN.BoneWeights[2];
    model += g_Model[IN.BoneIndices[3]] * IN.BoneWeights[3];
    float3x3 modelIT = (float3x3)model;
    float3 worldPos = mul(float4(pos, 1.0), model);
    float3 worldNormal = normalize(mul(normal, modelIT));
    OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);
}
)"));
}

// Without bit 0 the normals use the model's own 3x3 part; without bit 1 they aren't
// normalised.
TEST_F(ShaderWriterTest, ModelMatrixWithoutInverseTranspose)
{
    Material material;
    material.flags = 0;
    const std::string text = Generated(material, Declaration({{kPos, 0}, {kNormal, 0}, {kTangent, 0}, {kBinormal, 0}}));
    EXPECT_EQ(Section(text, "float3 g_GlobalAmbient : register(c6);", ""),
              "float3 g_GlobalAmbient : register(c6);\nfloat4x3 g_Model : register(c7);\n\n");
    EXPECT_EQ(Section(text, "float3 pos = IN.Pos0;", "OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);"),
              Tabbed(R"(    float3 pos = IN.Pos0;
    float3 normal = IN.Normal0;
    float3 tangent = IN.Tangent0;
    float3 binormal = IN.Binormal0;
    float4x3 model = g_Model;
    float3x3 modelIT = (float3x3)g_Model;
    float3 worldPos = mul(float4(pos, 1.0), model);
    float3 worldNormal = mul(normal, modelIT);
    float3 worldTangent = mul(tangent, modelIT);
    float3 worldBinormal = mul(binormal, modelIT);
    OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);
)"));
}

TEST_F(ShaderWriterTest, TwoPositionStreamsTweened)
{
    Material material;
    material.flags = 0x8003;
    const std::string text = Generated(material, Declaration({{kPos, 0},
                                                              {kPos, 1},
                                                              {kNormal, 0},
                                                              {kNormal, 1},
                                                              {kTangent, 0},
                                                              {kTangent, 1},
                                                              {kBinormal, 0},
                                                              {kBinormal, 1}}));
    EXPECT_EQ(Section(text, "void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)",
                      "OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);"),
              Tabbed(R"(void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)
{
    float3 pos = lerp(IN.Pos0, IN.Pos1, g_TweenFactor);
    float3 normal = normalize(lerp(IN.Normal0, IN.Normal1, g_TweenFactor));
    float3 tangent = normalize(lerp(IN.Tangent0, IN.Tangent1, g_TweenFactor));
    float3 binormal = normalize(lerp(IN.Binormal0, IN.Binormal1, g_TweenFactor));
    float4x3 model = g_Model;
    float3x3 modelIT = g_ModelIT;
    float3 worldPos = mul(float4(pos, 1.0), model);
    float3 worldNormal = normalize(mul(normal, modelIT));
    float3 worldTangent = normalize(mul(tangent, modelIT));
    float3 worldBinormal = normalize(mul(binormal, modelIT));
    OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);
)"));
}

TEST_F(ShaderWriterTest, TwoPositionStreamsAdded)
{
    Material material;
    material.flags = 3;
    const std::string text =
        Generated(material, Declaration({{kPos, 0}, {kNormal, 0}, {kPos, 1}, {kNormal, 1}, {kTangent, 0}}));
    // The tangent has no second stream: the chain stops after the normal.
    EXPECT_EQ(Section(text, "void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)", "float4x3 model = g_Model;"),
              Tabbed(R"(void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)
{
    float3 pos = IN.Pos0 + IN.Pos1;
    float3 normal = IN.Normal0 + IN.Normal1;
    float4x3 model = g_Model;
)"));
    // Without a second normal the chain stops after the position.
    const std::string bare = Generated(material, Declaration({{kPos, 0}, {kPos, 1}, {kNormal, 0}}));
    EXPECT_EQ(Section(bare, "void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)", "float4x3 model = g_Model;"),
              Tabbed("void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)\n{\n    float3 pos = IN.Pos0 + IN.Pos1;\n    "
                     "float4x3 model = g_Model;\n"));
}

}  // namespace
}  // namespace qx4d::test
