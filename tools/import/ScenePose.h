#pragma once
// The pose of an imported scene: every node's world transform and morph weights, as the
// file stores them or at one time of an animation, and the meshes placed by it (morph
// targets first, then the skin or the node's transform, as glTF orders them).
#include "tools/import/SourceScene.h"

#include <vector>

namespace qx4d::tools {

class ScenePose {
public:
    /// The pose the file stores, with no animation.
    explicit ScenePose(const SourceScene& scene);

    /// Poses the nodes at `time` (seconds) of `animation`; null for the stored pose.
    void Evaluate(const SourceAnimation* animation, double time);
    const Transform& World(int node) const { return worlds_[size_t(node)]; }

    /// Positions, and normals where `normals` isn't null, of mesh `mesh` as node `node`
    /// places it in the scene's space.
    void Place(int node, int mesh, std::vector<Float3>& positions, std::vector<Float3>* normals) const;

private:
    struct Local {
        Vec3 translation;
        Quaternion rotation;
        Vec3 scale;
        std::vector<float> weights;
    };
    void Morph(int node, const SourceMesh& mesh, std::vector<Float3>& positions) const;
    /// The blend of the skin's joint transforms that moves vertex `v`; false when the vertex
    /// has no weight, and then the node places it.
    bool SkinTransform(const SourceSkin& skin, const std::vector<Transform>& joints, const SourceMesh& mesh, size_t v,
                       Transform& out) const;

    const SourceScene& scene_;
    std::vector<Local> locals_;
    std::vector<Transform> worlds_;
};

/// Which placed meshes an animation changes: those under a node it moves, those whose
/// skin has a joint it moves, and those whose morph weights it sets.
class AnimationReach {
public:
    AnimationReach(const SourceScene& scene, const SourceAnimation& animation);
    bool Changes(int node, int mesh) const;

private:
    const SourceScene& scene_;
    std::vector<bool> moved_;
    std::vector<bool> morphed_;
};

/// The value of a channel at `time`, `channel.width` values written to `out`.
void SampleChannel(const SourceChannel& channel, double time, std::vector<double>& out);

}  // namespace qx4d::tools
