#pragma once
// A model as an importer reads it, before it becomes an object: images, materials,
// triangle meshes, the node hierarchy with its skins, and animations. Every backend
// fills it in the same conventions, whatever its file format says: right-handed
// coordinates with Y up, front faces counter-clockwise, texture coordinates with their
// origin at the top left of the image (a format whose v runs upwards flips it).
#include "qx4d/core/Matrix.h"
#include "tools/import/Transform.h"

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace qx4d::tools {

/// Why a model can't be imported, in one line that names the file and the problem.
class ImportError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

using Float2 = std::array<float, 2>;

/// An image file as the model holds it, still encoded.
struct SourceImage {
    /// A file name to write it under, without folders; empty when the model has none.
    std::string name;
    /// The format, as a lower-case file extension without the dot: "png", "jpg", ...
    std::string extension;
    std::vector<uint8_t> bytes;
};

struct SourceMaterial {
    std::string name;
    /// Diffuse colour and its opacity.
    Float3 color{1.0f, 1.0f, 1.0f};
    float opacity = 1.0f;
    /// Whether the opacity (and the texture's alpha) blends with what lies behind.
    bool blended = false;
    float specular = 0.0f;
    /// The specular exponent.
    float glossiness = 40.0f;
    /// Light of its own, in units of the diffuse colour.
    float luminosity = 0.0f;
    /// Index in `SourceScene::images` of the base colour texture; -1 for none.
    int baseColorImage = -1;
};

/// One triangle list with one material.
struct SourceMesh {
    std::string name;
    /// Index in `SourceScene::materials`; -1 for the default material.
    int material = -1;
    std::vector<Float3> positions;
    /// One a vertex, or empty when the model gives none.
    std::vector<Float3> normals;
    /// One a vertex, or empty.
    std::vector<Float2> uvs;
    /// Three a triangle.
    std::vector<uint32_t> indices;
    /// Skinning, one a vertex or empty: four joints (indices in the skin's joint list)
    /// and their weights.
    std::vector<std::array<uint16_t, 4>> joints;
    std::vector<std::array<float, 4>> weights;
    /// Position offsets of each morph target, one a vertex, and the weights that apply
    /// when no node or animation says otherwise.
    std::vector<std::vector<Float3>> morphTargets;
    std::vector<float> morphWeights;
};

struct SourceNode {
    std::string name;
    /// Index of the parent, which comes earlier in the list; -1 for a root.
    int parent = -1;
    Vec3 translation{0.0, 0.0, 0.0};
    Quaternion rotation{0.0, 0.0, 0.0, 1.0};
    Vec3 scale{1.0, 1.0, 1.0};
    /// A local matrix that stands instead of translation, rotation and scale.
    std::optional<Transform> matrix;
    /// Indices in `SourceScene::meshes` that this node places.
    std::vector<int> meshes;
    /// Index in `SourceScene::skins`, which then places the meshes instead of the node.
    int skin = -1;
    /// Morph weights of this node's meshes; empty for the meshes' own.
    std::vector<float> morphWeights;
};

struct SourceSkin {
    /// The nodes that act as joints.
    std::vector<int> joints;
    /// One a joint: from the meshes' space to the joint's at the bind pose.
    std::vector<Transform> inverseBindMatrices;
};

/// Keys of one property of one node.
struct SourceChannel {
    enum class Path { Translation, Rotation, Scale, Weights };
    enum class Interpolation { Step, Linear, CubicSpline };

    int node = -1;
    Path path = Path::Translation;
    Interpolation interpolation = Interpolation::Linear;
    /// Seconds, increasing.
    std::vector<float> times;
    /// `Width()` values a key; cubic splines hold in-tangent, value and out-tangent.
    std::vector<float> values;
    /// Values of one key's property: 3, 4 (rotation) or the number of morph weights.
    size_t width = 3;
};

struct SourceAnimation {
    std::string name;
    std::vector<SourceChannel> channels;

    /// The time of the last key of any channel.
    float Duration() const;
};

struct SourceScene {
    std::vector<SourceImage> images;
    std::vector<SourceMaterial> materials;
    std::vector<SourceMesh> meshes;
    /// Parents before their children.
    std::vector<SourceNode> nodes;
    std::vector<SourceSkin> skins;
    std::vector<SourceAnimation> animations;
};

}  // namespace qx4d::tools
