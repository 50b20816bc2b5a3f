#pragma once
// A mesh of an object file: its geometry in the engine's shared or dynamic buffers, the
// surface as an embedded material with the envelopes that animate it, level-of-detail
// records, the per-frame triangle sort of transparent meshes and the MDD deformation.
#include "platform/gpu/Types.h"
#include "qx4d/content/Item.h"
#include "qx4d/content/Material.h"
#include "qx4d/content/MddPlayer.h"
#include "qx4d/core/RadixSort.h"
#include "qx4d/core/device/ResourceHandle.h"

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace qx4d {

class Envelope;
struct ShadingCamera;

/// One level of detail, as the file stores it (20 bytes).
struct LodRecord {
    float maxDistance = 0.0f;
    uint32_t baseVertex = 0;
    uint32_t vertexCount = 0;
    uint32_t startIndex = 0;
    uint32_t primitiveCount = 0;
};

class MeshItem : public Item {
public:
    /// `flags` bits (the `MISC` word).
    static constexpr uint32_t kSortTriangles = 0x2;
    static constexpr uint32_t kMdd = 0x4;
    static constexpr uint32_t kDynamicIndices = 0x18000000;
    static constexpr int kMaxTextures = 4;

    MeshItem();
    /// Releases the buffers, gives the static blocks back to their pools and the textures
    /// and declaration back to the renderer.
    ~MeshItem() override;

    /// Reads the mesh sub-chunks; false when the geometry can't be trusted (counts or
    /// indices that lie about the data), which drops the mesh.
    bool Load(Chunk& chunk) override;
    int32_t GetType() const override { return kMesh; }

    /// Draws level `lod` with its effect. `instanceMatrices` holds the world matrix first,
    /// then any further bone matrices.
    void Draw(size_t lod, std::span<const Matrix3x4> instanceMatrices, const ShadingCamera& camera);
    /// Draws level `lod` for a shadow map, with the effect the caller has set.
    void DrawShadow(size_t lod, std::span<const Matrix3x4> instanceMatrices);
    /// Evaluates the envelopes of the surface at `time`.
    void UpdateEnvelopes(float time);
    bool HasGeometry() const { return !declaration.IsNull() && !vertexBuffer.IsNull() && !indexBuffer.IsNull(); }
    /// The triangles as the last draw wrote them to the dynamic index buffer.
    const std::vector<uint16_t>& WrittenTriangles() const { return sortedTriangles; }
    /// Sets the time the MDD player evaluates at the next draw.
    void SetTime(float time) { mddTime = time; }

    uint32_t flags = 0;
    ResourceHandle declaration;
    ResourceHandle vertexBuffer;
    ResourceHandle indexBuffer;
    std::array<ResourceHandle, kMaxTextures> textures;
    uint32_t textureCount = 0;
    uint32_t primitiveType = 4;
    uint32_t stride = 0;
    uint32_t baseVertex = 0;
    uint32_t indexCount = 0;
    uint32_t vertexCount = 0;
    uint32_t startIndex = 0;
    uint32_t primitiveCount = 0;
    std::vector<LodRecord> lods;
    std::array<float, 4> boundingBox{};
    float distance = 0.0f;
    /// Corners of the sorted triangles, three a triangle.
    std::vector<uint16_t> triangles;
    std::vector<Float3> positions;
    MddPlayer mdd;
    Material material;
    int32_t boneCursor = 0;
    std::vector<Matrix3x4> bones;
    /// The envelopes of the surface, bound to fields of `material`.
    std::vector<std::unique_ptr<Envelope>> envelopes;
    /// The elements of the vertex declaration, end marker included.
    std::vector<qx::gpu::D3DVERTEXELEMENT9> declarationElements;
    uint16_t side = 0;

private:
    bool LoadDeclaration(Chunk& chunk);
    bool LoadGeometry(Chunk& chunk);
    bool LoadStaticVertices(Chunk& chunk);
    bool LoadIndices(Chunk& chunk);
    bool LoadLods(Chunk& chunk);
    void LoadClip(Chunk& chunk);
    void LoadSurface(Chunk& chunk);
    void LoadMaterialFile(const String& fileName);
    void BindEnvelope(std::unique_ptr<Envelope> envelope);
    void FinishSurface();
    bool Finish();
    bool LodFits(const LodRecord& lod) const;

    /// Fills the dynamic buffers for this frame; a null camera leaves the triangles unsorted.
    bool PrepareLod(const LodRecord& lod, const Matrix3x4& world, const ShadingCamera* camera);
    void SortTriangles(const LodRecord& lod, const Matrix3x4& world, const ShadingCamera& camera);
    void BindGeometry();
    void BindTextures();
    void SetBoneMatrices(unsigned firstRegister, std::span<const Matrix3x4> instanceMatrices) const;
    void DrawLod(const LodRecord& lod);

    /// The static indices while the mesh loads, to check the levels against.
    std::vector<uint32_t> loadedIndices;
    /// Where the geometry of this frame starts in the dynamic buffers.
    uint32_t dynamicBaseVertex = 0;
    uint32_t dynamicStartIndex = 0;
    bool dynamicVertices = false;
    bool dynamicIndices = false;
    float mddTime = 0.0f;
    RadixSort sorter{RadixSort::KindFloat};
    std::vector<float> sortKeys;
    std::vector<uint16_t> sortedTriangles;
};

}  // namespace qx4d
