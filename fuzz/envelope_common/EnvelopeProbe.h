#pragma once
// Evaluates a fuzzed envelope where its curve is most fragile: at and around its first
// keys, far outside its range, and at times that are no numbers, so that every behaviour
// and every segment shape runs on the loaded data.
#include "qx4d/content/Envelope.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace qx4d::fuzz {

inline void ProbeEnvelope(Envelope& envelope)
{
    constexpr float kFixedTimes[] = {-1e30f,
                                     -3.5f,
                                     0.0f,
                                     0.5f,
                                     1.0f,
                                     2.25f,
                                     1e30f,
                                     std::numeric_limits<float>::infinity(),
                                     std::numeric_limits<float>::quiet_NaN()};
    float value = 0.0f;
    for (float t : kFixedTimes) {
        envelope.Evaluate(t, &value);
    }
    const size_t probed = std::min<size_t>(envelope.KeyCount(), 16);
    for (size_t i = 0; i < probed; ++i) {
        const float time = envelope.Key(i).time;
        envelope.Evaluate(time, &value);
        envelope.Evaluate(time + 0.01f, &value);
        envelope.Evaluate(time - 0.01f, &value);
    }
    envelope.Update(0.75f);
}

}  // namespace qx4d::fuzz
