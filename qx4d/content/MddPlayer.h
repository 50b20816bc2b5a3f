#pragma once
// Per-frame deformation of a mesh: stored frames of vertex positions played on a
// timeline, blended between the two frames around the current time, with flat or smooth
// normals recomputed each frame, and written out as a triangle list with UVs.
#include "qx4d/core/Matrix.h"
#include "qx4d/core/device/ResourceHandle.h"

#include <cstdint>
#include <vector>

namespace qx4d {

class Chunk;

class MddPlayer {
public:
    /// Smoothing angles at or below this give flat normals.
    static constexpr float kFlatAngle = 1e-5f;

    /// Reads the player from `chunk`, from its encoding word on. False, leaving the player
    /// empty, when the counts ask for more data than the chunk holds, an index points past
    /// its array or the timeline is empty or names a frame that isn't stored.
    bool Load(Chunk& chunk);

    /// Blends the frames for `time`, computes the normals and fills `vertices`: three
    /// corners a triangle, each position, normal and `uvSetCount` UV pairs.
    void Evaluate(float time);
    /// `Evaluate`, then writes the vertices into the dynamic buffer `vertexBuffer`; `first`
    /// is where they landed, in vertices. False when the buffer took nothing.
    bool Update(float time, const ResourceHandle& vertexBuffer, uint32_t& first);

    /// Bytes of one output vertex: position, normal, and 8 bytes a UV set.
    uint32_t Stride() const { return 8 * uvSetCount + 24; }
    bool IsEmpty() const { return triangleCount == 0; }

    uint32_t frameCount = 0;
    uint32_t vertexCount = 0;
    float framesPerSecond = 30.0f;
    std::vector<Float3> faceNormals;
    /// `frameCount` arrays of `vertexCount` positions, one after the other.
    std::vector<Float3> frames;
    std::vector<float> uvSets[2];
    std::vector<uint16_t> triangles;
    std::vector<uint16_t> uvIndices[2];
    /// Per vertex, from `adjacencyStart[v]`: the count of triangles touching it, then their
    /// indices. Built only for smooth normals.
    std::vector<uint32_t> adjacency;
    std::vector<uint32_t> adjacencyStart;
    std::vector<uint16_t> timeline;
    uint32_t timelineLength = 0;
    uint32_t uvSetCount = 0;
    uint32_t triangleCount = 0;
    float smoothingAngle = 1.5620096f;  // the bits 0x3FC7F1E6
    std::vector<Float3> blended;
    std::vector<Float3> cornerNormals;
    float startTime = 0.0f;
    float speed = 1.0f;
    /// The envelope behaviour after the last frame: 1 holds it, 2 repeats.
    int32_t playMode = 1;

    /// The output of the last `Evaluate`, `Stride()` bytes a corner.
    std::vector<float> vertices;

private:
    bool LoadUvSet(Chunk& chunk, bool coded, std::vector<float>& out);
    void BuildAdjacency();
    void Blend(float time);
    void ComputeNormals();
    void WriteVertices();
};

}  // namespace qx4d
