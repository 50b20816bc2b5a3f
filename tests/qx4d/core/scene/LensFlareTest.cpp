// Lens flares: what a block asks for and what it gets (textures, the default chain of
// reflections, distortion), how visible the flare is in front of or behind the camera, at
// the viewport's corner, by distance and behind an object, and where its quads land. The
// camera stands at z = -2 with the default field of view and aspect; lights stand at
// z = 8, ten units away.
#include "tests/qx4d/core/scene/FrameFixture.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>

namespace qx4d::test {
namespace {

constexpr const char* kDark = "BackdropColor 0 0 0\nCamera\n{\n  Position 0 0 -2\n}\n";

class LensFlareTest : public FrameTest {
protected:
    void SetUp() override
    {
        FrameTest::SetUp();
        if (IsSkipped()) return;
        for (const char* name : {"glow", "redglow", "circular", "6sided", "rainbowring", "ring2", "star_4"})
            White(std::string("LensFlare/") + name + ".dds");
    }
    /// A scene of the dark backdrop, the camera and a flare at `place` with `keys`.
    static std::string Flare(const std::string& place, const std::string& keys, const std::string& more = "")
    {
        return std::string(kDark) + more + "LensFlare\n{\n  Position " + place + "\n" + keys + "}\n";
    }
    LensFlare& TheFlare() { return *scene->lensFlares.at(0); }
    std::string TextureName(const ResourceHandle& handle)
    {
        const Texture* texture = renderer->GetTexture(handle);
        return texture ? std::string(texture->name.begin(), texture->name.end()) : std::string("(none)");
    }
    /// The world place at distance 10 that the camera sees at (nx, ny) of the frame.
    static std::string PlaceAt(double nx, double ny)
    {
        const double c = 1.0 / std::tan(double(std::bit_cast<float>(0x3F1B13ABu)) * 0.5);
        const double aspect = std::bit_cast<float>(0x3FAAAAABu);
        return std::to_string(nx * 10.0 * aspect / c) + " " + std::to_string(ny * 10.0 / c) + " 8";
    }
};

TEST_F(LensFlareTest, TheBlockLoadsWhatItsOptionsAskFor)
{
    Load(Flare("0 0 8", "  LensFlareOptions 16\n  FlareDistortFactor 3\n  FlareStarFilter 3\n"));
    LensFlare& flare = TheFlare();
    EXPECT_EQ(flare.distortFactor, 1.0f) << "kept only with option 0x40";
    ASSERT_EQ(flare.reflectionElements.size(), 16u) << "the default chain";
    EXPECT_EQ(flare.reflectionElements[0].shape, 1u) << "shape 5 drawn round without a polygon shape";
    EXPECT_EQ(flare.reflectionElements[15].shape, 8u);
    EXPECT_EQ(TextureName(flare.elementTextures[0]), "LensFlare\\circular.dds");
    EXPECT_TRUE(flare.elementTextures[1].IsNull()) << "no polygon element is left";
    EXPECT_EQ(TextureName(flare.elementTextures[2]), "LensFlare\\rainbowring.dds");
    EXPECT_EQ(TextureName(flare.starTexture), "LensFlare\\star_4.dds");
    EXPECT_TRUE(flare.glowTexture.IsNull());

    Load(Flare("0 0 8",
               "  LensFlareOptions 83\n  FlareDistortFactor 3\n  PolygonalElementShape 6\n"
               "  ElementDefinition 5 0.5 0.1 1 0 0\n  FlareStarFilter 11\n"));
    LensFlare& own = TheFlare();
    EXPECT_EQ(own.distortFactor, 3.0f);
    ASSERT_EQ(own.reflectionElements.size(), 1u);
    EXPECT_EQ(own.reflectionElements[0].shape, 5u);
    EXPECT_EQ(TextureName(own.elementTextures[1]), "LensFlare\\6sided.dds");
    EXPECT_EQ(TextureName(own.glowTexture), "LensFlare\\redglow.dds") << "without 0x20 the glow is red";
    EXPECT_EQ(TextureName(own.ringTexture), "LensFlare\\ring2.dds");
    EXPECT_TRUE(own.starTexture.IsNull()) << "filters beyond 10 load no star";
}

TEST_F(LensFlareTest, TheGlowStandsAtTheLightInItsColour)
{
    // At 0.12 of the half width: 35.8 pixels across, a glow of 5.1 pixels each way.
    auto frame = Frame(Flare("0.5 0 8", "  LensFlareOptions 1\n  FlareIntensity 0.1\n  LightColor 1 0.5 0\n"));
    EXPECT_EQ(At(frame, 36, 32), 0xFFFF8000u);
    EXPECT_EQ(At(frame, 31, 28), 0xFFFF8000u);
    EXPECT_EQ(At(frame, 43, 32), 0xFF000000u);
    EXPECT_EQ(At(frame, 28, 32), 0xFF000000u);
    // Dissolved, every quad is black.
    frame = Frame(
        Flare("0.5 0 8", "  LensFlareOptions 1\n  FlareIntensity 0.1\n  LightColor 1 0.5 0\n  FlareDissolve 1\n"));
    EXPECT_GT(TheFlare().visibility, 0.0f);
    EXPECT_EQ(At(frame, 36, 32), 0xFF000000u);
}

TEST_F(LensFlareTest, ALightBehindTheCameraDrawsNothing)
{
    const auto frame = Frame(Flare("0 0 -5", "  LensFlareOptions 1\n  FlareStarFilter 3\n"));
    EXPECT_EQ(TheFlare().visibility, 0.0f);
    EXPECT_EQ(std::count(frame.begin(), frame.end(), 0xFF000000u), ptrdiff_t(frame.size()));
}

TEST_F(LensFlareTest, TheViewportTestKeepsWhatOfTheSquareIsInside)
{
    Load(Flare(PlaceAt(-1.0, -1.0), "  LensFlareFade 4\n"));
    TheFlare().UpdateVisibility();
    EXPECT_FLOAT_EQ(TheFlare().visibility, 0.25f) << "81 of 324 pixels at the corner";
    EXPECT_NEAR(TheFlare().screenX, 0.0f, 0.01f);
    Load(Flare(PlaceAt(0.0, 0.0), "  LensFlareFade 4\n  FlareIntensity 0.8\n"));
    TheFlare().UpdateVisibility();
    EXPECT_FLOAT_EQ(TheFlare().visibility, 0.8f);
    Load(Flare(PlaceAt(1.5, 0.0), "  LensFlareFade 4\n"));
    TheFlare().UpdateVisibility();
    EXPECT_EQ(TheFlare().visibility, 0.0f);
    // Fading with distance: nominal 5 of 10 units keeps half.
    Load(Flare("0 0 8", "  LensFlareFade 2\n  FlareNominalDistance 5\n"));
    TheFlare().UpdateVisibility();
    EXPECT_FLOAT_EQ(TheFlare().visibility, 0.5f);
}

// The glow of a light at the centre fills the frame; a square moved in front of the light
// hides it from the occlusion query, and the glow goes out, even where the square isn't.
TEST_F(LensFlareTest, AFlareFadesWhenAnObjectMovesInFrontOfItsLight)
{
    tools::ObjectModel model;
    model.items.push_back(MeshItemModel("square", test::Square(0.2f, {1, 1, 1})));
    Save("square.qxo", model);
    const std::string flare = "  LensFlareOptions 33\n  LensFlareFade 12\n  LightColor 0.5 0.5 0.5\n";
    const auto beside = Frame(Flare("0 0 8", flare, "Object\n{\n  FileName square.qxo\n  Position 2 0 0\n}\n"));
    EXPECT_FLOAT_EQ(TheFlare().visibility, 1.0f) << "the whole point is seen";
    EXPECT_GT(Red(At(beside, 4, 4)), 100);
    const auto before = Frame(Flare("0 0 8", flare, "Object\n{\n  FileName square.qxo\n}\n"));
    EXPECT_EQ(TheFlare().visibility, 0.0f);
    EXPECT_EQ(At(before, 4, 4), 0xFF000000u);
    EXPECT_EQ(At(before, 32, 32), 0xFFFFFFFFu) << "the square itself";
}

TEST_F(LensFlareTest, ReflectionsLieOnTheLineThroughTheCentre)
{
    // A light at half the width right of the centre; an element at -1 mirrors it to the
    // left, 3.2 pixels each way.
    const auto frame = Frame(Flare(PlaceAt(0.5, 0.0), "  LensFlareOptions 16\n  ElementDefinition 0 -1 0.1 0 1 0\n"));
    EXPECT_EQ(At(frame, 16, 32), 0xFF00FF00u);
    EXPECT_EQ(At(frame, 48, 32), 0xFF000000u);
    EXPECT_EQ(At(frame, 21, 32), 0xFF000000u);
}

}  // namespace
}  // namespace qx4d::test
