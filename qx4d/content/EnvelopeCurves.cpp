// The curve of one segment of an envelope: Hermite bases, the tangents of the TCB, Hermite,
// linear and Bezier shapes, and the Bezier curve found by bisection on its time cubic.
#include "qx4d/content/Envelope.h"

#include <cmath>

namespace qx4d {

namespace {

// A Bezier handle steeper than this in time counts as vertical.
constexpr float kFlatHandleTime = 1e-5f;
constexpr double kVerticalHandleFactor = 100000.0;
// How close the time cubic must come to the wanted time.
constexpr float kBezierTimeTolerance = 1e-4f;
// The bisection works on floats: within about 150 halvings its interval shrinks to two
// neighbouring floats, after which every round repeats the one before. A search that ends
// at all ends before then, so this cap stops only searches that never would (a time the
// handles do not enclose) and changes no result.
constexpr int kMaxBezierRounds = 1000;

// The slope of a Bezier handle, scaled to the segment's time span.
float HandleTangent(double span, float handleTime, float handleValue)
{
    if (std::fabs(handleTime) <= kFlatHandleTime) {
        return float(span * handleValue * kVerticalHandleFactor);
    }
    return float(span * handleValue / handleTime);
}

// The cubic over four control points in power form; the coefficients are worked out once
// and the bisection evaluates it many times.
struct Cubic {
    Cubic(float p0, float p1, float p2, float p3)
        : c(float(3.0 * (double(p1) - p0))), b(float(3.0 * (double(p2) - p1) - c)), a(float(double(p3) - p0 - c - b)),
          d(p0)
    {}
    float At(float u) const
    {
        const double uu = double(u) * u;
        return float(a * uu * u + b * uu + c * double(u) + d);
    }

    float c, b, a, d;
};

}  // namespace

double Envelope::Segment(size_t a, size_t b, float t) const
{
    const qx4d::Key& from = keys[a];
    const qx4d::Key& to = keys[b];
    switch (to.shape) {
    case qx4d::Key::ShapeTCB:
    case qx4d::Key::ShapeHermite: {
        const float u = float((double(t) - from.time) / (double(to.time) - from.time));
        const double uu = double(u) * u;
        const double uuu = uu * u;
        const float h2 = float(3.0 * uu - 2.0 * uuu);
        const float h1 = float(1.0 - h2);
        const float h4 = float(uuu - uu);
        const float h3 = float(double(h4) - uu + u);
        return double(h1) * from.value + double(h2) * to.value + double(h3) * OutTangent(a, b) +
               double(h4) * InTangent(a, b);
    }
    case qx4d::Key::ShapeLinear: {
        const float u = float((double(t) - from.time) / (double(to.time) - from.time));
        return from.value + (double(to.value) - from.value) * u;
    }
    case qx4d::Key::ShapeStepped: return from.value;
    case qx4d::Key::ShapeBezier: return Bezier(a, b, t);
    default: return 0.0;  // no curve: only the modifiers count
    }
}

// The tangent leaving key `a` towards `b`, by the shape of `a`. With a key before `a`, the
// TCB, Hermite and linear tangents are scaled by the share of `a`..`b` in the two segments.
float Envelope::OutTangent(size_t a, size_t b) const
{
    const qx4d::Key& from = keys[a];
    const qx4d::Key& to = keys[b];
    const qx4d::Key* previous = a > 0 ? &keys[a - 1] : nullptr;
    const float d = float(double(to.value) - from.value);
    const float ratio = previous ? float((double(to.time) - from.time) / (double(to.time) - previous->time)) : 0.0f;
    const double tension = from.params[0], continuity = from.params[1], bias = from.params[2];
    switch (from.shape) {
    case qx4d::Key::ShapeTCB:
        if (previous) {
            return float(((double(from.value) - previous->value) * (1 - tension) * (1 + continuity) * (1 + bias) +
                          (1 - tension) * (1 - continuity) * (1 - bias) * d) *
                         ratio);
        }
        return float((1 - tension) * (1 - continuity) * (1 - bias) * d);
    case qx4d::Key::ShapeHermite: return previous ? float(double(from.params[1]) * ratio) : from.params[1];
    case qx4d::Key::ShapeLinear: return previous ? float((double(from.value) - previous->value + d) * ratio) : d;
    case qx4d::Key::ShapeBezier: return HandleTangent(double(to.time) - from.time, from.params[2], from.params[3]);
    default: return 0.0f;
    }
}

// The tangent arriving at key `b` from `a`, by the shape of `b`, scaled with a key after
// `b` by the share of `a`..`b` in the two segments.
float Envelope::InTangent(size_t a, size_t b) const
{
    const qx4d::Key& from = keys[a];
    const qx4d::Key& to = keys[b];
    const qx4d::Key* next = b + 1 < keys.size() ? &keys[b + 1] : nullptr;
    const float d = float(double(to.value) - from.value);
    const float ratio = next ? float((double(to.time) - from.time) / (double(next->time) - from.time)) : 0.0f;
    const double tension = to.params[0], continuity = to.params[1], bias = to.params[2];
    switch (to.shape) {
    case qx4d::Key::ShapeTCB:
        if (next) {
            return float(((double(next->value) - to.value) * (1 - tension) * (1 + continuity) * (1 - bias) +
                          (1 - tension) * (1 - continuity) * (1 + bias) * d) *
                         ratio);
        }
        return float((1 - tension) * (1 - continuity) * (1 + bias) * d);
    case qx4d::Key::ShapeHermite: return next ? float(double(to.params[0]) * ratio) : to.params[0];
    case qx4d::Key::ShapeLinear:
        // The next key's value less this key's time, not its value: that is how the curve
        // was defined, and files depend on it.
        return next ? float((double(next->value) - to.time + d) * ratio) : d;
    case qx4d::Key::ShapeBezier: return HandleTangent(double(to.time) - from.time, to.params[0], to.params[1]);
    default: return 0.0f;
    }
}

// The handles of a segment after a key of another shape: the outgoing one a third of the
// span in time, and a third of that key's params[1] in value.
float Envelope::Bezier(size_t a, size_t b, float t) const
{
    const qx4d::Key& from = keys[a];
    const qx4d::Key& to = keys[b];
    const bool fromBezier = from.shape == qx4d::Key::ShapeBezier;
    const float x0 = from.time;
    const float x1 = fromBezier ? float(double(from.time) + from.params[2])
                                : float(double(from.time) + (double(to.time) - from.time) / 3.0);
    const float x2 = float(double(to.time) + to.params[0]);
    const float x3 = to.time;
    const Cubic times(x0, x1, x2, x3);

    float lo = 0.0f;
    float hi = 1.0f;
    float u = 0.0f;
    for (int round = 0; round < kMaxBezierRounds; ++round) {
        u = float(lo + (double(hi) - lo) * 0.5);
        const float x = times.At(u);
        if (std::fabs(double(t) - x) <= kBezierTimeTolerance) {
            break;
        }
        if (t < x) {
            hi = u;
        } else {
            lo = u;
        }
    }

    const float y0 = from.value;
    const float y1 =
        fromBezier ? float(double(from.value) + from.params[3]) : float(double(from.value) + from.params[1] / 3.0);
    const float y2 = float(double(to.value) + to.params[1]);
    const float y3 = to.value;
    return Cubic(y0, y1, y2, y3).At(u);
}

}  // namespace qx4d
