// The yardstick every benchmark binary reports beside its own figures: a memcpy of one
// 1920x1080 BGRA frame, measured in the same run so that ratios hold across machines.
#include "bench/common/Frames.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

void BM_MemcpyFrame(benchmark::State& state)
{
    const auto source = qx::bench::makeTestFrame(qx::bench::kFrameWidth, qx::bench::kFrameHeight);
    std::vector<uint32_t> target(source.size());
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), source.size() * sizeof(uint32_t));
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(source.size() * sizeof(uint32_t)));
}
BENCHMARK(BM_MemcpyFrame)->Unit(benchmark::kMillisecond);

}  // namespace
