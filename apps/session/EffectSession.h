#pragma once
// Drives one effect of the catalogue over a run of frames as an editor does: Index (an
// effect id), Params, Source, Duration, Fps, AspectRatio and the data path are put once,
// Setup runs once over two frames of a fixed size, then each frame is written into the
// input, Progress is put and Execute renders the output. The qxfx tools share it: the
// command line and the frei0r filters.
#include "apps/session/Frame.h"
#include "host/DynamicEffect.h"

#include <optional>
#include <span>
#include <string>

namespace qx::qxfx {

struct EffectSettings {
    LONG effectId = 0;
    /// The parameter text; none means the effect's default list.
    std::optional<std::string> params;
    std::string source;
    std::string dataPath;          // empty: the host's data path is left unset
    double durationSeconds = 0.0;  // the effect's span; 0 leaves the host's value
    float fps = 25.0f;
    float aspectRatio = 0.0f;  // 0 lets the effect take the ratio of the frame
};

/// The default parameter text of an effect, or nothing for an id the catalogue lacks.
std::optional<std::string> defaultParamsText(LONG effectId);

class EffectSession {
public:
    /// Selects and sets up the effect for frames of `width` x `height`; CommandError
    /// naming the problem when the host refuses the effect, its parameters or the Setup.
    EffectSession(const EffectSettings& settings, int width, int height);

    /// The frame that the next `process` reads.
    Frame& input() { return input_; }
    /// The frame that the last `process` wrote.
    const Frame& output() const { return output_; }

    /// Renders the input at `progress` (0 at the first frame, 1 at the last) into the
    /// output; CommandError when Execute fails.
    void process(float progress);
    /// Renders `in` into `out` (both of the session's size; they may be one buffer) at
    /// `progress` where they lie, without copying them in or out.
    void processBetween(std::span<const uint32_t> in, std::span<uint32_t> out, float progress);
    /// Renders `frame` (of the session's size) at `progress` without copying it in or
    /// out: the effect reads the frame's own samples, and its output then changes places
    /// with them. True when the output differs from the frame that came in.
    bool processInPlace(Frame& frame, float progress);

private:
    HRESULT execute(float progress);
    void checkExecuted(HRESULT hr) const;

    void select(const EffectSettings& settings);

    LONG effectId_;
    Frame input_;
    Frame output_;
    std::shared_ptr<transform::DXSurface> inputSurface_;
    std::shared_ptr<transform::DXSurface> outputSurface_;
    com::ComPtr<CQXDynamicEffect> host_;
};

}  // namespace qx::qxfx
