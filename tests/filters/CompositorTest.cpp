// The compositor's picture over the first input, with the pixels its geometry gives:
// placement and crop in fractions of the frame, turns around the destination's centre
// (undistorted on frames of another shape), the colour key and its clamping, opacity;
// and the four sources: the second input, a still picture, an SWF animation keyed on
// its magenta, a movie read at the clip's time; files that cannot be used pass the
// frame through.
#include "tests/filters/CompositorHarness.h"

#include "platform/video/MovieReaderComponent.h"
#include "tools/swf/SwfWriter.h"
#include "wrap3d/DataPath.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace qx::test {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kBlue = 0xFF0000FFu;
constexpr uint32_t kRed = 0xFFFF0000u;
constexpr uint32_t kGreen = 0xFF00FF00u;

// Left half `left`, right half `right`.
std::vector<uint32_t> halves(LONG width, LONG height, uint32_t left, uint32_t right)
{
    std::vector<uint32_t> samples(size_t(width * height));
    for (LONG y = 0; y < height; ++y) {
        for (LONG x = 0; x < width; ++x) samples[size_t(y * width + x)] = x < width / 2 ? left : right;
    }
    return samples;
}

// Top half `top`, bottom half `bottom`.
std::vector<uint32_t> layers(LONG width, LONG height, uint32_t top, uint32_t bottom)
{
    std::vector<uint32_t> samples(size_t(width * height));
    for (LONG i = 0; i < width * height; ++i) samples[size_t(i)] = i / width < height / 2 ? top : bottom;
    return samples;
}

class SecondInput : public ::testing::Test {
protected:
    void SetUp() override
    {
        harness.fillFirst(kBlue);
        harness.setSecond(halves(40, 20, kRed, kGreen));
    }
    void run(float progress = 0.0f)
    {
        ASSERT_EQ(harness.setup(), S_OK);
        ASSERT_EQ(harness.execute(progress), S_OK);
    }
    CQXCompositor& c() { return harness.compositor(); }

    CompositorHarness harness{40, 20};
};

TEST_F(SecondInput, DefaultsCoverTheFrameWithTheSecondInput)
{
    run();
    EXPECT_EQ(harness.output(), halves(40, 20, kRed, kGreen));
}

TEST_F(SecondInput, DestinationIsInFractionsOfTheFrame)
{
    c().put_OffsetX(0.25f);
    c().put_OffsetY(0.5f);
    c().put_Width(0.5f);
    c().put_Height(0.25f);
    run();  // the picture covers x 10 to 30, y 10 to 15
    EXPECT_EQ(harness.at(9, 12), kBlue);
    EXPECT_EQ(harness.at(10, 12), kRed);
    EXPECT_EQ(harness.at(15, 10), kRed);
    EXPECT_EQ(harness.at(25, 14), kGreen);
    EXPECT_EQ(harness.at(29, 12), kGreen);
    EXPECT_EQ(harness.at(30, 12), kBlue);
    EXPECT_EQ(harness.at(15, 9), kBlue);
    EXPECT_EQ(harness.at(15, 15), kBlue);
}

TEST_F(SecondInput, SourceRectangleCropsThePicture)
{
    c().put_SrcOffsetX(0.5f);
    c().put_SrcWidth(0.5f);
    run();  // the right half, stretched over the frame
    EXPECT_EQ(harness.at(20, 10), kGreen);
    EXPECT_EQ(harness.at(39, 19), kGreen);
}

TEST_F(SecondInput, HalfTurnAroundTheCentreMirrorsBothWays)
{
    harness.setSecond(layers(40, 20, kRed, kGreen));
    c().put_Angle(180.0f);
    run();
    EXPECT_EQ(harness.output(), layers(40, 20, kGreen, kRed));
}

TEST_F(SecondInput, AspectRatioKeepsTurnedPicturesUndistorted)
{
    harness.setSecond(layers(40, 20, kRed, kGreen));
    for (const float aspect : {0.0f, 1.0f}) {
        c().put_OffsetX(0.25f);
        c().put_OffsetY(0.25f);
        c().put_Width(0.5f);
        c().put_Height(0.5f);
        c().put_Angle(90.0f);
        c().put_AspectRatio(aspect);
        run();
        if (aspect == 0.0f) {
            // In frame pixels the 20 by 10 destination turns into 10 by 20: x 15 to 25.
            EXPECT_EQ(harness.at(12, 10), kBlue);
            EXPECT_EQ(harness.at(17, 2), kGreen);
            EXPECT_EQ(harness.at(22, 17), kRed);
        } else {
            // With square pixels the destination is a square (x 10 to 30, y 5 to 15 of the
            // frame); a quarter turn puts its top (red) on the right.
            EXPECT_EQ(harness.at(12, 10), kGreen);
            EXPECT_EQ(harness.at(27, 10), kRed);
            EXPECT_EQ(harness.at(20, 3), kBlue);
        }
    }
}

TEST_F(SecondInput, KeyRangeIsTheKeyPlusOrMinusTheSimilarityClamped)
{
    // Red low in COLORREF order: the key (0x10, 0x20, 0x30) within 5 per channel.
    std::vector<uint32_t> second(40 * 20, 0xFF102030u);
    second[5] = 0xFF152535u;  // just inside
    second[6] = 0xFF162030u;  // red 6 away: outside
    harness.setSecond(second);
    c().put_KeyColor(0x302010u);
    c().put_Similarity(0x050505u);
    run();
    EXPECT_EQ(harness.at(0, 0), kBlue);
    EXPECT_EQ(harness.at(5, 0), kBlue);
    EXPECT_EQ(harness.at(6, 0), 0xFF162030u);

    // A red key near 255 and similarity past it: the range clamps to 0..255.
    harness.fillSecond(0xFFFA050Au);
    c().put_KeyColor(0x0000FFu);
    c().put_Similarity(0x101010u);
    run();
    EXPECT_EQ(harness.at(20, 10), kBlue);
}

TEST_F(SecondInput, KeyNeedsBothKeyAndSimilarity)
{
    harness.fillSecond(0xFF102030u);
    c().put_KeyColor(0x302010u);  // similarity left all ones: no key
    run();
    EXPECT_EQ(harness.at(20, 10), 0xFF102030u);
    c().put_Similarity(0u);
    run();
    EXPECT_EQ(harness.at(20, 10), kBlue);
}

TEST_F(SecondInput, OpacityMixesWithTheBackground)
{
    harness.fillSecond(kRed);
    c().put_Opacity(0.5f);
    run();
    EXPECT_TRUE(nearSample(harness.at(20, 10), 0xFF800080u, 1));
    c().put_Opacity(1.0f);
    run();
    EXPECT_EQ(harness.at(20, 10), kRed);
}

TEST_F(SecondInput, PropertiesReadBackAsPut)
{
    float value = 0.0f;
    ULONG key = 0;
    double seconds = -1.0;
    c().get_Opacity(&value);
    EXPECT_EQ(value, 1.0f);
    c().get_KeyColor(&key);
    EXPECT_EQ(key, 0xFFFFFFFFu);
    c().get_Duration(&seconds);
    EXPECT_EQ(seconds, 0.0);
    c().put_MediaStart(2.5);
    c().get_MediaStart(&seconds);
    EXPECT_EQ(seconds, 2.5);
    harness.overlay(u"logo.png");
    Bstr path;
    ASSERT_EQ(c().get_OverlayPath(path.out()), S_OK);
    EXPECT_EQ(path.view(), u"logo.png");
    EXPECT_EQ(c().get_Width(nullptr), E_POINTER);
}

// Overlays from files: pictures, animations and movies made in a folder of the test's own.
class OverlayFiles : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        dir_ = fs::temp_directory_path() / ("qx-compositor-" + std::to_string(::getpid()));
        fs::create_directories(dir_);
        const std::string ffmpeg = "ffmpeg -nostdin -loglevel error -y ";
        run(ffmpeg +
            "-filter_complex \"color=c=red:s=4x4,format=rgb24[a];color=c=lime:s=4x4,format=rgb24[b];"
            "[a][b]hstack\" -frames:v 1 '" +
            file("picture.png") + "'");
        run(ffmpeg +
            "-f lavfi -i \"color=c=black:s=40x20:r=10,format=rgb24,geq=r='N*10+5':g=40:b=90\" "
            "-frames:v 20 -c:v mpeg4 -q:v 1 '" +
            file("clip.MOV") + "'");
        writeAnimation();
        std::ofstream(dir_ / "notes.png") << "no picture here";
    }
    static void TearDownTestSuite() { fs::remove_all(dir_); }

    // Two frames at 10 per second over a 40 by 20 stage: a red, then a green rectangle on
    // the left half; the rest is background.
    static void writeAnimation()
    {
        swftool::SwfWriter writer(10, {0, 800, 0, 400}, 10.0);
        for (uint16_t frame = 0; frame < 2; ++frame) {
            swftool::ShapeBuilder shape;
            shape.fills = {swf::FillStyle{swf::FillKind::Solid,
                                          frame == 0 ? swf::Rgba{255, 0, 0, 255} : swf::Rgba{0, 255, 0, 255}}};
            shape.rectangle(0, 0, 400, 400, 1);
            writer.defineShape(uint16_t(frame + 1), shape);
            writer.place(1, uint16_t(frame + 1), {}, std::nullopt, std::nullopt, std::nullopt, frame > 0);
            writer.showFrame();
        }
        const auto bytes = writer.finish();
        std::ofstream(dir_ / "ANIM.DAT", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    }

    static void run(const std::string& command) { ASSERT_EQ(std::system(command.c_str()), 0) << command; }
    static std::string file(const std::string& name) { return (dir_ / name).string(); }
    static std::u16string path(const std::string& name) { return (dir_ / name).u16string(); }

    void SetUp() override { harness.fillFirst(kBlue); }
    void overlayAndSetUp(const std::string& name)
    {
        harness.overlay(path(name));
        ASSERT_EQ(harness.setup(), S_OK);
    }

    static fs::path dir_;
    CompositorHarness harness{40, 20};
};

fs::path OverlayFiles::dir_;

TEST_F(OverlayFiles, StillPictureIsResampledToTheFrameThenPlaced)
{
    harness.compositor().put_Width(0.5f);
    overlayAndSetUp("picture.png");
    ASSERT_EQ(harness.execute(0.0f), S_OK);
    EXPECT_TRUE(nearSample(harness.at(4, 10), kRed, 2));
    EXPECT_TRUE(nearSample(harness.at(15, 10), kGreen, 2));
    EXPECT_EQ(harness.at(25, 10), kBlue);
}

TEST_F(OverlayFiles, AnimationIsKeyedOnItsMagentaAndFollowsProgress)
{
    harness.compositor().put_KeyColor(0x000000u);  // the caller's key gives way to magenta
    harness.compositor().put_Similarity(0x101010u);
    overlayAndSetUp("ANIM.DAT");  // the extension is compared without regard to case
    ASSERT_EQ(harness.execute(0.0f), S_OK);
    EXPECT_EQ(harness.at(5, 10), kRed);
    EXPECT_EQ(harness.at(30, 10), kBlue);
    ULONG key = 0;
    ULONG similarity = 1;
    harness.compositor().get_KeyColor(&key);
    harness.compositor().get_Similarity(&similarity);
    EXPECT_EQ(key, 0x00FF00FFu);
    EXPECT_EQ(similarity, 0u);
    ASSERT_EQ(harness.execute(0.75f), S_OK);  // frame 1 of 2
    EXPECT_EQ(harness.at(5, 10), kGreen);
}

TEST_F(OverlayFiles, AnimationWithAClipDurationLoopsAtItsOwnRate)
{
    harness.compositor().put_Duration(1.0);  // 10 frames of clip at the movie's 10 a second
    overlayAndSetUp("ANIM.DAT");
    ASSERT_EQ(harness.execute(0.15f), S_OK);
    EXPECT_EQ(harness.at(5, 10), kGreen);
    ASSERT_EQ(harness.execute(0.25f), S_OK);
    EXPECT_EQ(harness.at(5, 10), kRed);
}

TEST_F(OverlayFiles, MovieFramesFollowProgressSpanAndStart)
{
    ASSERT_EQ(video::RegisterMovieReader(), S_OK);
    CQXCompositor& c = harness.compositor();
    c.put_Duration(1.0);  // shorter than the 2 s movie: only that part plays
    c.put_MediaStart(0.35);
    overlayAndSetUp("clip.MOV");
    ASSERT_EQ(harness.execute(0.5f), S_OK);  // 0.5 * 1.0 + 0.35: frame 8
    EXPECT_TRUE(nearSample(harness.at(20, 10), 0xFF000000u | 85u << 16 | 40u << 8 | 90u, 4));
    c.put_Duration(10.0);                    // longer than the movie: the movie's own 2 s
    ASSERT_EQ(harness.execute(0.5f), S_OK);  // 0.5 * 2 + 0.35: frame 13
    EXPECT_TRUE(nearSample(harness.at(20, 10), 0xFF000000u | 135u << 16 | 40u << 8 | 90u, 4));
    EXPECT_EQ(video::RevokeMovieReader(), S_OK);
}

TEST_F(OverlayFiles, FilesThatCannotBeUsedPassTheFrameThrough)
{
    harness.fillSecond(kRed);
    for (const char* name : {"absent.png", "notes.png", "absent.dat", "absent.mov", "clip.MOV"}) {
        // The movie is not registered here: its creation fails as on a system without it.
        CompositorHarness fresh(40, 20);
        fresh.fillFirst(kBlue);
        fresh.fillSecond(kRed);
        fresh.overlay(path(name));
        ASSERT_EQ(fresh.setup(), S_OK) << name;
        ASSERT_EQ(fresh.execute(0.5f), S_OK) << name;
        EXPECT_EQ(fresh.output(), std::vector<uint32_t>(40 * 20, kBlue)) << name;
    }
}

}  // namespace
}  // namespace qx::test
