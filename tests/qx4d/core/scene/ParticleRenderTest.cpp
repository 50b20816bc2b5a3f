// Particles in the frame: where a particle's quad lands for its size and the camera, its
// colour under each draw style, the order of alpha-blended particles, colour over life,
// spin, texture cells, and batches beyond one staging array. The camera stands at z = -2
// with the default field of view and aspect, so that at the origin a world unit spans
// 1.2 of the frame's half width and 1.6 of its half height: 38.4 and 51.2 pixels.
#include "tests/qx4d/core/scene/FrameFixture.h"

#include <gtest/gtest.h>

namespace qx4d::test {
namespace {

constexpr const char* kCamera = "Camera\n{\n  Position 0 0 -2\n}\n";

class ParticleRenderTest : public FrameTest {
protected:
    void SetUp() override
    {
        FrameTest::SetUp();
        if (!IsSkipped()) White("white.dds");
    }
    /// A scene with a grey backdrop, the camera and one particle system of the emitters
    /// whose bodies are given (their texture white unless they say otherwise).
    std::string Scene(const std::vector<std::string>& bodies, const std::string& backdrop = "0.5 0.5 0.5")
    {
        std::string list = "<ParticleSystem>";
        for (size_t i = 0; i < bodies.size(); ++i) {
            const std::string name = "e" + std::to_string(i) + ".xml";
            std::string body = bodies[i];
            if (body.find("<Texture") == std::string::npos)
                body = R"(<Texture Texture="white.dds" DrawStyle="Regular"/>)" + body;
            folder.Write("EMITTERS/p/" + name, "<UE2SpriteEmitter>" + body + "</UE2SpriteEmitter>");
            list += "<UE2SpriteEmitter Source=\"" + name + "\"/>";
        }
        folder.Write("EMITTERS/p/system.xml", list + "</ParticleSystem>");
        return "BackdropColor " + backdrop + "\n" + kCamera + "ParticleSystem\n{\n  FileName \"p\\system.xml\"\n}\n";
    }
};

/// One particle at the origin that lives long, of the colour and size given.
std::string Single(const std::string& colour, const std::string& size, const std::string& more = "",
                   const std::string& sizeKeys = "")
{
    return R"(<General MaxParticles="1"/><Time LifetimeRange="10 10"/><Size StartSizeRange=")" + size + "\" " +
           sizeKeys + R"(/><Color ColorMultiplierRange=")" + colour + R"("/>)" + more;
}

TEST_F(ParticleRenderTest, AQuadCoversItsSizeAroundItsPlaceFacingTheCamera)
{
    auto frame = Frame(Scene({Single("255 255, 0 0, 0 0", "0.25 0.25, 0.25 0.25")}, "0 0 1"));
    // Half a size of 0.25: 9.6 pixels across, 12.8 up.
    EXPECT_EQ(At(frame, 32, 32), 0xFFFF0000u);
    EXPECT_EQ(At(frame, 39, 32), 0xFFFF0000u);
    EXPECT_EQ(At(frame, 32, 21), 0xFFFF0000u);
    EXPECT_EQ(At(frame, 44, 32), 0xFF0000FFu);
    EXPECT_EQ(At(frame, 32, 17), 0xFF0000FFu);
    // Without a uniform size the second half-size stands for the height: 5.1 pixels.
    frame = Frame(Scene({Single("255 255, 0 0, 0 0", "0.25 0.25, 0.1 0.1", "", R"(UniformSize="false")")}, "0 0 1"));
    EXPECT_EQ(At(frame, 39, 32), 0xFFFF0000u);
    EXPECT_EQ(At(frame, 32, 29), 0xFFFF0000u);
    EXPECT_EQ(At(frame, 32, 24), 0xFF0000FFu);
}

TEST_F(ParticleRenderTest, EachDrawStyleBlendsAsItsNameSays)
{
    // A colour of (255, 64, 0) at half alpha over a backdrop of 127 grey.
    struct Case {
        const char* style;
        int r, g, b;
    };
    const Case cases[] = {
        {"Regular", 255, 64, 0},        {"AlphaBlend", 191, 95, 63},      {"Modulated", 127, 32, 0},
        {"Translucent", 255, 143, 127}, {"AlphaModulate", 254, 159, 127}, {"Darken", 0, 95, 127},
        {"Brighten", 255, 191, 127},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.style);
        const std::string texture = std::string(R"(<Texture Texture="white.dds" DrawStyle=")") + c.style + R"("/>)";
        const auto frame = Frame(Scene({texture + Single("255 255, 64 64, 0 0, 128 128", "0.3 0.3, 0.3 0.3")}));
        const uint32_t middle = At(frame, 32, 32);
        EXPECT_NEAR(Red(middle), c.r, 2);
        EXPECT_NEAR(Green(middle), c.g, 2);
        EXPECT_NEAR(Blue(middle), c.b, 2);
    }
    // The alpha test keeps what is above the reference only.
    const auto tested =
        Frame(Scene({Single("255 255, 64 64, 0 0, 128 128", "0.3 0.3, 0.3 0.3", R"(<Rendering AlphaRef="200"/>)")}));
    EXPECT_EQ(At(tested, 32, 32), 0xFF7F7F7Fu);
}

// The older particle flew towards the camera and turned red; the younger, green one stands
// behind it. Blending by alpha draws the far one first whatever the order of the list.
TEST_F(ParticleRenderTest, AlphaBlendedParticlesAreDrawnFarFirst)
{
    const std::string curves = R"(<Color UseColorScale="true">
        <ColorScaleR><Key Time="0" Value="0" Shape="Stepped"/><Key Time="0.05" Value="1" Shape="Stepped"/></ColorScaleR>
        <ColorScaleG><Key Time="0" Value="1" Shape="Stepped"/><Key Time="0.05" Value="0" Shape="Stepped"/></ColorScaleG>
        <ColorScaleA><Key Time="0" Value="1"/></ColorScaleA></Color>)";
    const std::string emitter = R"(<Texture Texture="white.dds" DrawStyle="AlphaBlend"/><Time LifetimeRange="10 10"/>
        <Movement StartVelocityRange="0 0, 0 0, -1 -1"/><Size StartSizeRange="0.1 0.1, 0.1 0.1"/>)";
    const auto frame = Frame(Scene({emitter + curves}), 2);
    ASSERT_EQ(scene->particleSystems.front()->instances.front()->Count(), 2);
    EXPECT_EQ(At(frame, 32, 32), 0xFFFF0000u) << "the near one on top";
    EXPECT_EQ(At(frame, 38, 32), 0xFFFF0000u) << "the near one is larger";
}

TEST_F(ParticleRenderTest, ColourFadesOutOverTheEndOfLife)
{
    // One particle of two seconds, born in the second half-second step and fading out from
    // the middle of its life: three steps later, at 1.5 seconds, it keeps half its colour.
    const auto frame = Frame(Scene({R"(<General MaxParticles="1"/><Time LifetimeRange="2 2"/>
        <Size StartSizeRange="0.3 0.3, 0.3 0.3"/><Color FadeOutStartTime="0.5" ColorMultiplierRange="255 255, 0 0, 0 0"/>)"},
                                   "0 0 0"),
                             5, 0.5f);
    EXPECT_NEAR(Red(At(frame, 32, 32)), 128, 1);
}

TEST_F(ParticleRenderTest, ASpinTurnsTheQuadAroundItsCentre)
{
    const std::string square = Single("255 255, 0 0, 0 0", "0.25 0.25, 0.25 0.25");
    auto frame = Frame(Scene({square}, "0 0 1"));
    EXPECT_EQ(At(frame, 40, 22), 0xFFFF0000u) << "a corner of the upright square";
    EXPECT_EQ(At(frame, 44, 32), 0xFF0000FFu);
    frame =
        Frame(Scene({square + R"(<Rotation SpinParticles="true" StartSpinRange="0.7853982 0.7853982"/>)"}, "0 0 1"));
    EXPECT_EQ(At(frame, 40, 22), 0xFF0000FFu) << "cut off by the turn";
    EXPECT_EQ(At(frame, 44, 32), 0xFFFF0000u) << "a corner turned onto the axis";
}

TEST_F(ParticleRenderTest, ACellOfTheTextureShowsOnTheQuad)
{
    // Four quadrants: red, green on top; blue, white below. Cell 2 is the lower left.
    std::vector<uint32_t> sheet(64);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            sheet[size_t(y * 8 + x)] =
                y < 4 ? (x < 4 ? 0xFFFF0000u : 0xFF00FF00u) : (x < 4 ? 0xFF0000FFu : 0xFFFFFFFFu);
    Picture("sheet.dds", 8, 8, sheet);
    const std::string texture = R"(<Texture Texture="sheet.dds" DrawStyle="Regular" USubdivisions="2" VSubdivisions="2"
        SubdivisionStart="2" SubdivisionEnd="2"/>)";
    const auto frame = Frame(Scene({texture + Single("255 255, 255 255, 255 255", "0.25 0.25, 0.25 0.25")}, "0 0 0"));
    EXPECT_EQ(At(frame, 32, 32), 0xFF0000FFu);
}

TEST_F(ParticleRenderTest, AParticleWithoutLifeDrawsNothing)
{
    // Born at the end of the step with a life of 0 and drawn before it ages: its share of
    // life, 0 / 0, is no number.
    const auto frame = Frame(Scene({R"(<General MaxParticles="1"/><Time LifetimeRange="0 0"/>
        <Size StartSizeRange="0.3 0.3, 0.3 0.3"/><Color FadeOutStartTime="0.5" UseColorScale="true"/>)"}));
    ASSERT_EQ(scene->particleSystems.front()->instances.front()->Count(), 1);
    EXPECT_EQ(At(frame, 32, 32), 0xFF7F7F7Fu);
}

TEST_F(ParticleRenderTest, MoreQuadsThanOneBatchAllReachTheCard)
{
    Frame(Scene({R"(<General MaxParticles="600" ParticlesPerSecond="600"/><Time LifetimeRange="10 10"/>
        <Location><BoxDomain Min="-1 -1 0" Max="1 1 0"/></Location><Size StartSizeRange="0.02 0.02, 0.02 0.02"/>)"}));
    ASSERT_EQ(scene->particleSystems.front()->instances.front()->Count(), 600);
    EXPECT_EQ(renderer->GetVertexBuffer(particles->vertexBuffer)->writePosition, 600u * 4 * sizeof(ParticleVertex))
        << "a staging array holds 250 quads: three flushes";
    EXPECT_EQ(particles->cursor, particles->begin);
}

}  // namespace
}  // namespace qx4d::test
