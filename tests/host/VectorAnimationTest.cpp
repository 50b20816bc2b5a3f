// Effect 15000, the vector animation: the movie named by Source, under the data path,
// drawn over each frame with its magenta background keyed out, its frame chosen by the
// progress and the effect's span; a movie that cannot be loaded fails Setup.
#include "tests/host/EffectHarness.h"
#include "tools/swf/SwfWriter.h"
#include "wrap3d/DataPath.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace qx {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kGrey = 0xFF808080u;

class VectorAnimation : public ::testing::Test {
protected:
    void SetUp() override
    {
        dir_ = fs::temp_directory_path() / ("qx-host-swf-" + std::to_string(::getpid()));
        fs::create_directories(dir_);
        SetDataPath(dir_.u16string());
        // Two frames at 10 a second over a 16 by 8 stage: a red, then a blue square on
        // the left half; the rest is background.
        swftool::SwfWriter writer(10, {0, 320, 0, 160}, 10.0);
        for (uint16_t frame = 0; frame < 2; ++frame) {
            swftool::ShapeBuilder shape;
            shape.fills = {swf::FillStyle{swf::FillKind::Solid,
                                          frame == 0 ? swf::Rgba{255, 0, 0, 255} : swf::Rgba{0, 0, 255, 255}}};
            shape.rectangle(0, 0, 160, 160, 1);
            writer.defineShape(uint16_t(frame + 1), shape);
            writer.place(1, uint16_t(frame + 1), {}, std::nullopt, std::nullopt, std::nullopt, frame > 0);
            writer.showFrame();
        }
        const auto bytes = writer.finish();
        std::ofstream(dir_ / "anim.swf", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    }
    void TearDown() override
    {
        SetDataPath(u"");
        fs::remove_all(dir_);
    }

    HRESULT setUp(std::u16string_view source, double seconds = 0.0)
    {
        harness.setInput(std::vector<uint32_t>(16 * 8, kGrey));
        if (const HRESULT hr = harness.select(15000); FAILED(hr)) return hr;
        const Bstr text(source);
        harness.effect().put_Source(text.get());
        harness.effect().put_Duration(seconds);
        return harness.setup();
    }

    test::EffectHarness harness{16, 8};
    fs::path dir_;
};

TEST_F(VectorAnimation, FramesOfTheMovieGoOverTheVideo)
{
    ASSERT_EQ(setUp(u"anim.swf"), S_OK);
    ASSERT_EQ(harness.execute(0.0f), S_OK);
    auto output = harness.output();
    EXPECT_EQ(output[2 * 16 + 3], 0xFFFF0000u);
    EXPECT_EQ(output[2 * 16 + 12], kGrey);    // the movie's background is keyed out
    ASSERT_EQ(harness.execute(0.75f), S_OK);  // frame 1 of 2, spread over the clip
    EXPECT_EQ(harness.output()[2 * 16 + 3], 0xFF0000FFu);
}

TEST_F(VectorAnimation, WithASpanTheMovieLoopsAtItsOwnRate)
{
    ASSERT_EQ(setUp(u"anim.swf", 1.0), S_OK);  // 10 frames of clip for 2 of movie
    ASSERT_EQ(harness.execute(0.15f), S_OK);
    EXPECT_EQ(harness.output()[2 * 16 + 3], 0xFF0000FFu);
    ASSERT_EQ(harness.execute(0.25f), S_OK);
    EXPECT_EQ(harness.output()[2 * 16 + 3], 0xFFFF0000u);
}

TEST_F(VectorAnimation, AMovieMissingFromTheDataPathFailsSetup) { EXPECT_EQ(setUp(u"absent.swf"), E_FAIL); }

}  // namespace
}  // namespace qx
