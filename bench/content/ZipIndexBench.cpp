// Mounting an archive of 10,000 small entries (100 folders, stored and deflated): the
// sequential scan of its local headers and the building of the folder index. Lookups
// and loads of one entry for scale.
#include "qx4d/core/ZipFileSystem.h"

#include "platform/os/WideText.h"

#include <benchmark/benchmark.h>

namespace {

const std::u16string kArchive = qx::os::fromUtf8(QX_BENCH_ARCHIVE);

void BM_IndexZip10000(benchmark::State& state)
{
    for (auto _ : state) {
        qx4d::ZipFileSystem zip;
        if (!zip.Open(kArchive) || zip.CountFiles() != 10000) {
            state.SkipWithError("archive not indexed");
            return;
        }
        benchmark::DoNotOptimize(zip.CountFiles());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * 10000);
}
BENCHMARK(BM_IndexZip10000)->Unit(benchmark::kMillisecond);

void BM_LoadOneEntryOf10000(benchmark::State& state)
{
    qx4d::ZipFileSystem zip;
    if (!zip.Open(kArchive)) {
        state.SkipWithError("archive not indexed");
        return;
    }
    for (auto _ : state) {
        size_t size = 0;
        auto bytes = zip.Load(u"FOLDER99\\ENTRY9999.TXT", size);
        benchmark::DoNotOptimize(bytes.get());
    }
}
BENCHMARK(BM_LoadOneEntryOf10000)->Unit(benchmark::kMicrosecond);

}  // namespace
