// The primitives of glTF meshes as triangle lists: attributes read through the checked
// accessors, every attribute and morph target as long as the positions, every index
// inside them, strips and fans unrolled.
#include "tools/import/GltfReading.h"

#include <algorithm>

namespace qx4d::tools::gltf {

namespace {

/// An attribute's accessor, or -1 when the primitive has none.
int AttributeOf(const std::map<std::string, int>& attributes, const char* name)
{
    const auto found = attributes.find(name);
    return found == attributes.end() ? -1 : found->second;
}

template <size_t N>
std::vector<std::array<float, N>> Group(const std::vector<float>& values)
{
    std::vector<std::array<float, N>> out(values.size() / N);
    for (size_t i = 0; i < out.size(); ++i) std::copy_n(values.begin() + std::ptrdiff_t(i * N), N, out[i].begin());
    return out;
}

/// The attribute `name` with `components` floats a vertex, `count` vertices; empty when absent.
std::vector<float> ReadAttribute(const Context& context, const std::map<std::string, int>& attributes, const char* name,
                                 int components, size_t count, const std::string& what)
{
    const int accessor = AttributeOf(attributes, name);
    if (accessor < 0) return {};
    const std::string label = what + " " + name;
    if (context.accessors.Count(accessor, label) != count)
        context.Fail(label + ": " + std::to_string(context.accessors.Count(accessor, label)) + " elements for " +
                     std::to_string(count) + " vertices");
    return context.accessors.Floats(accessor, components, label);
}

/// Triangle-list indices of a list, strip or fan of `indices`.
std::vector<uint32_t> Triangles(const std::vector<uint32_t>& indices, int mode)
{
    if (mode == TINYGLTF_MODE_TRIANGLES) {
        std::vector<uint32_t> list(indices.begin(), indices.begin() + std::ptrdiff_t(indices.size() / 3 * 3));
        return list;
    }
    std::vector<uint32_t> list;
    for (size_t i = 2; i < indices.size(); ++i) {
        if (mode == TINYGLTF_MODE_TRIANGLE_FAN)
            list.insert(list.end(), {indices[0], indices[i - 1], indices[i]});
        else if (i % 2 == 0)  // a strip turns its odd triangles round to keep their winding
            list.insert(list.end(), {indices[i - 2], indices[i - 1], indices[i]});
        else
            list.insert(list.end(), {indices[i - 1], indices[i - 2], indices[i]});
    }
    return list;
}

std::vector<uint32_t> ReadIndices(const Context& context, const tinygltf::Primitive& primitive, size_t vertexCount,
                                  const std::string& what)
{
    std::vector<uint32_t> indices;
    if (primitive.indices < 0) {
        indices.resize(vertexCount);
        for (size_t i = 0; i < vertexCount; ++i) indices[i] = uint32_t(i);
    } else {
        indices = context.accessors.Unsigned(primitive.indices, 1, what + " indices");
        const auto beyond = std::find_if(indices.begin(), indices.end(), [&](uint32_t i) { return i >= vertexCount; });
        if (beyond != indices.end())
            context.Fail(what + ": index " + std::to_string(*beyond) + " points past the " +
                         std::to_string(vertexCount) + " vertices");
    }
    return Triangles(indices, primitive.mode < 0 ? TINYGLTF_MODE_TRIANGLES : primitive.mode);
}

void ReadSkinning(const Context& context, const tinygltf::Primitive& primitive, SourceMesh& mesh,
                  const std::string& what)
{
    const int joints = AttributeOf(primitive.attributes, "JOINTS_0");
    if (joints < 0 || AttributeOf(primitive.attributes, "WEIGHTS_0") < 0) return;
    const size_t count = mesh.positions.size();
    if (context.accessors.Count(joints, what + " JOINTS_0") != count)
        context.Fail(what + " JOINTS_0: not one element a vertex");
    const std::vector<uint32_t> indices = context.accessors.Unsigned(joints, 4, what + " JOINTS_0");
    mesh.weights = Group<4>(ReadAttribute(context, primitive.attributes, "WEIGHTS_0", 4, count, what));
    mesh.joints.resize(count);
    for (size_t v = 0; v < count; ++v)
        for (size_t k = 0; k < 4; ++k) {
            // A joint index the skin can't hold in 16 bits is out of range for any skin.
            mesh.joints[v][k] = uint16_t(std::min<uint32_t>(indices[v * 4 + k], 0xFFFF));
        }
}

void ReadMorphTargets(const Context& context, const tinygltf::Mesh& source, const tinygltf::Primitive& primitive,
                      SourceMesh& mesh, const std::string& what)
{
    for (size_t t = 0; t < primitive.targets.size(); ++t) {
        const std::vector<float> offsets = ReadAttribute(context, primitive.targets[t], "POSITION", 3,
                                                         mesh.positions.size(), what + " target " + std::to_string(t));
        mesh.morphTargets.push_back(offsets.empty() ? std::vector<Float3>(mesh.positions.size(), Float3{})
                                                    : Group<3>(offsets));
    }
    mesh.morphWeights.assign(mesh.morphTargets.size(), 0.0f);
    for (size_t t = 0; t < std::min(source.weights.size(), mesh.morphWeights.size()); ++t)
        mesh.morphWeights[t] = float(source.weights[t]);
}

/// The texture coordinates that the base colour texture of the primitive's material reads.
std::string TextureSet(const Context& context, const tinygltf::Primitive& primitive)
{
    const int set =
        primitive.material >= 0
            ? context.model.materials[size_t(primitive.material)].pbrMetallicRoughness.baseColorTexture.texCoord
            : 0;
    return "TEXCOORD_" + std::to_string(std::max(set, 0));
}

SourceMesh ReadPrimitive(const Context& context, const tinygltf::Mesh& source, const tinygltf::Primitive& primitive,
                         const std::string& what)
{
    SourceMesh mesh;
    mesh.name = what;
    if (primitive.material >= 0 && size_t(primitive.material) >= context.model.materials.size())
        context.Fail(what + ": material " + std::to_string(primitive.material) + " does not exist");
    mesh.material = primitive.material;
    const int positions = AttributeOf(primitive.attributes, "POSITION");
    if (positions < 0) context.Fail(what + ": no POSITION attribute");
    mesh.positions = Group<3>(context.accessors.Floats(positions, 3, what + " POSITION"));
    const size_t count = mesh.positions.size();
    mesh.normals = Group<3>(ReadAttribute(context, primitive.attributes, "NORMAL", 3, count, what));
    mesh.uvs =
        Group<2>(ReadAttribute(context, primitive.attributes, TextureSet(context, primitive).c_str(), 2, count, what));
    ReadSkinning(context, primitive, mesh, what);
    ReadMorphTargets(context, source, primitive, mesh, what);
    mesh.indices = ReadIndices(context, primitive, count, what);
    return mesh;
}

bool IsTriangles(int mode)
{
    return mode < 0 || mode == TINYGLTF_MODE_TRIANGLES || mode == TINYGLTF_MODE_TRIANGLE_STRIP ||
           mode == TINYGLTF_MODE_TRIANGLE_FAN;
}

}  // namespace

std::vector<SourceMesh> ReadMeshes(const Context& context, std::vector<std::vector<int>>& primitivesOfMesh)
{
    std::vector<SourceMesh> meshes;
    primitivesOfMesh.assign(context.model.meshes.size(), {});
    for (size_t m = 0; m < context.model.meshes.size(); ++m) {
        const tinygltf::Mesh& source = context.model.meshes[m];
        const std::string name = source.name.empty() ? "mesh " + std::to_string(m) : source.name;
        for (size_t p = 0; p < source.primitives.size(); ++p) {
            const tinygltf::Primitive& primitive = source.primitives[p];
            const std::string what = source.primitives.size() > 1 ? name + "." + std::to_string(p) : name;
            if (!IsTriangles(primitive.mode)) {
                context.Warn(what + ": points and lines are left out");
                continue;
            }
            primitivesOfMesh[m].push_back(int(meshes.size()));
            meshes.push_back(ReadPrimitive(context, source, primitive, what));
        }
    }
    return meshes;
}

}  // namespace qx4d::tools::gltf
