#pragma once
// The private generator of the stateful frame effects, shared by the old-film and the
// water-ripple effects so that the order of their frames changes each one's pattern.
// A linear congruential generator: seed = seed * 1103515245 + 12345 (mod 2^32), the new
// seed being the draw. The seed is zero when the process starts and is never set, so the
// sequence is the same in every run of the process.
#include <cstdint>

namespace qx {

/// Draws the next value of the process-wide sequence.
uint32_t fastrand();

/// Where the process-wide sequence stands, without drawing.
uint32_t fastrandSeed();

/// One step of the generator from `seed`: the draw that follows it.
constexpr uint32_t fastrandStep(uint32_t seed) { return seed * 1103515245u + 12345u; }

/// A run of draws taken from the process-wide sequence in a local copy, for loops that
/// draw once per sample; the sequence goes on from the run's end when it is destroyed.
/// The draws are the ones `fastrand()` would give, unless another thread draws meanwhile.
class FastRandRun {
public:
    FastRandRun();
    ~FastRandRun();
    FastRandRun(const FastRandRun&) = delete;
    FastRandRun& operator=(const FastRandRun&) = delete;

    uint32_t operator()()
    {
        seed = fastrandStep(seed);
        return seed;
    }

private:
    uint32_t seed;
};

}  // namespace qx
