// The scene effects driven through the effect host exactly as an editor drives them, on
// the content pack of the build: where the scenes put the faces of the cube and the plane,
// the frame on the flag and the beating frame, the transition's two inputs, and frames
// that keep coming through a lost device. Expected places follow from the scenes'
// geometry: a camera at the origin with a field of 45 degrees and an aspect of 4/3.
#include "qx4d/core/device/GraphicsDevice.h"
#include "tests/host/EffectHarness.h"
#include "tests/wrap3d/SceneFixture.h"
#include "wrap3d/4DAnim.h"
#include "wrap3d/Context.h"
#include "wrap3d/SceneBridge.h"

#include <gtest/gtest.h>

#include <cmath>
#include <thread>

namespace qx::test {
namespace {

constexpr LONG kWidth = 128, kHeight = 96;

class SceneEffectTest : public SceneTest {
protected:
    /// The host's output for effect `id` at `progress`, over the quadrant frame.
    std::vector<uint32_t> Run(LONG id, float progress, std::u16string_view source = u"")
    {
        EffectHarness harness(kWidth, kHeight);
        harness.setInput(QuadrantFrame(kWidth, kHeight));
        EXPECT_EQ(harness.select(id, DefaultParams(harness.effect(), id)), S_OK);
        Bstr path(source);
        harness.effect().put_Source(path.get());
        EXPECT_EQ(harness.setup(), S_OK);
        EXPECT_EQ(harness.execute(progress), S_OK);
        return harness.output();
    }
};

// At progress 0 the cube stands at z = 3 with no turn: its front face, 2 units wide at
// z = 2, fills the 0.83 units of half height and ends at 1 of the 1.10 units of half
// width, where the backdrop shows.
TEST_F(SceneEffectTest, CubeShowsTheFrameOnItsFrontFace)
{
    const std::vector<uint32_t> frame = Run(5000, 0.0f);
    EXPECT_EQ(Dominant(At(frame, kWidth, -0.5f, 0.5f)), Colour::Red);
    EXPECT_EQ(Dominant(At(frame, kWidth, 0.5f, 0.5f)), Colour::Green);
    EXPECT_EQ(Dominant(At(frame, kWidth, -0.5f, -0.5f)), Colour::Blue);
    EXPECT_EQ(Dominant(At(frame, kWidth, 0.5f, -0.5f)), Colour::Yellow);
    EXPECT_EQ(Dominant(At(frame, kWidth, -0.97f, 0.0f)), Colour::Dark) << "past the face's edge";
}

// Halfway the cube stands at z = 13 and shows a face 2 units wide: 0.23 of the half width.
TEST_F(SceneEffectTest, CubeGoesAwayAndComesBack)
{
    const std::vector<uint32_t> middle = Run(5000, 0.5f);
    EXPECT_EQ(Dominant(At(middle, kWidth, -0.5f, 0.0f)), Colour::Dark);
    EXPECT_EQ(Dominant(At(middle, kWidth, 0.0f, 0.6f)), Colour::Dark);
    EXPECT_NE(Dominant(At(middle, kWidth, -0.1f, 0.1f)), Colour::Dark);
    const std::vector<uint32_t> end = Run(5000, 1.0f);
    EXPECT_EQ(Dominant(At(end, kWidth, 0.5f, -0.5f)), Colour::Yellow) << "a full turn later, as at the start";
}

// The plane is 2 by 1.5 at z = 4: it covers 0.45 of the half width and of the half height.
// Half a turn of heading later it shows its back, which reads upright from that side.
TEST_F(SceneEffectTest, PlaneOfDeplacement3DShowsTheFrameFromBothSides)
{
    for (const float progress : {0.0f, 0.5f}) {
        SCOPED_TRACE(progress);
        const std::vector<uint32_t> frame = Run(5002, progress);
        EXPECT_EQ(Dominant(At(frame, kWidth, -0.2f, 0.2f)), Colour::Red);
        EXPECT_EQ(Dominant(At(frame, kWidth, 0.2f, -0.2f)), Colour::Yellow);
        EXPECT_EQ(Dominant(At(frame, kWidth, 0.8f, 0.0f)), Colour::Dark);
    }
}

TEST_F(SceneEffectTest, SceneEffectsPlayTheirScenes)
{
    // The flag faces the camera from 2.3 units; the frame stands out against the dusk.
    const std::vector<uint32_t> flag = Run(5004, 0.5f, u"Effects\\Drapeau.afx");
    EXPECT_EQ(Dominant(At(flag, kWidth, -0.3f, 0.3f)), Colour::Red);
    EXPECT_EQ(Dominant(At(flag, kWidth, 0.3f, -0.3f)), Colour::Yellow);
    EXPECT_EQ(Dominant(At(flag, kWidth, 0.0f, 0.95f)), Colour::Dark);
    // The beating frame fills four fifths of the height.
    const std::vector<uint32_t> beat = Run(5005, 0.0f, u"Effects\\Battement.afx");
    EXPECT_EQ(Dominant(At(beat, kWidth, -0.4f, 0.4f)), Colour::Red);
    EXPECT_EQ(Dominant(At(beat, kWidth, 0.4f, -0.4f)), Colour::Yellow);
    EXPECT_EQ(Dominant(At(beat, kWidth, 0.0f, 0.97f)), Colour::Dark);
}

TEST_F(SceneEffectTest, MissingSceneOrUnknownIdPassesTheFrameThrough)
{
    const std::vector<uint32_t> input = QuadrantFrame(kWidth, kHeight);
    EXPECT_EQ(Run(5004, 0.5f, u"Effects\\Nothing.afx"), input);
    EXPECT_EQ(CreateClient(5001, 8, 8), nullptr);
    EXPECT_TRUE(IsContextReady()) << "an id without a client still starts the context";
}

TEST_F(SceneEffectTest, DurationsAndImageCountsOfSceneFiles)
{
    EXPECT_EQ(GetSceneDuration(u"Effects\\Drapeau.afx"), 12.0f);
    EXPECT_EQ(GetSceneDuration(u"Nothing.afx"), 0.0f);
    EXPECT_EQ(GetSceneImagesCount(u"Compositions\\Carousel.cpo3d"), 4);
    EXPECT_EQ(GetSceneImagesCount(u"Misc\\Cube.afx"), -1);
    EXPECT_EQ(GetSceneImagesCount(u"Nothing.afx"), 0);
}

// The transition scene puts the first input on the cube's front and the second on its
// right side: at 0 the first fills the frame, at 1 the second, halfway both show.
TEST_F(SceneEffectTest, TransitionMixesItsTwoInputs)
{
    std::unique_ptr<C4DTransform> client = CreateClient(20000, kWidth, kHeight);
    ASSERT_NE(client, nullptr);
    client->SetPath(u"Transitions\\Cube.afx");
    ASSERT_EQ(client->Init(), 1);
    std::vector<uint32_t> first = QuadrantFrame(kWidth, kHeight), second(size_t(kWidth * kHeight), 0xFF20A0F0u);
    std::vector<uint32_t> out(first.size());
    client->ProcessTransition(first.data(), second.data(), out.data(), 0.0f);
    EXPECT_LE(MeanDifference(out, first), 6.0);
    client->ProcessTransition(first.data(), second.data(), out.data(), 1.0f);
    EXPECT_LE(MeanDifference(out, second), 6.0);
    client->ProcessTransition(first.data(), second.data(), out.data(), 0.5f);
    // A quarter turn halfway: the first input's face turned towards the left, the
    // second's towards the right, meeting at the cube's edge in the middle.
    EXPECT_EQ(Dominant(At(out, kWidth, -0.6f, 0.2f)), Colour::Red);
    EXPECT_EQ(Dominant(At(out, kWidth, -0.2f, -0.2f)), Colour::Yellow);
    EXPECT_GT(MeanDifference(out, first), 20.0);
    const uint32_t right = At(out, kWidth, 0.3f, 0.0f);
    EXPECT_GT(int(right & 0xFF), int((right >> 16) & 0xFF) + 60) << "the second input's blue on the right";
}

// A lost device that can be reset: the next frame resets it on the way and comes out as
// before; a composition client counts the reset.
TEST_F(SceneEffectTest, LostDeviceKeepsFramesComing)
{
    EffectHarness harness(kWidth, kHeight);
    harness.setInput(QuadrantFrame(kWidth, kHeight));
    ASSERT_EQ(harness.select(5000, DefaultParams(harness.effect(), 5000)), S_OK);
    ASSERT_EQ(harness.setup(), S_OK);
    ASSERT_EQ(harness.execute(0.3f), S_OK);
    const std::vector<uint32_t> before = harness.output();

    std::unique_ptr<C4DTransform> anim = CreateClient(30000, kWidth, kHeight);
    ASSERT_NE(anim, nullptr);
    anim->SetPath(u"Compositions\\Carousel.cpo3d");
    ASSERT_EQ(anim->Init(), 1);
    auto& listener = static_cast<C4DAnim&>(*anim);
    EXPECT_EQ(listener.GetImageCount(), 4);
    EXPECT_FALSE(listener.NeedsReset());

    C4DContext::Instance()->Device()->GetDevice()->SimulateDeviceLoss(false);
    harness.markOutput(0xFF123456u);
    ASSERT_EQ(harness.execute(0.3f), S_OK);
    EXPECT_EQ(harness.output(), QuadrantFrame(kWidth, kHeight)) << "while lost, the frame passes";

    C4DContext::Instance()->Device()->GetDevice()->SimulateDeviceLoss(true);
    ASSERT_EQ(harness.execute(0.3f), S_OK);
    EXPECT_EQ(harness.output(), before);
    EXPECT_TRUE(listener.NeedsReset());
    listener.ClearReset();
    EXPECT_FALSE(listener.NeedsReset());
    listener.ClearReset();
    EXPECT_FALSE(listener.NeedsReset()) << "the counter stops at 0";
}

// Two editors' threads drive two effects at once: the bridge's lock takes turns between
// them, and each gets the frames it gets alone.
TEST_F(SceneEffectTest, TwoThreadsDriveTwoEffectsAtOnce)
{
    const float progresses[] = {0.1f, 0.35f, 0.6f, 0.85f};
    std::vector<std::vector<uint32_t>> alone[2];
    for (const float progress : progresses) {
        alone[0].push_back(Run(5000, progress));
        alone[1].push_back(Run(5004, progress, u"Effects\\Drapeau.afx"));
    }
    std::vector<std::vector<uint32_t>> together[2];
    std::thread cube([&] {
        for (int round = 0; round < 3; ++round)
            for (const float progress : progresses) together[0].push_back(Run(5000, progress));
    });
    for (int round = 0; round < 3; ++round)
        for (const float progress : progresses) together[1].push_back(Run(5004, progress, u"Effects\\Drapeau.afx"));
    cube.join();
    for (int effect = 0; effect < 2; ++effect)
        for (size_t i = 0; i < together[effect].size(); ++i)
            EXPECT_EQ(together[effect][i], alone[effect][i % 4]) << "effect " << effect << ", frame " << i;
}

}  // namespace
}  // namespace qx::test
