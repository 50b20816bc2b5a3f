// CSwfRenderer and CFlashAnimation over movies written by the project's writer: which
// frame a progress gives (spread over the clip, or looping at the movie's own pace), the
// magenta background and its key, the stage's fit, the destination rectangle, the data
// path before every name, and the failures the thumbnails report.
#include "filters/SwfRenderer.h"
#include "filters/FlashAnimation.h"
#include "tools/swf/SwfWriter.h"
#include "wrap3d/DataPath.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace qx {
namespace {

namespace fs = std::filesystem;
using swftool::ShapeBuilder;
using swftool::SwfWriter;

constexpr uint32_t kMagenta = 0xFFFF00FFu;
constexpr uint32_t kMarker = 0x12345678u;  // translucent: a round trip through premultiplied samples would show
constexpr uint32_t kOpaqueMarker = 0xFF345678u;

// The opaque BGRA sample of frame `index` of the numbered movie.
uint32_t frameColour(int index) { return 0xFF000000u | uint32_t(index * 20 + 10) << 16 | 0x4080u; }

class SwfFiles : public ::testing::Test {
protected:
    void SetUp() override
    {
        dir_ = fs::temp_directory_path() / ("qx-swfrenderer-" + std::to_string(::getpid()));
        fs::create_directories(dir_);
        SetDataPath(dir_.u16string());
    }
    void TearDown() override
    {
        SetDataPath(u"");
        fs::remove_all(dir_);
    }

    void write(const std::string& name, const std::vector<uint8_t>& bytes) const
    {
        std::ofstream(dir_ / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    }

    // `frames` frames of 20 by 10 pixels at 10 per second, each a rectangle of its own
    // colour over the left half of the stage (x 0 to 10); the right half is background.
    void writeNumbered(const std::string& name, int frames) const
    {
        SwfWriter writer(10, {0, 400, 0, 200}, 10.0);
        for (int f = 0; f < frames; ++f) {
            ShapeBuilder shape;
            const uint32_t c = frameColour(f);
            shape.fills = {swf::FillStyle{swf::FillKind::Solid, {uint8_t(c >> 16), uint8_t(c >> 8), uint8_t(c), 255}}};
            shape.rectangle(0, 0, 200, 200, 1);
            writer.defineShape(uint16_t(f + 1), shape);
            writer.place(1, uint16_t(f + 1), {}, std::nullopt, std::nullopt, std::nullopt, f > 0);
            writer.showFrame();
        }
        write(name, writer.finish());
    }

    fs::path dir_;
};

// The sample at (x, y) of a 20-wide frame after a draw at `progress`.
uint32_t drawnAt(CSwfRenderer& renderer, float progress, int x = 5, int y = 5)
{
    std::vector<uint32_t> pixels(20 * 10, kMarker);
    renderer.Draw(pixels.data(), progress, 0, 0, 0, 1, 1);
    return pixels[size_t(y * 20 + x)];
}

TEST_F(SwfFiles, ProgressSpreadsTheFramesOverTheClipWithoutASpan)
{
    writeNumbered("count.swf", 10);
    CSwfRenderer renderer;
    ASSERT_EQ(renderer.Load(u"count.swf", 20, 10, 0), 1);
    EXPECT_EQ(renderer.TotalFrames(), 10);
    EXPECT_FLOAT_EQ(renderer.Fps(), 10.0f);
    EXPECT_EQ(drawnAt(renderer, 0.0f), frameColour(0));
    EXPECT_EQ(drawnAt(renderer, 0.35f), frameColour(3));
    EXPECT_EQ(drawnAt(renderer, 0.999f), frameColour(9));
    // 1.0 asks for one past the last frame: the jump fails, the frame before stays.
    EXPECT_EQ(drawnAt(renderer, 0.2f), frameColour(2));
    EXPECT_EQ(drawnAt(renderer, 1.0f), frameColour(2));
    EXPECT_EQ(drawnAt(renderer, -0.5f), frameColour(2));
    EXPECT_EQ(drawnAt(renderer, 0.5f, 15, 5), kMagenta);  // the background
}

TEST_F(SwfFiles, WithASpanTheMovieLoopsAtItsOwnRate)
{
    writeNumbered("loop.swf", 10);
    CSwfRenderer renderer;
    ASSERT_EQ(renderer.Load(u"loop.swf", 20, 10, 0), 1);
    renderer.SetDuration(4.0f);  // 40 frames of clip for a movie of 10
    EXPECT_EQ(drawnAt(renderer, 0.1f), frameColour(4));
    EXPECT_EQ(drawnAt(renderer, 0.5f), frameColour(0));   // frame 20, looped twice
    EXPECT_EQ(drawnAt(renderer, 0.58f), frameColour(3));  // frame 23
    EXPECT_EQ(drawnAt(renderer, 1.0f), frameColour(0));   // frame 40
}

TEST_F(SwfFiles, KeyedDrawsLeaveTheTargetWhereTheMovieShowsItsBackground)
{
    writeNumbered("key.swf", 1);
    CSwfRenderer renderer;
    ASSERT_EQ(renderer.Load(u"key.swf", 20, 10, 0), 1);
    std::vector<uint32_t> pixels(200, kMarker);
    renderer.Draw(pixels.data(), 0.0f, 1, 0, 0, 1, 1);
    EXPECT_EQ(pixels[5 * 20 + 5], frameColour(0));
    EXPECT_EQ(pixels[5 * 20 + 15], kMarker);
    EXPECT_EQ(pixels[9 * 20 + 10], kMarker);
}

TEST_F(SwfFiles, TheFrameGoesIntoItsDestinationRectangle)
{
    writeNumbered("rect.swf", 1);
    CSwfRenderer renderer;
    ASSERT_EQ(renderer.Load(u"rect.swf", 20, 10, 0), 1);
    std::vector<uint32_t> pixels(200, kOpaqueMarker);
    // The right half of the target: the movie's left half lands on x 10 to 15.
    renderer.Draw(pixels.data(), 0.0f, 0, 0.5f, 0.0f, 0.5f, 1.0f);
    EXPECT_EQ(pixels[5 * 20 + 4], kOpaqueMarker);
    EXPECT_EQ(pixels[5 * 20 + 12], frameColour(0));
    EXPECT_EQ(pixels[5 * 20 + 18], kMagenta);
}

TEST_F(SwfFiles, ExactFitStretchesTheStageAndShowAllCentresIt)
{
    writeNumbered("fit.swf", 1);
    for (const int exact : {0, 1}) {
        CSwfRenderer renderer;
        ASSERT_EQ(renderer.Load(u"fit.swf", 20, 20, exact), 1);
        std::vector<uint32_t> pixels(400, kMarker);
        renderer.Draw(pixels.data(), 0.0f, 0, 0, 0, 1, 1);
        // Show all: the 20 by 10 stage sits in rows 5 to 14; exact fit fills all rows.
        EXPECT_EQ(pixels[1 * 20 + 5], exact ? frameColour(0) : kMagenta);
        EXPECT_EQ(pixels[10 * 20 + 5], frameColour(0));
    }
}

TEST_F(SwfFiles, NamesAreRelativeToTheDataPathAndMissingFilesFail)
{
    writeNumbered("anim.swf", 2);
    CSwfRenderer found;
    EXPECT_EQ(found.Load(u"anim.swf", 20, 10, 0), 1);
    CSwfRenderer missing;
    EXPECT_EQ(missing.Load(u"absent.swf", 20, 10, 0), 0);
    std::vector<uint32_t> pixels(200, kMarker);
    missing.Draw(pixels.data(), 0.5f, 0, 0, 0, 1, 1);  // nothing loaded: nothing drawn
    EXPECT_EQ(pixels, std::vector<uint32_t>(200, kMarker));
    SetDataPath(u"/nonexistent-qx-folder");
    CSwfRenderer elsewhere;
    EXPECT_EQ(elsewhere.Load(u"anim.swf", 20, 10, 0), 0);
}

TEST_F(SwfFiles, AFileThatIsNoMovieLoadsWithNoFramesAndDrawsNothing)
{
    write("notes.swf", {'h', 'e', 'l', 'l', 'o'});
    CSwfRenderer renderer;
    ASSERT_EQ(renderer.Load(u"notes.swf", 20, 10, 0), 1);
    EXPECT_EQ(renderer.TotalFrames(), 0);
    std::vector<uint32_t> pixels(200, kMarker);
    renderer.Draw(pixels.data(), 0.5f, 1, 0, 0, 1, 1);
    EXPECT_EQ(pixels, std::vector<uint32_t>(200, kMarker));
}

TEST_F(SwfFiles, AFolderLoadsWithNoFrames)
{
    // The data path itself, as an empty source names it, exists but is no movie.
    CSwfRenderer renderer;
    ASSERT_EQ(renderer.Load(u"", 20, 10, 0), 1);
    EXPECT_EQ(renderer.TotalFrames(), 0);
    EXPECT_EQ(renderer.Fps(), 0.0f);
}

TEST_F(SwfFiles, RenderersComeAndGoWithTheirWorkers)
{
    writeNumbered("many.swf", 3);
    for (int i = 0; i < 50; ++i) {
        CSwfRenderer renderer;
        ASSERT_EQ(renderer.Load(u"many.swf", 20, 10, i % 2), 1);
        if (i % 3 == 0) {
            EXPECT_EQ(drawnAt(renderer, 0.5f), frameColour(1));
        }
    }
}

TEST_F(SwfFiles, FlashAnimationGivesTheFirstFrameOverTheCallersPixels)
{
    writeNumbered("thumb.swf", 4);
    const auto animation = CFlashAnimation::Create();
    std::vector<uint32_t> pixels(200, kMarker);
    auto* frame = reinterpret_cast<BYTE*>(pixels.data());
    const Bstr name(u"thumb.swf");
    EXPECT_EQ(animation->GetFrame(name.get(), 20, 10, frame), S_OK);
    EXPECT_EQ(pixels[5 * 20 + 5], frameColour(0));
    EXPECT_EQ(pixels[5 * 20 + 15], kMarker);

    std::vector<uint32_t> untouched(200, kMarker);
    const Bstr absent(u"absent.swf");
    EXPECT_EQ(animation->GetFrame(absent.get(), 20, 10, reinterpret_cast<BYTE*>(untouched.data())), E_FAIL);
    EXPECT_EQ(untouched, std::vector<uint32_t>(200, kMarker));
    EXPECT_EQ(animation->GetFrame(name.get(), 20, 10, nullptr), E_POINTER);
    EXPECT_EQ(animation->GetFrame(name.get(), 0, 10, frame), E_INVALIDARG);
    IUnknown* unknown = nullptr;
    EXPECT_EQ(animation->QueryInterface(IFlashAnimation::iid, reinterpret_cast<void**>(&unknown)), S_OK);
    unknown->Release();
}

}  // namespace
}  // namespace qx
