#include "tools/contentpack/PackMeshes.h"

#include <cmath>
#include <cstring>
#include <map>
#include <numbers>

namespace qx4d::tools {

namespace {

struct Vertex {
    Float3 position;
    Float3 normal;
    float u, v;
};

Float3 Add(Float3 a, Float3 b, float s) { return {a[0] + b[0] * s, a[1] + b[1] * s, a[2] + b[2] * s}; }

/// The right of a viewer looking along `look` with `up` above, in a left-handed world.
Float3 Right(Float3 up, Float3 look)
{
    return {up[1] * look[2] - up[2] * look[1], up[2] * look[0] - up[0] * look[2], up[0] * look[1] - up[1] * look[0]};
}

/// A square of side 1 around `centre`, facing `normal`, `up` its top as seen from outside;
/// its two triangles are clockwise from that side.
void AppendFace(MeshModel& mesh, Float3 centre, Float3 normal, Float3 up)
{
    const Float3 right = Right(up, {-normal[0], -normal[1], -normal[2]});
    const auto corner = [&](float x, float y) { return Add(Add(centre, right, x), up, y); };
    const Vertex quad[4] = {
        {corner(-0.5f, 0.5f), normal, 0, 0},
        {corner(0.5f, 0.5f), normal, 1, 0},
        {corner(0.5f, -0.5f), normal, 1, 1},
        {corner(-0.5f, -0.5f), normal, 0, 1},
    };
    const auto first = uint32_t(mesh.vertices.size() / sizeof(Vertex));
    const size_t at = mesh.vertices.size();
    mesh.vertices.resize(at + sizeof quad);
    std::memcpy(mesh.vertices.data() + at, quad, sizeof quad);
    for (const uint32_t index : {0u, 1u, 2u, 0u, 2u, 3u}) mesh.indices.push_back(first + index);
}

MeshModel EmptyMesh(const std::string& texture, const SurfaceModel& surface)
{
    MeshModel mesh;
    mesh.declaration = PositionNormalUvDeclaration();
    mesh.stride = sizeof(Vertex);
    mesh.surface = surface;
    mesh.textures = {texture};
    return mesh;
}

ItemModel MeshItemOf(std::string name, MeshModel mesh)
{
    ItemModel item;
    item.kind = ItemModel::Kind::Mesh;
    item.name = std::move(name);
    item.mesh = std::move(mesh);
    return item;
}

}  // namespace

SurfaceModel TexturedSurface(float luminosity, float specular)
{
    SurfaceModel surface;
    surface.materialFile = "lit_textured.mat";
    surface.luminosity = luminosity;
    surface.diffuse = 1.0f;
    surface.specular = specular;
    surface.glossiness = 30.0f;
    return surface;
}

ObjectModel Box(const std::string (&faceTextures)[6], const SurfaceModel& surface)
{
    struct Face {
        Float3 normal, up;
    };
    static constexpr Face kFaces[6] = {
        {{0, 0, -1}, {0, 1, 0}}, {{0, 0, 1}, {0, 1, 0}}, {{-1, 0, 0}, {0, 1, 0}},
        {{1, 0, 0}, {0, 1, 0}},  {{0, 1, 0}, {0, 0, 1}}, {{0, -1, 0}, {0, 0, -1}},
    };
    std::map<std::string, MeshModel> meshes;
    std::vector<std::string> order;
    for (int f = 0; f < 6; ++f) {
        const std::string& texture = faceTextures[f];
        if (texture.empty()) continue;
        auto [it, made] = meshes.try_emplace(texture, EmptyMesh(texture, surface));
        if (made) order.push_back(texture);
        const Face& face = kFaces[f];
        AppendFace(it->second, {face.normal[0] * 0.5f, face.normal[1] * 0.5f, face.normal[2] * 0.5f}, face.normal,
                   face.up);
    }
    ObjectModel model;
    for (const std::string& texture : order)
        model.items.push_back(MeshItemOf("box " + texture, std::move(meshes[texture])));
    return model;
}

ObjectModel TwoSidedPlane(const std::string& texture, const SurfaceModel& surface)
{
    MeshModel mesh = EmptyMesh(texture, surface);
    AppendFace(mesh, {0, 0, 0}, {0, 0, -1}, {0, 1, 0});
    AppendFace(mesh, {0, 0, 0}, {0, 0, 1}, {0, 1, 0});
    ObjectModel model;
    model.items.push_back(MeshItemOf("plane", std::move(mesh)));
    return model;
}

ObjectModel WavingFlag(const std::string& texture, const SurfaceModel& surface, int columns, int rows, int frames,
                       int periods)
{
    MddModel mdd;
    mdd.framesPerSecond = 30.0f;
    mdd.vertexCount = uint32_t((columns + 1) * (rows + 1));
    mdd.uvSetCount = 1;
    const float width = 4.0f / 3.0f, height = 1.0f;
    for (int f = 0; f < frames; ++f) {
        const double phase = 2.0 * std::numbers::pi * f / frames;
        std::vector<Float3>& frame = mdd.frames.emplace_back();
        for (int y = 0; y <= rows; ++y) {
            for (int x = 0; x <= columns; ++x) {
                const double s = double(x) / columns;
                // The wave grows away from the pole on the left, and travels to the right.
                const double depth = 0.12 * s * std::sin(2.5 * std::numbers::pi * s - phase);
                frame.push_back({float((s - 0.5) * width), float((0.5 - double(y) / rows) * height), float(depth)});
            }
        }
    }
    for (int f = 0; f < frames * periods; ++f) mdd.timeline.push_back(uint16_t(f % frames));
    for (int y = 0; y <= rows; ++y)
        for (int x = 0; x <= columns; ++x) mdd.uvSets[0].push_back({float(x) / float(columns), float(y) / float(rows)});
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            const auto at = [&](int dx, int dy) { return uint16_t((y + dy) * (columns + 1) + x + dx); };
            // Clockwise from -z: top left, top right, bottom right; top left, bottom right, bottom left.
            for (const uint16_t index : {at(0, 0), at(1, 0), at(1, 1), at(0, 0), at(1, 1), at(0, 1)})
                mdd.triangles.push_back(index);
        }
    }
    mdd.uvIndices[0] = mdd.triangles;
    mdd.smoothingAngle = 1.2f;
    MeshModel mesh = EmptyMesh(texture, surface);
    mesh.flags = 0x4;
    mesh.mdd = std::move(mdd);
    ObjectModel model;
    model.items.push_back(MeshItemOf("flag", std::move(mesh)));
    return model;
}

}  // namespace qx4d::tools
