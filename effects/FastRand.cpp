#include "effects/FastRand.h"

#include <atomic>

namespace qx {
namespace {

// Relaxed atomic loads and stores: effects on two threads may interleave their draws, as
// the effects accept, without a data race.
std::atomic<uint32_t> sharedSeed{0};

}  // namespace

uint32_t fastrand()
{
    const uint32_t next = fastrandStep(sharedSeed.load(std::memory_order_relaxed));
    sharedSeed.store(next, std::memory_order_relaxed);
    return next;
}

uint32_t fastrandSeed() { return sharedSeed.load(std::memory_order_relaxed); }

FastRandRun::FastRandRun() : seed(sharedSeed.load(std::memory_order_relaxed)) {}

FastRandRun::~FastRandRun() { sharedSeed.store(seed, std::memory_order_relaxed); }

}  // namespace qx
