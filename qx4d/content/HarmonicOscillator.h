#pragma once
// A damped sine wave added to an envelope between two times.
#include "qx4d/content/Envelope.h"

#include <span>

namespace qx4d {

class HarmonicOscillator : public Envelope::Modifier {
public:
    HarmonicOscillator() = default;
    /// From the seven numbers as every notation writes them: frequency, amplitude, phase,
    /// damping, offset, start, end.
    explicit HarmonicOscillator(std::span<const float, 7> notationOrder);

    /// 0 outside [start, end]; inside, offset plus the wave. Positive damping scales the
    /// wave by (1 - damping)^x, negative damping by (1 / (damping + 1))^x, x being the
    /// number of periods since `start`.
    float Apply(float t) const override;

    float start = 0.0f;
    float end = 0.0f;
    float frequency = 0.0f;
    float amplitude = 0.0f;
    float offset = 0.0f;
    float phase = 0.0f;  // radians, added as it stands
    float damping = 0.0f;
};

}  // namespace qx4d
