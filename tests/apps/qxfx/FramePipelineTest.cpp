// The stages of a render run at once: frames keep their order, the middle stage stays on
// the caller's thread, buffers go round rather than being made per frame, and a stop or
// an error in any stage ends the run without a hang and without losing processed frames.
#include "apps/qxfx/FramePipeline.h"
#include "apps/qxfx/FrameSource.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

namespace qx::qxfx {
namespace {

// Frames of 1x1 whose sample is their index, a buffer made only when the one handed in
// has none; it throws at `failAt` when asked to.
class CountingFrames : public FrameSource {
public:
    explicit CountingFrames(long count, long failAt = -1) : count_(count), failAt_(failAt) {}
    int width() const override { return 1; }
    int height() const override { return 1; }
    bool next(TimedFrame& out) override
    {
        if (read_ == failAt_) throw std::runtime_error("damaged at frame " + std::to_string(read_));
        if (read_ >= count_) return false;
        if (out.frame.samples.empty()) {
            out.frame = makeFrame(1, 1);
            ++buffersMade_;
        }
        out.frame.samples[0] = uint32_t(read_);
        out.seconds = double(read_) / 25.0;
        ++read_;
        return true;
    }
    long read() const { return read_; }
    long buffersMade() const { return buffersMade_; }

private:
    long count_;
    long failAt_;
    std::atomic<long> read_ = 0;
    long buffersMade_ = 0;
};

// A stage that takes a little longer every few frames, so that queues fill and empty.
void unevenDelay(uint32_t index)
{
    if (index % 7 == 0) std::this_thread::sleep_for(std::chrono::microseconds(200));
}

struct Seen {
    std::vector<uint32_t> middle;
    std::vector<uint32_t> written;
    std::vector<double> times;
};

Stages<TimedFrame> stagesOf(
    CountingFrames& source, Seen& seen, const std::function<bool()>& stop = [] { return false; })
{
    return {
        .read = [&source](TimedFrame& frame) { return source.next(frame); },
        .middle =
            [&seen](TimedFrame& frame) {
                seen.middle.push_back(frame.frame.samples[0]);
                unevenDelay(frame.frame.samples[0]);
                frame.frame.samples[0] += 1000;  // what the writer must see
            },
        .write =
            [&seen](const TimedFrame& frame) {
                unevenDelay(frame.frame.samples[0] / 3);
                seen.written.push_back(frame.frame.samples[0]);
                seen.times.push_back(frame.seconds);
            },
        .stopRequested = stop,
    };
}

class StagesBothWays : public ::testing::TestWithParam<bool> {};

TEST_P(StagesBothWays, EveryFrameIsWrittenOnceInOrderWithTheMiddlesWork)
{
    CountingFrames source(400);
    Seen seen;
    EXPECT_EQ(runStages(stagesOf(source, seen), GetParam()), 400);
    ASSERT_EQ(seen.middle.size(), 400u);
    ASSERT_EQ(seen.written.size(), 400u);
    for (uint32_t i = 0; i < 400; ++i) {
        EXPECT_EQ(seen.middle[i], i);
        EXPECT_EQ(seen.written[i], i + 1000);
        EXPECT_DOUBLE_EQ(seen.times[i], double(i) / 25.0);
    }
    // Buffers go round: a handful are made for the whole run, not one a frame.
    EXPECT_LE(source.buffersMade(), 8);
}

TEST_P(StagesBothWays, AStopEndsTheRunAndKeepsWhatTheMiddleFinished)
{
    CountingFrames source(1'000'000);
    Seen seen;
    const long written = runStages(stagesOf(source, seen, [&seen] { return seen.middle.size() >= 30; }), GetParam());
    EXPECT_EQ(written, 30);
    EXPECT_EQ(seen.written.size(), 30u);
    // The reader stopped soon after, rather than reading the whole clip.
    EXPECT_LT(source.read(), 50);
}

TEST_P(StagesBothWays, AnErrorOfTheSourceIsThrownToTheCaller)
{
    CountingFrames source(1000, 57);
    Seen seen;
    EXPECT_THROW(
        {
            try {
                runStages(stagesOf(source, seen), GetParam());
            } catch (const std::runtime_error& error) {
                EXPECT_STREQ(error.what(), "damaged at frame 57");
                throw;
            }
        },
        std::runtime_error);
    EXPECT_LE(seen.written.size(), 57u);
}

TEST_P(StagesBothWays, AnErrorOfTheMiddleOrTheWriterStopsTheReader)
{
    for (const bool inWriter : {false, true}) {
        SCOPED_TRACE(inWriter ? "writer" : "middle");
        CountingFrames source(1'000'000);
        const auto failAtTen = [](const TimedFrame& frame) {
            if (frame.frame.samples[0] % 1000 == 10) throw std::runtime_error("disk full");
        };
        const Stages<TimedFrame> stages{
            .read = [&source](TimedFrame& frame) { return source.next(frame); },
            .middle =
                [&](TimedFrame& frame) {
                    if (!inWriter) failAtTen(frame);
                },
            .write =
                [&](const TimedFrame& frame) {
                    if (inWriter) failAtTen(frame);
                },
        };
        EXPECT_THROW(runStages(stages, GetParam()), std::runtime_error);
        EXPECT_LT(source.read(), 30);
    }
}

INSTANTIATE_TEST_SUITE_P(Threads, StagesBothWays, ::testing::Bool(),
                         [](const auto& run) { return run.param ? "Threaded" : "InTurn"; });

TEST(Stages, TheMiddleStageRunsOnTheCallersThread)
{
    // The effect host is set up on the caller's thread, where a 3D effect's drawing
    // context is current: every Execute must come from there.
    CountingFrames source(50);
    const std::thread::id caller = std::this_thread::get_id();
    std::atomic<int> elsewhere = 0;
    std::atomic<int> writtenOnCaller = 0;
    const Stages<TimedFrame> stages{
        .read = [&source](TimedFrame& frame) { return source.next(frame); },
        .middle = [&](TimedFrame&) { elsewhere += std::this_thread::get_id() != caller; },
        .write = [&](const TimedFrame&) { writtenOnCaller += std::this_thread::get_id() == caller; },
    };
    EXPECT_EQ(runStages(stages, true), 50);
    EXPECT_EQ(elsewhere, 0);
    EXPECT_EQ(writtenOnCaller, 0);  // writing runs beside it
}

}  // namespace
}  // namespace qx::qxfx
