// Drawing a mesh: the per-frame preparation of its dynamic buffers (MDD deformation,
// back-to-front triangle order), the bindings, the material and its constants.
#include "qx4d/content/MeshItem.h"

#include "qx4d/content/Envelope.h"
#include "qx4d/content/ShaderConstants.h"
#include "qx4d/content/ShaderKeys.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"

namespace qx4d {

namespace {

/// The first sampler that reflection textures take, after the three surface textures.
constexpr int kReflectionSampler = 3;
/// The register of the world matrix in the shadow effect.
constexpr unsigned kShadowModelRegister = 4;

}  // namespace

MeshItem::MeshItem() = default;

MeshItem::~MeshItem()
{
    Renderer* renderer = Renderer::Instance();
    if (!renderer) return;
    renderer->ReleaseVertexDeclaration(declaration);
    if (dynamicVertices)
        renderer->ReleaseVertexBuffer(vertexBuffer);
    else
        renderer->FreeVertices(vertexBuffer, baseVertex);
    if (dynamicIndices)
        renderer->ReleaseIndexBuffer(indexBuffer);
    else
        renderer->FreeIndices(indexBuffer, startIndex);
    for (ResourceHandle& texture : textures) renderer->ReleaseTexture(texture);
}

void MeshItem::UpdateEnvelopes(float time)
{
    for (const auto& envelope : envelopes) envelope->Update(time);
}

bool MeshItem::PrepareLod(const LodRecord& lod, const Matrix3x4& world, const ShadingCamera* camera)
{
    if (!mdd.IsEmpty() && !mdd.Update(mddTime, vertexBuffer, dynamicBaseVertex)) return false;
    if (!dynamicIndices) return true;
    const size_t first = lod.startIndex, count = size_t(lod.primitiveCount) * 3;
    sortedTriangles.assign(triangles.begin() + std::ptrdiff_t(first),
                           triangles.begin() + std::ptrdiff_t(first + count));
    if ((flags & kSortTriangles) && camera && primitiveType == qx::gpu::D3DPT_TRIANGLELIST && !positions.empty())
        SortTriangles(lod, world, *camera);
    // Indices that are dynamic but not sorted are written as they stand, so that they
    // are in the buffer again after the device comes back.
    IndexBuffer* buffer = Renderer::Instance()->GetIndexBuffer(indexBuffer);
    return buffer && !sortedTriangles.empty() &&
           buffer->Take(sortedTriangles.data(), uint32_t(sortedTriangles.size() * 2), 2, dynamicStartIndex);
}

void MeshItem::SortTriangles(const LodRecord& lod, const Matrix3x4& world, const ShadingCamera& camera)
{
    const Float3 eye = TransformPoint(Inverse(world), camera.position);
    const size_t count = sortedTriangles.size() / 3;
    sortKeys.resize(count);
    for (size_t t = 0; t < count; ++t) {
        Float3 centre{};
        for (size_t corner = 0; corner < 3; ++corner) {
            const Float3& p = positions[lod.baseVertex + sortedTriangles[t * 3 + corner]];
            for (int c = 0; c < 3; ++c) centre[c] += p[c];
        }
        // The mean is taken by a multiply by a third.
        float key = 0.0f;
        for (int c = 0; c < 3; ++c) {
            const float d = centre[c] * 0.33333334f - eye[c];
            key += d * d;
        }
        sortKeys[t] = key;
    }
    sorter.Sort(sortKeys.data(), uint32_t(count));
    const uint32_t* ranks = sorter.GetRanks();
    const std::vector<uint16_t> unsorted = sortedTriangles;
    // Farthest first: the last rank holds the largest distance.
    for (size_t t = 0; t < count; ++t)
        std::copy_n(&unsorted[size_t(ranks[count - 1 - t]) * 3], 3, &sortedTriangles[t * 3]);
}

void MeshItem::BindGeometry()
{
    Renderer& renderer = *Renderer::Instance();
    renderer.SetVertexDeclaration(declaration);
    renderer.SetStream(vertexBuffer, stride);
    renderer.SetIndices(indexBuffer);
}

void MeshItem::BindTextures()
{
    Renderer& renderer = *Renderer::Instance();
    // Only the first three textures reach their samplers.
    for (int stage = 0; stage < 3; ++stage)
        if (!textures[size_t(stage)].IsNull()) renderer.SetTexture(stage, textures[size_t(stage)]);
    if (!(material.flags & kMaterialPixelLighting)) return;
    // A texture the material marks as a reflection is the mesh texture of its sampler
    // slot, bound again from sampler 3 up in the material's order.
    int stage = kReflectionSampler;
    for (const MaterialTexture& texture : material.textures) {
        if (texture.semanticName != kSemanticReflection || stage >= Renderer::kTextureStages) continue;
        if (texture.samplerSlot < textureCount && !textures[texture.samplerSlot].IsNull())
            renderer.SetTexture(stage, textures[texture.samplerSlot]);
        ++stage;
    }
}

void MeshItem::SetBoneMatrices(unsigned firstRegister, std::span<const Matrix3x4> instanceMatrices) const
{
    qx::gpu::Device* device = CurrentDevice();
    if (!device || material.bones <= 0) return;
    // A skinned material reads one model matrix a bone, after the other vertex constants;
    // the identity stands in for a bone the instance doesn't give.
    std::vector<float> rows;
    for (size_t bone = 0; bone < size_t(material.bones); ++bone) {
        const Matrix3x4& m = bone < instanceMatrices.size() ? instanceMatrices[bone] : kIdentity3x4;
        rows.insert(rows.end(), m.begin(), m.end());
    }
    device->SetVertexShaderConstantF(firstRegister, rows.data(), unsigned(rows.size() / 4));
}

void MeshItem::DrawLod(const LodRecord& lod)
{
    qx::gpu::Device* device = CurrentDevice();
    if (!device || lod.primitiveCount == 0) return;
    const uint32_t base = (dynamicVertices ? dynamicBaseVertex : baseVertex) + lod.baseVertex;
    const uint32_t start = dynamicIndices ? dynamicStartIndex : startIndex + lod.startIndex;
    device->DrawIndexedPrimitive(qx::gpu::D3DPRIMITIVETYPE(primitiveType), int32_t(base), 0, lod.vertexCount, start,
                                 lod.primitiveCount);
}

void MeshItem::Draw(size_t lod, std::span<const Matrix3x4> instanceMatrices, const ShadingCamera& camera)
{
    if (lod >= lods.size() || instanceMatrices.empty() || !HasGeometry()) return;
    matrix = instanceMatrices[0];
    if (!PrepareLod(lods[lod], matrix, &camera)) return;
    BindGeometry();
    const ShadingScene& scene = CurrentShadingScene();
    material.Apply(0, scene);
    BindTextures();
    const unsigned bonesRegister = SetShaderConstants(material, scene, camera, matrix);
    SetBoneMatrices(bonesRegister, instanceMatrices);
    DrawLod(lods[lod]);
}

void MeshItem::DrawShadow(size_t lod, std::span<const Matrix3x4> instanceMatrices)
{
    qx::gpu::Device* device = CurrentDevice();
    if (!device || lod >= lods.size() || instanceMatrices.empty() || !HasGeometry()) return;
    // No eye here: the depth of a shadow map doesn't depend on the triangles' order.
    if (!PrepareLod(lods[lod], instanceMatrices[0], nullptr)) return;
    BindGeometry();
    device->SetVertexShaderConstantF(kShadowModelRegister, instanceMatrices[0].data(), 3);
    DrawLod(lods[lod]);
}

}  // namespace qx4d
