#include "qx4d/content/Envelope.h"

#include <algorithm>
#include <cmath>

// Arithmetic runs in double between stored floats; every named intermediate is rounded to
// float, as the curves were defined that way.

namespace qx4d {

float Envelope::Modifier::Apply(float) const { return 0.0f; }

Envelope::Envelope(float* boundTarget) : Controller(boundTarget != nullptr ? boundTarget : &storage) {}

Envelope::~Envelope() = default;

qx4d::Key& Envelope::AddKey(float value, float time)
{
    qx4d::Key& key = keys.emplace_back();
    key.value = value;
    key.time = time;
    return key;
}

qx4d::Key& Envelope::AddKey(float value, float time, uint32_t shape)
{
    qx4d::Key& key = AddKey(value, time);
    key.shape = shape;
    return key;
}

void Envelope::AddModifier(std::unique_ptr<Modifier> modifier)
{
    if (modifier != nullptr) {
        modifiers.insert(modifiers.begin(), std::move(modifier));
    }
}

float Envelope::ModifierSum(float t) const
{
    float sum = 0.0f;
    for (const auto& modifier : modifiers) {
        sum = float(double(sum) + modifier->Apply(t));
    }
    return sum;
}

void Envelope::Evaluate(float t, float* out)
{
    if (out == nullptr) {
        return;
    }
    const float sum = ModifierSum(t);
    if (keys.size() < 2) {
        *out = keys.empty() ? sum : float(double(sum) + keys[0].value);
        return;
    }
    float result = sum;
    // Equality with an end key's time counts as outside: a reset curve gives 0 there.
    const bool beforeKeys = !(t > FirstKey().time);
    if (beforeKeys || !(t < LastKey().time)) {
        if (!ApplyBehavior(beforeKeys ? preBehavior : postBehavior, beforeKeys, t, result)) {
            *out = result;
            return;
        }
    }
    t = std::min(t, LastKey().time);
    const size_t b = FindSegment(t);
    *out = float(double(result) + Segment(b - 1, b, t));
}

// Acts on a behaviour outside the key range. Returns true when the (possibly wrapped) time
// `t` still goes through the segment code, false when `result` is final.
bool Envelope::ApplyBehavior(int32_t behavior, bool beforeKeys, float& t, float& result) const
{
    const qx4d::Key& endKey = beforeKeys ? FirstKey() : LastKey();
    float cycle = 0.0f;
    switch (behavior) {
    case BehaviorReset: return false;
    case BehaviorConstant: result = float(double(result) + endKey.value); return false;
    case BehaviorRepeat: t = WrapTime(t, cycle); return true;
    case BehaviorOscillate:
        t = WrapTime(t, cycle);
        if (std::fmod(cycle, 2.0f) != 0.0f) {  // odd cycles run backwards; fmod keeps huge cycles defined
            t = float(double(FirstKey().time) + LastKey().time - t);
        }
        return true;
    case BehaviorOffsetRepeat:
        t = WrapTime(t, cycle);
        result = float(double(result) + double(cycle) * (double(LastKey().value) - FirstKey().value));
        return true;
    case BehaviorLinear: result = float(double(result) + LinearExtrapolation(beforeKeys, t)); return false;
    default: return true;
    }
}

// Extends the curve along the tangent of its end segment.
double Envelope::LinearExtrapolation(bool beforeKeys, float t) const
{
    const size_t n = keys.size();
    if (beforeKeys) {
        const float slope = float(OutTangent(0, 1) / (double(keys[1].time) - keys[0].time));
        return double(keys[0].value) + (double(t) - keys[0].time) * slope;
    }
    const float slope = float(InTangent(n - 2, n - 1) / (double(keys[n - 1].time) - keys[n - 2].time));
    return double(keys[n - 1].value) + (double(t) - keys[n - 1].time) * slope;
}

// Brings `t` into [first time, last time) and gives the number of spans it moved by, the
// nearest integer with ties to even.
float Envelope::WrapTime(float t, float& cycle) const
{
    const float first = FirstKey().time;
    const float span = float(double(LastKey().time) - first);
    const float wrapped = float(double(t) - std::floor((double(t) - first) / span) * span);
    cycle = float(std::nearbyint((double(t) - wrapped) / span));
    return wrapped;
}

// The key `b` that ends the segment holding `t`, starting from the last segment found when
// it lies before `t`. `t` is at most the last key's time, so for keys in ascending order
// the walk stops at the last key; the bound only matters for keys out of order.
size_t Envelope::FindSegment(float t)
{
    const size_t last = keys.size() - 1;
    size_t i = 0;
    if (currentKey >= 0 && size_t(currentKey) < last && keys[size_t(currentKey)].time < t) {
        i = size_t(currentKey);
    }
    ++i;
    while (i < last && keys[i].time < t) {
        ++i;
    }
    currentKey = int32_t(i - 1);
    return i;
}

}  // namespace qx4d
