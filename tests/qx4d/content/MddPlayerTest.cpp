// The MDD player on data written by the project's writer: where the timeline stands at a
// time, how two stored frames blend, flat and smooth normals worked out by hand, and data
// that promises more than it holds.
#include "qx4d/content/MddPlayer.h"
#include "qx4d/content/Chunk.h"
#include "tools/objectfile/ObjectModel.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qx4d {
namespace {

using tools::MddModel;

/// One triangle in the plane z = 0, as three stored frames that move it along x by 0, 1
/// and 2 units; the timeline plays them in order at 10 frames a second.
MddModel MovingTriangle()
{
    MddModel mdd;
    mdd.framesPerSecond = 10.0f;
    mdd.vertexCount = 3;
    for (float dx : {0.0f, 1.0f, 2.0f}) mdd.frames.push_back({{dx, 0, 0}, {dx + 1, 0, 0}, {dx, 1, 0}});
    mdd.timeline = {0, 1, 2};
    mdd.triangles = {0, 1, 2};
    mdd.uvSetCount = 1;
    mdd.uvSets[0] = {{0, 0}, {1, 0}, {0, 1}};
    mdd.uvIndices[0] = {0, 1, 2};
    mdd.smoothingAngle = 0.0f;
    return mdd;
}

bool Load(MddPlayer& player, const MddModel& model)
{
    ChunkWriter out;
    tools::WriteMdd(out, model);
    Chunk chunk(0, out.bytes.data(), out.bytes.size());
    return player.Load(chunk);
}

/// x of the first corner of the first triangle after `Evaluate(time)`.
float FirstX(MddPlayer& player, float time)
{
    player.Evaluate(time);
    return player.vertices[0];
}

TEST(MddPlayerTest, TheTimelineBlendsTheTwoFramesAroundTheTime)
{
    MddPlayer player;
    ASSERT_TRUE(Load(player, MovingTriangle()));
    EXPECT_EQ(player.Stride(), 32u);
    EXPECT_FLOAT_EQ(FirstX(player, 0.0f), 0.0f);
    EXPECT_FLOAT_EQ(FirstX(player, 0.05f), 0.5f);  // halfway from frame 0 to frame 1
    EXPECT_FLOAT_EQ(FirstX(player, 0.125f), 1.25f);
    // Holding (play mode 1), the last frame is reached one frame before the timeline ends.
    EXPECT_FLOAT_EQ(FirstX(player, 0.2f), 2.0f);
    EXPECT_FLOAT_EQ(FirstX(player, 0.25f), 2.0f);
    EXPECT_FLOAT_EQ(FirstX(player, 5.0f), 2.0f);
    EXPECT_FLOAT_EQ(FirstX(player, -1.0f), 0.0f);

    // Repeating, the last frame blends back into the first.
    player.playMode = 2;
    EXPECT_FLOAT_EQ(FirstX(player, 0.25f), 1.0f);
    EXPECT_NEAR(FirstX(player, 0.35f), 0.5f, 1e-5f);  // the second round, at 0.05
    // Speed and start shift the timeline.
    player.playMode = 1;
    player.speed = 2.0f;
    player.startTime = 1.0f;
    EXPECT_NEAR(FirstX(player, 1.025f), 0.5f, 1e-5f);
}

TEST(MddPlayerTest, OutputCornersCarryPositionNormalAndUvs)
{
    MddPlayer player;
    ASSERT_TRUE(Load(player, MovingTriangle()));
    player.Evaluate(0.0f);
    ASSERT_EQ(player.vertices.size(), 3u * 8u);
    const float* second = &player.vertices[8];
    EXPECT_EQ(second[0], 1.0f);
    EXPECT_EQ(second[1], 0.0f);
    // Flat: cross(c2 - c0, c1 - c0) = (0, 1, 0) x (1, 0, 0) = (0, 0, -1).
    EXPECT_EQ(second[3], 0.0f);
    EXPECT_EQ(second[4], 0.0f);
    EXPECT_EQ(second[5], -1.0f);
    EXPECT_EQ(second[6], 1.0f);  // u of the second UV
    EXPECT_EQ(second[7], 0.0f);
    EXPECT_TRUE(player.adjacency.empty()) << "flat normals need no adjacency";
}

/// Two triangles that share the edge from (0,0,0) to (0,1,0) and fold at a right angle:
/// one in the plane z = 0 (normal -z), one in the plane x = 0 (normal -x).
MddModel Fold(float smoothingAngle)
{
    MddModel mdd;
    mdd.vertexCount = 4;
    mdd.frames = {{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}}};
    mdd.timeline = {0};
    mdd.triangles = {0, 2, 1, 0, 1, 3};
    mdd.smoothingAngle = smoothingAngle;
    return mdd;
}

std::array<float, 3> Normal(const MddPlayer& player, size_t corner)
{
    const float* at = &player.vertices[corner * player.Stride() / 4 + 3];
    return {at[0], at[1], at[2]};
}

TEST(MddPlayerTest, SmoothNormalsMergeTrianglesWithinTheAngle)
{
    const float h = float(1.0 / std::sqrt(2.0));
    MddPlayer wide;
    ASSERT_TRUE(Load(wide, Fold(3.1415927f)));  // pi: every triangle around the vertex
    wide.Evaluate(0.0f);
    // The shared corner averages both faces; the corner that only the first touches keeps it.
    EXPECT_NEAR(Normal(wide, 0)[0], -h, 1e-6f);
    EXPECT_NEAR(Normal(wide, 0)[2], -h, 1e-6f);
    EXPECT_NEAR(Normal(wide, 1)[2], -1.0f, 1e-6f);

    MddPlayer narrow;
    ASSERT_TRUE(Load(narrow, Fold(1.2f)));  // cos 1.2 > cos 90 degrees: the fold stays sharp
    narrow.Evaluate(0.0f);
    EXPECT_NEAR(Normal(narrow, 0)[2], -1.0f, 1e-6f);
    EXPECT_NEAR(Normal(narrow, 3)[0], -1.0f, 1e-6f);

    MddPlayer blunt;
    ASSERT_TRUE(Load(blunt, Fold(1.6f)));  // just past a right angle: merged
    blunt.Evaluate(0.0f);
    EXPECT_NEAR(Normal(blunt, 0)[0], -h, 1e-6f);
}

TEST(MddPlayerTest, HalfFloatsDecode)
{
    MddModel model = MovingTriangle();
    model.halfFloats = true;
    model.frames[1][0] = {0.333f, -2.5f, 65504.0f};
    MddPlayer player;
    ASSERT_TRUE(Load(player, model));
    EXPECT_FLOAT_EQ(player.frames[3][0], 0.33300781f);  // the nearest half
    EXPECT_EQ(player.frames[3][1], -2.5f);
    EXPECT_EQ(player.frames[3][2], 65504.0f);
    EXPECT_EQ(player.uvSets[0][5], 1.0f);
}

TEST(MddPlayerTest, DataThatPromisesMoreThanItHoldsIsRefused)
{
    const auto refused = [](const MddModel& model, size_t cutBytes = 0) {
        ChunkWriter out;
        tools::WriteMdd(out, model);
        out.bytes.resize(out.bytes.size() - cutBytes);
        Chunk chunk(0, out.bytes.data(), out.bytes.size());
        MddPlayer player;
        return !player.Load(chunk) && player.IsEmpty() && player.frames.empty();
    };
    EXPECT_TRUE(refused(MovingTriangle(), 4 + 6 + 6));  // cut inside the UV indices
    MddModel frameTooFar = MovingTriangle();
    frameTooFar.timeline[1] = 3;
    EXPECT_TRUE(refused(frameTooFar));
    MddModel vertexTooFar = MovingTriangle();
    vertexTooFar.triangles[2] = 3;
    EXPECT_TRUE(refused(vertexTooFar));
    MddModel noTimeline = MovingTriangle();
    noTimeline.timeline.clear();
    EXPECT_TRUE(refused(noTimeline));
    MddModel threeSets = MovingTriangle();
    threeSets.uvSetCount = 3;
    EXPECT_TRUE(refused(threeSets));
    MddModel huge = MovingTriangle();
    huge.frames.resize(1);
    huge.vertexCount = 0x40000000;  // frames the file doesn't hold
    EXPECT_TRUE(refused(huge));
}

}  // namespace
}  // namespace qx4d
