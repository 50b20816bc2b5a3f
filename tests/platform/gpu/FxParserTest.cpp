// The effect text front: technique and pass blocks, state values, compile statements,
// include expansion, and the semantic placement shared by the stages.
#include "platform/gpu/FxParser.h"
#include "platform/gpu/EffectIncludes.h"
#include "platform/gpu/Formats.h"
#include "platform/gpu/ShaderStage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>

namespace qx::gpu::testing {
namespace {

const StateAssignment* findState(const FxPass& pass, DWORD state, bool sampler = false)
{
    for (const StateAssignment& assignment : pass.states) {
        if (assignment.state == state && assignment.sampler == sampler) return &assignment;
    }
    return nullptr;
}

TEST(FxParser, ReadsPassStatesWithDirect3DNumbers)
{
    const std::string text =
        "technique t0 < string why = \"}\"; >\n{\n pass p0\n {\n"
        "  CullMode = NONE; ZEnable = false; SrcBlend = InvSrcAlpha; AlphaRef = 0x80;\n"
        "  AlphaFunc = GreaterEqual; PointSize = 9.0; FogColor = -1; MinFilter[3] = LINEAR;\n"
        "  Unknown = 5; ShadeMode = GOURAUD;\n"
        " }\n}\n";
    FxText parsed;
    ASSERT_TRUE(parseEffectText(text, parsed));
    ASSERT_EQ(parsed.techniques.size(), 1u);
    ASSERT_EQ(parsed.techniques[0].passes.size(), 1u);
    const FxPass& pass = parsed.techniques[0].passes[0];
    EXPECT_EQ(pass.name, "p0");
    EXPECT_EQ(findState(pass, D3DRS_CULLMODE)->value, D3DCULL_NONE);
    EXPECT_EQ(findState(pass, D3DRS_ZENABLE)->value, 0u);
    EXPECT_EQ(findState(pass, D3DRS_SRCBLEND)->value, D3DBLEND_INVSRCALPHA);
    EXPECT_EQ(findState(pass, D3DRS_ALPHAREF)->value, 0x80u);
    EXPECT_EQ(findState(pass, D3DRS_ALPHAFUNC)->value, D3DCMP_GREATEREQUAL);
    EXPECT_EQ(findState(pass, D3DRS_POINTSIZE)->value, 0x41100000u);  // 9.0f, as the flares set it
    EXPECT_EQ(findState(pass, D3DRS_FOGCOLOR)->value, 0xFFFFFFFFu);
    const StateAssignment* filter = findState(pass, D3DSAMP_MINFILTER, true);
    ASSERT_NE(filter, nullptr);
    EXPECT_EQ(filter->index, 3u);
    EXPECT_EQ(filter->value, D3DTEXF_LINEAR);
    EXPECT_EQ(pass.states.size(), 8u);  // the two unknown states are skipped
}

TEST(FxParser, IntegerStatesWithFractionsKeepTheirWholePartOrAreSkipped)
{
    // A fraction of an integer state keeps its whole part; one beyond any integer has no
    // whole part (a fuzzer found 1e20 and an overflow to infinity) and is skipped.
    const std::string text =
        "technique t0\n{\n pass p0\n {\n"
        "  AlphaRef = 127.9; CullMode = 1.0e20; FogColor = 9" +
        std::string(60, '9') + ".0; ZEnable = -2.5;\n }\n}\n";
    FxText parsed;
    ASSERT_TRUE(parseEffectText(text, parsed));
    const FxPass& pass = parsed.techniques.at(0).passes.at(0);
    EXPECT_EQ(findState(pass, D3DRS_ALPHAREF)->value, 127u);
    EXPECT_EQ(findState(pass, D3DRS_ZENABLE)->value, DWORD(-2));
    EXPECT_EQ(findState(pass, D3DRS_CULLMODE), nullptr);
    EXPECT_EQ(findState(pass, D3DRS_FOGCOLOR), nullptr);
}

TEST(FxParser, ReadsCompileStatementsAndCutsTheBlocksOutKeepingLines)
{
    const std::string text =
        "float4 f() : COLOR0 { return 1; }\n"
        "technique a { pass { VertexShader = compile vs_1_1 vs_main(1, 2);\n"
        "  PixelShader = compile ps_2_0 ps_main(); } pass two { PixelShader = NULL; } }\n"
        "// technique in a comment\n"
        "technique b { }\n";
    FxText parsed;
    ASSERT_TRUE(parseEffectText(text, parsed));
    ASSERT_EQ(parsed.techniques.size(), 2u);
    const auto& passes = parsed.techniques[0].passes;
    ASSERT_EQ(passes.size(), 2u);
    EXPECT_EQ(passes[0].vertexEntry, "vs_main");
    EXPECT_EQ(passes[0].vertexProfile, "vs_1_1");
    EXPECT_EQ(passes[0].pixelEntry, "ps_main");
    EXPECT_TRUE(passes[1].pixelEntry.empty());
    EXPECT_EQ(parsed.hlsl.size(), text.size());
    EXPECT_EQ(std::count(parsed.hlsl.begin(), parsed.hlsl.end(), '\n'), 5);
    EXPECT_EQ(parsed.hlsl.find("technique a"), std::string::npos);
    EXPECT_EQ(parsed.hlsl.find("compile"), std::string::npos);
    EXPECT_NE(parsed.hlsl.find("return 1;"), std::string::npos);
    EXPECT_NE(parsed.hlsl.find("// technique in a comment"), std::string::npos);
}

TEST(FxParser, TechniquesInsideBracesAreNotBlocks)
{
    // A struct member named like the keyword is HLSL, not an effect block.
    FxText parsed;
    ASSERT_TRUE(parseEffectText("struct S { float technique; };\n", parsed));
    EXPECT_TRUE(parsed.techniques.empty());
}

TEST(FxParser, TextureDeclarationsAndSamplerStatesAreCutOut)
{
    const std::string text =
        "texture g_Texture;\n"
        "sampler2D g_Sampler = sampler_state { Texture = <g_Texture>; MinFilter = Linear; };\n"
        "float4 ps_main(float2 uv : TEXCOORD0) : COLOR0 { return tex2D(g_Sampler, uv); }\n";
    FxText parsed;
    ASSERT_TRUE(parseEffectText(text, parsed));
    EXPECT_EQ(parsed.hlsl.find("texture g_Texture"), std::string::npos);
    EXPECT_EQ(parsed.hlsl.find("sampler_state"), std::string::npos);
    EXPECT_NE(parsed.hlsl.find("sampler2D g_Sampler"), std::string::npos);
    EXPECT_NE(parsed.hlsl.find(";\nfloat4 ps_main"), std::string::npos);  // the declaration keeps its end
    EXPECT_NE(parsed.hlsl.find("tex2D(g_Sampler, uv)"), std::string::npos);
}

TEST(FxParser, UnfinishedBlocksAreRefused)
{
    FxText parsed;
    for (const char* text : {"technique t { pass p { CullMode = NONE }", "technique t { pass p { CullMode NONE; } }",
                             "technique t { pass p { ", "technique t { notapass { } }", "technique"})
        EXPECT_FALSE(parseEffectText(text, parsed)) << text;
}

TEST(EffectIncludes, ExpandsBothFormsAndKeepsOtherLines)
{
    const IncludeResolver resolver = [](const std::string& name) -> std::optional<std::string> {
        if (name == "a.fxh") return std::string("A");
        if (name == "dir\\b.fxh") return std::string("B\n#include \"a.fxh\"");
        return std::nullopt;
    };
    std::string out;
    ASSERT_TRUE(expandIncludes("x\n  #  include <dir\\b.fxh>\ny\n#define include\n", resolver, out));
    EXPECT_EQ(out, "x\nB\nA\n\ny\n#define include\n");
    EXPECT_FALSE(expandIncludes("#include \"c.fxh\"\n", resolver, out));
    EXPECT_FALSE(expandIncludes("#include \"a.fxh\"\n", nullptr, out));
}

TEST(ShaderStage, SemanticsSplitAndPlaceAsDirect3D9Interpolators)
{
    std::string name;
    int index = -1;
    splitSemantic("TexCoord12", name, index);
    EXPECT_EQ(name, "TEXCOORD");
    EXPECT_EQ(index, 12);
    splitSemantic("COLOR", name, index);
    EXPECT_EQ(index, 0);
    splitSemantic("POSITION99999999", name, index);  // no overflow from a long number
    EXPECT_EQ(index, 9999);
    EXPECT_EQ(varyingLocation("TEXCOORD", 0), 0);
    EXPECT_EQ(varyingLocation("TEXCOORD", 15), 15);
    EXPECT_EQ(varyingLocation("TEXCOORD", 16), -1);
    EXPECT_EQ(varyingLocation("COLOR", 1), 17);
    EXPECT_EQ(varyingLocation("FOG", 0), kFogLocation);
    EXPECT_EQ(varyingLocation("WHATEVER", 0), -1);
}

TEST(Formats, CompressedPitchesCountBlocks)
{
    EXPECT_EQ(rowPitch(D3DFMT_A8R8G8B8, 5), 20u);
    EXPECT_EQ(rowPitch(D3DFMT_L8, 5), 5u);
    EXPECT_EQ(rowPitch(D3DFMT_DXT1, 5), 16u);  // two blocks of 8 bytes
    EXPECT_EQ(rowCount(D3DFMT_DXT5, 1), 1u);
    EXPECT_EQ(imageSize(D3DFMT_DXT5, 8, 6), 64u);  // 2 x 2 blocks of 16 bytes
    EXPECT_EQ(imageSize(12345, 8, 8), 0u);
}

}  // namespace
}  // namespace qx::gpu::testing
