#pragma once
// An object file in memory, as the tools make it: items in list order (parents before
// children), meshes with their vertex layout, geometry, surface and optional MDD
// deformation. `WriteObject` turns it into the bytes the engine's loader reads.
#include "platform/gpu/Types.h"
#include "qx4d/content/ChunkWriter.h"
#include "qx4d/content/MeshItem.h"
#include "qx4d/core/Matrix.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qx4d::tools {

/// One key of a surface envelope: value, time and the shape of the segment it ends.
struct EnvelopeKeyModel {
    float value = 0.0f;
    float time = 0.0f;
    uint16_t shape = 3;  // linear
    std::vector<float> params;
};

/// An envelope that drives a surface field by its name ("Transparency", "Color.R", ...).
struct EnvelopeModel {
    std::string name;
    uint16_t preBehavior = 1;
    uint16_t postBehavior = 1;
    std::vector<EnvelopeKeyModel> keys;
};

struct SurfaceModel {
    /// `RDST` bits.
    static constexpr uint32_t kAlphaBlend = 0x1;
    static constexpr uint32_t kDepth = 0x4;
    static constexpr uint32_t kDepthWrite = 0x8;
    static constexpr uint32_t kFogOff = 0x10;

    Float3 color{1.0f, 1.0f, 1.0f};
    float luminosity = 0.0f;
    float diffuse = 1.0f;
    float specular = 0.0f;
    float glossiness = 40.0f;
    float reflective = 0.0f;
    float transparency = 0.0f;
    /// The `.mat` file under "MATERIALS:".
    std::string materialFile = "color.mat";
    uint32_t renderStates = kDepth | kDepthWrite;
    uint16_t srcBlend = 5;   // source alpha
    uint16_t destBlend = 6;  // inverse source alpha
    std::vector<EnvelopeModel> envelopes;
};

/// Stored frames of positions played on a timeline, with the triangles and UVs they
/// share. The output vertex is position, normal and one or two UV pairs.
struct MddModel {
    bool halfFloats = false;
    float framesPerSecond = 30.0f;
    uint32_t vertexCount = 0;
    /// One array of `vertexCount` positions a stored frame.
    std::vector<std::vector<Float3>> frames;
    std::vector<uint16_t> timeline;
    std::vector<std::array<float, 2>> uvSets[2];
    uint32_t uvSetCount = 0;
    std::vector<uint16_t> triangles;
    std::vector<uint16_t> uvIndices[2];
    float smoothingAngle = 1.5620096f;
};

struct MeshModel {
    uint16_t primitiveType = 4;  // triangle list
    /// End marker included.
    std::vector<qx::gpu::D3DVERTEXELEMENT9> declaration;
    /// The `MISC` flags: sorted triangles (2), MDD (4), dynamic indices (0x18000000).
    uint32_t flags = 0;
    uint32_t stride = 0;
    std::vector<uint8_t> vertices;
    std::vector<uint32_t> indices;
    std::optional<MddModel> mdd;
    uint32_t boneCount = 0;
    std::vector<LodRecord> lods;
    std::optional<std::array<float, 4>> boundingBox;
    std::vector<std::string> textures;
    SurfaceModel surface;

    uint32_t VertexCount() const { return stride ? uint32_t(vertices.size() / stride) : 0; }
};

struct ItemModel {
    enum class Kind { Null, Mesh, Bone, Clone };

    Kind kind = Kind::Null;
    std::string name;
    /// Index of an earlier item; -1 for none.
    int32_t parent = -1;
    Float3 position{};
    Float3 rotation{};
    Float3 scale{1.0f, 1.0f, 1.0f};
    MeshModel mesh;
    /// For a clone: the index of the mesh it repeats.
    uint32_t cloneSource = 0;
};

struct ObjectModel {
    std::vector<ItemModel> items;
};

/// The MDD part of a `MISC` body, from its encoding word on.
void WriteMdd(ChunkWriter& out, const MddModel& mdd);

/// The object file's bytes.
std::vector<uint8_t> WriteObject(const ObjectModel& model);

/// The declaration of the common static vertex: position, normal, one UV pair (32 bytes).
std::vector<qx::gpu::D3DVERTEXELEMENT9> PositionNormalUvDeclaration();

}  // namespace qx4d::tools
