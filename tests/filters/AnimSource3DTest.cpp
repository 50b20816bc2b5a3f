// The composition source with a 3D composition of the build's content pack: the stream's
// thread enters the scene bridge, the user's pictures take the places of the cards, and
// frames come out bottom-up.
#include "filters/Anim3DVideoSource.h"
#include "tests/filters/CompoFiles.h"
#include "tests/filters/SourceRun.h"
#include "tests/wrap3d/SceneFixture.h"

#include <gtest/gtest.h>

namespace qx::test {
namespace {

constexpr LONG kWidth = 128, kHeight = 96;

class AnimSource3DTest : public SceneTest {
protected:
    com::ComPtr<CAnim3DVideoSource> Carousel(const std::vector<std::u16string>& pictures)
    {
        auto filter = CAnim3DVideoSource::Create();
        Bstr source(u"Compositions\\Carousel.cpo3d");
        filter->put_Source(source.get());
        filter->put_Width(kWidth);
        filter->put_Height(kHeight);
        filter->put_Duration(10.0);
        for (size_t i = 0; i < pictures.size(); ++i) {
            Bstr picture(pictures[i]);
            filter->PutImage(i, picture.get());
        }
        return filter;
    }
    /// The frame at `seconds`, turned top-down as the scene fixture reads frames.
    std::vector<uint32_t> FrameAt(CAnim3DVideoSource& filter, double seconds)
    {
        SourceRun run(filter);
        EXPECT_EQ(run.connected(), S_OK);
        media::LONGLONG position = media::LONGLONG(seconds * 1e7);
        EXPECT_EQ(run.seeking().SetPositions(&position, media::AM_SEEKING_AbsolutePositioning, nullptr, 0), S_OK);
        const std::vector<Received> frames = run.take(1);
        if (frames.empty()) return {};
        std::vector<uint32_t> topDown(frames[0].pixels.size());
        for (LONG y = 0; y < kHeight; ++y) {
            std::copy_n(frames[0].pixels.begin() + (kHeight - 1 - y) * kWidth, kWidth, topDown.begin() + y * kWidth);
        }
        return topDown;
    }

    CompoFolder files;
};

TEST_F(AnimSource3DTest, UserPicturesTakeTheCardsPlaces)
{
    const std::u16string red = files.picture("red.png", 32, 24, {0xE02020});
    const std::u16string green = files.picture("green.png", 32, 24, {0x20E020});
    const std::u16string blue = files.picture("blue.png", 32, 24, {0x2020E0});
    const std::u16string yellow = files.picture("yellow.png", 32, 24, {0xE0E020});

    // At the start the first card faces the camera.
    auto four = Carousel({red, green, blue, yellow});
    const std::vector<uint32_t> start = FrameAt(*four.get(), 0.0);
    ASSERT_EQ(start.size(), size_t(kWidth * kHeight));
    EXPECT_EQ(Dominant(At(start, kWidth, 0.0f, -0.1f)), Colour::Red);

    // Halfway the carousel has turned a quarter: a side card is in front.
    auto again = Carousel({red, green, blue, yellow});
    const Colour front = Dominant(At(FrameAt(*again.get(), 5.0), kWidth, 0.0f, -0.1f));
    EXPECT_TRUE(front == Colour::Green || front == Colour::Yellow) << front;

    // One picture fills every place.
    auto one = Carousel({blue});
    EXPECT_EQ(Dominant(At(FrameAt(*one.get(), 5.0), kWidth, 0.0f, -0.1f)), Colour::Blue);
}

TEST_F(AnimSource3DTest, WithoutPicturesNoPlayerIsBuilt)
{
    auto none = Carousel({});
    const std::vector<uint32_t> frame = FrameAt(*none.get(), 1.0);
    ASSERT_FALSE(frame.empty());
    for (const uint32_t pixel : frame) ASSERT_EQ(pixel, 0u) << "black, as zeroed";
}

TEST_F(AnimSource3DTest, AsksTheBridgeAboutCompositions)
{
    auto filter = CAnim3DVideoSource::Create();
    Bstr carousel(u"Compositions\\Carousel.cpo3d"), missing(u"Nothing.cpo3d");
    BYTE count = 0;
    EXPECT_EQ(filter->GetSceneImagesCount(carousel.get(), &count), S_OK);
    EXPECT_EQ(count, 4);
    float duration = 0.0f;
    filter->GetSceneDuration(carousel.get(), &duration);
    EXPECT_EQ(duration, 10.0f);
    filter->GetSceneDuration(missing.get(), &duration);
    EXPECT_EQ(duration, 0.0f);
}

}  // namespace
}  // namespace qx::test
