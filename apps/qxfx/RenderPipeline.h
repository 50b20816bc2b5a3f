#pragma once
// A render as three stages joined by TimedFrame: frames in (decoded, upright, trimmed and
// paced), the effect over its span, and frames out (encoded beside the input's audio).
// The loop that joins them is the only place that knows all three.
#include "apps/qxfx/ClipFrames.h"
#include "apps/qxfx/FramePacer.h"
#include "apps/session/EffectSession.h"

#include <optional>
#include <string>
#include <utility>

namespace qx::qxfx {

struct OutputOptions;

inline constexpr long kMaxFrames = 10'000'000;

struct RenderRequest {
    EffectSettings effect;
    std::string input;  // empty: the test pattern
    InputFormat inputFormat;
    Trim trim;
    Pacing pacing;
    std::optional<std::pair<int, int>> patternSize;
    double spanStart = 0.0;
    std::optional<double> spanLength;
    bool audio = true;
};

/// Renders `request` to the output; the process exit code (130 after an interruption,
/// with the frames so far written out as a complete file). CommandError on failure,
/// which leaves no output file.
int renderClip(RenderRequest request, const OutputOptions& output);

}  // namespace qx::qxfx
