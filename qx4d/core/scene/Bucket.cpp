#include "qx4d/core/scene/Bucket.h"

#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"

namespace qx4d {

namespace {

const gpu::D3DVERTEXELEMENT9 kParticleElements[] = {
    {0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITION, 0},
    {0, 12, gpu::D3DDECLTYPE_FLOAT2, 0, gpu::D3DDECLUSAGE_TEXCOORD, 0},
    {0, 20, gpu::D3DDECLTYPE_D3DCOLOR, 0, gpu::D3DDECLUSAGE_COLOR, 0},
    gpu::D3DDECL_END,
};

const gpu::D3DVERTEXELEMENT9 kLensFlareElements[] = {
    {0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITION, 0},
    {0, 12, gpu::D3DDECLTYPE_FLOAT2, 0, gpu::D3DDECLUSAGE_TEXCOORD, 0},
    {0, 20, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_TEXCOORD, 1},
    gpu::D3DDECL_END,
};

/// Six indices a quad of four vertices.
constexpr uint32_t kIndexBytesPerQuad = 12;

}  // namespace

BucketBase::~BucketBase()
{
    if (Renderer* renderer = Renderer::Instance()) {
        renderer->ReleaseVertexDeclaration(declaration);
        renderer->ReleaseVertexBuffer(vertexBuffer);
        renderer->ReleaseIndexBuffer(indexBuffer);
        renderer->ReleaseEffect(effect);
    }
}

bool BucketBase::CreateResources(uint32_t capacity, std::span<const gpu::D3DVERTEXELEMENT9> elements, uint32_t stride,
                                 const char16_t* effectFile, const char16_t* bufferName)
{
    Renderer* renderer = Renderer::Instance();
    if (!renderer || capacity == 0) return false;
    declaration = renderer->CreateVertexDeclaration(elements.data(), uint32_t(elements.size()));
    vertexBuffer = renderer->CreateVertexBuffer(capacity * 4 * stride, kResourceDynamic);
    indexBuffer = renderer->CreateIndexBuffer(capacity * kIndexBytesPerQuad, kResourceQuadList);
    effect = renderer->LoadEffect(effectFile);
    if (VertexBuffer* vertices = renderer->GetVertexBuffer(vertexBuffer)) vertices->name = bufferName;
    if (IndexBuffer* indices = renderer->GetIndexBuffer(indexBuffer)) indices->name = bufferName;
    return !declaration.IsNull() && !vertexBuffer.IsNull() && !indexBuffer.IsNull() && !effect.IsNull();
}

void BucketBase::Begin()
{
    Renderer* renderer = Renderer::Instance();
    if (!renderer) return;
    renderer->SetVertexDeclaration(declaration);
    renderer->SetStream(vertexBuffer, vertexStride);
    renderer->SetIndices(indexBuffer);
    renderer->SetEffect(effect);
    renderer->ClearTexture(0);
    texture = ResourceHandle();
}

void BucketBase::DrawStaged(const void* vertices, uint32_t count, uint32_t stride)
{
    Renderer* renderer = Renderer::Instance();
    gpu::Device* device = CurrentDevice();
    VertexBuffer* buffer = renderer ? renderer->GetVertexBuffer(vertexBuffer) : nullptr;
    uint32_t first = 0;
    // A failing placement draws nothing; the caller empties the staging array anyway.
    if (!device || !buffer || !buffer->Take(vertices, count * stride, stride, first)) return;
    renderer->SetTexture(0, texture);
    device->DrawIndexedPrimitive(gpu::D3DPT_TRIANGLELIST, int32_t(first), 0, count, 0, count / 2);
}

bool ParticleBucket::Create(uint32_t capacity)
{
    return CreateBucket(capacity, kParticleElements, u"Particle.fx", u"ParticleBucket");
}

bool LensFlareBucket::Create(uint32_t capacity)
{
    return CreateBucket(capacity, kLensFlareElements, u"LensFlare2.fx", u"LensFlareBucket");
}

}  // namespace qx4d
