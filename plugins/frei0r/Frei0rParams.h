#pragma once
// The parameters of the frei0r filter "qxfx" and how host time becomes progress.
//
// Every numeric parameter is a double from 0 to 1, as frei0r asks and as GStreamer
// enforces, mapped to its real range here. Strings carry what has no range: the effect
// id (ids are sparse: 0 to 15, 2000, 5000...), the parameter text and the paths.
// Positions are avoided: MLT never sets them.
// The header declares the entry points without C linkage of its own.
extern "C" {
#include <frei0r.h>
}

#include <array>

namespace qx::frei0r {

enum ParamIndex : int {
    kEffect,
    kParams,
    kProgress,
    kDuration,
    kMilliseconds,
    kSource,
    kDataPath,
    kParamCount,
};

struct ParamInfo {
    const char* name;
    int type;
    const char* explanation;
};

// The order is the order of ffmpeg's positional list (frei0r=qxfx:EFFECT|PARAMS|...),
// so the values people set most come first.
inline constexpr std::array<ParamInfo, kParamCount> kParamInfo = {{
    {"effect", F0R_PARAM_STRING, "Effect id of the catalogue, as 'qxfx list' shows it"},
    {"params", F0R_PARAM_STRING, "Parameter text, each value followed by ';' (empty: the effect's defaults)"},
    {"progress", F0R_PARAM_DOUBLE, "Progress of the effect, 0 to 1, used while duration is 0"},
    {"duration", F0R_PARAM_DOUBLE,
     "Span of the effect in thousands of seconds (0.01 = 10 s); above 0 the progress follows the host's time"},
    {"milliseconds", F0R_PARAM_BOOL, "The host's time is in milliseconds (ffmpeg), not seconds (MLT, GStreamer)"},
    {"source", F0R_PARAM_STRING, "Source file of effects that read one (scenes, animations)"},
    {"data path", F0R_PARAM_STRING, "Folder of the content pack"},
}};

/// Seconds of span at a duration value of 1.
inline constexpr double kDurationScale = 1000.0;

/// The progress for a frame at host time `time`: time over the span when the duration
/// value is above 0 (clamped to 0..1), else the explicit progress value (clamped too).
float progressAt(double time, bool milliseconds, double durationValue, double progressValue);

}  // namespace qx::frei0r
