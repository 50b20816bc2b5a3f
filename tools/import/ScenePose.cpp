#include "tools/import/ScenePose.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace qx4d::tools {

namespace {

/// Where key `k`'s value starts: cubic splines store in-tangent, value, out-tangent.
size_t ValueAt(const SourceChannel& channel, size_t key, size_t part = 1)
{
    const bool cubic = channel.interpolation == SourceChannel::Interpolation::CubicSpline;
    return (cubic ? key * 3 + part : key) * channel.width;
}

void Hermite(const SourceChannel& channel, size_t key, double t, double span, std::vector<double>& out)
{
    const double t2 = t * t, t3 = t2 * t;
    const double h00 = 2 * t3 - 3 * t2 + 1, h10 = t3 - 2 * t2 + t, h01 = -2 * t3 + 3 * t2, h11 = t3 - t2;
    const float* values = channel.values.data();
    for (size_t i = 0; i < channel.width; ++i)
        out[i] = h00 * values[ValueAt(channel, key) + i] + h10 * span * values[ValueAt(channel, key, 2) + i] +
                 h01 * values[ValueAt(channel, key + 1) + i] + h11 * span * values[ValueAt(channel, key + 1, 0) + i];
}

}  // namespace

void SampleChannel(const SourceChannel& channel, double time, std::vector<double>& out)
{
    out.assign(channel.width, 0.0);
    const std::vector<float>& times = channel.times;
    const auto copyKey = [&](size_t key) {
        for (size_t i = 0; i < channel.width; ++i) out[i] = channel.values[ValueAt(channel, key) + i];
    };
    if (times.empty()) return;
    if (time <= times.front() || times.size() == 1) return copyKey(0);
    if (time >= times.back()) return copyKey(times.size() - 1);
    const size_t key = size_t(std::upper_bound(times.begin(), times.end(), float(time)) - times.begin()) - 1;
    const double span = double(times[key + 1]) - times[key];
    const double t = span > 0.0 ? (time - times[key]) / span : 0.0;
    switch (channel.interpolation) {
    case SourceChannel::Interpolation::Step: return copyKey(key);
    case SourceChannel::Interpolation::CubicSpline: Hermite(channel, key, t, span, out); break;
    case SourceChannel::Interpolation::Linear:
        if (channel.path == SourceChannel::Path::Rotation && channel.width == 4) {
            const float* a = &channel.values[ValueAt(channel, key)];
            const float* b = &channel.values[ValueAt(channel, key + 1)];
            const Quaternion q = Slerp(Normalized(Quaternion{a[0], a[1], a[2], a[3]}),
                                       Normalized(Quaternion{b[0], b[1], b[2], b[3]}), t);
            out.assign(q.begin(), q.end());
            return;
        }
        for (size_t i = 0; i < channel.width; ++i) {
            const double from = channel.values[ValueAt(channel, key) + i];
            const double to = channel.values[ValueAt(channel, key + 1) + i];
            out[i] = from * (1.0 - t) + to * t;
        }
        break;
    }
}

ScenePose::ScenePose(const SourceScene& scene) : scene_(scene), worlds_(scene.nodes.size(), kIdentityTransform)
{
    Evaluate(nullptr, 0.0);
}

void ScenePose::Evaluate(const SourceAnimation* animation, double time)
{
    locals_.clear();
    for (const SourceNode& node : scene_.nodes)
        locals_.push_back({node.translation, node.rotation, node.scale, node.morphWeights});
    std::vector<bool> animated(scene_.nodes.size(), false);
    std::vector<double> value;
    const std::span<const SourceChannel> channels =
        animation ? std::span(animation->channels) : std::span<const SourceChannel>();
    for (const SourceChannel& channel : channels) {
        if (channel.node < 0 || size_t(channel.node) >= locals_.size()) continue;
        Local& local = locals_[size_t(channel.node)];
        SampleChannel(channel, time, value);
        switch (channel.path) {
        case SourceChannel::Path::Translation: std::copy_n(value.begin(), 3, local.translation.begin()); break;
        case SourceChannel::Path::Rotation: std::copy_n(value.begin(), 4, local.rotation.begin()); break;
        case SourceChannel::Path::Scale: std::copy_n(value.begin(), 3, local.scale.begin()); break;
        case SourceChannel::Path::Weights: local.weights.assign(value.begin(), value.end()); continue;
        }
        animated[size_t(channel.node)] = true;
    }
    for (size_t n = 0; n < scene_.nodes.size(); ++n) {
        const SourceNode& node = scene_.nodes[n];
        const Local& local = locals_[n];
        // An animated node is placed by its properties, as glTF requires of animated nodes.
        const Transform own =
            node.matrix && !animated[n] ? *node.matrix : FromTrs(local.translation, local.rotation, local.scale);
        worlds_[n] = node.parent >= 0 ? Multiply(worlds_[size_t(node.parent)], own) : own;
    }
}

void ScenePose::Morph(int node, const SourceMesh& mesh, std::vector<Float3>& positions) const
{
    const std::vector<float>& own = locals_[size_t(node)].weights;
    const std::vector<float>& weights = own.empty() ? mesh.morphWeights : own;
    for (size_t t = 0; t < std::min(weights.size(), mesh.morphTargets.size()); ++t) {
        if (weights[t] == 0.0f || mesh.morphTargets[t].size() != positions.size()) continue;
        for (size_t v = 0; v < positions.size(); ++v)
            for (size_t c = 0; c < 3; ++c) positions[v][c] += weights[t] * mesh.morphTargets[t][v][c];
    }
}

bool ScenePose::SkinTransform(const SourceSkin& skin, const std::vector<Transform>& joints, const SourceMesh& mesh,
                              size_t v, Transform& out) const
{
    double total = 0.0;
    out.fill(0.0);
    for (size_t k = 0; k < 4; ++k) {
        const double weight = mesh.weights[v][k];
        const size_t joint = mesh.joints[v][k];
        if (!(weight > 0.0) || joint >= skin.joints.size()) continue;
        for (size_t i = 0; i < 16; ++i) out[i] += weight * joints[joint][i];
        total += weight;
    }
    if (!(total > 0.0)) return false;
    for (double& element : out) element /= total;
    return true;
}

void ScenePose::Place(int node, int mesh, std::vector<Float3>& positions, std::vector<Float3>* normals) const
{
    const SourceNode& placer = scene_.nodes[size_t(node)];
    const SourceMesh& source = scene_.meshes[size_t(mesh)];
    positions = source.positions;
    Morph(node, source, positions);
    const bool skinned = placer.skin >= 0 && size_t(placer.skin) < scene_.skins.size() &&
                         source.joints.size() == positions.size() && source.weights.size() == positions.size();
    std::vector<Transform> joints;
    if (skinned) {
        const SourceSkin& skin = scene_.skins[size_t(placer.skin)];
        for (size_t j = 0; j < skin.joints.size(); ++j)
            joints.push_back(Multiply(worlds_[size_t(skin.joints[j])], skin.inverseBindMatrices[j]));
    }
    if (normals) *normals = source.normals;
    Transform skinning;
    for (size_t v = 0; v < positions.size(); ++v) {
        // A skinned mesh is placed by its joints alone; the node's own transform is not used.
        const bool bySkin = skinned && SkinTransform(scene_.skins[size_t(placer.skin)], joints, source, v, skinning);
        const Transform& m = bySkin ? skinning : worlds_[size_t(node)];
        const Vec3 p = TransformPoint(m, {positions[v][0], positions[v][1], positions[v][2]});
        positions[v] = {float(p[0]), float(p[1]), float(p[2])};
        if (normals && v < normals->size()) {
            const Float3& n = (*normals)[v];
            const Vec3 placed = TransformNormal(m, {n[0], n[1], n[2]});
            (*normals)[v] = {float(placed[0]), float(placed[1]), float(placed[2])};
        }
    }
}

AnimationReach::AnimationReach(const SourceScene& scene, const SourceAnimation& animation)
    : scene_(scene), moved_(scene.nodes.size(), false), morphed_(scene.nodes.size(), false)
{
    for (const SourceChannel& channel : animation.channels) {
        if (channel.node < 0 || size_t(channel.node) >= scene.nodes.size()) continue;
        (channel.path == SourceChannel::Path::Weights ? morphed_ : moved_)[size_t(channel.node)] = true;
    }
    // Parents come first, so one pass carries a movement down to every descendant.
    for (size_t n = 0; n < scene.nodes.size(); ++n)
        if (scene.nodes[n].parent >= 0 && moved_[size_t(scene.nodes[n].parent)]) moved_[n] = true;
}

bool AnimationReach::Changes(int node, int mesh) const
{
    const SourceNode& placer = scene_.nodes[size_t(node)];
    const SourceMesh& source = scene_.meshes[size_t(mesh)];
    if (morphed_[size_t(node)] && !source.morphTargets.empty()) return true;
    if (placer.skin >= 0 && size_t(placer.skin) < scene_.skins.size() && !source.joints.empty()) {
        const std::vector<int>& joints = scene_.skins[size_t(placer.skin)].joints;
        return std::any_of(joints.begin(), joints.end(), [&](int joint) { return moved_[size_t(joint)]; });
    }
    return moved_[size_t(node)];
}

}  // namespace qx4d::tools
