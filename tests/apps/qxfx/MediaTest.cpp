// The video reader and writer through FFmpeg, the test pattern and the argument reader.
#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/TestPattern.h"
#include "apps/qxfx/VideoReader.h"
#include "apps/qxfx/VideoWriter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace qx::qxfx {
namespace {

namespace fs = std::filesystem;

class MediaFiles : public ::testing::Test {
protected:
    void SetUp() override
    {
        dir_ = fs::temp_directory_path() / ("qxfx-media-" + std::to_string(::getpid()) + "-" +
                                            ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(dir_);
    }
    void TearDown() override { fs::remove_all(dir_); }
    std::string path(const std::string& name) const { return (dir_ / name).string(); }

    // Frames with a different colour and alpha in every sample and every frame.
    static Frame numbered(int width, int height, int index)
    {
        Frame frame = makeFrame(width, height);
        for (int i = 0; i < width * height; ++i) {
            frame.samples[size_t(i)] = (uint32_t(i * 7 + index * 50) & 0xFFu) | uint32_t(i * 3 % 251) << 8 |
                                       uint32_t(index * 40 + 10) << 16 | uint32_t(255 - (i + index) % 128) << 24;
        }
        return frame;
    }

    std::vector<Frame> writeAndRead(const std::string& name, const std::string& readName, int count,
                                    bool lossless = false)
    {
        VideoWriter writer(path(name), 34, 20, AVRational{25, 1}, 1, lossless);
        for (int i = 0; i < count; ++i) writer.write(numbered(34, 20, i));
        writer.finish();
        VideoReader reader(path(readName), 1);
        EXPECT_EQ(reader.width(), 34);
        EXPECT_EQ(reader.height(), 20);
        std::vector<Frame> frames;
        Frame frame = makeFrame(34, 20);
        while (reader.read(frame)) frames.push_back(frame);
        return frames;
    }

    fs::path dir_;
};

TEST_F(MediaFiles, PngFramesKeepEverySampleAndAlpha)
{
    const auto frames = writeAndRead("f-%02d.png", "f-%02d.png", 3);
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_TRUE(fs::exists(path("f-01.png")) && fs::exists(path("f-03.png")));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(frames[size_t(i)].samples, numbered(34, 20, i).samples) << "frame " << i;
}

TEST_F(MediaFiles, LosslessVideoKeepsEveryFrame)
{
    // The lossless codec is also what video gets when FFmpeg has no H.264 encoder.
    const auto frames = writeAndRead("clip.mkv", "clip.mkv", 4, true);
    ASSERT_EQ(frames.size(), 4u);
    EXPECT_EQ(VideoReader::countFrames(path("clip.mkv")), 4);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(frames[size_t(i)].samples, numbered(34, 20, i).samples) << "frame " << i;
}

TEST_F(MediaFiles, H264KeepsCountAndLooksAlike)
{
    // A smooth picture, as video codecs expect: the test pattern.
    Frame picture = makeFrame(320, 180);
    drawTestPattern(picture, 0, 1);
    {
        VideoWriter writer(path("clip.mp4"), 320, 180, AVRational{25, 1}, 1);
        for (int i = 0; i < 5; ++i) writer.write(picture);
        writer.finish();
    }
    VideoReader reader(path("clip.mp4"), 1);
    Frame frame = makeFrame(320, 180);
    int frames = 0;
    double error = 0;
    while (reader.read(frame)) {
        ++frames;
        for (size_t i = 0; i < frame.samples.size(); ++i) {
            // Green survives 4:2:0 best; video has no alpha, so frames come back opaque.
            error += std::abs(int(frame.samples[i] >> 8 & 0xFF) - int(picture.samples[i] >> 8 & 0xFF));
            ASSERT_EQ(frame.samples[i] >> 24, 0xFFu);
        }
    }
    EXPECT_EQ(frames, 5);
    EXPECT_LT(error / double(frames * 320 * 180), 5.0);
}

TEST_F(MediaFiles, ConversionMatchesFfmpegsOwn)
{
    // 4:2:0 with a height that is no multiple of the reader's bands, converted by the
    // ffmpeg program as the reference.
    const std::string clip = path("clip.mp4");
    const std::string reference = path("reference.bgra");
    ASSERT_EQ(std::system(("ffmpeg -v error -y -f lavfi -i testsrc2=size=96x74:rate=25 -frames:v 3 -pix_fmt yuv420p " +
                           clip + " && ffmpeg -v error -y -i " + clip +
                           " -sws_flags bilinear -f rawvideo -pix_fmt bgra " + reference)
                              .c_str()),
              0);
    std::ifstream in(reference, std::ios::binary);
    const std::string expected((std::istreambuf_iterator<char>(in)), {});
    VideoReader reader(clip, 1);
    Frame frame = makeFrame(96, 74);
    const size_t frameBytes = frame.samples.size() * 4;
    ASSERT_EQ(expected.size(), 3 * frameBytes);
    for (size_t index = 0; index < 3; ++index) {
        ASSERT_TRUE(reader.read(frame));
        for (size_t i = 0; i < frame.samples.size(); ++i) {
            uint32_t sample = 0;
            std::memcpy(&sample, expected.data() + index * frameBytes + i * 4, 4);
            // ffmpeg's own alpha is whatever its converter leaves; ours is opaque.
            ASSERT_EQ(frame.samples[i], sample | 0xFF000000u) << "frame " << index << " sample " << i;
        }
    }
    EXPECT_FALSE(reader.read(frame));
}

TEST_F(MediaFiles, DamagedFilesAreRefusedOrEndEarly)
{
    {
        VideoWriter writer(path("good.mkv"), 34, 20, AVRational{25, 1}, 1, true);
        for (int i = 0; i < 6; ++i) writer.write(numbered(34, 20, i));
        writer.finish();
    }
    std::ifstream in(path("good.mkv"), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), {});
    for (const size_t keep : {size_t(0), size_t(16), bytes.size() / 2, bytes.size() - 7}) {
        std::ofstream(path("cut.mkv"), std::ios::binary).write(bytes.data(), std::streamsize(keep));
        try {
            VideoReader reader(path("cut.mkv"), 1);
            Frame frame = makeFrame(reader.width(), reader.height());
            int frames = 0;
            while (reader.read(frame) && frames < 100) ++frames;
            EXPECT_LE(frames, 6) << "kept " << keep;
        } catch (const CommandError& error) {
            EXPECT_NE(std::string(error.what()).find("cut.mkv"), std::string::npos);
        }
    }
}

TEST_F(MediaFiles, WriterRefusesWhatItCannotWrite)
{
    EXPECT_THROW(VideoWriter(path("missing/dir/a.mp4"), 16, 16, AVRational{25, 1}, 1), CommandError);
    EXPECT_THROW(VideoWriter(path("a.unknownext"), 16, 16, AVRational{25, 1}, 1), CommandError);
    EXPECT_THROW(VideoWriter(path("single.png"), 16, 16, AVRational{25, 1}, 1), CommandError);
}

TEST(TestPattern, MovesOverTimeAndIsOpaque)
{
    Frame first = makeFrame(320, 180);
    Frame again = makeFrame(320, 180);
    Frame last = makeFrame(320, 180);
    drawTestPattern(first, 0, 10);
    drawTestPattern(again, 0, 10);
    drawTestPattern(last, 9, 10);
    EXPECT_EQ(first.samples, again.samples);
    EXPECT_NE(first.samples, last.samples);
    for (const uint32_t sample : last.samples) ASSERT_EQ(sample >> 24, 0xFFu);
    Frame tiny = makeFrame(1, 1);
    drawTestPattern(tiny, 0, 1);
    EXPECT_EQ(tiny.samples[0] >> 24, 0xFFu);
}

TEST(Frames, SizesOutOfRangeAreRefused)
{
    EXPECT_THROW(makeFrame(0, 10), CommandError);
    EXPECT_THROW(makeFrame(10, -1), CommandError);
    EXPECT_THROW(makeFrame(kMaxFrameSide + 1, 1), CommandError);
    EXPECT_THROW(makeFrame(kMaxFrameSide, kMaxFrameSide), CommandError);
    EXPECT_EQ(makeFrame(3, 2).samples.size(), 6u);
}

TEST(ArgReader, ParsesStrictlyAndNamesTheOption)
{
    const std::string_view args[] = {"12", "12x", "-3", "1e3", "nan", "640x360", "640x0", "x", "1.5"};
    ArgReader reader(args);
    EXPECT_EQ(reader.integer("--a", 0, 100), 12);
    EXPECT_THROW(reader.integer("--a", 0, 100), CommandError);
    EXPECT_THROW(reader.integer("--a", 0, 100), CommandError);
    EXPECT_DOUBLE_EQ(reader.number("--b", 0, 5000), 1000.0);
    EXPECT_THROW(reader.number("--b", 0, 5000), CommandError);
    EXPECT_EQ(reader.size("--size", 4096), std::make_pair(640, 360));
    EXPECT_THROW(reader.size("--size", 4096), CommandError);
    try {
        reader.size("--size", 4096);
        FAIL() << "no error";
    } catch (const CommandError& error) {
        EXPECT_NE(std::string(error.what()).find("--size"), std::string::npos);
    }
    EXPECT_DOUBLE_EQ(reader.number("--b", 0, 2), 1.5);
    EXPECT_TRUE(reader.done());
    EXPECT_THROW(reader.value("--c"), CommandError);
}

}  // namespace
}  // namespace qx::qxfx
