// The composition source with 2D compositions: its properties and codes, its one media
// type, and its stream: time stamps, seeking, rates, the rows' order.
#include "filters/Anim3DVideoSource.h"
#include "tests/filters/CompoFiles.h"
#include "tests/filters/SourceRun.h"
#include "wrap3d/DataPath.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace qx::test {
namespace {

constexpr LONG kWidth = 160, kHeight = 120;
constexpr media::REFERENCE_TIME kPeriod = 1'000'000;  // 10 frames a second

class AnimSourceTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        // Compositions other than ".cpo3d" lie under the data path's Scenes folder.
        std::filesystem::create_directories(files.path("Scenes"));
        SetDataPath(files.widePath(""));
        filter = CAnim3DVideoSource::Create();
        ASSERT_TRUE(filter);
    }
    /// A red square 0.5 units wide sliding from x -1 to 1 over 4 seconds, at y 1.
    void SlideComposition(int pictures = 1)
    {
        files.text("Scenes/slide.txt",
                   "Duration 4\nImage\n{\n  Name \"A\"\n  Size 0.5 0.5\n  Position (envelope)\n"
                   "  { X 2 Key -1 0 3 0 0 0 0 0 0 Key 1 4 3 0 0 0 0 0 0 Behaviors 1 1 }\n"
                   "  { Y 1 Key 1 0 3 0 0 0 0 0 0 Behaviors 1 1 }\n}\n");
        Bstr source(u"slide.txt");
        filter->put_Source(source.get());
        filter->put_Width(kWidth);
        filter->put_Height(kHeight);
        filter->put_Fps(10.0f);
        filter->put_Duration(4.0);
        Bstr picture(files.picture("red.png", 16, 16, {0xFF0000}));
        if (pictures > 0) filter->put_Image1(picture.get());
    }
    /// The sample at (x, y) counted from the top of the picture, in a bottom-up frame.
    static uint32_t At(const Received& frame, int x, int y)
    {
        return frame.pixels[size_t((kHeight - 1 - y) * kWidth + x)];
    }
    /// Where the square's centre is across the frame (its red columns' middle in row 20).
    static int SquareCentre(const Received& frame)
    {
        int first = -1, last = -1;
        for (int x = 0; x < kWidth; ++x) {
            if (Rgb(At(frame, x, 20)) == 0xFF0000) {
                if (first < 0) first = x;
                last = x;
            }
        }
        return first < 0 ? -1 : (first + last) / 2;
    }

    CompoFolder files;
    com::ComPtr<CAnim3DVideoSource> filter;
};

TEST_F(AnimSourceTest, PropertiesKeepTheirValuesAndCodes)
{
    LONG width = 0, height = 0;
    float fps = 0.0f;
    filter->get_Width(&width);
    filter->get_Height(&height);
    filter->get_Fps(&fps);
    EXPECT_EQ(width, 320);
    EXPECT_EQ(height, 240);
    EXPECT_EQ(fps, 25.0f);

    Bstr flat(u"Slides\\one.txt"), deep(u"Compositions\\Carousel.CPO3D"), out;
    filter->put_Source(flat.get());
    filter->get_Source(out.out());
    EXPECT_EQ(out.view(), files.widePath("") + u"\\Scenes\\Slides\\one.txt");
    filter->put_Source(deep.get());
    filter->get_Source(out.out());
    EXPECT_EQ(out.view(), u"Compositions\\Carousel.CPO3D") << "the bridge adds its own folder";

    double seconds = 0.0;
    filter->put_Duration(2.5);
    filter->get_Duration(&seconds);
    EXPECT_EQ(seconds, 2.5);
    filter->put_Start(1.25);
    filter->get_Start(&seconds);
    EXPECT_EQ(seconds, 1.25);

    BYTE count = 0;
    Bstr missing(u"missing.txt");
    EXPECT_EQ(filter->GetSceneImagesCount(missing.get(), &count), S_OK);
    EXPECT_EQ(count, 255) << "the failure -1 as one byte";
    float duration = 0.0f;
    filter->GetSceneDuration(missing.get(), &duration);
    EXPECT_EQ(duration, -1.0f);
    SlideComposition();
    Bstr slide(u"slide.txt");
    filter->GetSceneImagesCount(slide.get(), &count);
    EXPECT_EQ(count, 1);
    filter->GetSceneDuration(slide.get(), &duration);
    EXPECT_EQ(duration, 4.0f);

    // Before the scene context runs, a 3D composition has no count to give.
    Bstr carousel(u"Compositions\\Carousel.cpo3d");
    count = 7;
    EXPECT_EQ(filter->GetSceneImagesCount(carousel.get(), &count), S_FALSE);
    EXPECT_EQ(count, 0);

    IAnim3DVideoSource* asked = nullptr;
    ASSERT_EQ(filter->QueryInterface(IAnim3DVideoSource::iid, reinterpret_cast<void**>(&asked)), S_OK);
    asked->Release();
}

TEST_F(AnimSourceTest, OffersOneBottomUpRgb32Type)
{
    media::CMediaType first, second, none;
    CCustomSourceStream& stream = filter->Stream();
    ASSERT_EQ(stream.GetMediaType(0, &first), S_OK);
    ASSERT_EQ(stream.GetMediaType(1, &second), S_OK);
    EXPECT_EQ(first, second);
    EXPECT_EQ(stream.GetMediaType(2, &none), media::VFW_S_NO_MORE_ITEMS);
    EXPECT_EQ(stream.GetMediaType(-1, &none), E_INVALIDARG);
    EXPECT_EQ(first.subtype, media::MEDIASUBTYPE_RGB32);
    EXPECT_EQ(first.FormatLength(), 1128u);
    const auto info = first.VideoInfo();
    ASSERT_TRUE(info);
    EXPECT_EQ(info->bmiHeader.biWidth, 320);
    EXPECT_EQ(info->bmiHeader.biHeight, 240) << "positive: bottom-up";
    EXPECT_EQ(info->bmiHeader.biSizeImage, 320u * 240u * 4u);
    EXPECT_EQ(first.lSampleSize, 320u * 240u * 4u);
    EXPECT_EQ(stream.CheckMediaType(&first), S_OK);
    media::CMediaType argb = first;
    argb.subtype = media::MEDIASUBTYPE_ARGB32;
    EXPECT_EQ(stream.CheckMediaType(&argb), E_INVALIDARG);

    filter->put_Width(0);
    EXPECT_EQ(stream.GetMediaType(0, &none), E_UNEXPECTED) << "no frame of no width";
}

TEST_F(AnimSourceTest, RatesOnlyAboveOne)
{
    SourceRun run(*filter.get());
    media::IMediaSeeking& seeking = run.seeking();
    EXPECT_EQ(seeking.SetRate(1.0), E_INVALIDARG);
    EXPECT_EQ(seeking.SetRate(0.5), E_INVALIDARG);
    EXPECT_EQ(seeking.SetRate(2.0), S_OK);
    double rate = 0.0;
    seeking.GetRate(&rate);
    EXPECT_EQ(rate, 2.0);
    media::LONGLONG duration = 0;
    seeking.GetDuration(&duration);
    EXPECT_EQ(duration, CCustomSourceStream::kSeekingDuration);
}

// Frames are stamped from 0 a period apart; the square slides to the right over them,
// and it is at the top of the picture, which is the end of a bottom-up buffer.
TEST_F(AnimSourceTest, PlaysFramesStampedAPeriodApart)
{
    SlideComposition();
    SourceRun run(*filter.get());
    ASSERT_EQ(run.connected(), S_OK);
    const std::vector<Received> frames = run.take(12);
    ASSERT_EQ(frames.size(), 12u);
    for (size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].start, media::REFERENCE_TIME(i) * kPeriod);
        EXPECT_EQ(frames[i].stop, media::REFERENCE_TIME(i + 1) * kPeriod);
    }
    // x -1 + 2 t / 4 seconds: pixel 40 at 0, 60 at 1 second.
    EXPECT_NEAR(SquareCentre(frames[0]), 40, 1);
    EXPECT_NEAR(SquareCentre(frames[10]), 60, 1);
    EXPECT_EQ(Rgb(frames[0].pixels[size_t((kHeight - 1 - 20) * kWidth + 40)]), 0xFF0000u);
    EXPECT_EQ(Rgb(frames[0].pixels[size_t(20 * kWidth + 40)]), 0u) << "the bottom rows come first";
}

// After a seek the stamps start over at 0 while the composition goes on from the seek's
// start, and the frame there is the one that playing up to it gave.
TEST_F(AnimSourceTest, SeekingRestartsStampsAndKeepsFrames)
{
    SlideComposition();
    SourceRun run(*filter.get());
    ASSERT_EQ(run.connected(), S_OK);
    const std::vector<Received> played = run.take(15);
    ASSERT_EQ(played.size(), 15u);
    media::IMediaSeeking& seeking = run.seeking();
    media::LONGLONG position = 8 * kPeriod;
    const std::vector<Received> sought = run.take(4, [&] {
        EXPECT_EQ(seeking.SetPositions(&position, media::AM_SEEKING_AbsolutePositioning, nullptr, 0), S_OK);
    });
    ASSERT_EQ(sought.size(), 4u);
    EXPECT_EQ(sought[0].start, 0);
    EXPECT_EQ(sought[1].start, kPeriod);
    for (size_t i = 0; i < sought.size(); ++i) EXPECT_EQ(sought[i].pixels, played[8 + i].pixels) << i;
}

// Twice as fast: the stamps and their lengths halve, the frames stay.
TEST_F(AnimSourceTest, FastRateHalvesTheStamps)
{
    SlideComposition();
    SourceRun run(*filter.get());
    ASSERT_EQ(run.seeking().SetRate(2.0), S_OK);
    const std::vector<Received> fast = run.take(3);
    ASSERT_EQ(fast.size(), 3u);
    EXPECT_EQ(fast[1].start, kPeriod / 2);
    EXPECT_EQ(fast[1].stop, kPeriod);
    EXPECT_NEAR(SquareCentre(fast[0]), 40, 1);
}

TEST_F(AnimSourceTest, WithoutPicturesFramesAreBlack)
{
    SlideComposition(0);
    SourceRun run(*filter.get());
    const std::vector<Received> frames = run.take(2);
    ASSERT_EQ(frames.size(), 2u);
    for (const uint32_t pixel : frames[1].pixels) ASSERT_EQ(pixel, 0xFF000000u);
}

// The stream's samples carry no alpha: a half-transparent picture is half as bright over
// the black of the frame.
TEST_F(AnimSourceTest, TranslucentPicturesBlendOverBlack)
{
    files.text("Scenes/faded.txt", "Duration 1\nImage\n{\n  Name \"F\"\n  Size 4 3\n  Transparency 0.5\n}\n");
    Bstr source(u"faded.txt"), picture(files.picture("white.png", 8, 8, {0xFFFFFF}));
    filter->put_Source(source.get());
    filter->put_Width(kWidth);
    filter->put_Height(kHeight);
    filter->put_Duration(1.0);
    filter->put_Image1(picture.get());
    SourceRun run(*filter.get());
    const std::vector<Received> frames = run.take(1);
    ASSERT_EQ(frames.size(), 1u);
    const uint32_t sample = At(frames[0], 80, 60);
    EXPECT_NEAR(int(sample & 0xFF), 128, 2);
    EXPECT_EQ(sample >> 24, 0xFFu);
}

// Image3 alone counts three pictures: the places of the first two find no file.
TEST_F(AnimSourceTest, ThirdPictureAloneTakesTheThirdPlace)
{
    files.text("Scenes/three.txt",
               "Duration 1\nImage\n{\n  Name \"1\"\n  Position -1 0\n}\n"
               "Image\n{\n  Name \"2\"\n  Position 0 0\n}\nImage\n{\n  Name \"3\"\n"
               "  Position 1 0\n}\n");
    Bstr source(u"three.txt"), picture(files.picture("green.png", 8, 8, {0x00FF00}));
    filter->put_Source(source.get());
    filter->put_Width(kWidth);
    filter->put_Height(kHeight);
    filter->put_Duration(1.0);
    filter->put_Image3(picture.get());
    SourceRun run(*filter.get());
    const std::vector<Received> frames = run.take(1);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(Rgb(frames[0].pixels[size_t(60 * kWidth + 120)]), 0x00FF00u);
    EXPECT_EQ(Rgb(frames[0].pixels[size_t(60 * kWidth + 40)]), 0u);
    EXPECT_EQ(Rgb(frames[0].pixels[size_t(60 * kWidth + 80)]), 0u);
}

}  // namespace
}  // namespace qx::test
