#pragma once
// What the importer's tests share: converting a model file in memory, and reading back
// the vertices of the mesh models that the conversion made.
#include "tests/qx4d/core/TestFiles.h"
#include "tools/import/ModelImporter.h"
#include "tools/import/ObjectConverter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace qx4d::test {

struct Converted {
    tools::Conversion conversion;
    std::vector<std::string> warnings;

    const tools::ItemModel& Item(size_t index) const { return conversion.object.items.at(index); }
    const tools::MeshModel& Mesh(size_t index) const { return Item(index).mesh; }
};

/// Reads and converts the model at `path`, as `qxfx import` does before it writes.
inline Converted Convert(const std::filesystem::path& path, const std::string& imageFolder = "model")
{
    Converted out;
    const auto importer = tools::MakeImporter(path);
    EXPECT_NE(importer, nullptr);
    const tools::SourceScene scene = importer->Read(path, out.warnings);
    tools::ConvertOptions options;
    options.source = path.filename().string();
    options.imageFolder = imageFolder;
    out.conversion = tools::ConvertScene(scene, options, out.warnings);
    return out;
}

/// The `count` floats at byte `offset` of every vertex of a static mesh model.
template <size_t N>
std::vector<std::array<float, N>> VertexFloats(const tools::MeshModel& mesh, size_t offset)
{
    std::vector<std::array<float, N>> out(mesh.VertexCount());
    for (size_t v = 0; v < out.size(); ++v)
        std::memcpy(out[v].data(), mesh.vertices.data() + v * mesh.stride + offset, N * sizeof(float));
    return out;
}
inline std::vector<Float3> Positions(const tools::MeshModel& mesh) { return VertexFloats<3>(mesh, 0); }
inline std::vector<Float3> Normals(const tools::MeshModel& mesh) { return VertexFloats<3>(mesh, 12); }
inline std::vector<std::array<float, 2>> Uvs(const tools::MeshModel& mesh) { return VertexFloats<2>(mesh, 24); }

/// The smallest box around `points`: its lower and upper corners.
inline std::pair<Float3, Float3> Bounds(const std::vector<Float3>& points)
{
    Float3 low{1e30f, 1e30f, 1e30f}, high{-1e30f, -1e30f, -1e30f};
    for (const Float3& p : points)
        for (size_t c = 0; c < 3; ++c) {
            low[c] = std::min(low[c], p[c]);
            high[c] = std::max(high[c], p[c]);
        }
    return {low, high};
}

/// Whether `points` holds a point within `tolerance` of `p`.
inline bool HasPoint(const std::vector<Float3>& points, const Float3& p, float tolerance = 1e-4f)
{
    return std::any_of(points.begin(), points.end(), [&](const Float3& q) {
        return std::abs(q[0] - p[0]) < tolerance && std::abs(q[1] - p[1]) < tolerance &&
               std::abs(q[2] - p[2]) < tolerance;
    });
}

/// A 24-bit BMP file of `width` by `height` pixels, given as 0xRRGGBB top row first.
inline std::string Bmp(int width, int height, const std::vector<uint32_t>& pixels)
{
    const int rowBytes = (width * 3 + 3) / 4 * 4;
    std::string bytes(size_t(54 + rowBytes * height), '\0');
    const auto put = [&](size_t at, uint32_t value, size_t size) { std::memcpy(&bytes[at], &value, size); };
    bytes[0] = 'B';
    bytes[1] = 'M';
    put(2, uint32_t(bytes.size()), 4);
    put(10, 54, 4);
    put(14, 40, 4);
    put(18, uint32_t(width), 4);
    put(22, uint32_t(height), 4);  // positive: the rows are stored bottom up
    put(26, 1, 2);
    put(28, 24, 2);
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column) {
            const uint32_t rgb = pixels[size_t((height - 1 - row) * width + column)];
            const size_t at = size_t(54 + row * rowBytes + column * 3);
            bytes[at] = char(rgb & 0xFF);
            bytes[at + 1] = char((rgb >> 8) & 0xFF);
            bytes[at + 2] = char((rgb >> 16) & 0xFF);
        }
    return bytes;
}

MATCHER_P2(NearPoint, expected, tolerance, "")
{
    for (size_t c = 0; c < 3; ++c)
        if (std::abs(arg[c] - expected[c]) > tolerance) return false;
    return true;
}

}  // namespace qx4d::test
