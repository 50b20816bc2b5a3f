// Endurance of the effect host: every effect computed on the processor runs for many
// frames at 640x360 through CQXDynamicEffect, as an editor drives it over a long clip.
// The resident memory is sampled after the first hundred frames and at the end of each
// effect; it must not grow in between (beyond the allocator's slack). Every frame must
// be written (the output is marked before each Execute). Under AddressSanitizer, whose
// quarantine holds freed memory back on purpose, the memory is reported but not judged:
// the leak check at exit judges it there.
//   soak_effects [FRAMES] [--no-memory-check]   (default 10000 frames)
#include "tests/host/EffectHarness.h"
#include "tests/host/ProcessorEffects.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

using namespace qx;

constexpr LONG kWidth = 640;
constexpr LONG kHeight = 360;
constexpr uint32_t kMarker = 0xDEADBEEF;
constexpr int kSettleFrames = 100;
/// Growth of the resident memory allowed after settling: a few pages the allocator keeps.
constexpr long kAllowedGrowthKiB = 2048;

long residentKiB()
{
    std::ifstream statm("/proc/self/statm");
    long pages = 0;
    long resident = 0;
    statm >> pages >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

/// Runs one effect for `frames` frames; false on a refused call, an unwritten frame or
/// memory that grows.
bool soak(const EffectDescriptor& effect, int frames, const std::vector<uint32_t>& input, bool memoryChecked)
{
    const auto start = std::chrono::steady_clock::now();
    test::EffectHarness harness(kWidth, kHeight);
    harness.setInput(input);
    if (harness.select(effect.id, test::workingParams(effect)) != S_OK || harness.setup() != S_OK) {
        std::printf("effect %ld: refused\n", long(effect.id));
        return false;
    }
    long settled = 0;
    long peak = 0;
    for (int frame = 0; frame < frames; ++frame) {
        harness.markOutput(kMarker);
        if (harness.execute(float(frame) / float(frames - 1)) != S_OK) {
            std::printf("effect %ld: Execute failed at frame %d\n", long(effect.id), frame);
            return false;
        }
        // Every hundredth frame is read back whole: the marker must be gone from it.
        if (frame % 100 == 99) {
            const auto output = harness.output();
            if (std::count(output.begin(), output.end(), kMarker) == long(output.size())) {
                std::printf("effect %ld: frame %d left unwritten\n", long(effect.id), frame);
                return false;
            }
        }
        if (frame + 1 == kSettleFrames) settled = residentKiB();
        if (frame >= kSettleFrames) peak = std::max(peak, residentKiB());
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const long growth = peak - settled;
    std::printf(
        "effect %5ld: %d frames in %6.1f s (%6.2f ms a frame), resident %ld KiB after %d frames, "
        "peak %ld KiB after (%+ld)\n",
        long(effect.id), frames, seconds, seconds * 1000.0 / frames, settled, kSettleFrames, peak, growth);
    return growth <= kAllowedGrowthKiB || !memoryChecked;
}

}  // namespace

int main(int argc, char** argv)
{
    int frames = 10000;
    bool memoryChecked = true;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--no-memory-check")
            memoryChecked = false;
        else
            frames = std::max(kSettleFrames + 1, std::atoi(argv[i]));
    }
    const auto input = test::gradientFrame(kWidth, kHeight);
    int failures = 0;
    for (const EffectDescriptor& effect : EffectTable) {
        if (!test::computedOnTheProcessor(effect)) continue;
        if (!soak(effect, frames, input, memoryChecked)) ++failures;
        std::fflush(stdout);
    }
    std::printf("%s: %d effect(s) failed\n", failures ? "FAILED" : "passed", failures);
    return failures ? 1 : 0;
}
