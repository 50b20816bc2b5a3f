// The particle simulation alone at the scale of the pack's downpour: 10,000 live particles,
// 400 of them dying and 400 born each step of 1/25 s, in ns per live particle, on one
// core and on all cores; and a burst of 10,000 births at once, the batch that the pool of
// threads shares. The whole frame of the downpour through the host stands in
// SceneBench.cpp, beside the textured quad.
#include "qx4d/core/FileManager.h"
#include "qx4d/core/scene/ParticleSystem.h"

#include <benchmark/benchmark.h>
#include <omp.h>

namespace {

using namespace qx4d;

constexpr float kStep = 1.0f / 25.0f;

/// Runs `body` with `threads` OpenMP threads (0: one a core), then puts the count back.
template <typename Body>
void WithThreads(benchmark::State& state, Body&& body)
{
    const int threads = state.range(0) > 0 ? int(state.range(0)) : omp_get_num_procs();
    const int before = omp_get_max_threads();
    omp_set_num_threads(threads);
    state.counters["threads"] = threads;
    body();
    omp_set_num_threads(before);
}

/// The pack's downpour: one emitter of 10,000 particles living one second.
bool LoadDownpour(benchmark::State& state, FileManager& files, ParticleSystem& system)
{
    files.Mount(u"EMITTERS", std::u16string(u"" QX_DATA_DIR "/Emitters"));
    system.LoadEmitters(u"Averse\\Averse.xml");
    if (system.instances.empty()) state.SkipWithError("the pack's downpour is missing");
    return !system.instances.empty();
}

void PerParticle(benchmark::State& state, int particles)
{
    state.counters["particles"] = particles;
    state.counters["per_particle"] = benchmark::Counter(
        double(particles), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_DownpourSimulation(benchmark::State& state)
{
    FileManager files;
    ParticleSystem system;
    if (!LoadDownpour(state, files, system)) return;
    WithThreads(state, [&] {
        float time = 0.0f;
        for (int step = 0; step < 40; ++step) system.Update(time += kStep, kStep);
        for (auto _ : state) system.Update(time += kStep, kStep);
        PerParticle(state, system.instances.front()->Count());
    });
}
BENCHMARK(BM_DownpourSimulation)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_DownpourBurst(benchmark::State& state)
{
    FileManager files;
    ParticleSystem system;
    if (!LoadDownpour(state, files, system)) return;
    UE2EmitterInstance& rain = *system.instances.front();
    WithThreads(state, [&] {
        for (auto _ : state) {
            rain.Restart();
            rain.Spawn(10000);
        }
        PerParticle(state, rain.Count());
    });
}
BENCHMARK(BM_DownpourBurst)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
