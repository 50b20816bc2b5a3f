// RadixSort of float keys against std::sort of the same index list, and the second sort
// of unchanged keys that temporal coherence makes nearly free.
#include "qx4d/core/RadixSort.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace {

std::vector<float> RandomKeys(size_t count, uint32_t seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> distance(-1000.0f, 1000.0f);
    std::vector<float> keys(count);
    for (float& key : keys) {
        key = distance(random);
    }
    return keys;
}

// Two sets of keys in turn, so that every sort starts from an order that does not hold.
void BM_RadixSortFloats(benchmark::State& state)
{
    const auto count = uint32_t(state.range(0));
    const std::vector<float> keys[2] = {RandomKeys(count, 1), RandomKeys(count, 2)};
    qx4d::RadixSort sorter(qx4d::RadixSort::KindFloat);
    int which = 0;
    for (auto _ : state) {
        sorter.Sort(keys[which].data(), count);
        benchmark::DoNotOptimize(sorter.GetRanks());
        which ^= 1;
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_RadixSortFloats)->Arg(10000)->Arg(100000);

void BM_RadixSortSameKeysAgain(benchmark::State& state)
{
    const auto count = uint32_t(state.range(0));
    const auto keys = RandomKeys(count, 1);
    qx4d::RadixSort sorter(qx4d::RadixSort::KindFloat);
    sorter.Sort(keys.data(), count);
    for (auto _ : state) {
        sorter.Sort(keys.data(), count);
        benchmark::DoNotOptimize(sorter.GetRanks());
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_RadixSortSameKeysAgain)->Arg(10000)->Arg(100000);

void BM_StdSortIndices(benchmark::State& state)
{
    const auto count = size_t(state.range(0));
    const std::vector<float> keys[2] = {RandomKeys(count, 1), RandomKeys(count, 2)};
    std::vector<uint32_t> ranks(count);
    int which = 0;
    for (auto _ : state) {
        const std::vector<float>& current = keys[which];
        std::iota(ranks.begin(), ranks.end(), 0u);
        std::sort(ranks.begin(), ranks.end(), [&](uint32_t a, uint32_t b) { return current[a] < current[b]; });
        benchmark::DoNotOptimize(ranks.data());
        which ^= 1;
    }
    state.SetItemsProcessed(state.iterations() * int64_t(count));
}
BENCHMARK(BM_StdSortIndices)->Arg(10000)->Arg(100000);

}  // namespace
