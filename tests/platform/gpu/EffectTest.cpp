// Effects: passes with their states, shaders linked by semantic, constants by register,
// fixed-function fog, the compile cache, and texts that do not compile.
#include "tests/platform/gpu/GpuFixture.h"

#include <map>

namespace qx::gpu::testing {
namespace {

// A vertex and a pixel constant share register c0, as Direct3D 9 texts do.
const char* const kTwoPassEffect = R"(
float4x4 g_Transform : register(c0);
float4 g_Tint : register(c0);
sampler g_Sampler0 : register(s0);
struct VS_IN { float3 Pos : POSITION; float2 Uv : TEXCOORD0; };
struct VS_OUT { float4 Pos : POSITION; float4 Extra : COLOR1; float2 Uv : TEXCOORD0; };
VS_OUT vs_main(VS_IN IN)
{
    VS_OUT OUT;
    OUT.Pos = mul(float4(IN.Pos, 1.0), g_Transform);
    OUT.Extra = float4(0, 0, 0, 0);
    OUT.Uv = IN.Uv;
    return OUT;
}
// Reads only TEXCOORD0, declared first: the stages meet by semantic, not by order.
float4 ps_texture(float2 uv : TEXCOORD0) : COLOR0 { return tex2D(g_Sampler0, uv) * g_Tint; }
float4 ps_flat(VS_OUT IN) : COLOR0 { return float4(0.0, 0.0, 1.0, 0.5); }
technique t0
{
    pass p0 { CullMode = NONE; AlphaBlendEnable = FALSE;
              VertexShader = compile vs_2_0 vs_main(); PixelShader = compile ps_2_0 ps_texture(); }
    pass p1 { AlphaBlendEnable = TRUE; SrcBlend = SRCALPHA; DestBlend = INVSRCALPHA;
              VertexShader = compile vs_2_0 vs_main(); PixelShader = compile ps_2_0 ps_flat(); }
}
)";

class EffectTest : public GpuTest {
protected:
    // A 2 x 2 texture: red, green on the top row; blue, white below.
    std::shared_ptr<Texture> makeQuadrantTexture()
    {
        std::shared_ptr<Texture> texture;
        EXPECT_EQ(device->CreateTexture(2, 2, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &texture), D3D_OK);
        D3DLOCKED_RECT locked;
        EXPECT_EQ(texture->LockRect(0, &locked, 0), D3D_OK);
        auto* rows = static_cast<uint8_t*>(locked.pBits);
        const uint32_t top[] = {0xFFFF0000u, 0xFF00FF00u};
        const uint32_t bottom[] = {0xFF0000FFu, 0xFFFFFFFFu};
        std::memcpy(rows, top, 8);
        std::memcpy(rows + locked.Pitch, bottom, 8);
        texture->UnlockRect(0);
        return texture;
    }
    void setIdentityAndTint()
    {
        const float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        const float tint[4] = {1, 1, 1, 1};
        device->SetVertexShaderConstantF(0, identity, 4);
        device->SetPixelShaderConstantF(0, tint, 1);
    }
};

TEST_F(EffectTest, TwoPassesDrawATexturedQuadThenBlendOverIt)
{
    const auto target = makeTarget(8, 8);
    device->Clear(D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, 0xFF000000u, 1.0f, 0);
    std::shared_ptr<VertexDeclaration> declaration;
    ASSERT_EQ(device->CreateVertexDeclaration(kQuadDeclaration, &declaration), D3D_OK);
    device->SetVertexDeclaration(declaration);
    device->SetTexture(0, makeQuadrantTexture());
    setIdentityAndTint();
    const auto effect = makeEffect(device, kTwoPassEffect);
    ASSERT_NE(effect, nullptr);
    UINT passes = 0;
    ASSERT_EQ(effect->Begin(&passes, D3DXFX_DONOTSAVESTATE), D3D_OK);
    ASSERT_EQ(passes, 2u);

    ASSERT_EQ(effect->BeginPass(0), D3D_OK);
    device->DrawPrimitiveUP(D3DPT_TRIANGLEFAN, 2, kFullScreenQuad, sizeof(QuadVertex));
    effect->EndPass();
    auto pixels = readPixels(*device, target);
    EXPECT_EQ(pixels[1 * 8 + 1], 0xFFFF0000u);  // top left: red
    EXPECT_EQ(pixels[1 * 8 + 6], 0xFF00FF00u);  // top right: green
    EXPECT_EQ(pixels[6 * 8 + 1], 0xFF0000FFu);  // bottom left: blue
    EXPECT_EQ(pixels[6 * 8 + 6], 0xFFFFFFFFu);  // bottom right: white

    ASSERT_EQ(effect->BeginPass(1), D3D_OK);
    device->DrawPrimitiveUP(D3DPT_TRIANGLEFAN, 2, kFullScreenQuad, sizeof(QuadVertex));
    effect->EndPass();
    effect->End();
    pixels = readPixels(*device, target);
    // Half blue over each: 0.5 * blue + 0.5 * texel, alpha 0.5 * 0.5 + 0.5 * 1.
    EXPECT_LE(colourDistance(pixels[1 * 8 + 1], 0xBF80007Fu), 1);
    EXPECT_LE(colourDistance(pixels[6 * 8 + 6], 0xBF7F7FFFu), 1);
}

TEST_F(EffectTest, PassStatesStayAfterTheEffectEnds)
{
    const auto effect = makeEffect(device, kTwoPassEffect);
    ASSERT_NE(effect, nullptr);
    UINT passes = 0;
    effect->Begin(&passes, D3DXFX_DONOTSAVESTATE);
    effect->BeginPass(1);
    effect->EndPass();
    effect->End();
    DWORD value = 0;
    device->GetRenderState(D3DRS_SRCBLEND, &value);
    EXPECT_EQ(value, D3DBLEND_SRCALPHA);
    device->GetRenderState(D3DRS_CULLMODE, &value);
    EXPECT_EQ(value, D3DCULL_CCW);                        // pass 0 was never begun
    EXPECT_EQ(effect->BeginPass(0), D3DERR_INVALIDCALL);  // not begun
}

TEST_F(EffectTest, FixedFunctionFogMixesTowardsTheFogColour)
{
    const char* const fogEffect = R"(
struct VS_OUT { float4 Pos : POSITION; float Fog : FOG; };
VS_OUT vs_main(float3 pos : POSITION)
{
    VS_OUT OUT;
    OUT.Pos = float4(pos, 1.0);
    OUT.Fog = 0.25;
    return OUT;
}
float4 ps_main() : COLOR0 { return float4(1.0, 1.0, 1.0, 1.0); }
technique t0 { pass p0 { FogEnable = TRUE; VertexShader = compile vs_1_1 vs_main(); PixelShader = compile ps_1_1 ps_main(); } }
)";
    const auto target = makeTarget(4, 4);
    device->Clear(D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, 0xFF000000u, 1.0f, 0);
    std::shared_ptr<VertexDeclaration> declaration;
    device->CreateVertexDeclaration(kQuadDeclaration, &declaration);
    device->SetVertexDeclaration(declaration);
    device->SetRenderState(D3DRS_FOGCOLOR, 0xFF0000FFu);
    const auto effect = makeEffect(device, fogEffect);
    ASSERT_NE(effect, nullptr);
    effect->Begin(nullptr, 0);
    effect->BeginPass(0);
    device->DrawPrimitiveUP(D3DPT_TRIANGLEFAN, 2, kFullScreenQuad, sizeof(QuadVertex));
    // Fog factor 0.25 keeps a quarter of white: 0.25 * 255 for red and green.
    EXPECT_LE(colourDistance(readPixels(*device, target)[5], 0xFF4040FFu), 1);
}

TEST_F(EffectTest, TextureDeclarationsAndSamplerStatesCompile)
{
    const char* const text = R"(
texture g_Texture;
sampler2D g_Sampler = sampler_state { Texture = <g_Texture>; MinFilter = Linear; };
float4 ps_main(float2 uv : TEXCOORD0) : COLOR0 { return tex2D(g_Sampler, uv); }
technique t { pass p { PixelShader = compile ps_2_0 ps_main(); } }
)";
    EXPECT_NE(makeEffect(device, text), nullptr);
}

TEST_F(EffectTest, IdenticalTextsShareOneCompiledEffect)
{
    const auto first = makeEffect(device, kTwoPassEffect);
    const size_t cached = device->effectCache().size();
    const auto second = makeEffect(device, kTwoPassEffect);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(device->effectCache().size(), cached);
}

TEST_F(EffectTest, TextsThatDoNotCompileFailQuietly)
{
    const char* const broken[] = {
        ("float4 ps_main() : COLOR0 { return undefinedThing; }\n"
         "technique t0 { pass p0 { PixelShader = compile ps_2_0 ps_main(); } }"),
        "float4 ps_main() : COLOR0 { return 1; }\ntechnique t0 { pass p0 { PixelShader = compile ps_2_0 ps_main(); }",
        "float4 ps_main() : COLOR0 { return 1; }\n",  // no technique
        "technique t0 { pass p0 { PixelShader = compile ps_2_0 missing(); } }",
    };
    for (const char* text : broken) {
        std::shared_ptr<Effect> effect;
        EXPECT_EQ(D3DXCreateEffect(device, text, nullptr, &effect), D3DERR_INVALIDCALL) << text;
        EXPECT_EQ(effect, nullptr);
    }
}

TEST_F(EffectTest, IncludesGoThroughTheResolver)
{
    const std::map<std::string, std::string> files = {
        {"common.fxh", "#include \"colour.fxh\"\n"},
        {"colour.fxh", "float4 Colour() { return float4(1, 0, 0, 1); }\n"},
        {"loop.fxh", "#include \"loop.fxh\"\n"},
    };
    const IncludeResolver resolver = [&](const std::string& name) -> std::optional<std::string> {
        const auto found = files.find(name);
        return found == files.end() ? std::nullopt : std::optional<std::string>(found->second);
    };
    const std::string body =
        "float4 ps_main() : COLOR0 { return Colour(); }\n"
        "technique t0 { pass p0 { PixelShader = compile ps_2_0 ps_main(); } }";
    std::shared_ptr<Effect> effect;
    EXPECT_EQ(D3DXCreateEffect(device, "#include \"common.fxh\"\n" + body, resolver, &effect), D3D_OK);
    EXPECT_NE(D3DXCreateEffect(device, "#include \"absent.fxh\"\n" + body, resolver, &effect), D3D_OK);
    EXPECT_NE(D3DXCreateEffect(device, "#include \"loop.fxh\"\n" + body, resolver, &effect), D3D_OK);
}

}  // namespace
}  // namespace qx::gpu::testing
