// OBJ shapes to meshes, one a material, with vertices shared where a corner repeats the
// same position, texture coordinate and normal. Polygons are fanned from their first
// corner (tinyobjloader's own triangulation reads positions before indices are checked).
#include "tools/import/ObjImporter.h"

#include "tools/import/ImageFormat.h"

#include <tiny_obj_loader.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <span>
#include <sstream>

namespace qx4d::tools {

namespace {

struct ObjContext {
    std::string file;
    std::filesystem::path folder;
    const tinyobj::attrib_t& attrib;
    std::vector<std::string>& warnings;

    [[noreturn]] void Fail(const std::string& text) const { throw ImportError(file + ": " + text); }
};

/// Builds one mesh from faces: each distinct corner becomes a vertex, and normals the file
/// lacks are summed from the faces around a position within one smoothing group.
class MeshBuilder {
public:
    MeshBuilder(const tinyobj::attrib_t& attrib, std::string name, int material) : attrib_(attrib)
    {
        mesh_.name = std::move(name);
        mesh_.material = material;
    }

    void AddFace(std::span<const tinyobj::index_t> corners, unsigned smoothingGroup, size_t face)
    {
        const bool hasNormals = std::all_of(corners.begin(), corners.end(), [](auto c) { return c.normal_index >= 0; });
        // Without normals in the file, a face outside any smoothing group is flat: a group of its own.
        const int64_t group = hasNormals ? 0 : smoothingGroup ? int64_t(smoothingGroup) : -1 - int64_t(face);
        std::vector<uint32_t> polygon;
        for (const tinyobj::index_t& corner : corners)
            polygon.push_back(
                Vertex({corner.vertex_index, corner.texcoord_index, hasNormals ? corner.normal_index : -1, group}));
        for (size_t k = 1; k + 1 < polygon.size(); ++k)
            mesh_.indices.insert(mesh_.indices.end(), {polygon[0], polygon[k], polygon[k + 1]});
    }

    bool Empty() const { return mesh_.indices.empty(); }

    SourceMesh Finish()
    {
        const bool anyUv = std::any_of(keys_.begin(), keys_.end(), [](const Key& k) { return k.uv >= 0; });
        for (const Key& key : keys_) {
            const float* p = &attrib_.vertices[size_t(key.position) * 3];
            mesh_.positions.push_back({p[0], p[1], p[2]});
            if (key.normal >= 0) {
                const float* n = &attrib_.normals[size_t(key.normal) * 3];
                mesh_.normals.push_back({n[0], n[1], n[2]});
            } else {
                mesh_.normals.push_back({});
            }
            if (anyUv) {
                // OBJ's v runs upwards from the bottom of the image.
                const float* t = key.uv >= 0 ? &attrib_.texcoords[size_t(key.uv) * 2] : nullptr;
                mesh_.uvs.push_back(t ? Float2{t[0], 1.0f - t[1]} : Float2{});
            }
        }
        SmoothMissingNormals();
        return std::move(mesh_);
    }

private:
    struct Key {
        int position, uv, normal;
        int64_t group;
        auto operator<=>(const Key&) const = default;
    };

    uint32_t Vertex(const Key& key)
    {
        const auto [at, added] = vertices_.try_emplace(key, uint32_t(keys_.size()));
        if (added) keys_.push_back(key);
        return at->second;
    }

    /// Face normals summed over the faces that share a position and group, each weighted
    /// by the angle of its corner there, so that how a polygon was cut into triangles
    /// doesn't count.
    void SmoothMissingNormals()
    {
        std::map<std::pair<int, int64_t>, Vec3> sums;
        for (size_t t = 0; t + 2 < mesh_.indices.size(); t += 3) {
            std::array<Vec3, 3> corners;
            for (size_t k = 0; k < 3; ++k) {
                const Float3& p = mesh_.positions[mesh_.indices[t + k]];
                corners[k] = {p[0], p[1], p[2]};
            }
            const Vec3 normal = Normalized(Cross(Minus(corners[1], corners[0]), Minus(corners[2], corners[0])));
            for (size_t k = 0; k < 3; ++k) {
                const Key& key = keys_[mesh_.indices[t + k]];
                if (key.normal >= 0) continue;
                const double angle =
                    Angle(Minus(corners[(k + 1) % 3], corners[k]), Minus(corners[(k + 2) % 3], corners[k]));
                Vec3& sum = sums[{key.position, key.group}];
                for (size_t i = 0; i < 3; ++i) sum[i] += normal[i] * angle;
            }
        }
        for (size_t v = 0; v < keys_.size(); ++v) {
            if (keys_[v].normal >= 0) continue;
            const Vec3 n = Normalized(sums[{keys_[v].position, keys_[v].group}]);
            mesh_.normals[v] = {float(n[0]), float(n[1]), float(n[2])};
        }
    }

    static Vec3 Minus(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
    static Vec3 Cross(const Vec3& a, const Vec3& b)
    {
        return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    }
    /// The angle between two edges; 0 when one has no length.
    static double Angle(const Vec3& a, const Vec3& b)
    {
        const Vec3 cross = Cross(a, b);
        const double sine = std::sqrt(cross[0] * cross[0] + cross[1] * cross[1] + cross[2] * cross[2]);
        const double cosine = a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
        return std::atan2(sine, cosine);
    }

    const tinyobj::attrib_t& attrib_;
    SourceMesh mesh_;
    std::map<Key, uint32_t> vertices_;
    std::vector<Key> keys_;
};

void CheckCorner(const ObjContext& context, const tinyobj::index_t& corner, const std::string& where)
{
    const auto check = [&](int index, size_t count, const char* what) {
        if (index >= int(count) || index < -1 || (index == -1 && std::string_view(what) == "vertex"))
            context.Fail(where + ": " + what + " index " + std::to_string(index + 1) + " is out of range (" +
                         std::to_string(count) + " in the file)");
    };
    check(corner.vertex_index, context.attrib.vertices.size() / 3, "vertex");
    check(corner.texcoord_index, context.attrib.texcoords.size() / 2, "texture coordinate");
    check(corner.normal_index, context.attrib.normals.size() / 3, "normal");
}

/// The meshes of one shape, one a material in the order the materials first appear.
void ReadShape(const ObjContext& context, const tinyobj::shape_t& shape, size_t index,
               const std::vector<tinyobj::material_t>& materials, std::vector<SourceMesh>& meshes)
{
    const std::string name = shape.name.empty() ? "shape " + std::to_string(index) : shape.name;
    const tinyobj::mesh_t& mesh = shape.mesh;
    const size_t faces = mesh.num_face_vertices.size();
    if (mesh.material_ids.size() != faces || mesh.smoothing_group_ids.size() != faces)
        context.Fail(name + ": the reader's face lists disagree");
    std::map<int, MeshBuilder> builders;
    size_t offset = 0;
    for (size_t f = 0; f < faces; ++f) {
        const size_t corners = mesh.num_face_vertices[f];
        // The reader counts corners in a byte: a longer polygon throws every count after it off.
        if (corners > mesh.indices.size() - offset)
            context.Fail(name + ": a face has more corners than the reader can count (255)");
        const std::span<const tinyobj::index_t> face(mesh.indices.data() + offset, corners);
        offset += corners;
        const std::string where = name + " face " + std::to_string(f + 1);
        for (const tinyobj::index_t& corner : face) CheckCorner(context, corner, where);
        const int material =
            mesh.material_ids[f] >= 0 && size_t(mesh.material_ids[f]) < materials.size() ? mesh.material_ids[f] : -1;
        auto builder = builders.find(material);
        if (builder == builders.end()) {
            const std::string meshName = builders.empty() ? name : name + "." + std::to_string(builders.size());
            builder = builders.try_emplace(material, context.attrib, meshName, material).first;
        }
        if (corners >= 3) builder->second.AddFace(face, mesh.smoothing_group_ids[f], f);
    }
    if (offset != mesh.indices.size()) context.Fail(name + ": a face has more corners than the reader can count (255)");
    for (auto& [material, builder] : builders)
        if (!builder.Empty()) meshes.push_back(builder.Finish());
}

std::vector<uint8_t> ReadFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return in ? std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {}) : std::vector<uint8_t>();
}

/// The image of a texture file named by a material, read once however many name it.
int TextureImage(const ObjContext& context, std::string name, std::vector<SourceImage>& images,
                 std::map<std::string, int>& known)
{
    if (name.empty()) return -1;
    std::replace(name.begin(), name.end(), '\\', '/');  // made on Windows
    if (const auto found = known.find(name); found != known.end()) return found->second;
    int& index = known[name];
    index = -1;
    const std::filesystem::path path = context.folder / name;
    SourceImage image;
    image.name = path.filename().string();
    image.bytes = ReadFile(path);
    if (image.bytes.empty()) {
        context.warnings.push_back(context.file + ": texture " + name + " could not be read; it is left out");
        return index;
    }
    image.extension = EngineImageFormat(image.bytes, DeclaredFormat(name));
    if (image.extension.empty()) {
        context.warnings.push_back(context.file + ": texture " + name +
                                   " is not PNG, JPEG, TGA, BMP or DDS, which the engine reads; it is left out");
        return index;
    }
    index = int(images.size());
    images.push_back(std::move(image));
    return index;
}

SourceMaterial ReadMaterial(const tinyobj::material_t& material)
{
    SourceMaterial out;
    out.name = material.name;
    for (size_t c = 0; c < 3; ++c) out.color[c] = std::clamp(material.diffuse[c], 0.0f, 1.0f);
    out.opacity = std::clamp(material.dissolve, 0.0f, 1.0f);
    out.blended = out.opacity < 1.0f || !material.alpha_texname.empty();
    out.specular = std::clamp((material.specular[0] + material.specular[1] + material.specular[2]) / 3.0f, 0.0f, 1.0f);
    out.glossiness = std::clamp(material.shininess, 1.0f, 256.0f);
    const float emission = std::max({material.emission[0], material.emission[1], material.emission[2]});
    out.luminosity = std::clamp(emission, 0.0f, 1.0f);
    return out;
}

}  // namespace

SourceScene ObjImporter::Read(const std::filesystem::path& path, std::vector<std::string>& warnings)
{
    const std::string file = path.filename().string();
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) throw ImportError(file + ": no such file");
    tinyobj::ObjReaderConfig config;
    config.triangulate = false;
    config.vertex_color = false;
    config.mtl_search_path = path.parent_path().string();
    tinyobj::ObjReader reader;
    if (!reader.ParseFromFile(path.string(), config)) {
        const std::string message = reader.Error().substr(0, reader.Error().find('\n'));
        throw ImportError(file + ": " + (message.empty() ? "the file can't be read as OBJ" : message));
    }
    std::istringstream notes(reader.Warning());
    for (std::string line; std::getline(notes, line);)
        if (!line.empty()) warnings.push_back(file + ": " + line);

    const ObjContext context{file, path.parent_path(), reader.GetAttrib(), warnings};
    SourceScene scene;
    std::map<std::string, int> textures;
    for (const tinyobj::material_t& material : reader.GetMaterials()) {
        scene.materials.push_back(ReadMaterial(material));
        scene.materials.back().baseColorImage = TextureImage(context, material.diffuse_texname, scene.images, textures);
    }
    for (size_t s = 0; s < reader.GetShapes().size(); ++s)
        ReadShape(context, reader.GetShapes()[s], s, reader.GetMaterials(), scene.meshes);
    SourceNode root;
    root.name = path.stem().string();
    for (size_t m = 0; m < scene.meshes.size(); ++m) root.meshes.push_back(int(m));
    scene.nodes.push_back(std::move(root));
    return scene;
}

}  // namespace qx4d::tools
