#include "tools/import/MeshGeometry.h"

#include <cstring>
#include <limits>

namespace qx4d::tools {

namespace {

template <typename T>
std::vector<T> Pick(const std::vector<T>& values, std::span<const uint32_t> vertices)
{
    if (values.empty()) return {};
    std::vector<T> out;
    out.reserve(vertices.size());
    for (const uint32_t v : vertices) out.push_back(values[v]);
    return out;
}

template <typename T>
void Append(std::vector<uint8_t>& bytes, const T& value)
{
    const auto* begin = reinterpret_cast<const uint8_t*>(&value);
    bytes.insert(bytes.end(), begin, begin + sizeof value);
}

}  // namespace

MeshGeometry MeshGeometry::Gather(std::span<const uint32_t> vertices, std::vector<uint32_t> newIndices) const
{
    MeshGeometry out;
    out.positions = Pick(positions, vertices);
    out.normals = Pick(normals, vertices);
    out.uvs = Pick(uvs, vertices);
    out.bones = Pick(bones, vertices);
    out.weights = Pick(weights, vertices);
    out.indices = std::move(newIndices);
    return out;
}

void MakeFlatNormals(MeshGeometry& geometry)
{
    std::vector<uint32_t> corners(geometry.indices.size());
    for (uint32_t i = 0; i < corners.size(); ++i) corners[i] = i;
    MeshGeometry flat = geometry.Gather(geometry.indices, corners);
    flat.normals.assign(flat.positions.size(), Float3{});
    for (size_t t = 0; t + 2 < flat.positions.size(); t += 3) {
        const Float3& a = flat.positions[t];
        const Float3& b = flat.positions[t + 1];
        const Float3& c = flat.positions[t + 2];
        const Vec3 u{double(b[0]) - a[0], double(b[1]) - a[1], double(b[2]) - a[2]};
        const Vec3 v{double(c[0]) - a[0], double(c[1]) - a[1], double(c[2]) - a[2]};
        const Vec3 n =
            Normalized(Vec3{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]});
        for (size_t k = 0; k < 3; ++k) flat.normals[t + k] = {float(n[0]), float(n[1]), float(n[2])};
    }
    geometry = std::move(flat);
}

void MirrorZ(std::vector<Float3>& points)
{
    for (Float3& p : points) p[2] = -p[2];
}

void ToEngineSpace(MeshGeometry& geometry)
{
    MirrorZ(geometry.positions);
    MirrorZ(geometry.normals);
    ReverseWinding(geometry.indices);
}

void ReverseWinding(std::vector<uint32_t>& indices)
{
    for (size_t t = 0; t + 2 < indices.size(); t += 3) std::swap(indices[t + 1], indices[t + 2]);
}

std::vector<MeshPart> SplitByVertexCount(std::span<const uint32_t> indices, size_t vertexCount, size_t maxVertices)
{
    if (vertexCount <= maxVertices) {
        // One part, its vertices in their own order.
        MeshPart whole{std::vector<uint32_t>(vertexCount), {indices.begin(), indices.end()}};
        for (uint32_t v = 0; v < whole.vertices.size(); ++v) whole.vertices[v] = v;
        return {whole};
    }
    constexpr uint32_t kUnplaced = std::numeric_limits<uint32_t>::max();
    std::vector<uint32_t> placeInPart(vertexCount, kUnplaced);
    std::vector<MeshPart> parts(1);
    for (size_t t = 0; t + 2 < indices.size(); t += 3) {
        size_t added = 0;
        for (size_t k = 0; k < 3; ++k) added += placeInPart[indices[t + k]] == kUnplaced;
        if (parts.back().vertices.size() + added > maxVertices) {
            for (const uint32_t v : parts.back().vertices) placeInPart[v] = kUnplaced;
            parts.emplace_back();
        }
        MeshPart& part = parts.back();
        for (size_t k = 0; k < 3; ++k) {
            uint32_t& place = placeInPart[indices[t + k]];
            if (place == kUnplaced) {
                place = uint32_t(part.vertices.size());
                part.vertices.push_back(indices[t + k]);
            }
            part.indices.push_back(place);
        }
    }
    return parts;
}

uint32_t StaticVertexStride(bool skinned) { return skinned ? 52 : 32; }

std::vector<uint8_t> StaticVertexBytes(const MeshGeometry& geometry)
{
    const bool skinned = !geometry.bones.empty();
    std::vector<uint8_t> bytes;
    bytes.reserve(geometry.VertexCount() * StaticVertexStride(skinned));
    for (size_t v = 0; v < geometry.VertexCount(); ++v) {
        Append(bytes, geometry.positions[v]);
        Append(bytes, geometry.normals.empty() ? Float3{} : geometry.normals[v]);
        Append(bytes, geometry.uvs.empty() ? Float2{} : geometry.uvs[v]);
        if (skinned) {
            Append(bytes, geometry.weights[v]);
            Append(bytes, geometry.bones[v]);
        }
    }
    return bytes;
}

}  // namespace qx4d::tools
