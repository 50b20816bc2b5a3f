#include "apps/qxfx/FramePacer.h"

namespace qx::qxfx {

FramePacer::FramePacer(FrameSource& source, const Pacing& pacing) : source_(source), pacing_(pacing) {}

bool FramePacer::readAhead()
{
    if (hasAhead_ || sourceEnded_) return hasAhead_;
    hasAhead_ = source_.next(ahead_);
    sourceEnded_ = !hasAhead_;
    return hasAhead_;
}

bool FramePacer::next(TimedFrame& out)
{
    if (pacing_.count && produced_ >= *pacing_.count) return false;
    const bool given = pacing_.rate ? nextAtRate(out) : readAhead();
    if (!pacing_.rate && given) {
        std::swap(out, ahead_);
        hasAhead_ = false;
        // Only a count to reach can need the frame again.
        if (pacing_.count) shown_.frame = out.frame;
        shown_.seconds = out.seconds;
        hasShown_ = true;
    }
    if (!given && !holdLast(out)) return false;
    ++produced_;
    return true;
}

// Output frame n is shown at n / rate: it is the input frame shown at that time, the last
// one that starts by then. The clip ends where its last frame stops being shown.
bool FramePacer::nextAtRate(TimedFrame& out)
{
    // Times from timestamps in other units meet within a microsecond.
    constexpr double kSlack = 1e-6;
    const double time = double(produced_) / *pacing_.rate;
    while (readAhead() && (!hasShown_ || ahead_.seconds <= time + kSlack)) {
        std::swap(shown_, ahead_);
        hasShown_ = true;
        hasAhead_ = false;
    }
    if (!hasShown_) return false;
    if (sourceEnded_ && time >= shown_.seconds + 1.0 / pacing_.inputRate - kSlack) return false;
    out.frame = shown_.frame;
    out.seconds = time;
    return true;
}

// With a count to reach, the last frame shows again at the output's rate.
bool FramePacer::holdLast(TimedFrame& out)
{
    if (!pacing_.count || !hasShown_) return false;
    const double step = 1.0 / pacing_.rate.value_or(pacing_.inputRate);
    out.frame = shown_.frame;
    out.seconds = pacing_.rate ? double(produced_) * step : shown_.seconds + step;
    if (!pacing_.rate) shown_.seconds = out.seconds;
    return true;
}

}  // namespace qx::qxfx
