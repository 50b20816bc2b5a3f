#pragma once
// The skinned figure of the tests: two squares stacked from y = 0 to y = 2 in the plane
// z = 0, on a hip joint at the origin and a knee joint at y = 1 that is the hip's child.
// The lower row of vertices weighs on the hip, the upper row on the knee, the middle row
// on both alike (weights 1 and 1, which the importer normalises).
#include "tests/tools/import/GltfFiles.h"

#include <array>
#include <cmath>
#include <string>

namespace qx4d::test {

/// `knee` adds members to the knee's node ("rotation": a pose that isn't the bind pose).
inline void AddSkinnedFigure(GltfFile& file, const std::string& knee = "")
{
    const int positions =
        file.Floats3({{-0.5f, 0, 0}, {0.5f, 0, 0}, {-0.5f, 1, 0}, {0.5f, 1, 0}, {-0.5f, 2, 0}, {0.5f, 2, 0}});
    const int normals = file.Floats3(std::vector<std::array<float, 3>>(6, {0, 0, 1}));
    const std::vector<uint8_t> joints{0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    const int jointAccessor = file.Data(joints, GltfFile::kUnsignedByte, "VEC4");
    const std::vector<float> weights{1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    const int weightAccessor = file.Data(weights, GltfFile::kFloat, "VEC4");
    const int indices = file.Indices({0, 1, 3, 0, 3, 2, 2, 3, 5, 2, 5, 4});
    file.meshes.push_back(R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positions) + R"(,"NORMAL":)" +
                          std::to_string(normals) + R"(,"JOINTS_0":)" + std::to_string(jointAccessor) +
                          R"(,"WEIGHTS_0":)" + std::to_string(weightAccessor) + R"(},"indices":)" +
                          std::to_string(indices) + "}]}");
    // The inverse bind matrices: the hip's is the identity, the knee's moves down by 1.
    const std::vector<float> inverseBind{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0,  0, 1,
                                         1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -1, 0, 1};
    const int matrices = file.Data(inverseBind, GltfFile::kFloat, "MAT4");
    file.skins = {R"({"joints":[1,2],"inverseBindMatrices":)" + std::to_string(matrices) + "}"};
    file.nodes = {R"({"name":"figure","mesh":0,"skin":0})", R"({"name":"hip","children":[2]})",
                  R"({"name":"knee","translation":[0,1,0])" + knee + "}"};
    file.scenes = {R"({"nodes":[0,1]})"};
}

/// The rotation by `degrees` about z, as glTF's "rotation" member.
inline std::string RotationZ(double degrees)
{
    const double half = degrees * 3.14159265358979 / 360.0;
    return "[0,0," + std::to_string(std::sin(half)) + "," + std::to_string(std::cos(half)) + "]";
}

/// An animation of the knee from no turn to 90 degrees about z over one second.
inline void AddKneeBend(GltfFile& file)
{
    const int times = file.Scalars({0, 1});
    const double s = std::sin(3.14159265358979 / 4), c = std::cos(3.14159265358979 / 4);
    const int rotations = file.Data(std::vector<float>{0, 0, 0, 1, 0, 0, float(s), float(c)}, GltfFile::kFloat, "VEC4");
    file.animations.push_back(R"({"name":"bend","samplers":[{"input":)" + std::to_string(times) + R"(,"output":)" +
                              std::to_string(rotations) +
                              R"(}],"channels":[{"sampler":0,"target":{"node":2,"path":"rotation"}}]})");
}

}  // namespace qx4d::test
