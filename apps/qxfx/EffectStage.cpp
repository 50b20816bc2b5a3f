#include "apps/qxfx/EffectStage.h"

#include <algorithm>

namespace qx::qxfx {

namespace {

// Frame times come from timestamps in the stream's own unit; a frame within a
// microsecond of an edge of the span counts as on it.
constexpr double kEdgeSlack = 1e-6;

}  // namespace

EffectStage::EffectStage(const EffectSettings& settings, int width, int height, const EffectSpan& span)
    : session_(settings, width, height), span_(span)
{}

bool EffectStage::covers(double seconds) const
{
    return seconds >= span_.start - kEdgeSlack && seconds <= span_.start + span_.length + kEdgeSlack;
}

float EffectStage::progressAt(double seconds) const
{
    if (span_.length <= 0.0) return 0.0f;
    return float(std::clamp((seconds - span_.start) / span_.length, 0.0, 1.0));
}

void EffectStage::apply(TimedFrame& frame)
{
    if (!covers(frame.seconds)) return;
    ++rendered_;
    if (!session_.processInPlace(frame.frame, progressAt(frame.seconds))) ++unchanged_;
}

}  // namespace qx::qxfx
