#pragma once
// What the parts of the converter share: the placed meshes of a scene, the checks of a
// scene's data, and the making of mesh items.
#include "tools/import/MeshGeometry.h"
#include "tools/import/ObjectConverter.h"
#include "tools/import/ScenePose.h"
#include "tools/import/SurfaceMapping.h"

namespace qx4d::tools {

/// One mesh as one node places it.
struct Instance {
    int node = -1;
    int mesh = -1;
    std::string name;
};

/// Throws ImportError for data the converter can't trust: indices past the vertices,
/// attributes of the wrong length, references to nothing, joints the skin lacks.
void CheckScene(const SourceScene& scene, const std::string& source);

/// The mesh models of the items that draw `instance`: the surface, the textures and the
/// declaration that `geometry` needs. Meshes whose vertices are to be sorted or deformed
/// go in parts that 16-bit indices reach.
class ItemMaker {
public:
    ItemMaker(const SourceScene& scene, const ConvertOptions& options, Conversion& conversion)
        : scene_(scene), textures_(options.imageFolder), conversion_(conversion)
    {}

    /// Appends the static items of `instance` (one unless split) with `geometry`, placed
    /// and mirrored already; `boneCount` is non-zero for the skinned mesh.
    void AddStatic(const Instance& instance, MeshGeometry geometry, uint32_t boneCount);
    /// Appends the MDD items of `instance`: `frames` hold its mirrored positions.
    void AddMdd(const Instance& instance, const MeshGeometry& geometry, const std::vector<std::vector<Float3>>& frames);
    /// Appends one BONE item a joint, named after it, at the identity.
    void AddBones(const SourceSkin& skin);
    /// Puts the texture files that the surfaces name into the conversion.
    void FinishTextures();

private:
    /// A mesh model with the instance's surface and texture.
    MeshModel Surfaced(const Instance& instance);
    void Append(const Instance& instance, MeshModel mesh, size_t part, size_t parts);

    const SourceScene& scene_;
    TextureNames textures_;
    Conversion& conversion_;
};

/// The 8-bit name of an item from a model's UTF-8 name.
std::string ItemName(const std::string& utf8);

/// The most vertices that 16-bit indices reach.
constexpr size_t kMaxShortIndexedVertices = 0x10000;

}  // namespace qx4d::tools
