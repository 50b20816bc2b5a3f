// The GPU layer at 1920x1080: one frame of clear, a textured full-screen quad and the
// read-back into system memory; and the compile time of a typical effect, first and
// cached. On llvmpipe every figure is CPU time; on a GPU the read-back dominates.
#include "bench/common/Frames.h"
#include "platform/gpu/Device.h"
#include "platform/gpu/Effect.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

namespace {

using namespace qx::gpu;
using qx::FAILED;
using qx::UINT;

// An effect in the shape of the engine's generated materials: a transformed, lit and
// textured mesh with fog.
const char* const kTypicalEffect = R"(
struct VS_INPUT { float3 Pos0 : POSITION0; float3 Normal0 : NORMAL0; float2 TexCoord0 : TEXCOORD0; };
struct VS_OUTPUT { float4 Pos : POSITION; float Fog : FOG; float2 TexCoord0 : TEXCOORD0; float3 Diffuse : COLOR0; };
float4 g_Fog : register(c1);
float4 g_pAlphaReflective : register(c0);
sampler g_Sampler0 : register(s0);
float4x4 g_ViewProj : register(c2);
float3 g_vEyePos : register(c6);
float3 g_GlobalAmbient : register(c7);
float4 g_LightDirection : register(c8);
float4 g_LightColour : register(c9);
float4x3 g_Model : register(c10);
float3x3 g_ModelIT : register(c13);
float DoFog(float d, float start, float end) { return saturate((end - d) / (end - start)); }
void vs_main(VS_INPUT IN, out VS_OUTPUT OUT)
{
    float3 worldPos = mul(float4(IN.Pos0, 1.0), g_Model);
    float3 worldNormal = normalize(mul(IN.Normal0, g_ModelIT));
    OUT.Pos = mul(float4(worldPos, 1.0), g_ViewProj);
    OUT.Fog = DoFog(distance(g_vEyePos, worldPos), g_Fog.x, g_Fog.y);
    OUT.TexCoord0 = IN.TexCoord0;
    OUT.Diffuse = g_GlobalAmbient + g_LightColour.rgb * saturate(dot(worldNormal, -g_LightDirection.xyz));
}
float4 ps_main(VS_OUTPUT IN) : COLOR0
{
    float3 albedo = tex2D(g_Sampler0, IN.TexCoord0).xyz;
    return float4(albedo * IN.Diffuse, g_pAlphaReflective.x);
}
technique t0
{
    pass p0 { CullMode = NONE; FogEnable = TRUE; VertexShader = compile vs_1_1 vs_main(); PixelShader = compile ps_1_1 ps_main(); }
    pass restore { CullMode = CCW; FogEnable = FALSE; }
}
)";

const D3DVERTEXELEMENT9 kMesh[] = {{0, 0, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 0},
                                   {0, 12, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_NORMAL, 0},
                                   {0, 24, D3DDECLTYPE_FLOAT2, 0, D3DDECLUSAGE_TEXCOORD, 0},
                                   D3DDECL_END};

std::shared_ptr<Device> makeDevice()
{
    D3DPRESENT_PARAMETERS parameters;
    parameters.BackBufferWidth = parameters.BackBufferHeight = 1;
    return Device::create(parameters);
}

// Compiles (and links, with one draw) the typical effect; `fresh` makes every text new.
void compileAndDraw(benchmark::State& state, bool fresh)
{
    const auto device = makeDevice();
    std::shared_ptr<Surface> target;
    std::shared_ptr<VertexDeclaration> declaration;
    if (!device || FAILED(device->CreateRenderTarget(16, 16, D3DFMT_A8R8G8B8, &target)) ||
        FAILED(device->CreateVertexDeclaration(kMesh, &declaration))) {
        state.SkipWithError("no device");
        return;
    }
    device->SetRenderTarget(0, target);
    device->SetVertexDeclaration(declaration);
    const float triangle[24] = {0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 1, 0, 0, 0, 1, 0};
    int serial = 0;
    for (auto _ : state) {
        const std::string text = std::string(kTypicalEffect) + (fresh ? "// " + std::to_string(serial++) : "");
        std::shared_ptr<Effect> effect;
        if (FAILED(D3DXCreateEffect(device, text, nullptr, &effect))) {
            state.SkipWithError("the effect did not compile");
            return;
        }
        effect->Begin(nullptr, 0);
        effect->BeginPass(0);
        device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, triangle, 32);
        effect->EndPass();
        effect->End();
    }
}

void BM_EffectCompileFirst(benchmark::State& state) { compileAndDraw(state, true); }
void BM_EffectCompileCached(benchmark::State& state) { compileAndDraw(state, false); }
BENCHMARK(BM_EffectCompileFirst)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_EffectCompileCached)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
