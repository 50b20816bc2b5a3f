// The movie reader over files made by ffmpeg: frames in order, the frame shown at any
// time (forwards, backwards, far ahead across key frames, before the start and after the
// end), still pictures, and the component form found by class identifier.
#include "platform/video/MovieReader.h"
#include "platform/com/ClassRegistry.h"
#include "platform/video/MovieReaderComponent.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace qx::video {
namespace {

namespace fs = std::filesystem;

// Red level of frame n of the numbered clips.
int level(int frame) { return frame * 10 + 5; }

class MovieFiles : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        dir_ = fs::temp_directory_path() / ("qx-movie-" + std::to_string(::getpid()));
        fs::create_directories(dir_);
        // 20 frames at 10 per second, frame n with red n * 10 + 5: lossless, and with a key
        // frame only every 4 frames.
        const std::string source =
            "-f lavfi -i \"color=c=black:s=32x16:r=10,format=rgb24,geq=r='N*10+5':g=40:b=90\" -frames:v 20 ";
        run("ffmpeg -nostdin -loglevel error -y " + source + "-c:v ffv1 -pix_fmt bgr0 '" + file("clip.mkv") + "'");
        run("ffmpeg -nostdin -loglevel error -y " + source + "-c:v mpeg4 -g 4 -q:v 1 '" + file("gop.mp4") + "'");
        run("ffmpeg -nostdin -loglevel error -y -f lavfi -i \"color=c=0x336699:s=8x6,format=rgb24\" -frames:v 1 '" +
            file("still.png") + "'");
    }
    static void TearDownTestSuite() { fs::remove_all(dir_); }

    static void run(const std::string& command) { ASSERT_EQ(std::system(command.c_str()), 0) << command; }
    static std::string file(const std::string& name) { return (dir_ / name).string(); }

    static int redAt(const uint32_t* frame) { return frame ? int((frame[0] >> 16) & 0xFF) : -1; }

    static fs::path dir_;
};

fs::path MovieFiles::dir_;

TEST_F(MovieFiles, FramesComeInOrderWithTheirSize)
{
    const auto reader = MovieReader::open(file("clip.mkv"), 1);
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->width(), 32);
    EXPECT_EQ(reader->height(), 16);
    EXPECT_DOUBLE_EQ(reader->frameRate(), 10.0);
    EXPECT_NEAR(reader->duration(), 2.0, 0.11);
    std::vector<uint32_t> frame(32 * 16);
    for (int n = 0; n < 20; ++n) {
        ASSERT_EQ(reader->readNext(frame), MovieReader::Read::Frame);
        EXPECT_EQ(frame[0], 0xFF000000u | uint32_t(level(n)) << 16 | 40u << 8 | 90u) << "frame " << n;
    }
    EXPECT_EQ(reader->readNext(frame), MovieReader::Read::End);
    EXPECT_EQ(MovieReader::countFrames(file("clip.mkv")), 20);
}

TEST_F(MovieFiles, FrameAtATimeIsTheOneShownThen)
{
    for (const char* name : {"clip.mkv", "gop.mp4"}) {
        const auto reader = MovieReader::open(file(name), 1);
        ASSERT_TRUE(reader);
        const int tolerance = std::string(name) == "clip.mkv" ? 0 : 3;
        // Forwards, back, within a frame, far ahead past key frames, back to the start.
        for (const auto& [seconds, frame] : std::vector<std::pair<double, int>>{
                 {0.0, 0}, {0.12, 1}, {0.55, 5}, {0.25, 2}, {0.29, 2}, {1.71, 17}, {0.8, 8}, {0.0, 0}}) {
            EXPECT_NEAR(redAt(reader->frameAt(seconds)), level(frame), tolerance) << name << " at " << seconds;
        }
        EXPECT_NEAR(redAt(reader->frameAt(-3.0)), level(0), tolerance) << name;
        EXPECT_NEAR(redAt(reader->frameAt(50.0)), level(19), tolerance) << name;  // after the end: the last
        EXPECT_NEAR(redAt(reader->frameAt(1.0)), level(10), tolerance) << name;
    }
}

TEST_F(MovieFiles, StillPicturesShowAtEveryTime)
{
    const auto reader = MovieReader::open(file("still.png"), 1);
    ASSERT_TRUE(reader);
    for (const double seconds : {0.0, 3.0, 0.5}) {
        const uint32_t* frame = reader->frameAt(seconds);
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame[47], 0xFF336699u);
    }
}

TEST_F(MovieFiles, FilesThatAreNoVideoSayWhy)
{
    std::string error;
    EXPECT_FALSE(MovieReader::open(file("absent.mp4"), 1, &error));
    EXPECT_NE(error.find("cannot open"), std::string::npos) << error;
    EXPECT_EQ(MovieReader::countFrames(file("absent.mp4")), 0);
}

TEST_F(MovieFiles, ComponentIsFoundOnlyOnceRegistered)
{
    IUnknown* object = nullptr;
    EXPECT_EQ(
        CoCreateInstance(CLSID_MovieReader, nullptr, CLSCTX_ALL, IUnknown::iid, reinterpret_cast<void**>(&object)),
        REGDB_E_CLASSNOTREG);
    ASSERT_EQ(RegisterMovieReader(), S_OK);
    com::ComPtr<IFileSourceFilter> source;
    ASSERT_EQ(CoCreateInstance(CLSID_MovieReader, nullptr, CLSCTX_ALL, IFileSourceFilter::iid,
                               reinterpret_cast<void**>(source.out())),
              S_OK);
    com::ComPtr<IMovieReader> reader;
    ASSERT_EQ(source->QueryInterface(IMovieReader::iid, reinterpret_cast<void**>(reader.out())), S_OK);
    BYTE* pixels = nullptr;
    int width = 0;
    EXPECT_EQ(reader->GetFrame(0.0f, &pixels), E_UNEXPECTED);
    EXPECT_EQ(reader->GetWidth(&width), E_UNEXPECTED);
    EXPECT_EQ(source->Load(u"/nonexistent/clip.mkv", nullptr), E_FAIL);
    const std::u16string path = (dir_ / "clip.mkv").u16string();
    ASSERT_EQ(source->Load(path.c_str(), nullptr), S_OK);
    int height = 0;
    float duration = 0.0f;
    EXPECT_EQ(reader->GetWidth(&width), S_OK);
    EXPECT_EQ(reader->GetHeight(&height), S_OK);
    EXPECT_EQ(reader->GetDuration(&duration), S_OK);
    EXPECT_EQ(width, 32);
    EXPECT_EQ(height, 16);
    EXPECT_NEAR(duration, 2.0f, 0.11f);
    ASSERT_EQ(reader->GetFrame(0.35f, &pixels), S_OK);
    EXPECT_EQ(redAt(reinterpret_cast<const uint32_t*>(pixels)), level(3));
    EXPECT_EQ(reader->GetFrame(0.0f, nullptr), E_POINTER);
    EXPECT_EQ(RevokeMovieReader(), S_OK);
}

}  // namespace
}  // namespace qx::video
