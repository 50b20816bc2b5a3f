// Envelope evaluation as the particle path and the scene update use it: times that rise a
// little at each call, so the remembered segment makes the search one comparison.
#include "qx4d/content/Envelope.h"
#include "qx4d/content/HarmonicOscillator.h"

#include <benchmark/benchmark.h>

#include <array>
#include <memory>

namespace {

constexpr int kKeys = 64;
constexpr int kStepsPerSweep = 4096;

// `kKeys` keys one time unit apart, all of one shape, with values that zigzag.
std::unique_ptr<qx4d::Envelope> MakeEnvelope(uint32_t shape)
{
    auto envelope = std::make_unique<qx4d::Envelope>();
    for (int i = 0; i < kKeys; ++i) {
        qx4d::Key& key = envelope->AddKey(float(i % 7) - 3.0f, float(i), shape);
        if (shape == qx4d::Key::ShapeBezier) {
            key.params[0] = -0.3f;
            key.params[1] = 0.5f;
            key.params[2] = 0.3f;
            key.params[3] = -0.5f;
        } else {
            key.params[0] = 0.2f;
            key.params[1] = -0.1f;
            key.params[2] = 0.1f;
        }
    }
    return envelope;
}

void EvaluateRising(benchmark::State& state, qx4d::Envelope& envelope)
{
    const float step = float(kKeys - 1) / kStepsPerSweep;
    float t = 0.0f;
    float value = 0.0f;
    for (auto _ : state) {
        envelope.Evaluate(t, &value);
        benchmark::DoNotOptimize(value);
        t += step;
        if (t > float(kKeys - 1)) {
            t = 0.0f;  // one search from the start per sweep
        }
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_EnvelopeRising(benchmark::State& state)
{
    const auto envelope = MakeEnvelope(uint32_t(state.range(0)));
    EvaluateRising(state, *envelope);
}
BENCHMARK(BM_EnvelopeRising)
    ->ArgName("shape")
    ->Arg(qx4d::Key::ShapeTCB)
    ->Arg(qx4d::Key::ShapeLinear)
    ->Arg(qx4d::Key::ShapeBezier);

void BM_EnvelopeRisingWithOscillator(benchmark::State& state)
{
    const auto envelope = MakeEnvelope(qx4d::Key::ShapeTCB);
    envelope->AddModifier(std::make_unique<qx4d::HarmonicOscillator>(
        std::array<float, 7>{0.5f, 2.0f, 0.25f, 0.1f, 0.0f, 0.0f, float(kKeys)}));
    EvaluateRising(state, *envelope);
}
BENCHMARK(BM_EnvelopeRisingWithOscillator);

// The contrast: times that jump back and forth, so every search starts from the first key.
void BM_EnvelopeAlternatingEnds(benchmark::State& state)
{
    const auto envelope = MakeEnvelope(qx4d::Key::ShapeTCB);
    float value = 0.0f;
    bool late = false;
    for (auto _ : state) {
        envelope->Evaluate(late ? float(kKeys) - 1.5f : 0.5f, &value);
        benchmark::DoNotOptimize(value);
        late = !late;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EnvelopeAlternatingEnds);

}  // namespace
