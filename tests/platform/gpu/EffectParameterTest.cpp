// Effect parameters that the text binds to no register, set by name, and the states and
// textures of `sampler_state` blocks, drawn on a full-screen quad.
#include "platform/gpu/FxParameters.h"
#include "tests/platform/gpu/GpuFixture.h"

#include <regex>

namespace qx::gpu::testing {
namespace {

// A vertex constant at c0 that the engine sets itself, and three parameters set by name:
// a colour with a default, a matrix, and a texture behind a sampler block.
const char* const kNamedEffect = R"(
float4 g_Scale : register(c0);
float4 g_Tint = { 0.5, 0.25, 1.0, 1.0 };
float4x4 g_Mix : WORLDVIEW;
texture g_Picture;
sampler g_Sampler = sampler_state { Texture = <g_Picture>; MagFilter = POINT; MinFilter = POINT; AddressU = CLAMP; };
struct VS_OUT { float4 Pos : POSITION; float2 Uv : TEXCOORD0; };
VS_OUT vs_main(float3 pos : POSITION, float2 uv : TEXCOORD0)
{
    VS_OUT OUT;
    OUT.Pos = float4(pos * g_Scale.xyz, 1.0);
    OUT.Uv = uv;
    return OUT;
}
float4 ps_tint(float2 uv : TEXCOORD0) : COLOR0 { return g_Tint; }
float4 ps_mix(float2 uv : TEXCOORD0) : COLOR0 { return mul(float4(1, 0, 0, 0), g_Mix); }
float4 ps_picture(float2 uv : TEXCOORD0) : COLOR0 { return tex2D(g_Sampler, uv); }
technique t0
{
    pass p0 { VertexShader = compile vs_2_0 vs_main(); PixelShader = compile ps_2_0 ps_tint(); }
    pass p1 { VertexShader = compile vs_2_0 vs_main(); PixelShader = compile ps_2_0 ps_mix(); }
    pass p2 { VertexShader = compile vs_2_0 vs_main(); PixelShader = compile ps_2_0 ps_picture(); }
}
)";

class EffectParameterTest : public GpuTest {
protected:
    void SetUp() override
    {
        GpuTest::SetUp();
        target = makeTarget(4, 4);
        std::shared_ptr<VertexDeclaration> declaration;
        ASSERT_EQ(device->CreateVertexDeclaration(kQuadDeclaration, &declaration), D3D_OK);
        device->SetVertexDeclaration(declaration);
        const float scale[4] = {1, 1, 1, 1};
        device->SetVertexShaderConstantF(0, scale, 1);
        effect = makeEffect(device, kNamedEffect);
        ASSERT_NE(effect, nullptr);
        effect->Begin(nullptr, 0);
    }
    /// The colour of the quad drawn with pass `pass`.
    uint32_t Draw(UINT pass)
    {
        device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
        EXPECT_EQ(effect->BeginPass(pass), D3D_OK);
        device->DrawPrimitiveUP(D3DPT_TRIANGLEFAN, 2, kFullScreenQuad, sizeof(QuadVertex));
        effect->EndPass();
        return readPixels(*device, target)[5];
    }

    std::shared_ptr<Surface> target;
    std::shared_ptr<Effect> effect;
};

TEST_F(EffectParameterTest, ParametersStartAtTheirDefaultsAndTakeValuesByName)
{
    EXPECT_LE(colourDistance(Draw(0), 0xFF7F40FFu), 1) << "the default of the declaration";
    const float red[4] = {1, 0, 0, 1};
    EXPECT_EQ(effect->SetValue("g_Tint", red), D3D_OK);
    EXPECT_EQ(Draw(0), 0xFFFF0000u);
    EXPECT_EQ(effect->SetValue("g_Nothing", red), D3DERR_INVALIDCALL);
}

TEST_F(EffectParameterTest, MatricesTakeTheRowsOfAD3DXMatrix)
{
    // mul(row vector, M) picks row 0 of the D3DX matrix; column 0 would give red alone.
    const float matrix[16] = {0.2f, 0.4f, 0.6f, 1, 0.9f, 0, 0, 0, 0.9f, 0, 0, 0, 0.9f, 0, 0, 0};
    ASSERT_EQ(effect->SetMatrix("g_Mix", matrix), D3D_OK);
    EXPECT_LE(colourDistance(Draw(1), 0xFF336699u), 1);
}

TEST_F(EffectParameterTest, ParametersLiveAboveTheRegistersTheTextBinds)
{
    FxText parsed;
    ASSERT_TRUE(parseEffectText(kNamedEffect, parsed));
    ASSERT_EQ(parsed.bindings.parameters.size(), 2u);
    EXPECT_EQ(parsed.bindings.parameters[0].firstRegister, 1u);
    EXPECT_EQ(parsed.bindings.parameters[1].firstRegister, 2u);
    EXPECT_EQ(parsed.bindings.parameters[1].registerCount, 4u);
    EXPECT_TRUE(std::regex_search(parsed.hlsl, std::regex(R"(g_Tint\s*: register\(c1\)\s*;)")));
    EXPECT_EQ(parsed.hlsl.find("WORLDVIEW"), std::string::npos);
    // The engine's own constant at c0 doesn't disturb the named ones.
    const float big[4] = {9, 9, 9, 9};
    device->SetPixelShaderConstantF(0, big, 1);
    EXPECT_LE(colourDistance(Draw(0), 0xFF7F40FFu), 1);
}

TEST_F(EffectParameterTest, SamplerBlocksGiveStatesAndTheirTextureParameter)
{
    std::shared_ptr<Texture> picture;
    ASSERT_EQ(device->CreateTexture(2, 1, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &picture), D3D_OK);
    D3DLOCKED_RECT locked;
    ASSERT_EQ(picture->LockRect(0, &locked, 0), D3D_OK);
    const uint32_t texels[2] = {0xFF00FF00u, 0xFFFF00FFu};
    std::memcpy(locked.pBits, texels, sizeof texels);
    picture->UnlockRect(0);
    EXPECT_EQ(effect->SetTexture("g_Picture", picture), D3D_OK);
    EXPECT_EQ(effect->SetTexture("g_Other", picture), D3DERR_INVALIDCALL);
    device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
    ASSERT_EQ(effect->BeginPass(2), D3D_OK);
    DWORD filter = 0, address = 0;
    device->GetSamplerState(0, D3DSAMP_MAGFILTER, &filter);
    device->GetSamplerState(0, D3DSAMP_ADDRESSU, &address);
    EXPECT_EQ(filter, D3DTEXF_POINT);
    EXPECT_EQ(address, DWORD(D3DTADDRESS_CLAMP));
    device->DrawPrimitiveUP(D3DPT_TRIANGLEFAN, 2, kFullScreenQuad, sizeof(QuadVertex));
    effect->EndPass();
    const auto pixels = readPixels(*device, target);
    EXPECT_EQ(pixels[4], 0xFF00FF00u) << "point filtering: the left texel, unblended";
    EXPECT_EQ(pixels[7], 0xFFFF00FFu);
}

}  // namespace
}  // namespace qx::gpu::testing
