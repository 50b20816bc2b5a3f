// The display list over time: sprites that advance a frame per frame of their parent and
// loop, objects removed and replaced, characters defined again, seeking back and forth,
// and the movies of an outside writer (ffmpeg), whose header counts no frames.
#include "tests/platform/swf/MovieFixture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace qx::swf::test {
namespace {

constexpr Rgba kWhite{255, 255, 255, 255};
constexpr Rgba kRed{255, 0, 0, 255};

// Where along a 40-pixel row the 10-pixel red square of the sprite tests stands.
int squareColumn(const draw2d::Bitmap& frame)
{
    for (int x = 0; x < frame.width(); ++x) {
        if (near(colorAt(frame, x, 5), kRed)) return x;
    }
    return -1;
}

// A sprite of three frames that moves a square 0, 10 then 20 pixels right.
TagList steppingSprite()
{
    TagList sprite;
    for (int f = 0; f < 3; ++f) {
        sprite.place(1, f == 0 ? std::optional<uint16_t>(1) : std::nullopt, moveBy(f * 10, 0), std::nullopt,
                     std::nullopt, std::nullopt, f > 0);
        sprite.showFrame();
    }
    return sprite;
}

TEST(Timeline, SpriteAdvancesAFramePerParentFrameAndLoops)
{
    SwfWriter writer = stageOf(40, 10);
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, kRed));
    writer.defineSprite(2, steppingSprite());
    writer.showFrame();  // frame 0: nothing yet
    writer.place(1, 2);  // placed on frame 1
    for (int f = 1; f < 8; ++f) writer.showFrame();
    const auto movie = loadMovie(writer.finish());
    ASSERT_EQ(movie->frameCount(), 8u);
    EXPECT_EQ(squareColumn(*draw(*movie, 0, 40, 10)), -1);
    for (size_t tick = 1; tick < 8; ++tick) {
        EXPECT_EQ(squareColumn(*draw(*movie, tick, 40, 10)), int((tick - 1) % 3) * 10) << "frame " << tick;
    }
    EXPECT_EQ(squareColumn(*draw(*movie, 2, 40, 10)), 10);  // seeking back
}

TEST(Timeline, SpriteThatStaysLivesOnWhileItsParentLoops)
{
    // A one-frame movie holding the sprite: played on beyond its frame count, the sprite
    // keeps its own pace instead of starting over with each loop of the movie.
    SwfWriter writer = stageOf(40, 10);
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, kRed));
    writer.defineSprite(2, steppingSprite());
    writer.place(1, 2);
    writer.showFrame();
    const auto movie = loadMovie(writer.finish());
    ASSERT_EQ(movie->frameCount(), 1u);
    for (size_t tick = 0; tick < 5; ++tick) EXPECT_EQ(squareColumn(*draw(*movie, tick, 40, 10)), int(tick % 3) * 10);
}

TEST(Timeline, RemoveAndReplaceChangeTheDepthFromTheirFrameOn)
{
    SwfWriter writer = stageOf(40, 10);
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, kRed));
    writer.defineShape(2, rectangleShape(20, 0, 30, 10, {0, 0, 255, 255}));
    writer.placeObject1(1, 1, {});
    writer.showFrame();
    writer.place(1, 2, {}, std::nullopt, std::nullopt, std::nullopt, true);  // replace, same depth
    writer.showFrame();
    writer.removeObject1(2, 1);
    writer.showFrame();
    const auto movie = loadMovie(writer.finish());
    const auto first = draw(*movie, 0, 40, 10);
    EXPECT_TRUE(near(colorAt(*first, 5, 5), kRed));
    const auto second = draw(*movie, 1, 40, 10);
    EXPECT_TRUE(near(colorAt(*second, 5, 5), kWhite));
    EXPECT_TRUE(near(colorAt(*second, 25, 5), {0, 0, 255, 255}));
    EXPECT_TRUE(near(colorAt(*draw(*movie, 2, 40, 10), 25, 5), kWhite));
}

TEST(Timeline, EachFrameSeesTheDefinitionMadeBeforeIt)
{
    SwfWriter writer = stageOf(10, 10);
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, kRed));
    writer.place(1, 1);
    writer.showFrame();
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, {0, 255, 0, 255}));
    writer.showFrame();
    const auto movie = loadMovie(writer.finish());
    EXPECT_TRUE(near(colorAt(*draw(*movie, 1, 10, 10), 5, 5), {0, 255, 0, 255}));
    EXPECT_TRUE(near(colorAt(*draw(*movie, 0, 10, 10), 5, 5), kRed));
}

TEST(Timeline, LongMoviesSeekToAnyFrame)
{
    // More frames than the replay keeps lists for, visited out of order.
    SwfWriter writer = stageOf(100, 10);
    writer.defineShape(1, rectangleShape(0, 0, 1, 10, kRed));
    for (int f = 0; f < 100; ++f) {
        writer.place(1, f == 0 ? std::optional<uint16_t>(1) : std::nullopt, moveBy(f, 0), std::nullopt, std::nullopt,
                     std::nullopt, f > 0);
        writer.showFrame();
    }
    const auto movie = loadMovie(writer.finish(swftool::Compression::Zlib));
    for (const size_t tick : {99, 3, 50, 49, 17, 0, 64, 65, 33}) {
        EXPECT_EQ(squareColumn(*draw(*movie, tick, 100, 10)), int(tick)) << "frame " << tick;
    }
}

class FfmpegMovie : public ::testing::Test {
protected:
    void SetUp() override
    {
        path_ = std::filesystem::temp_directory_path() / ("qx-swf-ffmpeg-" + std::to_string(::getpid()) + ".swf");
        // Five grey frames, 50 levels lighter each frame, as ffmpeg's SWF writer stores video.
        const std::string command =
            "ffmpeg -nostdin -loglevel error -y -f lavfi -i "
            "\"color=c=black:s=64x48:r=10,format=rgb24,geq=r='N*50':g='N*50':b='N*50'\" "
            "-frames:v 5 -c:v mjpeg -q:v 2 -f swf '" +
            path_.string() + "'";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }
    void TearDown() override { std::filesystem::remove(path_); }

    std::filesystem::path path_;
};

TEST_F(FfmpegMovie, FramesShowTheirOwnPictureAndCountDespiteTheHeader)
{
    std::ifstream in(path_, std::ios::binary);
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_GT(bytes.size(), 21u);
    const auto movie = loadMovie(bytes);
    EXPECT_EQ(movie->header().declaredFrames, 0);
    EXPECT_EQ(movie->frameCount(), 5u);
    EXPECT_DOUBLE_EQ(movie->header().frameRate, 10.0);
    for (const size_t tick : {3, 0, 4, 1}) {
        const auto frame = draw(*movie, tick, 64, 48, {ScaleMode::ShowAll, true, {}});
        const Rgba grey = colorAt(*frame, 32, 24);
        const int level = int(tick) * 50;
        EXPECT_TRUE(near(grey, {uint8_t(level), uint8_t(level), uint8_t(level), 255}, 6)) << "frame " << tick;
        EXPECT_TRUE(near(colorAt(*frame, 0, 0), grey, 6)) << "the picture fills the stage";
    }
}

}  // namespace
}  // namespace qx::swf::test
