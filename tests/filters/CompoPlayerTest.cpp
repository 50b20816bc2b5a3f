// The 2D composition player: entities where their transforms put them in a 160 by 120
// frame (the composition's space maps x to 80 + 40 x and y to 60 - 40 y), the fits of
// pictures into their places, transparency, and files that are damaged or lie.
#include "filters/CompoPlayer.h"
#include "tests/filters/CompoFiles.h"

#include <gtest/gtest.h>

#include <memory>

namespace qx::test {
namespace {

constexpr int kWidth = 160, kHeight = 120;
constexpr uint32_t kRed = 0xFF0000, kGreen = 0x00FF00, kBlue = 0x0000FF, kBlack = 0x000000;

/// An envelope line of two linear keys, from `from` at 0 to `to` at 10 seconds.
std::string Ramp(float from, float to)
{
    return "{ X 2 Key " + std::to_string(from) + " 0 3 0 0 0 0 0 0 Key " + std::to_string(to) +
           " 10 3 0 0 0 0 0 0 Behaviors 1 1 }";
}

class CompoPlayerTest : public ::testing::Test {
protected:
    /// A player of `composition` with the pictures given, as the source filter makes it.
    std::unique_ptr<qx3d::CompoPlayer> Play(const std::string& composition, std::vector<std::u16string> pictures,
                                            int32_t stretch = 0)
    {
        auto player = std::make_unique<qx3d::CompoPlayer>();
        EXPECT_EQ(player->Init(int32_t(pictures.size()), pictures.data(), kWidth, kHeight, 4.0f / 3.0f, stretch), 1);
        EXPECT_EQ(player->Load(files.text("compo.txt", composition)), 1);
        return player;
    }
    /// The frame at `progress`, over opaque black.
    std::unique_ptr<draw2d::Bitmap> Frame(qx3d::CompoPlayer& player, float progress)
    {
        auto frame = std::make_unique<draw2d::Bitmap>(kWidth, kHeight);
        {
            draw2d::Graphics graphics(*frame);
            graphics.clear(draw2d::Color{0xFF000000u});
            player.Render(progress, graphics);
        }
        return frame;
    }
    static uint32_t At(const draw2d::Bitmap& frame, int x, int y) { return Rgb(frame.row(y)[size_t(x)]); }

    std::u16string Red() { return files.picture("red.png", 20, 20, {kRed}); }

    CompoFolder files;
};

// A picture 1 unit square (40 pixels) moves from x -1 to 1 over ten seconds at y 0.5.
TEST_F(CompoPlayerTest, EnvelopesMoveAPictureOverTheDuration)
{
    auto player = Play("Duration 10\nImage\n{\n  Name \"A\"\n  Position (envelope)\n  " + Ramp(-1, 1) +
                           "\n  { Y 1 Key 0.5 0 3 0 0 0 0 0 0 Behaviors 1 1 }\n}\n",
                       {Red()});
    EXPECT_FLOAT_EQ(player->Duration(), 10.0f);
    const auto start = Frame(*player, 0.0f);
    EXPECT_EQ(At(*start, 40, 40), kRed);
    EXPECT_EQ(At(*start, 22, 22), kRed);
    EXPECT_EQ(At(*start, 17, 40), kBlack) << "the left edge lies at x 20";
    EXPECT_EQ(At(*start, 40, 63), kBlack) << "the bottom edge lies at y 60";
    EXPECT_EQ(At(*start, 80, 40), kBlack);
    const auto middle = Frame(*player, 0.5f);
    EXPECT_EQ(At(*middle, 80, 40), kRed);
    EXPECT_EQ(At(*middle, 40, 40), kBlack);
    const auto end = Frame(*player, 1.0f);
    EXPECT_EQ(At(*end, 120, 40), kRed);
    // Playing backwards gives the same frame again: nothing is kept between frames.
    const auto again = Frame(*player, 0.0f);
    EXPECT_EQ(At(*again, 40, 40), kRed);
    EXPECT_EQ(At(*again, 120, 40), kBlack);
}

// A child half a unit above its parent; the parent at x 1, turned a quarter clockwise,
// carries it to its right: the child's centre lands at (1.5, 0), pixel (140, 60).
TEST_F(CompoPlayerTest, ChildrenFollowTheirParentsTurn)
{
    auto player = Play(
        "Duration 1\n"
        "Image\n{\n  Name \"Child\"\n  Parent \"Pivot\"\n  Size 0.5 0.5\n  Position 0 0.5\n}\n"
        "Null\n{\n  Name \"Pivot\"\n  Position 1 0\n  Rotation 1.5707964\n}\n",
        {Red()});
    // The parent comes later in the list: the first frame uses its matrix as it was.
    Frame(*player, 0.0f);
    const auto frame = Frame(*player, 0.0f);
    EXPECT_EQ(At(*frame, 140, 60), kRed);
    EXPECT_EQ(At(*frame, 120, 40), kBlack) << "where the child would stand without the turn";
}

// Scale and pivot: the pivot shifts the picture in its own units before it is scaled.
TEST_F(CompoPlayerTest, PivotShiftsBeforeTheScale)
{
    auto player = Play("Duration 1\nImage\n{\n  Name \"P\"\n  Size 0.5 0.5\n  Scale 2 2\n  Pivot 0.5 0\n}\n", {Red()});
    const auto frame = Frame(*player, 0.0f);
    // Centre at (0.5 * 2, 0) = (1, 0): pixel (120, 60), 40 pixels wide.
    EXPECT_EQ(At(*frame, 120, 60), kRed);
    EXPECT_EQ(At(*frame, 102, 60), kRed);
    EXPECT_EQ(At(*frame, 96, 60), kBlack);
}

// An entity with neither a name nor a parent name finds itself as the first entity
// whose name equals its (empty) parent name: it is its own parent, and its transform
// applies twice. Position 0.5 lands at 1: pixel 120.
TEST_F(CompoPlayerTest, UnnamedEntityIsItsOwnParent)
{
    auto player = Play("Duration 1\nImage\n{\n  Size 0.25 0.25\n  Position 0.5 0\n}\n", {Red()});
    ASSERT_EQ(player->Entities().size(), 1u);
    EXPECT_EQ(player->Entities()[0]->parent, player->Entities()[0].get());
    const auto frame = Frame(*player, 0.0f);
    EXPECT_EQ(At(*frame, 120, 60), kRed);
    EXPECT_EQ(At(*frame, 100, 60), kBlack);
}

TEST_F(CompoPlayerTest, TransparencyFadesAndHidesAtItsThresholds)
{
    const auto redAt = [&](const std::string& transparency) {
        auto player =
            Play("Duration 1\nImage\n{\n  Name \"T\"\n  Size 4 3\n  Transparency " + transparency + "\n}\n", {Red()});
        return int(At(*Frame(*player, 0.0f), 80, 60) >> 16);
    };
    EXPECT_EQ(redAt("0"), 255);
    EXPECT_EQ(redAt("0.005"), 255);
    EXPECT_NEAR(redAt("0.5"), 128, 2);
    EXPECT_NEAR(redAt("0.99"), 3, 2);
    EXPECT_EQ(redAt("0.995"), 0);
}

// A picture twice as wide as high, green | red red | blue, in a 1 by 1 place.
TEST_F(CompoPlayerTest, StretchModesFitThePicture)
{
    const std::u16string bands = files.picture("bands.png", 40, 20, {kGreen, kRed, kRed, kBlue});
    const std::string composition = "Duration 1\nImage\n{\n  Name \"S\"\n  Size 1 1\n}\n";
    const auto stretched = Frame(*Play(composition, {bands}, 0), 0.0f);
    EXPECT_EQ(At(*stretched, 63, 60), kGreen);
    EXPECT_EQ(At(*stretched, 97, 60), kBlue);
    EXPECT_EQ(At(*stretched, 80, 43), kRed) << "stretched to the whole height";

    const auto inside = Frame(*Play(composition, {bands}, 1), 0.0f);
    EXPECT_EQ(At(*inside, 63, 60), kGreen);
    EXPECT_EQ(At(*inside, 80, 43), kBlack) << "half as high as wide: bars above and below";
    EXPECT_EQ(At(*inside, 80, 52), kRed);

    const auto cropped = Frame(*Play(composition, {bands}, 2), 0.0f);
    EXPECT_EQ(At(*cropped, 63, 60), kRed) << "the outer quarters are cut";
    EXPECT_EQ(At(*cropped, 97, 60), kRed);
    EXPECT_EQ(At(*cropped, 80, 43), kRed);
}

// Three places and two pictures: the third place takes the first picture again. Props
// keep their own pictures.
TEST_F(CompoPlayerTest, PicturesRepeatOverThePlaces)
{
    const std::u16string green = files.picture("green.png", 8, 8, {kGreen});
    const std::u16string blue = files.picture("blue.png", 8, 8, {kBlue});
    const std::string prop =
        "Prop\n{\n  Name \"4\"\n  FileName \"" + files.path("blue.png") + "\"\n  Position 0 -1\n}\n";
    auto player = Play(
        "Duration 1\nImage\n{\n  Name \"1\"\n  Position -1 1\n}\nImage\n{\n  Name \"2\"\n"
        "  Position 0 1\n}\nImage\n{\n  Name \"3\"\n  Position 1 1\n}\n" +
            prop,
        {Red(), green});
    const auto frame = Frame(*player, 0.0f);
    EXPECT_EQ(At(*frame, 40, 20), kRed);
    EXPECT_EQ(At(*frame, 80, 20), kGreen);
    EXPECT_EQ(At(*frame, 120, 20), kRed);
    EXPECT_EQ(At(*frame, 80, 100), kBlue);
}

TEST_F(CompoPlayerTest, CountsAndDurationFromTheFile)
{
    const std::u16string file =
        files.text("count.txt", "Image\n{\n}\nDuration 7.5\nImage\n{\n  Image inside a block counts too\n}\n");
    EXPECT_EQ(qx3d::CompoPlayer::GetImagesCount(file), 3);
    EXPECT_FLOAT_EQ(qx3d::CompoPlayer::GetDuration(file), 7.5f);
    EXPECT_EQ(qx3d::CompoPlayer::GetImagesCount(files.widePath("missing.txt")), -1);
    EXPECT_FLOAT_EQ(qx3d::CompoPlayer::GetDuration(files.widePath("missing.txt")), -1.0f);
    EXPECT_FLOAT_EQ(qx3d::CompoPlayer::GetDuration(files.text("none.txt", "Image\n{\n}\n")), -1.0f);
}

TEST_F(CompoPlayerTest, ReadsUtf16FilesByTheirMark)
{
    const std::string text = "Duration 4\r\nImage\r\n{\r\n  Name \"W\"\r\n  Size 4 3\r\n}\r\n";
    std::string utf16le = "\xFF\xFE";
    for (const char c : text) utf16le += std::string{c, '\0'};
    const std::u16string file = files.text("wide.txt", utf16le);
    EXPECT_FLOAT_EQ(qx3d::CompoPlayer::GetDuration(file), 4.0f);
    qx3d::CompoPlayer player;
    const std::u16string red = Red();
    player.Init(1, &red, kWidth, kHeight, 4.0f / 3.0f, 0);
    ASSERT_EQ(player.Load(file), 1);
    EXPECT_EQ(At(*Frame(player, 0.0f), 10, 10), kRed);
}

TEST_F(CompoPlayerTest, InitTakesPicturesOnce)
{
    qx3d::CompoPlayer player;
    const std::u16string picture = u"a.png";
    EXPECT_EQ(player.Init(0, &picture, kWidth, kHeight, 1.0f, 0), 0);
    EXPECT_EQ(player.Init(1, &picture, kWidth, kHeight, 1.0f, 0), 1);
    EXPECT_EQ(player.Init(1, &picture, kWidth, kHeight, 1.0f, 0), 0);
}

// Damaged and lying files give an empty or partial player, never a crash or a hang.
TEST_F(CompoPlayerTest, DamagedFilesGivePartialPlayers)
{
    std::vector<std::u16string> messages;
    qx3d::CompoPlayer::SetMessageHandler([&](std::u16string_view text) { messages.emplace_back(text); });
    const std::u16string notAPicture = files.text("fake.png", "this is no picture");
    const std::string cases[] = {
        // pictures that are missing or do not decode
        "Duration 1\nImage\n{\n  Size 4 3\n}\nProp\n{\n  FileName \"" + files.path("nothing.png") + "\"\n}\n",
        // unknown kinds and keys
        "Duration 1\nSprite\n{\n  Size 4 3\n}\nImage\n{\n  Wobble 3\n  Size 1 1\n}\n",
        // an envelope cut short, a key count that lies
        "Duration 1\nImage\n{\n  Position (envelope)\n  { X 2000000000 Key 1 0 3",
        // parents that name each other
        "Duration 1\nNull\n{\n  Name \"A\"\n  Parent \"B\"\n  Rotation 1\n}\nImage\n{\n  Name \"B\"\n"
        "  Parent \"A\"\n  Position 0.1 0\n}\n",
        // a modifier this player has no handler for
        "Duration 1\nImage\n{\n  Rotation (envelope)\n  { R 1 Key 0 0 3 0 0 0 0 0 0 Behaviors 1 1 \\ "
        "\"Other\" 1 2\n  }\n  Size 4 3\n}\n",
        // points that lie about their count
        "Duration 1\nShape\n{\n  Points { 99999999 0 0 1 1",
        "",
    };
    for (const std::string& composition : cases) {
        auto player = Play(composition, {notAPicture, files.widePath("absent.png")});
        const auto frame = Frame(*player, 0.5f);
        EXPECT_EQ(At(*frame, 80, 60), kBlack) << composition;
    }
    qx3d::CompoPlayer::SetMessageHandler(nullptr);
    EXPECT_EQ(messages, std::vector<std::u16string>{u"Oscillator Handler needed."});

    qx3d::CompoPlayer unread;
    EXPECT_EQ(unread.Load(files.widePath("missing.txt")), 0);
    EXPECT_TRUE(unread.Entities().empty());
}

// An oscillator modifier adds its wave to the keys: a quarter period in, the sine's top.
TEST_F(CompoPlayerTest, OscillatorModifierAddsItsWave)
{
    auto player = Play(
        "Duration 1\nImage\n{\n  Name \"O\"\n  Size 0.5 0.5\n  Position (envelope)\n"
        "  { X 1 Key 0 0 3 0 0 0 0 0 0 Behaviors 1 1 { Mod \"LW_Oscillator\" 0 1 1 0 0 0 0 1 0 } }\n"
        "  { Y 1 Key 0 0 3 0 0 0 0 0 0 Behaviors 1 1 }\n}\n",
        {Red()});
    EXPECT_EQ(At(*Frame(*player, 0.0f), 80, 60), kRed);
    const auto quarter = Frame(*player, 0.25f);
    EXPECT_EQ(At(*quarter, 120, 60), kRed) << "one unit to the right";
    EXPECT_EQ(At(*quarter, 80, 60), kBlack);
}

// An outline stays red lines in the composition's space.
TEST_F(CompoPlayerTest, ShapesDrawRedOutlines)
{
    auto player = Play("Duration 1\nShape\n{\n  Points { 4 -1 -1 1 -1 1 1 -1 1 }\n}\n", {Red()});
    const auto frame = Frame(*player, 0.0f);
    EXPECT_EQ(At(*frame, 80, 20), kRed);
    EXPECT_EQ(At(*frame, 40, 60), kRed);
    EXPECT_EQ(At(*frame, 80, 60), kBlack) << "only the outline";
}

}  // namespace
}  // namespace qx::test
