#include "qx4d/content/MddPlayer.h"

#include "qx4d/content/Chunk.h"
#include "qx4d/content/Envelope.h"
#include "qx4d/core/device/Renderer.h"

#include <cmath>
#include <cstring>

namespace qx4d {

namespace {

/// The straight segment shape of the envelope that maps time to a timeline position.
constexpr uint32_t kLinearShape = 3;
/// A smoothing angle this close to pi merges every triangle around a vertex.
constexpr float kAllAround = 3.1415927f;

float HalfToFloat(uint16_t half)
{
    const uint32_t sign = uint32_t(half >> 15) << 31;
    const uint32_t exponent = (half >> 10) & 0x1F;
    uint32_t mantissa = half & 0x3FF;
    uint32_t bits;
    if (exponent == 0x1F) {
        bits = sign | 0x7F800000u | (mantissa << 13);
    } else if (exponent != 0) {
        bits = sign | ((exponent + 112) << 23) | (mantissa << 13);
    } else if (mantissa == 0) {
        bits = sign;
    } else {
        // A subnormal half is a normal float: shift the mantissa up to its leading one.
        int shift = 0;
        while (!(mantissa & 0x400)) {
            mantissa <<= 1;
            ++shift;
        }
        bits = sign | (uint32_t(113 - shift) << 23) | ((mantissa & 0x3FF) << 13);
    }
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

float ReadValue(Chunk& chunk, bool coded) { return coded ? HalfToFloat(chunk.ReadU16()) : chunk.ReadF32(); }

/// The chunk still holds `count` items of `each` bytes.
bool Holds(const Chunk& chunk, uint64_t count, uint64_t each) { return count * each <= chunk.Remaining(); }

/// Reads `count` u16 indices, each below `limit`.
bool ReadIndices(Chunk& chunk, uint64_t count, uint64_t limit, std::vector<uint16_t>& out)
{
    if (!Holds(chunk, count, 2)) return false;
    out.resize(size_t(count));
    for (uint16_t& index : out) {
        index = chunk.ReadU16();
        if (index >= limit) return false;
    }
    return true;
}

Float3 Subtract(const Float3& a, const Float3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

Float3 Cross(const Float3& a, const Float3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

float Dot(const Float3& a, const Float3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

/// Scaled by the reciprocal of its length; a zero vector stays zero.
Float3 Normalized(const Float3& v)
{
    const float length = std::sqrt(Dot(v, v));
    if (!(length > 0.0f)) return {0.0f, 0.0f, 0.0f};
    const float reciprocal = 1.0f / length;
    return {v[0] * reciprocal, v[1] * reciprocal, v[2] * reciprocal};
}

}  // namespace

bool MddPlayer::LoadUvSet(Chunk& chunk, bool coded, std::vector<float>& out)
{
    const uint32_t pairs = chunk.ReadU32();
    if (!Holds(chunk, uint64_t(pairs) * 2, coded ? 2 : 4)) return false;
    out.resize(size_t(pairs) * 2);
    for (float& value : out) value = ReadValue(chunk, coded);
    return true;
}

bool MddPlayer::Load(Chunk& chunk)
{
    *this = MddPlayer();
    MddPlayer loaded;
    const bool coded = chunk.ReadU32() & 1;
    loaded.framesPerSecond = chunk.ReadF32();
    loaded.frameCount = chunk.ReadU32();
    loaded.vertexCount = chunk.ReadU32();
    const uint64_t positions = uint64_t(loaded.frameCount) * loaded.vertexCount;
    if (!Holds(chunk, positions * 3, coded ? 2 : 4)) return false;
    loaded.frames.resize(size_t(positions));
    for (Float3& position : loaded.frames)
        for (float& component : position) component = ReadValue(chunk, coded);

    loaded.timelineLength = chunk.ReadU32();
    if (loaded.timelineLength == 0 || !ReadIndices(chunk, loaded.timelineLength, loaded.frameCount, loaded.timeline))
        return false;

    // Two UV sets at most: the output vertex has room for two.
    loaded.uvSetCount = chunk.ReadU32();
    if (loaded.uvSetCount > 2) return false;
    for (uint32_t set = 0; set < loaded.uvSetCount; ++set)
        if (!LoadUvSet(chunk, coded, loaded.uvSets[set])) return false;

    loaded.triangleCount = chunk.ReadU32() / 3;
    const uint64_t corners = uint64_t(loaded.triangleCount) * 3;
    if (!ReadIndices(chunk, corners, loaded.vertexCount, loaded.triangles)) return false;
    for (uint32_t set = 0; set < loaded.uvSetCount; ++set)
        if (!ReadIndices(chunk, corners, loaded.uvSets[set].size() / 2, loaded.uvIndices[set])) return false;
    loaded.smoothingAngle = chunk.ReadF32();
    if (loaded.smoothingAngle > kFlatAngle) loaded.BuildAdjacency();
    loaded.blended.resize(loaded.vertexCount);
    loaded.faceNormals.resize(loaded.triangleCount);
    loaded.cornerNormals.resize(size_t(corners));
    *this = std::move(loaded);
    return true;
}

void MddPlayer::BuildAdjacency()
{
    std::vector<uint32_t> counts(vertexCount, 0);
    for (const uint16_t vertex : triangles) ++counts[vertex];
    adjacencyStart.resize(vertexCount);
    uint32_t next = 0;
    for (uint32_t v = 0; v < vertexCount; ++v) {
        adjacencyStart[v] = next;
        next += 1 + counts[v];
    }
    adjacency.assign(next, 0);
    // A triangle that names a vertex twice is listed twice, as it touches it twice.
    for (uint32_t t = 0; t < triangleCount; ++t) {
        for (int corner = 0; corner < 3; ++corner) {
            uint32_t* list = &adjacency[adjacencyStart[triangles[t * 3 + corner]]];
            list[1 + list[0]++] = t;
        }
    }
}

void MddPlayer::Blend(float time)
{
    float position = 0.0f;
    Envelope timeToFrame(&position);
    timeToFrame.AddKey(0.0f, startTime, kLinearShape);
    timeToFrame.AddKey(float(timelineLength), startTime + float(timelineLength) / (speed * framesPerSecond),
                       kLinearShape);
    timeToFrame.SetPostBehavior(playMode);
    timeToFrame.Update(time);
    // A rate of zero or a time of NaN gives no number: the first frame stands.
    if (!std::isfinite(position)) position = 0.0f;

    const uint32_t last = timelineLength - 1;
    const double whole = std::floor(double(position));
    const uint32_t i = whole <= 0.0 ? 0u : whole >= double(last) ? last : uint32_t(whole);
    uint32_t j = i + 1;
    if (playMode == 1 && j >= last)
        j = last;
    else if (j == timelineLength)
        j = 0;
    const float f = float(double(position) - whole);

    const Float3* a = &frames[size_t(timeline[i]) * vertexCount];
    const Float3* b = &frames[size_t(timeline[j]) * vertexCount];
    const auto count = int64_t(vertexCount);
#pragma omp parallel for
    for (int64_t v = 0; v < count; ++v)
        for (int c = 0; c < 3; ++c) blended[size_t(v)][c] = a[v][c] + (b[v][c] - a[v][c]) * f;
}

void MddPlayer::ComputeNormals()
{
    const auto count = int64_t(triangleCount);
#pragma omp parallel for
    for (int64_t t = 0; t < count; ++t) {
        const uint16_t* corner = &triangles[size_t(t) * 3];
        const Float3& p0 = blended[corner[0]];
        faceNormals[size_t(t)] = Normalized(Cross(Subtract(blended[corner[2]], p0), Subtract(blended[corner[1]], p0)));
    }
    if (!(smoothingAngle > kFlatAngle)) {
#pragma omp parallel for
        for (int64_t t = 0; t < count; ++t)
            for (size_t k = 0; k < 3; ++k) cornerNormals[size_t(t) * 3 + k] = faceNormals[size_t(t)];
        return;
    }
    const bool allAround = std::fabs(smoothingAngle - kAllAround) < kFlatAngle;
    const float threshold = std::cos(smoothingAngle);
#pragma omp parallel for
    for (int64_t t = 0; t < count; ++t) {
        const Float3& own = faceNormals[size_t(t)];
        for (size_t k = 0; k < 3; ++k) {
            const uint32_t* list = &adjacency[adjacencyStart[triangles[size_t(t) * 3 + k]]];
            Float3 sum = own;
            for (uint32_t n = 1; n <= list[0]; ++n) {
                const Float3& other = faceNormals[list[n]];
                if (list[n] == uint32_t(t) || (!allAround && Dot(other, own) < threshold)) continue;
                for (int c = 0; c < 3; ++c) sum[c] += other[c];
            }
            cornerNormals[size_t(t) * 3 + k] = Normalized(sum);
        }
    }
}

void MddPlayer::WriteVertices()
{
    const size_t floatsPerVertex = Stride() / 4;
    vertices.resize(size_t(triangleCount) * 3 * floatsPerVertex);
    const auto corners = int64_t(triangleCount) * 3;
#pragma omp parallel for
    for (int64_t c = 0; c < corners; ++c) {
        float* out = &vertices[size_t(c) * floatsPerVertex];
        const Float3& position = blended[triangles[size_t(c)]];
        const Float3& normal = cornerNormals[size_t(c)];
        out = std::copy(position.begin(), position.end(), out);
        out = std::copy(normal.begin(), normal.end(), out);
        for (uint32_t set = 0; set < uvSetCount; ++set) {
            const size_t uv = size_t(uvIndices[set][size_t(c)]) * 2;
            *out++ = uvSets[set][uv];
            *out++ = uvSets[set][uv + 1];
        }
    }
}

void MddPlayer::Evaluate(float time)
{
    if (IsEmpty()) return;
    Blend(time);
    ComputeNormals();
    WriteVertices();
}

bool MddPlayer::Update(float time, const ResourceHandle& vertexBuffer, uint32_t& first)
{
    Evaluate(time);
    Renderer* renderer = Renderer::Instance();
    VertexBuffer* buffer = renderer ? renderer->GetVertexBuffer(vertexBuffer) : nullptr;
    return buffer && !vertices.empty() &&
           buffer->Take(vertices.data(), uint32_t(vertices.size() * sizeof(float)), Stride(), first);
}

}  // namespace qx4d
