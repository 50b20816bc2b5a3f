#pragma once
// The middle stage of a render: one effect over the frames inside its span of the clip.
// Frames before and after the span pass untouched; a frame inside gets the progress of
// its time, 0 where the span starts and 1 where it ends.
#include "apps/qxfx/FrameSource.h"
#include "apps/session/EffectSession.h"

namespace qx::qxfx {

struct EffectSpan {
    double start = 0.0;   ///< seconds from the start of the output
    double length = 0.0;  ///< seconds; 0: the one instant `start`, at progress 0
};

class EffectStage {
public:
    EffectStage(const EffectSettings& settings, int width, int height, const EffectSpan& span);

    bool covers(double seconds) const;
    /// The progress at `seconds`, clamped to 0 to 1.
    float progressAt(double seconds) const;
    /// Renders the effect over `frame` when its time lies in the span.
    void apply(TimedFrame& frame);
    /// Frames the effect rendered, and those of them it left exactly as they came: an
    /// effect that changed none of its frames is most likely missing what it plays.
    long rendered() const { return rendered_; }
    long unchanged() const { return unchanged_; }

private:
    EffectSession session_;
    EffectSpan span_;
    long rendered_ = 0;
    long unchanged_ = 0;
};

}  // namespace qx::qxfx
