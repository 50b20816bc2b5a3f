// The pack's particle, flare and filter scenes through the effect host, as an editor
// plays them: frames one after another at 25 a second, the live frame on its screen, and
// what each scene adds told by colours where its geometry puts them. The filter chain is
// made for the size the player hands in.
#include "qx4d/core/device/GraphicsDevice.h"
#include "tests/host/EffectHarness.h"
#include "tests/wrap3d/SceneFixture.h"
#include "wrap3d/Context.h"

#include <gtest/gtest.h>

#include <functional>

namespace qx::test {
namespace {

constexpr LONG kWidth = 160, kHeight = 120;

class SceneContentTest : public SceneTest {
protected:
    /// Frames 0 to `frames` - 1 of effect `id` with `source`, progress running to `last`;
    /// the last frame.
    std::vector<uint32_t> Play(LONG id, std::u16string_view source, int frames, float last = 1.0f)
    {
        EffectHarness harness(kWidth, kHeight);
        harness.setInput(QuadrantFrame(kWidth, kHeight));
        EXPECT_EQ(harness.select(id, DefaultParams(harness.effect(), id)), S_OK);
        Bstr path(source);
        harness.effect().put_Source(path.get());
        EXPECT_EQ(harness.setup(), S_OK);
        for (int i = 0; i < frames; ++i)
            EXPECT_EQ(harness.execute(frames > 1 ? last * float(i) / float(frames - 1) : last), S_OK);
        return harness.output();
    }
};

/// Pixels of `frame` that pass `test`, outside the middle `inner` of the frame's height
/// and width (normalised), where the particle scenes' screen stands.
int CountAround(const std::vector<uint32_t>& frame, float inner, const std::function<bool(int, int, int)>& test)
{
    int count = 0;
    for (LONG y = 0; y < kHeight; ++y) {
        for (LONG x = 0; x < kWidth; ++x) {
            const float nx = (x + 0.5f) / kWidth * 2 - 1, ny = 1 - (y + 0.5f) / kHeight * 2;
            if (std::abs(nx) < inner && std::abs(ny) < inner) continue;
            const uint32_t p = frame[size_t(y * kWidth + x)];
            count += test(int((p >> 16) & 0xFF), int((p >> 8) & 0xFF), int(p & 0xFF));
        }
    }
    return count;
}

TEST_F(SceneContentTest, SparksFlyAroundTheScreen)
{
    const auto frame = Play(5003, u"Particles\\Sparks.afx", 25);
    EXPECT_EQ(Dominant(At(frame, kWidth, -0.4f, 0.4f)), Colour::Red) << "the live frame on its screen";
    const int warm = CountAround(frame, 0.72f, [](int r, int g, int b) { return r > 120 && r > b + 60 && g > b; });
    EXPECT_GT(warm, 15) << "hot sparks beside and below the screen";
}

TEST_F(SceneContentTest, SnowFallsInFrontOfTheScreen)
{
    const auto frame = Play(5003, u"Particles\\Neige.afx", 30);
    const int flakes = CountAround(
        frame, 0.72f, [](int r, int g, int b) { return r > 120 && std::abs(r - g) < 30 && std::abs(g - b) < 40; });
    EXPECT_GT(flakes, 40) << "pale flakes against the night";
    EXPECT_EQ(Dominant(At(frame, kWidth, 0.4f, -0.4f)), Colour::Yellow);
}

// The sun starts behind the frame and ends clear of its top edge, right of the middle.
TEST_F(SceneContentTest, TheSunsFlareShowsOnceItClearsTheFrame)
{
    const auto luminance = [](uint32_t p) { return int((p >> 16) & 0xFF) + int((p >> 8) & 0xFF) + int(p & 0xFF); };
    const auto hidden = Play(5004, u"Effects\\Soleil.afx", 1, 0.0f);
    const auto risen = Play(5004, u"Effects\\Soleil.afx", 1, 1.0f);
    EXPECT_GT(luminance(At(risen, kWidth, 0.49f, 0.67f)), luminance(At(hidden, kWidth, 0.49f, 0.67f)) + 150);
    EXPECT_GT(luminance(At(risen, kWidth, 0.49f, 0.67f)), 600) << "the glow at the sun";
}

TEST_F(SceneContentTest, FilterScenesChangeTheFrameAsTheirNamesSay)
{
    // Négatif: red becomes cyan, yellow becomes blue.
    const auto negative = Play(5004, u"Effects\\Negatif.afx", 1, 0.5f);
    const uint32_t cyan = At(negative, kWidth, -0.5f, 0.5f), blue = At(negative, kWidth, 0.5f, -0.5f);
    EXPECT_LT(int((cyan >> 16) & 0xFF), 60);
    EXPECT_GT(int(cyan & 0xFF), 150);
    EXPECT_EQ(Dominant(blue), Colour::Blue);
    // Sépia: every tone warm, red at least green at least blue.
    const auto sepia = Play(5004, u"Effects\\Sepia.afx", 1, 0.5f);
    for (const auto& [x, y] : {std::pair{-0.5f, 0.5f}, {0.5f, 0.5f}, {-0.5f, -0.5f}, {0.5f, -0.5f}}) {
        const uint32_t p = At(sepia, kWidth, x, y);
        EXPECT_GE((p >> 16) & 0xFF, (p >> 8) & 0xFF);
        EXPECT_GT((p >> 8) & 0xFF, p & 0xFF);
    }
    // Tourbillon: a full turn at the middle halfway, none at the start.
    const auto straight = Play(5004, u"Effects\\Tourbillon.afx", 1, 0.0f);
    const auto twirled = Play(5004, u"Effects\\Tourbillon.afx", 1, 0.5f);
    EXPECT_GT(MeanDifference(twirled, straight), 15.0);
    EXPECT_EQ(Dominant(At(straight, kWidth, -0.5f, 0.5f)), Colour::Red);
    // Éclat, the same view as the untwirled frame: the bright yellow quadrant glows into
    // the green one above it; the dim red one gets no glow of its own.
    const auto bloom = Play(5004, u"Effects\\Eclat.afx", 1, 0.5f);
    const uint32_t nearYellow = At(bloom, kWidth, 0.5f, 0.04f), plainGreen = At(straight, kWidth, 0.5f, 0.04f);
    EXPECT_GT(int((nearYellow >> 16) & 0xFF), int((plainGreen >> 16) & 0xFF) + 25);
    EXPECT_LE(std::abs(int((At(bloom, kWidth, -0.5f, 0.5f) >> 8) & 0xFF) -
                       int((At(straight, kWidth, -0.5f, 0.5f) >> 8) & 0xFF)),
              6);
}

// A device lost and reset between frames: the filter chain's targets, the bloom's levels
// and the flare's effects come back with it, and the next frames are as before.
TEST_F(SceneContentTest, FiltersAndFlaresComeBackWithAResetDevice)
{
    for (const char16_t* source : {u"Effects\\Eclat.afx", u"Effects\\Soleil.afx"}) {
        EffectHarness harness(kWidth, kHeight);
        harness.setInput(QuadrantFrame(kWidth, kHeight));
        ASSERT_EQ(harness.select(5004, DefaultParams(harness.effect(), 5004)), S_OK);
        Bstr path(source);
        harness.effect().put_Source(path.get());
        ASSERT_EQ(harness.setup(), S_OK);
        ASSERT_EQ(harness.execute(1.0f), S_OK);
        const std::vector<uint32_t> before = harness.output();
        C4DContext::Instance()->Device()->GetDevice()->SimulateDeviceLoss(true);
        ASSERT_EQ(harness.execute(1.0f), S_OK);
        EXPECT_LE(MeanDifference(harness.output(), before), 0.5);
    }
}

}  // namespace
}  // namespace qx::test
