// Skins, morph targets and animations: a skinned mesh keeps its bones at its pose with
// every bone at the identity there; what the first animation moves is baked to MDD
// frames at 30 a second, whose positions follow from the keys.
#include "qx4d/content/MeshItem.h"
#include "tests/tools/import/ImportTestSupport.h"
#include "tests/tools/import/SkinnedModels.h"
#include "tools/import/ScenePose.h"

#include <cmath>
#include <numbers>

namespace qx4d::test {
namespace {

namespace gpu = qx::gpu;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using tools::ItemModel;

/// Where the figure's vertex (x, y) stands with the knee bent by `degrees`, in the
/// engine's space.
Float3 Bent(float x, float y, double degrees)
{
    const double angle = degrees * std::numbers::pi / 180.0;
    const auto aroundKnee = [&](double px, double py) {
        return std::array<double, 2>{-std::sin(angle) * (py - 1) + std::cos(angle) * px,
                                     1 + std::cos(angle) * (py - 1) + std::sin(angle) * px};
    };
    std::array<double, 2> p{x, y};
    if (y == 2)
        p = aroundKnee(x, y);
    else if (y == 1)
        p = {(x + aroundKnee(x, y)[0]) / 2, (y + aroundKnee(x, y)[1]) / 2};
    return {float(p[0]), float(p[1]), 0.0f};
}

std::vector<Float3> BentFigure(double degrees)
{
    std::vector<Float3> out;
    for (const float y : {0.0f, 1.0f, 2.0f})
        for (const float x : {-0.5f, 0.5f}) out.push_back(Bent(x, y, degrees));
    return out;
}

void ExpectNear(const std::vector<Float3>& actual, const std::vector<Float3>& expected, float tolerance = 1e-5f)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t v = 0; v < actual.size(); ++v)
        EXPECT_THAT(actual[v], NearPoint(expected[v], tolerance)) << "vertex " << v;
}

class SkinAnimationTest : public ::testing::Test {
protected:
    Converted ConvertGlb(GltfFile& file)
    {
        file.WriteGlb(folder.path / "model.glb");
        return Convert(folder.path / "model.glb");
    }
    TempFolder folder;
};

TEST_F(SkinAnimationTest, ASkinnedMeshComesFirstWithOneBoneAJointAllAtTheIdentity)
{
    GltfFile file;
    AddSkinnedFigure(file);
    const Converted converted = ConvertGlb(file);
    const auto& items = converted.conversion.object.items;
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].kind, ItemModel::Kind::Mesh);
    EXPECT_EQ(items[0].name, "figure");
    EXPECT_EQ(converted.Mesh(0).boneCount, 2u);
    for (size_t b = 1; b < 3; ++b) {
        EXPECT_EQ(items[b].kind, ItemModel::Kind::Bone);
        EXPECT_EQ(items[b].parent, -1);
        EXPECT_EQ(items[b].position, (Float3{0, 0, 0}));
        EXPECT_EQ(items[b].rotation, (Float3{0, 0, 0}));
        EXPECT_EQ(items[b].scale, (Float3{1, 1, 1}));
    }
    EXPECT_EQ(items[1].name, "hip");
    EXPECT_EQ(items[2].name, "knee");

    const tools::MeshModel& mesh = converted.Mesh(0);
    ASSERT_EQ(mesh.declaration.size(), 6u);
    EXPECT_EQ(mesh.declaration[3].Usage, gpu::D3DDECLUSAGE_BLENDWEIGHT);
    EXPECT_EQ(mesh.declaration[3].Type, gpu::D3DDECLTYPE_FLOAT4);
    EXPECT_EQ(mesh.declaration[4].Usage, gpu::D3DDECLUSAGE_BLENDINDICES);
    EXPECT_EQ(mesh.declaration[4].Type, gpu::D3DDECLTYPE_UBYTE4);
    EXPECT_EQ(mesh.stride, 52u);
    ExpectNear(Positions(mesh), BentFigure(0));
    // The middle row weighs on both joints alike, its weights normalised to a sum of 1.
    const auto weights = VertexFloats<4>(mesh, mesh.declaration[3].Offset);
    EXPECT_EQ(weights[0], (std::array<float, 4>{1, 0, 0, 0}));
    EXPECT_EQ(weights[2], (std::array<float, 4>{0.5f, 0.5f, 0, 0}));
    const uint8_t* bones = mesh.vertices.data() + 2 * mesh.stride + mesh.declaration[4].Offset;
    EXPECT_EQ(std::vector<uint8_t>(bones, bones + 4), (std::vector<uint8_t>{0, 1, 0, 0}));
    EXPECT_EQ(mesh.vertices[5 * mesh.stride + mesh.declaration[4].Offset], 1) << "the top row follows the knee";
}

TEST_F(SkinAnimationTest, ASkinPosedAwayFromItsBindPoseIsImportedAsPosed)
{
    GltfFile file;
    AddSkinnedFigure(file, R"(,"rotation":)" + RotationZ(90));
    const Converted converted = ConvertGlb(file);
    ExpectNear(Positions(converted.Mesh(0)), BentFigure(90));
    EXPECT_EQ(converted.conversion.boneItems, 2u);
}

TEST_F(SkinAnimationTest, AnAnimatedSkinIsBakedToMddFramesAtThirtyASecond)
{
    GltfFile file;
    AddSkinnedFigure(file);
    AddKneeBend(file);
    const Converted converted = ConvertGlb(file);
    ASSERT_EQ(converted.conversion.object.items.size(), 1u) << "baked, the mesh needs no bones";
    const tools::MeshModel& mesh = converted.Mesh(0);
    EXPECT_EQ(mesh.flags, MeshItem::kMdd);
    EXPECT_EQ(mesh.boneCount, 0u);
    ASSERT_TRUE(mesh.mdd.has_value());
    const tools::MddModel& mdd = *mesh.mdd;
    EXPECT_EQ(mdd.framesPerSecond, 30.0f);
    EXPECT_EQ(mdd.vertexCount, 6u);
    ASSERT_EQ(mdd.frames.size(), 31u);
    EXPECT_EQ(converted.conversion.frames, 31u);
    EXPECT_EQ(mdd.timeline.front(), 0);
    EXPECT_EQ(mdd.timeline.back(), 30);
    ExpectNear(mdd.frames[0], BentFigure(0));
    ExpectNear(mdd.frames[15], BentFigure(45), 1e-4f);
    ExpectNear(mdd.frames[30], BentFigure(90), 1e-4f);
    // The triangles turned round for the engine, positions and UVs indexed alike.
    EXPECT_EQ(std::vector<uint16_t>(mdd.triangles.begin(), mdd.triangles.begin() + 3),
              (std::vector<uint16_t>{0, 3, 1}));
    EXPECT_EQ(mdd.uvSetCount, 1u);
    EXPECT_EQ(mdd.uvIndices[0], mdd.triangles);
    EXPECT_FLOAT_EQ(mdd.smoothingAngle, std::numbers::pi_v<float>);
}

/// A triangle with one morph target that lifts its top vertex by 1 along z.
void AddMorphingTriangle(GltfFile& file, const std::string& meshWeights)
{
    const int positions = file.Floats3({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    const int offsets = file.Floats3({{0, 0, 0}, {0, 0, 0}, {0, 0, 1}});
    file.meshes.push_back(R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positions) +
                          R"(},"targets":[{"POSITION":)" + std::to_string(offsets) + R"(}]}],"weights":)" +
                          meshWeights + "}");
}

TEST_F(SkinAnimationTest, MorphWeightsOfTheMeshOrItsNodeShapeTheStaticGeometry)
{
    GltfFile file;
    AddMorphingTriangle(file, "[0.25]");
    file.nodes = {R"({"children":[1,2]})", R"({"mesh":0})", R"({"mesh":0,"weights":[1]})"};
    const Converted converted = ConvertGlb(file);
    // Flat normals give each corner its own vertex, in the order of the file's triangle.
    EXPECT_THAT(Positions(converted.Mesh(0))[2], NearPoint(Float3{0, 1, -0.25f}, 1e-6f));
    EXPECT_THAT(Positions(converted.Mesh(1))[2], NearPoint(Float3{0, 1, -1}, 1e-6f));
}

TEST_F(SkinAnimationTest, AnimatedMorphWeightsAreBakedFrameByFrame)
{
    GltfFile file;
    AddMorphingTriangle(file, "[0]");
    file.nodes = {R"({"mesh":0})"};
    const int times = file.Scalars({0, 2});
    const int weights = file.Scalars({0, 1});
    file.animations = {R"({"samplers":[{"input":)" + std::to_string(times) + R"(,"output":)" + std::to_string(weights) +
                       R"(}],"channels":[{"sampler":0,"target":{"node":0,"path":"weights"}}]})"};
    const Converted converted = ConvertGlb(file);
    const tools::MddModel& mdd = converted.Mesh(0).mdd.value();
    ASSERT_EQ(mdd.frames.size(), 61u);
    EXPECT_THAT(mdd.frames[0][2], NearPoint(Float3{0, 1, 0}, 1e-6f));
    EXPECT_THAT(mdd.frames[30][2], NearPoint(Float3{0, 1, -0.5f}, 1e-6f)) << "one second: weight 0.5";
    EXPECT_THAT(mdd.frames[45][2], NearPoint(Float3{0, 1, -0.75f}, 1e-6f));
    EXPECT_THAT(mdd.frames[60][0], NearPoint(Float3{0, 0, 0}, 1e-6f));
}

TEST_F(SkinAnimationTest, OnlyMeshesThatTheAnimationMovesAreBaked)
{
    GltfFile file;
    const int positions = file.Floats3({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    file.meshes.push_back(R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positions) + "}}]}");
    file.nodes = {R"({"children":[1,3]})", R"({"name":"mover","children":[2]})", R"({"name":"rider","mesh":0})",
                  R"({"name":"still","mesh":0})"};
    // Steps along x: 1 at one second, 3 at two.
    const int times = file.Scalars({0, 1, 2});
    const int places = file.Floats3({{0, 0, 0}, {1, 0, 0}, {3, 0, 0}});
    file.animations = {
        R"({"name":"steps","samplers":[{"input":)" + std::to_string(times) + R"(,"output":)" + std::to_string(places) +
            R"(,"interpolation":"STEP"}],"channels":[{"sampler":0,"target":{"node":1,"path":"translation"}}]})",
        R"({"name":"other","samplers":[{"input":)" + std::to_string(times) + R"(,"output":)" + std::to_string(places) +
            R"(}],"channels":[{"sampler":0,"target":{"node":3,"path":"translation"}}]})"};
    const Converted converted = ConvertGlb(file);
    ASSERT_EQ(converted.conversion.object.items.size(), 2u);
    EXPECT_EQ(converted.Item(0).name, "still");
    EXPECT_FALSE(converted.Mesh(0).mdd.has_value()) << "only the first animation is baked";
    EXPECT_EQ(converted.Item(1).name, "rider");
    const tools::MddModel& mdd = converted.Mesh(1).mdd.value();
    ASSERT_EQ(mdd.frames.size(), 61u);
    EXPECT_THAT(mdd.frames[29][1], NearPoint(Float3{1, 0, 0}, 1e-6f));
    EXPECT_THAT(mdd.frames[30][1], NearPoint(Float3{2, 0, 0}, 1e-6f));
    EXPECT_THAT(mdd.frames[60][1], NearPoint(Float3{4, 0, 0}, 1e-6f));
    ASSERT_EQ(converted.warnings.size(), 1u);
    EXPECT_THAT(converted.warnings[0], HasSubstr("only the first of 2 animations (steps) is baked"));
}

TEST_F(SkinAnimationTest, AnAnimationThatLastsNoTimeLeavesTheModelAsItStands)
{
    GltfFile file;
    AddSkinnedFigure(file);
    const int times = file.Scalars({0});
    const int rotation = file.Data(std::vector<float>{0, 0, 0, 1}, GltfFile::kFloat, "VEC4");
    file.animations = {R"({"name":"pose","samplers":[{"input":)" + std::to_string(times) + R"(,"output":)" +
                       std::to_string(rotation) +
                       R"(}],"channels":[{"sampler":0,"target":{"node":2,"path":"rotation"}}]})"};
    const Converted converted = ConvertGlb(file);
    EXPECT_EQ(converted.conversion.boneItems, 2u);
    EXPECT_EQ(converted.conversion.mddItems, 0u);
    ASSERT_EQ(converted.warnings.size(), 1u);
    EXPECT_THAT(converted.warnings[0], HasSubstr("pose lasts no time"));
}

TEST(ChannelSampling, StepLinearSphericalAndCubicKeys)
{
    tools::SourceChannel channel;
    channel.times = {0, 1};
    channel.width = 1;
    channel.values = {2, 4};
    std::vector<double> value;
    channel.interpolation = tools::SourceChannel::Interpolation::Step;
    tools::SampleChannel(channel, 0.99, value);
    EXPECT_EQ(value, (std::vector<double>{2}));
    channel.interpolation = tools::SourceChannel::Interpolation::Linear;
    tools::SampleChannel(channel, 0.25, value);
    EXPECT_DOUBLE_EQ(value[0], 2.5);
    tools::SampleChannel(channel, 7, value);
    EXPECT_EQ(value[0], 4) << "the last key holds after the end";
    tools::SampleChannel(channel, -1, value);
    EXPECT_EQ(value[0], 2);

    // Cubic: in-tangent, value, out-tangent a key. From 0 leaving with slope 3 to 1
    // arriving flat: h10 * 3 + h01 at a quarter of the way.
    channel.interpolation = tools::SourceChannel::Interpolation::CubicSpline;
    channel.values = {0, 0, 3, 0, 1, 0};
    tools::SampleChannel(channel, 0.25, value);
    EXPECT_DOUBLE_EQ(value[0], 0.578125);

    // Rotations turn along the shorter arc at a steady rate: half of 90 degrees is 45.
    channel.path = tools::SourceChannel::Path::Rotation;
    channel.interpolation = tools::SourceChannel::Interpolation::Linear;
    channel.width = 4;
    const float s = float(std::sin(std::numbers::pi / 4)), c = float(std::cos(std::numbers::pi / 4));
    channel.values = {0, 0, 0, 1, 0, 0, -s, -c};  // the second key written as its negative
    tools::SampleChannel(channel, 0.5, value);
    const double eighth = std::numbers::pi / 8;
    EXPECT_NEAR(std::abs(value[2]), std::sin(eighth), 1e-6);
    EXPECT_NEAR(std::abs(value[3]), std::cos(eighth), 1e-6);
}

}  // namespace
}  // namespace qx4d::test
