// The draw of a full-screen filter: its effect, declaration and quad, and what the
// filters add to it (the sepia ramp, the colour matrix, the distortion values).
#include "qx4d/content/Filter.h"
#include "qx4d/core/device/Renderer.h"

namespace qx4d {

namespace {

const gpu::D3DVERTEXELEMENT9 kQuadDeclaration[] = {
    {0, 0, gpu::D3DDECLTYPE_FLOAT4, 0, gpu::D3DDECLUSAGE_POSITIONT, 0},
    {0, 16, gpu::D3DDECLTYPE_FLOAT2, 0, gpu::D3DDECLUSAGE_TEXCOORD, 0},
    gpu::D3DDECL_END,
};

/// A vertex of the quad: pixel position, rhw, texture coordinates (24 bytes).
struct QuadVertex {
    float x, y, z, rhw;
    float u, v;
};
static_assert(sizeof(QuadVertex) == 24);

/// What the target is cleared to before each pass.
constexpr uint32_t kClearColor = 0xFF996699u;

}  // namespace

// The filter's own part only: a derived filter gives its resources back in its own
// destructor.
Filter::~Filter() { Filter::Release(); }

void Filter::Release()
{
    if (Renderer* renderer = Renderer::Instance()) {
        renderer->ReleaseEffect(effect);
        renderer->ReleaseVertexDeclaration(declaration);
    }
}

bool Filter::Create(int32_t newWidth, int32_t newHeight)
{
    Release();
    width = newWidth;
    height = newHeight;
    Renderer* renderer = Renderer::Instance();
    if (!renderer) return false;
    effect = renderer->LoadEffect(EffectFile());
    declaration = renderer->CreateVertexDeclaration(kQuadDeclaration, uint32_t(std::size(kQuadDeclaration)));
    return !effect.IsNull() && !declaration.IsNull();
}

void Filter::Render()
{
    gpu::Device* device = CurrentDevice();
    Renderer* renderer = Renderer::Instance();
    if (!device || !renderer) return;
    device->SetRenderTarget(0, target);
    renderer->ClearStream(0);
    renderer->SetVertexDeclaration(declaration);
    renderer->SetTexture(0, source);
    BindExtraTextures(*renderer);
    renderer->SetEffect(effect);
    SetConstants(*device);
    DrawQuad(*device);
}

void Filter::DrawQuad(gpu::Device& device) const
{
    device.Clear(gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER, kClearColor, 1.0f, 0);
    const auto w = float(width), h = float(height);
    const QuadVertex quad[4] = {{0, 0, 0, 1, 0, 0}, {w, 0, 0, 1, 1, 0}, {w, h, 0, 1, 1, 1}, {0, h, 0, 1, 0, 1}};
    device.DrawPrimitiveUP(gpu::D3DPT_TRIANGLEFAN, 2, quad, sizeof(QuadVertex));
}

bool Sepia::Create(int32_t newWidth, int32_t newHeight)
{
    if (!Filter::Create(newWidth, newHeight)) return false;
    if (Renderer* renderer = Renderer::Instance()) toneRamp = renderer->LoadTexture(u"sepia.tga");
    return true;
}

void Sepia::BindExtraTextures(Renderer& renderer) { renderer.SetTexture(1, toneRamp); }

void Sepia::Release()
{
    ReleaseToneRamp();
    Filter::Release();
}

void Sepia::ReleaseToneRamp()
{
    if (Renderer* renderer = Renderer::Instance()) renderer->ReleaseTexture(toneRamp);
}

void ColorTransform::SetConstants(gpu::Device& device)
{
    colorMatrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    device.SetPixelShaderConstantF(0, colorMatrix.data(), 4);
}

void DistortFilter::SetConstants(gpu::Device& device)
{
    const float values[4] = {centerX, centerY, radius, Angle()};
    device.SetPixelShaderConstantF(0, values, 1);
}

}  // namespace qx4d
