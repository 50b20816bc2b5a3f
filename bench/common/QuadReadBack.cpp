// The frame that no 3D effect can do without, at 1920x1080: a clear, a textured quad over
// the whole target and the read-back into system memory. Benchmarks of the GPU layer and of
// the scene effects both report it, so that the engine's own cost shows beside it.
#include "bench/common/Frames.h"
#include "platform/gpu/Device.h"
#include "platform/gpu/Effect.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

using namespace qx::gpu;
using qx::FAILED;
using qx::UINT;

const char* const kQuadEffect = R"(
sampler s0 : register(s0);
float4 ps_main(float2 uv : TEXCOORD0) : COLOR0 { return tex2D(s0, uv); }
technique t { pass p { PixelShader = compile ps_2_0 ps_main(); } }
)";

const D3DVERTEXELEMENT9 kPositionT[] = {{0, 0, D3DDECLTYPE_FLOAT4, 0, D3DDECLUSAGE_POSITIONT, 0},
                                        {0, 16, D3DDECLTYPE_FLOAT2, 0, D3DDECLUSAGE_TEXCOORD, 0},
                                        D3DDECL_END};
std::shared_ptr<Device> makeQuadDevice()
{
    D3DPRESENT_PARAMETERS parameters;
    parameters.BackBufferWidth = parameters.BackBufferHeight = 1;
    return Device::create(parameters);
}

void BM_ClearQuadReadBack1080p(benchmark::State& state)
{
    const auto device = makeQuadDevice();
    const UINT width = qx::bench::kFrameWidth, height = qx::bench::kFrameHeight;
    std::shared_ptr<Surface> target, memory;
    std::shared_ptr<Texture> texture;
    std::shared_ptr<VertexDeclaration> declaration;
    std::shared_ptr<Effect> effect;
    if (!device || FAILED(device->CreateRenderTarget(width, height, D3DFMT_A8R8G8B8, &target)) ||
        FAILED(device->CreateOffscreenPlainSurface(width, height, D3DFMT_A8R8G8B8, D3DPOOL_SYSTEMMEM, &memory)) ||
        FAILED(device->CreateTexture(width, height, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &texture)) ||
        FAILED(device->CreateVertexDeclaration(kPositionT, &declaration)) ||
        FAILED(D3DXCreateEffect(device, kQuadEffect, nullptr, &effect))) {
        state.SkipWithError("no device");
        return;
    }
    const auto picture = qx::bench::makeTestFrame(int(width), int(height));
    texture->upload(0, 0, reinterpret_cast<const uint8_t*>(picture.data()), width * 4);
    device->SetRenderTarget(0, target);
    device->SetVertexDeclaration(declaration);
    device->SetTexture(0, texture);
    const auto w = float(width), h = float(height);
    const float quad[] = {0, 0, 0, 1, 0, 0, w, 0, 0, 1, 1, 0, w, h, 0, 1, 1, 1, 0, h, 0, 1, 0, 1};
    std::vector<uint32_t> frame(size_t(width) * height);
    for (auto _ : state) {
        device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
        effect->Begin(nullptr, 0);
        effect->BeginPass(0);
        device->DrawPrimitiveUP(D3DPT_TRIANGLEFAN, 2, quad, 24);
        effect->EndPass();
        effect->End();
        device->GetRenderTargetData(target, memory);
        D3DLOCKED_RECT locked;
        memory->LockRect(&locked, D3DLOCK_READONLY);
        std::memcpy(frame.data(), locked.pBits, size_t(locked.Pitch) * height);
        memory->UnlockRect();
        benchmark::DoNotOptimize(frame.data());
    }
}
BENCHMARK(BM_ClearQuadReadBack1080p)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
