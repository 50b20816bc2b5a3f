// The stages of a render apart from FFmpeg: pacing of timed frames, quarter turns, the
// effect's span, parameter texts against a table, and the output's temporary file.
#include "apps/qxfx/EffectStage.h"
#include "apps/qxfx/FramePacer.h"
#include "apps/qxfx/FrameTurn.h"
#include "apps/qxfx/OutputTarget.h"
#include "apps/qxfx/ParamCheck.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>
#include <vector>

namespace qx::qxfx {
namespace {

namespace fs = std::filesystem;

// Frames of 1x1 whose one sample is their index, at the times given.
class ListedFrames : public FrameSource {
public:
    explicit ListedFrames(std::vector<double> times) : times_(std::move(times)) {}
    int width() const override { return 1; }
    int height() const override { return 1; }
    bool next(TimedFrame& out) override
    {
        if (next_ >= times_.size()) return false;
        out.frame = makeFrame(1, 1);
        out.frame.samples[0] = uint32_t(next_);
        out.seconds = times_[next_++];
        return true;
    }

private:
    std::vector<double> times_;
    size_t next_ = 0;
};

struct Paced {
    std::vector<uint32_t> indexes;
    std::vector<double> times;
};

Paced pace(std::vector<double> times, const Pacing& pacing)
{
    ListedFrames source(std::move(times));
    FramePacer pacer(source, pacing);
    Paced result;
    TimedFrame frame;
    while (pacer.next(frame)) {
        result.indexes.push_back(frame.frame.samples[0]);
        result.times.push_back(frame.seconds);
    }
    return result;
}

TEST(FramePacer, KeepsTheInputsTimesUnlessAskedForARate)
{
    const std::vector<double> uneven{0.0, 0.04, 0.08, 0.5, 0.6};
    const Paced kept = pace(uneven, {});
    EXPECT_EQ(kept.times, uneven);
    EXPECT_EQ(kept.indexes, (std::vector<uint32_t>{0, 1, 2, 3, 4}));

    // A count past the input's end holds its last frame, a frame of the input's rate apart.
    const Paced held = pace({0.0, 0.1}, {std::nullopt, 4, 10.0});
    EXPECT_EQ(held.indexes, (std::vector<uint32_t>{0, 1, 1, 1}));
    ASSERT_EQ(held.times.size(), 4u);
    EXPECT_NEAR(held.times[3], 0.3, 1e-9);

    // A count short of the input's end stops there.
    EXPECT_EQ(pace(uneven, {std::nullopt, 2, 25.0}).indexes, (std::vector<uint32_t>{0, 1}));
}

TEST(FramePacer, AConstantRateShowsTheFrameOfEachTime)
{
    // Frames at 0, 0.1, 0.5 (lasting 0.1 each) at 10 a second: each output time takes the
    // frame shown then, the last one repeated until it ends.
    const Paced slow = pace({0.0, 0.1, 0.5}, {10.0, std::nullopt, 10.0});
    EXPECT_EQ(slow.indexes, (std::vector<uint32_t>{0, 1, 1, 1, 1, 2}));
    EXPECT_NEAR(slow.times.back(), 0.5, 1e-9);

    // Twenty frames a second down to five: every fourth frame, none repeated.
    std::vector<double> fast;
    for (int i = 0; i < 20; ++i) fast.push_back(i * 0.05);
    const Paced dropped = pace(fast, {5.0, std::nullopt, 20.0});
    EXPECT_EQ(dropped.indexes, (std::vector<uint32_t>{0, 4, 8, 12, 16}));

    // With a count, a rate holds the last frame to reach it.
    EXPECT_EQ(pace({0.0}, {10.0, 3, 25.0}).indexes, (std::vector<uint32_t>{0, 0, 0}));
}

// A 3x2 frame whose samples count 0 to 5 along the rows.
Frame counted()
{
    Frame frame = makeFrame(3, 2);
    for (uint32_t i = 0; i < 6; ++i) frame.samples[i] = i;
    return frame;
}

TEST(FrameTurn, QuarterTurnsPutEachSampleWhereTheTurnTakesIt)
{
    Frame turned;
    turnClockwise(counted(), 90, turned);
    // Clockwise, the bottom-left sample (3) comes to the top-left.
    EXPECT_EQ(turned.width, 2);
    EXPECT_EQ(turned.height, 3);
    EXPECT_EQ(turned.samples, (std::vector<uint32_t>{3, 0, 4, 1, 5, 2}));

    turnClockwise(counted(), 270, turned);
    EXPECT_EQ(turned.samples, (std::vector<uint32_t>{2, 5, 1, 4, 0, 3}));
    turnClockwise(counted(), 180, turned);
    EXPECT_EQ(turned.width, 3);
    EXPECT_EQ(turned.samples, (std::vector<uint32_t>{5, 4, 3, 2, 1, 0}));
    EXPECT_THROW(turnClockwise(counted(), 45, turned), CommandError);
}

constexpr std::array<ParamDescriptor, 2> kTable{{
    {0, "level", "How strong", 5, 1, 20, ParamKind::Integer},
    {1, "tint", "A colour", 0, 0, kMaxColorRef, ParamKind::Color},
}};

std::string refusal(const std::string& text, ParamTable table)
{
    try {
        checkParamText(text, table);
    } catch (const CommandError& error) {
        return error.what();
    }
    return "";
}

TEST(ParamCheck, RefusesEachSlipNamingTheSlot)
{
    EXPECT_EQ(refusal("1;0;", kTable), "");
    EXPECT_EQ(refusal("20;16777215;", kTable), "");
    EXPECT_NE(refusal("0;0;", kTable).find("slot 0 (level: How strong): 0 is out of its range 1 to 20"),
              std::string::npos);
    EXPECT_NE(refusal("5;16777216;", kTable).find("slot 1 (tint"), std::string::npos);
    EXPECT_NE(refusal("5;-1;", kTable).find("slot 1 (tint"), std::string::npos);
    EXPECT_NE(refusal("5;", kTable).find("slot 1 (tint: A colour) is missing"), std::string::npos);
    EXPECT_NE(refusal("5;1x;", kTable).find("'1x' is not a whole number"), std::string::npos);
    EXPECT_NE(refusal("5;;", kTable).find("'' is not a whole number"), std::string::npos);
    EXPECT_NE(refusal("5;0", kTable).find("'0' has no ';'"), std::string::npos);
    EXPECT_NE(refusal("5;0;1;", kTable).find("3 values, the effect reads 2"), std::string::npos);
    // An effect that leaves its values to the editor takes any count, but whole numbers.
    EXPECT_EQ(refusal("-7;123456;", {}), "");
    EXPECT_NE(refusal("1;a;", {}).find("value 2"), std::string::npos);
    EXPECT_NE(refusal("1;4294967296;", {}).find("value 2: 4294967296 is too large"), std::string::npos);
    EXPECT_NE(refusal(std::string(17 * 2, ';'), {}).find("at most 16"), std::string::npos);
}

TEST(EffectStage, ProgressFollowsTimeWithinTheSpanOnly)
{
    EffectSettings fadeIn;
    fadeIn.effectId = 7;
    EffectStage stage(fadeIn, 4, 2, {1.0, 2.0});
    EXPECT_FALSE(stage.covers(0.99));
    EXPECT_TRUE(stage.covers(1.0));
    EXPECT_TRUE(stage.covers(3.0));
    EXPECT_FALSE(stage.covers(3.01));
    EXPECT_FLOAT_EQ(stage.progressAt(1.0), 0.0f);
    EXPECT_FLOAT_EQ(stage.progressAt(2.0), 0.5f);
    EXPECT_FLOAT_EQ(stage.progressAt(3.0), 1.0f);

    TimedFrame before{makeFrame(4, 2), 0.5};
    std::fill(before.frame.samples.begin(), before.frame.samples.end(), 0xFF336699u);
    TimedFrame start = before;
    start.seconds = 1.0;
    stage.apply(before);
    stage.apply(start);
    EXPECT_EQ(before.frame.samples[0], 0xFF336699u);
    // A fade in starts from black.
    EXPECT_EQ(start.frame.samples[0] & 0xFFFFFFu, 0u);
    // Only the frame inside the span was rendered, and it changed.
    EXPECT_EQ(stage.rendered(), 1);
    EXPECT_EQ(stage.unchanged(), 0);
    // At its end a fade in leaves the frame as it came: counted as unchanged.
    TimedFrame end = before;
    end.seconds = 3.0;
    stage.apply(end);
    EXPECT_EQ(end.frame.samples, before.frame.samples);
    EXPECT_EQ(stage.unchanged(), 1);
}

class OutputTargetTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        dir_ = fs::temp_directory_path() / ("qxfx-target-" + std::to_string(::getpid()));
        fs::create_directories(dir_);
    }
    void TearDown() override { fs::remove_all(dir_); }
    std::string path(const std::string& name) const { return (dir_ / name).string(); }
    fs::path dir_;
};

TEST_F(OutputTargetTest, WritesBesideTheTargetAndRenamesOnlyWhenComplete)
{
    std::string temporary;
    {
        OutputTarget target(path("clip.mp4"), {}, Overwrite::Refuse);
        temporary = target.writePath();
        EXPECT_EQ(fs::path(temporary).parent_path(), dir_);
        std::ofstream(temporary) << "half";
    }
    EXPECT_FALSE(fs::exists(temporary));
    EXPECT_FALSE(fs::exists(path("clip.mp4")));

    OutputTarget target(path("clip.mp4"), {}, Overwrite::Refuse);
    std::ofstream(target.writePath()) << "whole";
    target.commit();
    EXPECT_TRUE(fs::exists(path("clip.mp4")));
    EXPECT_FALSE(fs::exists(target.writePath()));
}

TEST_F(OutputTargetTest, NeverTakesAnInputOrAnUnaskedExistingFile)
{
    std::ofstream(path("in.mp4")) << "input";
    fs::create_symlink(path("in.mp4"), path("link.mp4"));
    const std::string inputs[] = {path("in.mp4")};
    EXPECT_THROW(OutputTarget(path("link.mp4"), inputs, Overwrite::Always), CommandError);
    EXPECT_THROW(OutputTarget(path("in.mp4"), inputs, Overwrite::Always), CommandError);
    std::ofstream(path("old.mp4")) << "old";
    EXPECT_THROW(OutputTarget(path("old.mp4"), {}, Overwrite::Refuse), CommandError);
    EXPECT_THROW(OutputTarget(path("old.mp4"), {}, Overwrite::Never), CommandError);
    EXPECT_NO_THROW(OutputTarget(path("old.mp4"), {}, Overwrite::Always));
    EXPECT_THROW(OutputTarget(path("absent/new.mp4"), {}, Overwrite::Refuse), CommandError);

    // A pattern gets its folder and is written in place.
    const OutputTarget frames(path("frames/f-%03d.png"), {}, Overwrite::Refuse);
    EXPECT_TRUE(fs::is_directory(path("frames")));
    EXPECT_EQ(frames.writePath(), path("frames/f-%03d.png"));
}

}  // namespace
}  // namespace qx::qxfx
