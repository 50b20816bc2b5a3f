#include "qx4d/content/HarmonicOscillator.h"

#include <cmath>

namespace qx4d {

namespace {

// Two pi as the nearest float, widened: the wave was defined with that constant.
constexpr double kTwoPi = 6.2831854820251465;

}  // namespace

HarmonicOscillator::HarmonicOscillator(std::span<const float, 7> notationOrder)
    : start(notationOrder[5]), end(notationOrder[6]), frequency(notationOrder[0]), amplitude(notationOrder[1]),
      offset(notationOrder[4]), phase(notationOrder[2]), damping(notationOrder[3])
{}

float HarmonicOscillator::Apply(float t) const
{
    if (t < start || t > end) {
        return 0.0f;
    }
    const float x = float((double(t) - start) * frequency);
    float wave = float(std::sin(x * kTwoPi + phase) * amplitude);
    if (damping > 0.0f) {
        wave = float(wave * std::pow(1.0 - damping, double(x)));
    } else if (damping < 0.0f) {
        wave = float(wave * std::pow(1.0 / (double(damping) + 1.0), double(x)));
    }
    return float(double(offset) + wave);
}

}  // namespace qx4d
