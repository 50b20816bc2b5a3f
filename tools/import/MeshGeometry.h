#pragma once
// A placed mesh on its way into an object file, and what is done to it there: normals
// computed where the model has none, the mirror from the model's right-handed space into
// the engine's left-handed one, the vertex layout of the object file, and the split into
// parts small enough for 16-bit indices.
#include "tools/import/SourceScene.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace qx4d::tools {

struct MeshGeometry {
    std::vector<Float3> positions;
    /// One a vertex, or empty.
    std::vector<Float3> normals;
    std::vector<Float2> uvs;
    /// For a skinned mesh: four bone indices and weights a vertex.
    std::vector<std::array<uint8_t, 4>> bones;
    std::vector<std::array<float, 4>> weights;
    std::vector<uint32_t> indices;

    size_t VertexCount() const { return positions.size(); }
    /// The vertices `vertices` (indices into this geometry) in that order, with `indices`.
    MeshGeometry Gather(std::span<const uint32_t> vertices, std::vector<uint32_t> newIndices) const;
};

/// Flat normals: every triangle gets vertices of its own, with the normal of its face
/// (counter-clockwise front faces, right-handed).
void MakeFlatNormals(MeshGeometry& geometry);

/// From the model's right-handed space to the engine's left-handed one: z changes sign.
void MirrorZ(std::vector<Float3>& points);

/// The geometry from the model's space into the engine's: z changes sign in positions and
/// normals, and every triangle turns round. A triangle that the model's viewer sees
/// counter-clockwise from its front is still counter-clockwise to the engine's viewer on
/// the same side, since the mirror maps both the triangle and the viewer's axes; the
/// engine culls that as a back face, its front faces being clockwise.
void ToEngineSpace(MeshGeometry& geometry);

/// Turns every triangle round (for a placement that mirrors).
void ReverseWinding(std::vector<uint32_t>& indices);

/// One part of a split mesh: its vertices (indices into the whole) and its triangles
/// (indices into the part).
struct MeshPart {
    std::vector<uint32_t> vertices;
    std::vector<uint32_t> indices;
};

/// Triangles grouped, in order, into parts of at most `maxVertices` vertices each; a mesh
/// that fits stays whole, its vertices in their order.
std::vector<MeshPart> SplitByVertexCount(std::span<const uint32_t> indices, size_t vertexCount, size_t maxVertices);

/// The bytes of the object file's static vertex: position, normal, texture coordinates,
/// then for a skinned mesh four weights (floats) and four bone indices (bytes).
std::vector<uint8_t> StaticVertexBytes(const MeshGeometry& geometry);
uint32_t StaticVertexStride(bool skinned);

}  // namespace qx4d::tools
