// Emitter files as the particle engine reads them: the defaults of a file that says
// nothing, the value forms and their separators, the format's odd keys, the table of
// texture cells and its default curve, and strings, counts and names that a careless or
// hostile file may hold.
#include "qx4d/content/UE2SpriteEmitter.h"
#include "qx4d/core/FileManager.h"
#include "qx4d/core/XmlDocument.h"
#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

#include <bit>
#include <string>

namespace qx4d::test {
namespace {

/// The record that `xml` describes.
std::unique_ptr<UE2SpriteEmitter> Read(const std::string& xml)
{
    XmlDocument document;
    EXPECT_TRUE(document.Parse(bytesOf(xml), int64_t(xml.size()))) << xml;
    return UE2SpriteEmitter::Read(document.GetRoot());
}

/// A record from one element of `name` with the attributes `attributes` and `inner` text.
std::unique_ptr<UE2SpriteEmitter> ReadElement(const std::string& name, const std::string& attributes,
                                              const std::string& inner = "")
{
    return Read("<UE2SpriteEmitter><" + name + " " + attributes + ">" + inner + "</" + name + "></UE2SpriteEmitter>");
}

float At(Envelope& curve, float t)
{
    float value = -1.0f;
    curve.Evaluate(t, &value);
    return value;
}

TEST(EmitterReadTest, AFileThatSaysNothingGivesTheDefaults)
{
    const auto d = Read("<UE2SpriteEmitter/>");
    EXPECT_EQ(d->maxParticles, 100);
    EXPECT_EQ(d->particlesPerSecond, 1.0f);
    EXPECT_EQ(d->lifetimeRange.min, 4.0f);
    EXPECT_EQ(d->lifetimeRange.max, 4.0f);
    EXPECT_EQ(d->drawStyle, UE2SpriteEmitter::Brighten);
    EXPECT_EQ(d->deathEmitterFirst, -1);
    EXPECT_EQ(std::bit_cast<uint32_t>(d->clampVelocityMax), 0x4CBEBC20u);
    EXPECT_TRUE(d->uniformSize);
    EXPECT_EQ(d->startSizeRange[1].max, 1.0f);
    for (const ChannelRange& channel : d->colorMultiplier) {
        EXPECT_EQ(channel.base, 255);
        EXPECT_EQ(channel.span, 1);
    }
    EXPECT_EQ(d->revolutionsPerSecondRange[2].max, 1.0f);
    EXPECT_EQ(d->coordinateSpace, 2);
    EXPECT_TRUE(d->alphaTest);
    EXPECT_FALSE(d->zWrite);
    // One cell, the whole texture, and a cell curve of one stepped key of value 0.
    ASSERT_EQ(d->SubdivisionCount(), 1u);
    EXPECT_EQ(d->subdivisionEnd, 0);
    EXPECT_EQ(d->subdivisions[0].corners, (std::array<float, 8>{0, 0, 1, 0, 1, 1, 0, 1}));
    EXPECT_EQ(d->subdivisionScale.KeyCount(), 1u);
    // Size and colour curves without a file element have one key of 0.
    EXPECT_EQ(d->sizeScaleY.KeyCount(), 1u);
    EXPECT_EQ(At(d->colorScale[3], 0.5f), 0.0f);
    Float3 origin{1, 1, 1};
    d->domain->Generate(origin);
    EXPECT_EQ(origin, (Float3{0, 0, 0})) << "a point at the origin";
}

TEST(EmitterReadTest, RangesSplitOnCommasBlanksAndParentheses)
{
    for (const char* form : {"1 2", "1, 2", "(1, 2)", " ( 1 ,2 ) "}) {
        SCOPED_TRACE(form);
        const auto d = ReadElement("Time", std::string("LifetimeRange=\"") + form + "\"");
        EXPECT_EQ(d->lifetimeRange.min, 1.0f);
        EXPECT_EQ(d->lifetimeRange.max, 2.0f);
    }
    const auto movement = ReadElement("Movement", R"(StartVelocityRange="0,1,0,1,0,1" Acceleration="0.5 -9.8  2")");
    EXPECT_EQ(movement->startVelocityRange[2].max, 1.0f);
    EXPECT_EQ(movement->acceleration, (Float3{0.5f, -9.8f, 2.0f}));
    const auto size = ReadElement("Size", R"x(StartSizeRange="(0.5, 1), (2, 3)")x");
    EXPECT_EQ(size->startSizeRange[0].min, 0.5f);
    EXPECT_EQ(size->startSizeRange[1].max, 3.0f);
}

TEST(EmitterReadTest, StringsShortOfTheirNumbersLeaveTheValue)
{
    const auto d = Read(R"(<UE2SpriteEmitter>
        <Time LifetimeRange="7" SpawnFromOtherEmitterWhenDie="2, 3"/>
        <Movement StartVelocityRange="1 2 3 4 5" Acceleration="1,2,3"/>
        <Color ColorMultiplierRange="10 20, 30 40" FadeInFactor="0.5 0.5"/>
        <Collision MaxCollisions="9"/>
    </UE2SpriteEmitter>)");
    EXPECT_EQ(d->lifetimeRange.max, 4.0f);
    EXPECT_EQ(d->deathEmitterFirst, -1);
    EXPECT_EQ(d->startVelocityRange[0].max, 0.0f);
    EXPECT_EQ(d->acceleration, (Float3{0, 0, 0})) << "a vector splits on a blank alone";
    EXPECT_EQ(d->colorMultiplier[0].base, 255);
    EXPECT_EQ(d->fadeInFactor[0], 1.0f);
    EXPECT_EQ(d->maxCollisions.span, 0);
}

TEST(EmitterReadTest, ColourAndByteRangesStoreBaseAndSpan)
{
    const auto rgb = ReadElement("Color", R"(ColorMultiplierRange="200 100, 0 255, 7 7")");
    EXPECT_EQ(rgb->colorMultiplier[0].base, 100);
    EXPECT_EQ(rgb->colorMultiplier[0].span, 101);
    EXPECT_EQ(rgb->colorMultiplier[1].span, 256);
    EXPECT_EQ(rgb->colorMultiplier[2].span, 1);
    EXPECT_EQ(rgb->colorMultiplier[3].base, 255) << "no alpha pair: opaque";
    const auto rgba = ReadElement("Color", R"(ColorMultiplierRange="1 2, 3 4, 5 6, 64 0")");
    EXPECT_EQ(rgba->colorMultiplier[3].base, 0);
    EXPECT_EQ(rgba->colorMultiplier[3].span, 65);
    const auto collisions = ReadElement("Collision", R"(MaxCollisions="5 2")");
    EXPECT_EQ(collisions->maxCollisions.min, 2);
    EXPECT_EQ(collisions->maxCollisions.span, 3);
}

TEST(EmitterReadTest, TheFormatsOddKeysStandAsTheyAre)
{
    // "UseSubdivisionScale" writes its number into the first cell.
    EXPECT_EQ(ReadElement("Texture", R"(SubdivisionStart="3" UseSubdivisionScale="true")")->subdivisionStart, 0);
    EXPECT_EQ(ReadElement("Texture", R"(UseSubdivisionScale="1")")->subdivisionStart, 1);
    // "StartLocation" of older files switches the uniform size, "StartSize" sets its range.
    const auto location = ReadElement("Location", R"(StartLocation="false" StartSize="2 3, 4 5")");
    EXPECT_FALSE(location->uniformSize);
    EXPECT_EQ(location->startSizeRange[1].min, 4.0f);
    EXPECT_EQ(ReadElement("Collision", R"(ExtentMultiplie="2 3 4")")->extentMultiplier, (Float3{2, 3, 4}));
    EXPECT_EQ(ReadElement("Collision", R"(ExtentMultiplier="2 3 4")")->extentMultiplier, (Float3{1, 1, 1}));
    // One number of "ClampVelocity" changes only the least speed.
    const auto clamp = ReadElement("Movement", R"(ClampVelocity="0.5")");
    EXPECT_EQ(clamp->clampVelocityMin, 0.5f);
    EXPECT_EQ(std::bit_cast<uint32_t>(clamp->clampVelocityMax), 0x4CBEBC20u);
    EXPECT_EQ(ReadElement("Movement", R"(ClampVelocity="0.5 3")")->clampVelocityMax, 3.0f);
    EXPECT_EQ(ReadElement("Rendering", R"(AlphaRef="300")")->alphaRef, 44) << "the low 8 bits";
}

TEST(EmitterReadTest, AttributeNamesIgnoreCaseElementAndWordNamesDoNot)
{
    const auto d = Read(R"(<UE2SpriteEmitter>
        <General maxparticles="7" PARTICLESPERSECOND="3"/>
        <general MaxParticles="9"/>
        <Texture DrawStyle="AlphaBlend" drawstyle="darken"/>
        <Rotation SpinCCWorCW="0.2" spinccworcw="0.9"/>
    </UE2SpriteEmitter>)");
    EXPECT_EQ(d->maxParticles, 7);
    EXPECT_EQ(d->particlesPerSecond, 3.0f);
    EXPECT_EQ(d->drawStyle, UE2SpriteEmitter::AlphaBlend) << "an unknown word keeps what was there";
    EXPECT_EQ(d->spinCCWorCW, 0.9f) << "keys in file order: the last one stands";
    EXPECT_EQ(Read(R"(<r><General MaxParticles="5"/><General MaxParticles="6"/></r>)")->maxParticles, 5)
        << "the first element of a name";
}

TEST(EmitterReadTest, CellsRunRowByRowFromTheTopWithACurveOverTheChosenRange)
{
    const auto d = ReadElement("Texture", R"(USubdivisions="2" VSubdivisions="2" SubdivisionStart="1")");
    ASSERT_EQ(d->SubdivisionCount(), 4u);
    EXPECT_EQ(d->subdivisionEnd, 3);
    EXPECT_EQ(d->subdivisions[1].corners, (std::array<float, 8>{0.5f, 0, 1, 0, 1, 0.5f, 0.5f, 0.5f}));
    EXPECT_EQ(d->subdivisions[2].corners, (std::array<float, 8>{0, 0.5f, 0.5f, 0.5f, 0.5f, 1, 0, 1}));
    // Three stepped keys for cells 1 to 3, valued from 0: key i is i at i / 3.
    ASSERT_EQ(d->subdivisionScale.KeyCount(), 3u);
    EXPECT_EQ(d->subdivisionScale.Key(2).value, 2.0f);
    EXPECT_FLOAT_EQ(d->subdivisionScale.Key(2).time, 2.0f / 3.0f);
    EXPECT_EQ(d->subdivisionScale.Key(1).shape, Key::ShapeStepped);
    const auto given = ReadElement("Texture", R"(USubdivisions="4" SubdivisionEnd="1" VSubdivisions="0")");
    EXPECT_EQ(given->SubdivisionCount(), 4u) << "a count below 2 is one";
    EXPECT_EQ(given->subdivisionEnd, 1);
    EXPECT_EQ(given->SubdivisionAt(-5).corners[0], 0.0f) << "indexes outside the table hold to its ends";
    EXPECT_EQ(given->SubdivisionAt(99).corners[0], 0.75f);
}

TEST(EmitterReadTest, CurvesTakeTheirRepeatsFromTheCellCurvesSetting)
{
    const std::string curve = R"(<Key Time="0" Value="1" Shape="Linear"/><Key Time="1" Value="3" Shape="Linear"/>)";
    const auto still = ReadElement("Size", "", "<SizeScaleX>" + curve + "</SizeScaleX>");
    EXPECT_EQ(At(still->sizeScaleX, 0.5f), 2.0f);
    EXPECT_EQ(At(still->sizeScaleX, 2.0f), 3.0f) << "held after the last key";
    // With repeats of the cell curve every curve repeats, squeezed by its own count.
    const auto d = Read(R"(<UE2SpriteEmitter><Texture SubdivisionScaleRepeats="1"/>
        <Color ColorScaleRepeats="1"><ColorScaleR>)" +
                        curve + R"(</ColorScaleR></Color></UE2SpriteEmitter>)");
    EXPECT_EQ(d->colorScale[0].GetPostBehavior(), Envelope::BehaviorRepeat);
    EXPECT_EQ(d->colorScale[0].LastKey().time, 0.5f);
}

TEST(EmitterReadTest, DomainsAndCollisionPlanes)
{
    const auto box =
        ReadElement("Location", "", R"x(<PointDomain Center="1 1 1"/><BoxDomain Min="(0,1,2)" Max="1, 3, 2"/>)x");
    const auto* domain = dynamic_cast<const BoxDomain*>(box->domain.get());
    ASSERT_NE(domain, nullptr) << "the last domain stands";
    EXPECT_EQ(domain->size, (Float3{1, 2, 0}));
    const auto sphere =
        ReadElement("Location", "", R"(<SphereDomain Center="0 0 0" InnerRadius="2" OuterRadius="2"/>)");
    EXPECT_TRUE(dynamic_cast<const SphereDomain&>(*sphere->domain).isShell);
    Float3 onShell;
    sphere->domain->Generate(onShell);
    EXPECT_NEAR(std::hypot(onShell[0], onShell[1], onShell[2]), 2.0, 1e-5);
    EXPECT_TRUE(
        dynamic_cast<const PointDomain*>(ReadElement("Location", "", R"(<boxdomain Max="1 1 1"/>)")->domain.get()))
        << "domain names match exactly";
    // Four values in attribute order, whatever their names; missing ones keep 0, 1, 0, 0.
    const auto planes = ReadElement("Collision", "", R"(<Floor a="0" b="0" c="1" d="-2"/><Wall nx="1"/>)");
    ASSERT_EQ(planes->collisionPlanes.size(), 2u);
    EXPECT_EQ(planes->collisionPlanes[0].normal, (Float3{0, 0, 1}));
    EXPECT_EQ(planes->collisionPlanes[0].d, -2.0f);
    EXPECT_EQ(planes->collisionPlanes[1].normal, (Float3{1, 1, 0}));
    EXPECT_EQ(planes->collisionPlanes[0].Distance({0, 0, 5}), 3.0f);
}

TEST(EmitterReadTest, CountsThatWouldExhaustMemoryAreBounded)
{
    std::string planes;
    for (int i = 0; i < 100; ++i) planes += "<P/>";
    const auto d = Read(R"(<UE2SpriteEmitter><General MaxParticles="2000000000"/>
        <Texture USubdivisions="100000" VSubdivisions="100000" SubdivisionStart="-2147483648" SubdivisionEnd="2147483647"/>
        <Collision>)" + planes +
                        R"(</Collision></UE2SpriteEmitter>)");
    EXPECT_EQ(d->maxParticles, UE2SpriteEmitter::kMaxParticlesCap);
    EXPECT_EQ(d->SubdivisionCount(),
              size_t(UE2SpriteEmitter::kMaxSubdivisionsPerAxis * UE2SpriteEmitter::kMaxSubdivisionsPerAxis));
    EXPECT_LE(d->subdivisionScale.KeyCount(), d->SubdivisionCount());
    EXPECT_EQ(d->collisionPlanes.size(), UE2SpriteEmitter::kMaxCollisionPlanes);
    EXPECT_EQ(ReadElement("General", R"(MaxParticles="-5")")->maxParticles, 0);
}

TEST(EmitterReadTest, LoadReadsThroughTheEmittersFolder)
{
    TempFolder folder;
    FileManager files;
    ASSERT_TRUE(files.Mount(u"EMITTERS", folder.Wide()));
    folder.Write("Fire/Flame.xml", R"(<UE2SpriteEmitter><General Name="Flame" MaxParticles="12"/></UE2SpriteEmitter>)");
    const auto flame = UE2SpriteEmitter::Load(u"Fire\\Flame.xml");
    ASSERT_NE(flame, nullptr);
    EXPECT_EQ(flame->name, u"Flame");
    EXPECT_EQ(flame->maxParticles, 12);
    EXPECT_EQ(UE2SpriteEmitter::Load(u"Fire\\Nothing.xml"), nullptr);
    folder.Write("Broken.xml", "<UE2SpriteEmitter><General></Time>");
    EXPECT_EQ(UE2SpriteEmitter::Load(u"Broken.xml"), nullptr) << "malformed XML can't be read";
}

}  // namespace
}  // namespace qx4d::test
