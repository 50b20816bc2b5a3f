// The node hierarchy of the default scene, its skins and its animations. The hierarchy
// is walked without recursion and refused when a node has two parents or a child that
// does not exist, so that a file with a cycle can't hang or overflow the stack.
#include "tools/import/GltfReading.h"

#include <algorithm>

namespace qx4d::tools::gltf {

namespace {

/// The root nodes of the default scene, or of the whole file when it has no scene.
std::vector<int> SceneRoots(const Context& context, const std::vector<int>& parents)
{
    const tinygltf::Model& model = context.model;
    if (model.scenes.empty()) {
        std::vector<int> roots;
        for (size_t n = 0; n < model.nodes.size(); ++n)
            if (parents[n] < 0) roots.push_back(int(n));
        return roots;
    }
    const size_t scene =
        model.defaultScene >= 0 && size_t(model.defaultScene) < model.scenes.size() ? size_t(model.defaultScene) : 0;
    return model.scenes[scene].nodes;
}

/// The parent of every node, -1 for none; ImportError for a child that does not exist
/// or has two parents.
std::vector<int> Parents(const Context& context)
{
    const tinygltf::Model& model = context.model;
    std::vector<int> parents(model.nodes.size(), -1);
    for (size_t n = 0; n < model.nodes.size(); ++n)
        for (const int child : model.nodes[n].children) {
            if (child < 0 || size_t(child) >= model.nodes.size())
                context.Fail("node " + std::to_string(n) + " has child " + std::to_string(child) +
                             ", which does not exist");
            if (size_t(child) == n) context.Fail("node " + std::to_string(n) + " is its own child");
            if (parents[size_t(child)] >= 0)
                context.Fail("node " + std::to_string(child) + " has more than one parent");
            parents[size_t(child)] = int(n);
        }
    return parents;
}

SourceNode ReadNode(const Context& context, const tinygltf::Node& node, size_t index,
                    const std::vector<std::vector<int>>& primitivesOfMesh)
{
    SourceNode out;
    out.name = node.name.empty() ? "node " + std::to_string(index) : node.name;
    if (node.matrix.size() == 16) {
        Transform matrix;
        std::copy(node.matrix.begin(), node.matrix.end(), matrix.begin());
        out.matrix = matrix;
    }
    if (node.translation.size() == 3)
        std::copy(node.translation.begin(), node.translation.end(), out.translation.begin());
    if (node.rotation.size() == 4) std::copy(node.rotation.begin(), node.rotation.end(), out.rotation.begin());
    if (node.scale.size() == 3) std::copy(node.scale.begin(), node.scale.end(), out.scale.begin());
    if (node.mesh >= 0) {
        if (size_t(node.mesh) >= primitivesOfMesh.size())
            context.Fail("node " + std::to_string(index) + " places mesh " + std::to_string(node.mesh) +
                         ", which does not exist");
        out.meshes = primitivesOfMesh[size_t(node.mesh)];
    }
    if (node.skin >= 0 && size_t(node.skin) >= context.model.skins.size())
        context.Fail("node " + std::to_string(index) + " uses skin " + std::to_string(node.skin) +
                     ", which does not exist");
    out.skin = node.skin;
    out.morphWeights.assign(node.weights.begin(), node.weights.end());
    return out;
}

SourceChannel::Path PathOf(const std::string& path)
{
    if (path == "rotation") return SourceChannel::Path::Rotation;
    if (path == "scale") return SourceChannel::Path::Scale;
    if (path == "weights") return SourceChannel::Path::Weights;
    return SourceChannel::Path::Translation;
}

SourceChannel::Interpolation InterpolationOf(const std::string& interpolation)
{
    if (interpolation == "STEP") return SourceChannel::Interpolation::Step;
    if (interpolation == "CUBICSPLINE") return SourceChannel::Interpolation::CubicSpline;
    return SourceChannel::Interpolation::Linear;
}

/// One channel with its keys; false for a channel that animates nothing the importer
/// keeps (a node outside the scene, a property of an extension).
bool ReadChannel(const Context& context, const tinygltf::Animation& animation,
                 const tinygltf::AnimationChannel& channel, const std::vector<int>& nodeIndex, const std::string& what,
                 SourceChannel& out)
{
    static const char* const kPaths[] = {"translation", "rotation", "scale", "weights"};
    if (std::find(std::begin(kPaths), std::end(kPaths), channel.target_path) == std::end(kPaths)) return false;
    if (channel.target_node < 0 || size_t(channel.target_node) >= nodeIndex.size())
        context.Fail(what + ": node " + std::to_string(channel.target_node) + " does not exist");
    if (nodeIndex[size_t(channel.target_node)] < 0) return false;
    if (channel.sampler < 0 || size_t(channel.sampler) >= animation.samplers.size())
        context.Fail(what + ": sampler " + std::to_string(channel.sampler) + " does not exist");
    const tinygltf::AnimationSampler& sampler = animation.samplers[size_t(channel.sampler)];
    out.node = nodeIndex[size_t(channel.target_node)];
    out.path = PathOf(channel.target_path);
    out.interpolation = InterpolationOf(sampler.interpolation);
    out.times = context.accessors.Floats(sampler.input, 1, what + " input");
    if (!std::is_sorted(out.times.begin(), out.times.end()))
        context.Fail(what + ": key times are not in increasing order");
    const int components = out.path == SourceChannel::Path::Rotation  ? 4
                           : out.path == SourceChannel::Path::Weights ? 1
                                                                      : 3;
    out.values = context.accessors.Floats(sampler.output, components, what + " output");
    const size_t perKey = out.interpolation == SourceChannel::Interpolation::CubicSpline ? 3 : 1;
    const size_t keys = out.times.size() * perKey;
    if (keys == 0 || out.values.size() % keys != 0 || out.values.empty())
        context.Fail(what + ": " + std::to_string(out.values.size()) + " output values for " +
                     std::to_string(out.times.size()) + " keys");
    out.width = out.values.size() / keys;
    if (out.path != SourceChannel::Path::Weights && out.width != size_t(components))
        context.Fail(what + ": " + std::to_string(out.values.size()) + " output values for " +
                     std::to_string(out.times.size()) + " keys");
    return true;
}

}  // namespace

std::vector<SourceNode> ReadNodes(const Context& context, const std::vector<std::vector<int>>& primitivesOfMesh,
                                  std::vector<int>& nodeIndex)
{
    const std::vector<int> parents = Parents(context);
    nodeIndex.assign(context.model.nodes.size(), -1);
    std::vector<SourceNode> nodes;
    // Depth first, each node before its children; the stack holds (node, new parent).
    std::vector<std::pair<int, int>> stack;
    const std::vector<int> roots = SceneRoots(context, parents);
    for (auto root = roots.rbegin(); root != roots.rend(); ++root) stack.emplace_back(*root, -1);
    while (!stack.empty()) {
        const auto [node, parent] = stack.back();
        stack.pop_back();
        if (node < 0 || size_t(node) >= context.model.nodes.size())
            context.Fail("the scene names node " + std::to_string(node) + ", which does not exist");
        if (nodeIndex[size_t(node)] >= 0) context.Fail("node " + std::to_string(node) + " stands twice in the scene");
        nodeIndex[size_t(node)] = int(nodes.size());
        nodes.push_back(ReadNode(context, context.model.nodes[size_t(node)], size_t(node), primitivesOfMesh));
        nodes.back().parent = parent;
        const std::vector<int>& children = context.model.nodes[size_t(node)].children;
        for (auto child = children.rbegin(); child != children.rend(); ++child)
            stack.emplace_back(*child, nodeIndex[size_t(node)]);
    }
    return nodes;
}

std::vector<SourceSkin> ReadSkins(const Context& context, const std::vector<int>& nodeIndex)
{
    std::vector<SourceSkin> skins;
    for (size_t s = 0; s < context.model.skins.size(); ++s) {
        const tinygltf::Skin& skin = context.model.skins[s];
        const std::string what = "skin " + std::to_string(s);
        SourceSkin out;
        for (const int joint : skin.joints) {
            if (joint < 0 || size_t(joint) >= nodeIndex.size() || nodeIndex[size_t(joint)] < 0)
                context.Fail(what + ": joint node " + std::to_string(joint) + " is not in the scene");
            out.joints.push_back(nodeIndex[size_t(joint)]);
        }
        out.inverseBindMatrices.assign(out.joints.size(), kIdentityTransform);
        if (skin.inverseBindMatrices >= 0) {
            const std::vector<float> values =
                context.accessors.Floats(skin.inverseBindMatrices, 16, what + " matrices");
            if (values.size() < out.joints.size() * 16)
                context.Fail(what + ": fewer inverse bind matrices than joints");
            for (size_t j = 0; j < out.joints.size(); ++j)
                std::copy_n(values.begin() + std::ptrdiff_t(j * 16), 16, out.inverseBindMatrices[j].begin());
        }
        skins.push_back(std::move(out));
    }
    return skins;
}

std::vector<SourceAnimation> ReadAnimations(const Context& context, const std::vector<int>& nodeIndex)
{
    std::vector<SourceAnimation> animations;
    for (size_t a = 0; a < context.model.animations.size(); ++a) {
        const tinygltf::Animation& animation = context.model.animations[a];
        SourceAnimation out;
        out.name = animation.name.empty() ? "animation " + std::to_string(a) : animation.name;
        for (size_t c = 0; c < animation.channels.size(); ++c) {
            SourceChannel channel;
            const std::string what = out.name + " channel " + std::to_string(c);
            if (ReadChannel(context, animation, animation.channels[c], nodeIndex, what, channel))
                out.channels.push_back(std::move(channel));
        }
        animations.push_back(std::move(out));
    }
    return animations;
}

}  // namespace qx4d::tools::gltf
