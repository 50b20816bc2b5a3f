// Every effect computed on the processor gives the same frames with its rows split
// between the shared worker threads as on one thread. The effects with state (the water,
// the scratches, the old film, the puzzle) keep their random draws in the same order, so
// a run of frames is compared, not only one. Setup seeds the random sequence with the
// clock, so each effect is set up once and the process forked: the copy renders on one
// thread, the test itself on several, both from the same state.
#include "platform/os/WorkerPool.h"
#include "tests/host/EffectHarness.h"
#include "tests/host/ProcessorEffects.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

namespace qx {
namespace {

// Enough rows for several slices, and an odd width for the effects that work in blocks.
constexpr LONG kWidth = 161;
constexpr LONG kHeight = 120;
constexpr int kFrames = 5;

std::vector<uint32_t> inputFrame()
{
    auto input = test::gradientFrame(kWidth, kHeight);
    // Some translucent samples, so that the premultiplied paths are taken too.
    for (size_t i = 0; i < input.size(); i += 7) input[i] = (input[i] & 0x00FFFFFFu) | 0x80000000u;
    return input;
}

/// The effect's next frames, one after another.
std::vector<uint32_t> renderFrames(test::EffectHarness& harness)
{
    std::vector<uint32_t> all;
    for (int frame = 0; frame < kFrames; ++frame) {
        harness.markOutput(0xDEADBEEF);
        if (harness.execute(float(frame) / float(kFrames - 1)) != S_OK) return {};
        const auto output = harness.output();
        all.insert(all.end(), output.begin(), output.end());
    }
    return all;
}

bool writeAll(int fd, const std::vector<uint32_t>& samples)
{
    const auto* bytes = reinterpret_cast<const char*>(samples.data());
    size_t left = samples.size() * sizeof(uint32_t);
    while (left > 0) {
        const ssize_t written = ::write(fd, bytes, left);
        if (written <= 0) return false;
        bytes += written;
        left -= size_t(written);
    }
    return true;
}

std::vector<uint32_t> readAll(int fd)
{
    std::vector<char> bytes;
    char buffer[65536];
    for (ssize_t got; (got = ::read(fd, buffer, sizeof buffer)) > 0;) bytes.insert(bytes.end(), buffer, buffer + got);
    std::vector<uint32_t> samples(bytes.size() / sizeof(uint32_t));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(uint32_t));
    return samples;
}

/// The effect's frames rendered on the calling thread alone, in a forked copy of this
/// process that shares the effect's state and the random sequence's place with it.
std::vector<uint32_t> renderSingleThreadedInACopy(test::EffectHarness& harness)
{
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) return {};
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipeEnds[0]);
        os::SingleThreadedRows single;  // the copy has no pool threads
        const std::vector<uint32_t> frames = renderFrames(harness);
        const bool sent = !frames.empty() && writeAll(pipeEnds[1], frames);
        ::_exit(sent ? 0 : 1);  // no destructors, no leak check of the copy
    }
    ::close(pipeEnds[1]);
    std::vector<uint32_t> frames = child > 0 ? readAll(pipeEnds[0]) : std::vector<uint32_t>{};
    ::close(pipeEnds[0]);
    int status = 0;
    if (child > 0) ::waitpid(child, &status, 0);
    if (child <= 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) return {};
    return frames;
}

TEST(ThreadedFrames, EveryProcessorEffectGivesTheSameFramesOnOneThreadAndOnMany)
{
    // Four threads even on a machine of fewer cores, so that rows are really split.
    os::WorkerPool::setThreadCount(4);
    ASSERT_GT(os::WorkerPool::shared().threadCount(), 1u);
    const auto input = inputFrame();
    int compared = 0;
    for (const EffectDescriptor& effect : EffectTable) {
        if (!test::computedOnTheProcessor(effect)) continue;
        test::EffectHarness harness(kWidth, kHeight);
        harness.setInput(input);
        ASSERT_EQ(harness.select(effect.id, test::workingParams(effect)), S_OK) << "effect " << effect.id;
        ASSERT_EQ(harness.setup(), S_OK) << "effect " << effect.id;
        const std::vector<uint32_t> single = renderSingleThreadedInACopy(harness);
        const std::vector<uint32_t> threaded = renderFrames(harness);
        ASSERT_FALSE(single.empty()) << "effect " << effect.id;
        ASSERT_EQ(single.size(), threaded.size()) << "effect " << effect.id;
        // The first differing frame, rather than thousands of samples.
        const size_t frameSamples = size_t(kWidth) * size_t(kHeight);
        for (size_t frame = 0; frame < size_t(kFrames); ++frame) {
            const auto from = std::ptrdiff_t(frame * frameSamples);
            const auto to = from + std::ptrdiff_t(frameSamples);
            ASSERT_TRUE(std::equal(single.begin() + from, single.begin() + to, threaded.begin() + from))
                << "effect " << effect.id << ", frame " << frame;
        }
        ++compared;
    }
    // Zoom out and in, four pans, free move, two fades, two old films, four colour
    // effects, puzzle, water and colour key.
    EXPECT_EQ(compared, 18);
}

}  // namespace
}  // namespace qx
