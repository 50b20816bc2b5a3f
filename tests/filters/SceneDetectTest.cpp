// Scene detection in graphs of a YV12 source, the filter and a sink, with a graph
// position that the test moves as a clip plays.
#include "filters/SceneDetect.h"
#include "platform/com/TaskMemory.h"
#include "tests/platform/media/TestGraph.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using namespace media;
using media::testing::make;
using media::testing::PlainGraph;
using media::testing::PositionGraph;
using media::testing::SinkFilter;
using media::testing::SourceFilter;
using media::testing::videoType;

constexpr LONG kWidth = 20;
constexpr LONG kHeight = 10;
constexpr size_t kLuma = kWidth * kHeight;
constexpr size_t kChroma = kLuma / 4;

/// A YV12 frame: luma of one value, the chroma planes of others.
std::vector<uint8_t> flatFrame(uint8_t luma, uint8_t v = 128, uint8_t u = 128)
{
    std::vector<uint8_t> frame(kLuma + 2 * kChroma, luma);
    std::fill_n(frame.begin() + kLuma, kChroma, v);
    std::fill_n(frame.begin() + kLuma + kChroma, kChroma, u);
    return frame;
}

/// A black frame with its first `moved` luma samples white: each moves from bin 0 to
/// bin 15, so the distance to a black frame is twice `moved`.
std::vector<uint8_t> partlyWhite(size_t moved)
{
    auto frame = flatFrame(0);
    std::fill_n(frame.begin(), moved, uint8_t(255));
    return frame;
}

struct SceneGraph {
    com::ComPtr<CQXSceneDetect> detect = CQXSceneDetect::Create();
    com::ComPtr<SourceFilter> source;
    com::ComPtr<SinkFilter> sink = make<SinkFilter>();
    com::ComPtr<PositionGraph> graph = make<PositionGraph>();

    explicit SceneGraph(LONG width = kWidth, LONG height = kHeight)
        : source(make<SourceFilter>(videoType(MEDIASUBTYPE_YV12, width, height, 12), 4096))
    {
        detect->JoinFilterGraph(graph.get(), nullptr);
        EXPECT_EQ(source->Output().Connect(&detect->InputPin(), nullptr), S_OK);
        EXPECT_EQ(detect->OutputPin().Connect(&sink->Input(), nullptr), S_OK);
        sink->Run(0);
        detect->Run(0);
        source->Run(0);
    }
    /// Plays `frames` with the graph at 0.04 s further for each.
    void play(const std::vector<std::vector<uint8_t>>& frames)
    {
        for (const auto& frame : frames) {
            EXPECT_EQ(source->deliver(frame), S_OK);
            graph->position += 400000;
        }
    }
    /// Stops the whole graph and runs it again, as a host does between two plays.
    void restart()
    {
        source->Stop();
        detect->Stop();
        sink->Stop();
        sink->Run(0);
        detect->Run(0);
        source->Run(0);
    }
    std::vector<int64_t> scenes()
    {
        int64_t* times = nullptr;
        LONG count = 0;
        if (detect->GetScenes(&times, &count) != S_OK) return {};
        std::vector<int64_t> result(times, times + count);
        CoTaskMemFree(times);
        return result;
    }
};

TEST(SceneDetect, TakesExactlyYV12VideoWithAVideoInfoFormat)
{
    const auto detect = CQXSceneDetect::Create();
    const auto check = [&](CMediaType type) { return detect->CheckInputType(&type); };
    EXPECT_EQ(check(videoType(MEDIASUBTYPE_YV12, 20, 10, 12)), S_OK);
    EXPECT_EQ(check(videoType(MEDIASUBTYPE_RGB32, 20, 10, 32)), HRESULT(0x8004022Au));
    CMediaType otherFormat = videoType(MEDIASUBTYPE_YV12, 20, 10, 12);
    otherFormat.formattype = GUID_NULL;
    EXPECT_EQ(check(otherFormat), VFW_E_TYPE_NOT_ACCEPTED);
    CMediaType shortFormat = videoType(MEDIASUBTYPE_YV12, 20, 10, 12);
    shortFormat.SetFormat(shortFormat.Format().first(40));
    EXPECT_EQ(check(shortFormat), VFW_E_TYPE_NOT_ACCEPTED);

    com::ComPtr<IQXSceneDetect> control;
    EXPECT_EQ(detect->QueryInterface(IQXSceneDetect::iid, reinterpret_cast<void**>(control.out())), S_OK);
}

TEST(SceneDetect, HistogramDistanceCountsMovesBetweenBinsTwice)
{
    const auto black = flatFrame(0);
    const auto white = flatFrame(255);
    EXPECT_EQ(CQXSceneDetect::HistogramDistance(black.data(), black.data(), kLuma, 16), 0);
    EXPECT_EQ(CQXSceneDetect::HistogramDistance(black.data(), white.data(), kLuma, 16), 2 * int32_t(kLuma));
    // 15 and 16 fall in two bins of 16 but in one bin of 8.
    const std::vector<uint8_t> a(64, 15);
    const std::vector<uint8_t> b(64, 16);
    EXPECT_EQ(CQXSceneDetect::HistogramDistance(a.data(), b.data(), 64, 16), 128);
    EXPECT_EQ(CQXSceneDetect::HistogramDistance(a.data(), b.data(), 64, 8), 0);
}

TEST(SceneDetect, FindsACutFromBlackToWhiteAtTheGraphsPositionPlusATenth)
{
    SceneGraph g;
    g.play({flatFrame(0), flatFrame(0), flatFrame(255), flatFrame(255)});
    // The cut is seen on the third frame, with the graph at 0.08 s.
    EXPECT_EQ(g.scenes(), (std::vector<int64_t>{800000 + 1000000}));
}

TEST(SceneDetect, ADistanceEqualToTheHardThresholdIsNoCut)
{
    // 200 luma samples: the hard threshold is 70 (200 * 0.35). 35 samples moved make a
    // distance of 70, 36 make 72.
    SceneGraph g;
    g.play({flatFrame(0), partlyWhite(35), flatFrame(0), partlyWhite(36)});
    EXPECT_EQ(g.scenes(), (std::vector<int64_t>{1200000 + 1000000}));
}

TEST(SceneDetect, CutsAreDecidedOnTheLumaPlaneAlone)
{
    // Above the hard threshold a cut is found before the chroma planes are looked at;
    // below it, the soft threshold, which is higher, ends the comparison.
    SceneGraph g;
    g.play({flatFrame(60, 0, 0), flatFrame(60, 255, 255), flatFrame(60, 0, 255)});
    EXPECT_EQ(g.detect->GetScenes(nullptr, nullptr), S_FALSE);
}

TEST(SceneDetect, PassesTheVideoOnUntouched)
{
    SceneGraph g;
    const auto first = flatFrame(10, 20, 30);
    const auto second = partlyWhite(100);
    g.play({first, second});
    ASSERT_EQ(g.sink->received().size(), 2u);
    EXPECT_EQ(g.sink->received()[0].bytes, first);
    EXPECT_EQ(g.sink->received()[1].bytes, second);
}

TEST(SceneDetect, GetScenesGivesSeparateCopiesAndTouchesNothingWhenThereIsNone)
{
    SceneGraph g;
    int64_t sentinel = 77;
    int64_t* times = &sentinel;
    LONG count = -9;
    EXPECT_EQ(g.detect->GetScenes(&times, &count), S_FALSE);
    EXPECT_EQ(times, &sentinel);
    EXPECT_EQ(count, -9);

    g.play({flatFrame(0), flatFrame(255), flatFrame(0)});
    int64_t* first = nullptr;
    int64_t* second = nullptr;
    ASSERT_EQ(g.detect->GetScenes(&first, &count), S_OK);
    ASSERT_EQ(g.detect->GetScenes(&second, &count), S_OK);
    EXPECT_NE(first, second);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(std::vector<int64_t>(first, first + 2), std::vector<int64_t>(second, second + 2));
    CoTaskMemFree(first);
    CoTaskMemFree(second);
}

TEST(SceneDetect, AOneFrameClipHasNoScenes)
{
    SceneGraph g;
    g.play({flatFrame(255)});
    EXPECT_EQ(g.detect->GetScenes(nullptr, nullptr), S_FALSE);
}

TEST(SceneDetect, ResetForgetsTheCutsAndTheLastFrame)
{
    SceneGraph g;
    g.play({flatFrame(0), flatFrame(255)});
    EXPECT_EQ(g.scenes().size(), 1u);
    EXPECT_EQ(g.detect->Reset(), S_OK);
    EXPECT_TRUE(g.scenes().empty());
    // The frame after Reset is a first frame again: no cut against the white one before.
    g.play({flatFrame(0), flatFrame(0)});
    EXPECT_TRUE(g.scenes().empty());
    // Stopping and running again clears nothing.
    g.play({flatFrame(255)});
    g.restart();
    g.play({flatFrame(0)});
    EXPECT_EQ(g.scenes().size(), 2u);
}

TEST(SceneDetect, WithoutAGraphOrItsSeekingCutsAreDropped)
{
    SceneGraph g;
    const auto plain = make<PlainGraph>();
    g.detect->JoinFilterGraph(plain.get(), nullptr);
    g.play({flatFrame(0), flatFrame(255)});
    g.detect->JoinFilterGraph(nullptr, nullptr);
    g.play({flatFrame(0)});
    EXPECT_EQ(g.detect->GetScenes(nullptr, nullptr), S_FALSE);
}

TEST(SceneDetect, KeepsThePlaneSizesOfTheFirstFrameAndSkipsFramesTooShortForThem)
{
    SceneGraph g;
    g.play({flatFrame(0)});
    // A shorter frame (its type changed on the way) is passed on but not compared.
    g.play({std::vector<uint8_t>(kLuma, 255)});
    EXPECT_EQ(g.sink->received().size(), 2u);
    EXPECT_EQ(g.detect->GetScenes(nullptr, nullptr), S_FALSE);
    // A longer one is compared on the first frame's planes.
    auto longer = flatFrame(255);
    longer.resize(longer.size() + 500, 0);
    g.play({longer});
    EXPECT_EQ(g.scenes().size(), 1u);
}

TEST(SceneDetect, OddSizesTakeAQuarterOfTheLumaForEachChromaPlane)
{
    // 5 x 3: 15 luma bytes and chroma planes of 3 (15 >> 2), read from a buffer that
    // holds the 3 x 2 planes a decoder writes; nothing past the planes is read.
    SceneGraph g(5, 3);
    std::vector<uint8_t> black(15 + 2 * 6, 0);
    std::vector<uint8_t> white(15 + 2 * 6, 0);
    std::fill_n(white.begin(), 15, uint8_t(255));
    g.play({black, white, std::vector<uint8_t>(15 + 2 * 3 - 1, 0)});
    EXPECT_EQ(g.scenes(), (std::vector<int64_t>{400000 + 1000000}));
}

TEST(SceneDetect, SizesThatMakeNoPlanesAreNeverTaken)
{
    for (const auto& [width, height] : {std::pair{0, 10}, std::pair{20, -10}, std::pair{65536, 65536}}) {
        SceneGraph g(width, height);
        g.play({flatFrame(0), flatFrame(255)});
        EXPECT_EQ(g.detect->GetScenes(nullptr, nullptr), S_FALSE);
        EXPECT_EQ(g.sink->received().size(), 2u);
    }
}

}  // namespace
}  // namespace qx
