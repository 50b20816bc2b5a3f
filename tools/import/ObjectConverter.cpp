// The order of an imported object: the skinned mesh that keeps its bones first, then its
// bones, then every other placed mesh, then the meshes baked to MDD frames.
#include "tools/import/ObjectConverter.h"

#include "tools/import/ConverterParts.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace qx4d::tools {

namespace {

/// The engine's shader constants hold no more bone matrices than this.
constexpr size_t kMaxBones = 80;
/// The MDD timeline numbers its frames in 16 bits.
constexpr uint64_t kMaxFrames = 0xFFFF;
/// Frame data of all baked meshes together: a bound on the memory of the import, and far
/// inside the 4 GiB that the file's 32-bit chunk sizes allow.
constexpr uint64_t kMaxBakedBytes = uint64_t(512) << 20;

enum class Use { Static, Skinned, Baked };

std::vector<Instance> Instances(const SourceScene& scene)
{
    std::vector<Instance> instances;
    for (size_t n = 0; n < scene.nodes.size(); ++n) {
        const SourceNode& node = scene.nodes[n];
        for (const int mesh : node.meshes)
            if (!scene.meshes[size_t(mesh)].indices.empty()) {
                const std::string& name = node.meshes.size() == 1 ? node.name : scene.meshes[size_t(mesh)].name;
                instances.push_back({int(n), mesh, name});
            }
    }
    return instances;
}

bool IsSkinned(const SourceScene& scene, const Instance& instance)
{
    return scene.nodes[size_t(instance.node)].skin >= 0 && !scene.meshes[size_t(instance.mesh)].joints.empty();
}

/// Four bone indices and weights a vertex, the weights summing to 1; a vertex that no
/// joint weighs on follows bone 0.
void SetBones(const SourceMesh& mesh, MeshGeometry& geometry)
{
    for (size_t v = 0; v < mesh.joints.size(); ++v) {
        std::array<float, 4> weights = mesh.weights[v];
        std::array<uint8_t, 4> bones{};
        float total = 0.0f;
        for (size_t k = 0; k < 4; ++k) {
            weights[k] = std::max(weights[k], 0.0f);
            bones[k] = weights[k] > 0.0f ? uint8_t(mesh.joints[v][k]) : 0;
            total += weights[k];
        }
        for (float& weight : weights) weight = total > 0.0f ? weight / total : 0.0f;
        if (!(total > 0.0f)) weights[0] = 1.0f;
        geometry.bones.push_back(bones);
        geometry.weights.push_back(weights);
    }
}

/// The instance's vertices as `pose` places them, mirrored into the engine's space.
MeshGeometry Placed(const SourceScene& scene, const ScenePose& pose, const Instance& instance, Use use)
{
    const SourceMesh& mesh = scene.meshes[size_t(instance.mesh)];
    MeshGeometry geometry;
    const bool withNormals = use != Use::Baked && !mesh.normals.empty();
    pose.Place(instance.node, instance.mesh, geometry.positions, withNormals ? &geometry.normals : nullptr);
    geometry.uvs = mesh.uvs;
    geometry.indices = mesh.indices;
    if (use == Use::Skinned) SetBones(mesh, geometry);
    // A placement that mirrors turns the front faces round; a skin is trusted not to.
    if (!IsSkinned(scene, instance) && Determinant3(pose.World(instance.node)) < 0.0) ReverseWinding(geometry.indices);
    // The MDD player makes its own normals from each frame.
    if (use != Use::Baked && geometry.normals.empty()) MakeFlatNormals(geometry);
    ToEngineSpace(geometry);
    return geometry;
}

const SourceAnimation* BakedAnimation(const SourceScene& scene, const std::string& source,
                                      std::vector<std::string>& warnings)
{
    if (scene.animations.empty()) return nullptr;
    const SourceAnimation& first = scene.animations.front();
    if (scene.animations.size() > 1)
        warnings.push_back(source + ": only the first of " + std::to_string(scene.animations.size()) + " animations (" +
                           first.name + ") is baked");
    if (!(first.Duration() > 0.0f)) {
        warnings.push_back(source + ": " + first.name + " lasts no time; the model is imported as it stands");
        return nullptr;
    }
    return &first;
}

/// The placed positions of each instance at each frame of `animation`, mirrored.
std::vector<std::vector<std::vector<Float3>>> BakeFrames(const SourceScene& scene, const SourceAnimation& animation,
                                                         const std::vector<Instance>& instances,
                                                         const ConvertOptions& options)
{
    const double duration = animation.Duration();
    const uint64_t frames = uint64_t(std::llround(duration * kBakedFramesPerSecond)) + 1;
    uint64_t vertices = 0;
    for (const Instance& instance : instances) vertices += scene.meshes[size_t(instance.mesh)].positions.size();
    if (frames > kMaxFrames || frames * vertices * sizeof(Float3) > kMaxBakedBytes)
        throw ImportError(options.source + ": " + animation.name + " is too long to bake: " + std::to_string(frames) +
                          " frames of " + std::to_string(vertices) + " vertices");
    std::vector<std::vector<std::vector<Float3>>> baked(instances.size());
    ScenePose pose(scene);
    for (uint64_t f = 0; f < frames; ++f) {
        pose.Evaluate(&animation, std::min(double(f) / kBakedFramesPerSecond, duration));
        for (size_t i = 0; i < instances.size(); ++i) {
            std::vector<Float3>& positions = baked[i].emplace_back();
            pose.Place(instances[i].node, instances[i].mesh, positions, nullptr);
            MirrorZ(positions);
        }
        if (options.progress) options.progress(double(f + 1) / double(frames));
    }
    return baked;
}

/// The instance that keeps its bones: the first skinned one that isn't baked and whose
/// skin the engine can hold. The others are imported as they are posed.
std::optional<size_t> BoneCarrier(const SourceScene& scene, const std::vector<Instance>& instances,
                                  const std::vector<bool>& baked, const std::string& source,
                                  std::vector<std::string>& warnings)
{
    std::optional<size_t> carrier;
    for (size_t i = 0; i < instances.size(); ++i) {
        if (baked[i] || !IsSkinned(scene, instances[i])) continue;
        const size_t joints = scene.skins[size_t(scene.nodes[size_t(instances[i].node)].skin)].joints.size();
        if (carrier)
            warnings.push_back(source + ": " + instances[i].name +
                               ": an object deforms only its first mesh by bones; this one is imported as posed");
        else if (joints > kMaxBones)
            warnings.push_back(source + ": " + instances[i].name + ": its skin has " + std::to_string(joints) +
                               " joints, more than the engine's " + std::to_string(kMaxBones) +
                               "; it is imported as posed, without bones");
        else
            carrier = i;
    }
    return carrier;
}

}  // namespace

Conversion ConvertScene(const SourceScene& scene, const ConvertOptions& options, std::vector<std::string>& warnings)
{
    CheckScene(scene, options.source);
    const std::vector<Instance> instances = Instances(scene);
    if (instances.empty()) throw ImportError(options.source + ": no triangles to import");
    const SourceAnimation* animation = BakedAnimation(scene, options.source, warnings);
    std::vector<bool> baked(instances.size(), false);
    if (animation) {
        const AnimationReach reach(scene, *animation);
        for (size_t i = 0; i < instances.size(); ++i) baked[i] = reach.Changes(instances[i].node, instances[i].mesh);
    }
    const std::optional<size_t> carrier = BoneCarrier(scene, instances, baked, options.source, warnings);

    Conversion conversion;
    ItemMaker maker(scene, options, conversion);
    const ScenePose pose(scene);
    if (carrier) {
        const SourceSkin& skin = scene.skins[size_t(scene.nodes[size_t(instances[*carrier].node)].skin)];
        maker.AddStatic(instances[*carrier], Placed(scene, pose, instances[*carrier], Use::Skinned),
                        uint32_t(skin.joints.size()));
        maker.AddBones(skin);
    }
    std::vector<Instance> animated;
    for (size_t i = 0; i < instances.size(); ++i) {
        if (baked[i])
            animated.push_back(instances[i]);
        else if (i != carrier)
            maker.AddStatic(instances[i], Placed(scene, pose, instances[i], Use::Static), 0);
    }
    if (!animated.empty()) {
        const auto frames = BakeFrames(scene, *animation, animated, options);
        for (size_t i = 0; i < animated.size(); ++i)
            maker.AddMdd(animated[i], Placed(scene, pose, animated[i], Use::Baked), frames[i]);
        conversion.frames = uint32_t(frames.front().size());
    }
    maker.FinishTextures();
    return conversion;
}

}  // namespace qx4d::tools
