#include "qx4d/content/LDRBloom.h"

#include "qx4d/core/device/Renderer.h"

namespace qx4d {

namespace {

/// Positions in pixels (pre-transformed, their w taken as 1) and texture coordinates:
/// x, y, z, u, v.
const gpu::D3DVERTEXELEMENT9 kBlockDeclaration[] = {
    {0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITIONT, 0},
    {0, 12, gpu::D3DDECLTYPE_FLOAT2, 0, gpu::D3DDECLUSAGE_TEXCOORD, 0},
    gpu::D3DDECL_END,
};
constexpr uint32_t kStride = 20;
/// Six quads of four vertices: the picture, its four levels, and one the levels don't use.
constexpr int kQuads = 6;
constexpr uint32_t kClearColor = 0xFF996699u;

enum Pass : uint32_t { kFinal = 0, kDownsample = 1, kBlur = 2, kBright = 3 };

}  // namespace

bool LDRBloom::Create(int32_t newWidth, int32_t newHeight)
{
    ReleaseLevels();
    Renderer* renderer = Renderer::Instance();
    if (!Filter::Create(newWidth, newHeight) || !renderer) return false;
    renderer->ReleaseVertexDeclaration(declaration);
    declaration = renderer->CreateVertexDeclaration(kBlockDeclaration, uint32_t(std::size(kBlockDeclaration)));
    if (declaration.IsNull() || !MakeQuads()) return false;
    bright = renderer->CreateRenderTexture(uint32_t(width), uint32_t(height), gpu::D3DFMT_X8R8G8B8);
    bool made = !bright.IsNull();
    for (int k = 1; k <= kLevels && made; ++k) {
        // A side that halves to nothing has no target.
        const int32_t w = width >> k, h = height >> k;
        if (w <= 0 || h <= 0) return false;
        for (auto* level : {&down, &blur, &across}) {
            (*level)[size_t(k)] = renderer->CreateRenderTexture(uint32_t(w), uint32_t(h), gpu::D3DFMT_X8R8G8B8);
            made = made && !(*level)[size_t(k)].IsNull();
        }
    }
    return made;
}

bool LDRBloom::MakeQuads()
{
    float vertices[kQuads * 4 * 5];
    for (int quad = 0; quad < kQuads; ++quad) {
        const auto w = float(width >> quad), h = float(height >> quad);
        const float corners[4][5] = {{0, 0, 0, 0, 0}, {w, 0, 0, 1, 0}, {w, h, 0, 1, 1}, {0, h, 0, 0, 1}};
        std::copy(&corners[0][0], &corners[0][0] + 20, vertices + quad * 20);
    }
    Renderer* renderer = Renderer::Instance();
    vertexBlock = renderer->AddVertices(vertices, kQuads * 4, kStride, firstVertex);
    return !vertexBlock.IsNull();
}

void LDRBloom::Release()
{
    ReleaseLevels();
    Filter::Release();
}

void LDRBloom::ReleaseLevels()
{
    Renderer* renderer = Renderer::Instance();
    if (!renderer) return;
    renderer->ReleaseTexture(bright);
    for (auto* level : {&down, &blur, &across})
        for (ResourceHandle& texture : *level) renderer->ReleaseTexture(texture);
    if (!vertexBlock.IsNull()) renderer->FreeVertices(vertexBlock, firstVertex);
    vertexBlock = ResourceHandle();
}

void LDRBloom::Pass(const ResourceHandle& input, const ResourceHandle& output, int quad) const
{
    Renderer* renderer = Renderer::Instance();
    gpu::Device* device = CurrentDevice();
    const Texture* texture = renderer->GetTexture(output);
    if (!texture || !texture->surface) return;
    renderer->SetTexture(0, input);
    device->SetRenderTarget(0, texture->surface);
    device->Clear(gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER, kClearColor, 1.0f, 0);
    device->DrawPrimitive(gpu::D3DPT_TRIANGLEFAN, firstVertex + uint32_t(quad) * 4, 2);
}

void LDRBloom::Blur(int level, gpu::Effect& passes) const
{
    gpu::Device* device = CurrentDevice();
    passes.EndPass();
    passes.BeginPass(kBlur);
    // Five taps a texel apart, along x and then along y.
    for (const bool alongX : {true, false}) {
        const double texel = 1.0 / double(alongX ? width >> level : height >> level);
        float offsets[5][4] = {};
        for (int tap = 0; tap < 5; ++tap) offsets[tap][alongX ? 0 : 1] = float((tap - 2) * texel);
        device->SetPixelShaderConstantF(0, &offsets[0][0], 5);
        if (alongX)
            Pass(down[size_t(level)], across[size_t(level)], level);
        else
            Pass(across[size_t(level)], blur[size_t(level)], level);
    }
}

void LDRBloom::Render()
{
    Renderer* renderer = Renderer::Instance();
    gpu::Device* device = CurrentDevice();
    const Effect* bound = renderer ? renderer->GetEffect(effect) : nullptr;
    if (!device || !bound || !bound->effect || vertexBlock.IsNull()) return;
    gpu::Effect& passes = *bound->effect;
    renderer->SetVertexDeclaration(declaration);
    renderer->SetTexture(0, source);
    renderer->SetStream(vertexBlock, kStride);
    renderer->SetEffect(effect);
    passes.EndPass();
    passes.BeginPass(kBright);
    Pass(source, bright, 0);
    for (int k = 1; k <= kLevels; ++k) {
        passes.EndPass();
        passes.BeginPass(kDownsample);
        Pass(k == 1 ? bright : down[size_t(k - 1)], down[size_t(k)], k);
        Blur(k, passes);
    }
    passes.EndPass();
    passes.BeginPass(kFinal);
    renderer->SetTexture(0, source);
    for (int k = 1; k <= kLevels; ++k) renderer->SetTexture(k, blur[size_t(k)]);
    device->SetRenderTarget(0, target);
    device->Clear(gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER, kClearColor, 1.0f, 0);
    device->DrawPrimitive(gpu::D3DPT_TRIANGLEFAN, firstVertex, 2);
}

}  // namespace qx4d
