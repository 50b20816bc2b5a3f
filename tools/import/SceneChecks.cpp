// The converter's own checks of a scene, whatever backend read it: every index and
// reference inside what it points into, every attribute one a vertex, every number
// finite. A backend that checks the same things already costs a second pass, no more.
#include "tools/import/ConverterParts.h"

#include <algorithm>
#include <cmath>

namespace qx4d::tools {

namespace {

class SceneChecker {
public:
    SceneChecker(const SourceScene& scene, const std::string& source) : scene_(scene), source_(source) {}

    void CheckMesh(const SourceMesh& mesh) const
    {
        const size_t count = mesh.positions.size();
        const auto sized = [&](size_t size, const char* what) {
            if (size != 0 && size != count)
                Fail(mesh.name + ": " + std::to_string(size) + " " + what + " for " + std::to_string(count) +
                     " vertices");
        };
        sized(mesh.normals.size(), "normals");
        sized(mesh.uvs.size(), "texture coordinates");
        sized(mesh.joints.size(), "joint sets");
        sized(mesh.weights.size(), "weight sets");
        if (mesh.joints.size() != mesh.weights.size()) Fail(mesh.name + ": joints without weights");
        for (const auto& target : mesh.morphTargets) sized(target.size(), "morph offsets");
        if (mesh.indices.size() % 3 != 0) Fail(mesh.name + ": the indices do not make whole triangles");
        const auto beyond =
            std::find_if(mesh.indices.begin(), mesh.indices.end(), [&](uint32_t i) { return i >= count; });
        if (beyond != mesh.indices.end())
            Fail(mesh.name + ": index " + std::to_string(*beyond) + " points past the " + std::to_string(count) +
                 " vertices");
        if (mesh.material >= int(scene_.materials.size()) || mesh.material < -1)
            Fail(mesh.name + ": material " + std::to_string(mesh.material) + " does not exist");
        for (const Float3& p : mesh.positions)
            if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2]))
                Fail(mesh.name + ": a position is not a finite number");
    }

    void CheckNode(const SourceNode& node, size_t index) const
    {
        if (node.parent >= int(index) || node.parent < -1) Fail(node.name + ": its parent does not come before it");
        for (const int mesh : node.meshes)
            if (mesh < 0 || size_t(mesh) >= scene_.meshes.size())
                Fail(node.name + ": mesh " + std::to_string(mesh) + " does not exist");
        if (node.skin < -1 || node.skin >= int(scene_.skins.size()))
            Fail(node.name + ": skin " + std::to_string(node.skin) + " does not exist");
        if (node.skin < 0) return;
        for (const int mesh : node.meshes)
            CheckJoints(scene_.meshes[size_t(mesh)], scene_.skins[size_t(node.skin)].joints.size());
    }

    /// Every joint that weighs on a vertex must be one of the skin's.
    void CheckJoints(const SourceMesh& mesh, size_t joints) const
    {
        for (size_t v = 0; v < mesh.joints.size(); ++v)
            for (size_t k = 0; k < 4; ++k)
                if (mesh.weights[v][k] != 0.0f && mesh.joints[v][k] >= joints)
                    Fail(mesh.name + ": joint " + std::to_string(mesh.joints[v][k]) + " of vertex " +
                         std::to_string(v) + " is not one of the skin's " + std::to_string(joints));
    }

    void CheckSkin(const SourceSkin& skin, size_t index) const
    {
        const std::string what = "skin " + std::to_string(index);
        if (skin.inverseBindMatrices.size() != skin.joints.size()) Fail(what + ": not one inverse bind matrix a joint");
        for (const int joint : skin.joints)
            if (joint < 0 || size_t(joint) >= scene_.nodes.size())
                Fail(what + ": joint " + std::to_string(joint) + " is not a node");
    }

    void CheckMaterial(const SourceMaterial& material) const
    {
        if (material.baseColorImage < -1 || material.baseColorImage >= int(scene_.images.size()))
            Fail(material.name + ": image " + std::to_string(material.baseColorImage) + " does not exist");
    }

    void CheckChannel(const SourceChannel& channel, const std::string& what) const
    {
        if (channel.node < 0 || size_t(channel.node) >= scene_.nodes.size())
            Fail(what + ": node " + std::to_string(channel.node) + " does not exist");
        const size_t perKey = channel.interpolation == SourceChannel::Interpolation::CubicSpline ? 3 : 1;
        const size_t width = channel.path == SourceChannel::Path::Rotation  ? 4
                             : channel.path == SourceChannel::Path::Weights ? channel.width
                                                                            : 3;
        if (channel.width != width || width == 0 || channel.values.size() != channel.times.size() * perKey * width)
            Fail(what + ": the values do not match the keys");
        if (!std::is_sorted(channel.times.begin(), channel.times.end()))
            Fail(what + ": key times are not in increasing order");
        const auto finite = [](float value) { return std::isfinite(value); };
        if (!std::all_of(channel.times.begin(), channel.times.end(), finite) ||
            !std::all_of(channel.values.begin(), channel.values.end(), finite))
            Fail(what + ": a key is not a finite number");
    }

    void CheckAll() const
    {
        for (const SourceMesh& mesh : scene_.meshes) CheckMesh(mesh);
        for (size_t n = 0; n < scene_.nodes.size(); ++n) CheckNode(scene_.nodes[n], n);
        for (size_t s = 0; s < scene_.skins.size(); ++s) CheckSkin(scene_.skins[s], s);
        for (const SourceMaterial& material : scene_.materials) CheckMaterial(material);
        for (const SourceAnimation& animation : scene_.animations)
            for (size_t c = 0; c < animation.channels.size(); ++c)
                CheckChannel(animation.channels[c], animation.name + " channel " + std::to_string(c));
    }

private:
    [[noreturn]] void Fail(const std::string& text) const { throw ImportError(source_ + ": " + text); }

    const SourceScene& scene_;
    const std::string& source_;
};

}  // namespace

void CheckScene(const SourceScene& scene, const std::string& source) { SceneChecker(scene, source).CheckAll(); }

}  // namespace qx4d::tools
