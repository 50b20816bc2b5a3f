#pragma once
// The parameter lists of the frei0r filters and how host time becomes progress.
//
// Every numeric parameter is a double from 0 to 1, as frei0r asks and as GStreamer
// enforces, mapped to its real range here. Strings carry what has no range: the effect
// id (ids are sparse: 0 to 15, 2000, 5000...), the parameter text and the paths.
// Positions are avoided: MLT never sets them.
#include "apps/session/EffectSession.h"

// The header declares the entry points without C linkage of its own.
extern "C" {
#include <frei0r.h>
}

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qx::frei0r {

struct ParamInfo {
    const char* name;
    int type;
    const char* explanation;
    double defaultNumber = 0.0;
    const char* defaultText = "";
};

/// The values of one instance, by parameter index: `texts` for strings, `numbers` for the
/// others (booleans as 0 or 1).
struct InstanceValues {
    std::vector<std::string> texts;
    std::vector<double> numbers;
};

/// One filter of the set: its name for hosts, its parameters, and how their values
/// select and set up the effect.
struct PluginKind {
    const char* name;
    const char* explanation;
    std::span<const ParamInfo> params;
    int progressIndex;
    int durationIndex;
    int millisecondsIndex;
    /// The effect's settings from the values; nothing when they name no effect.
    std::optional<qxfx::EffectSettings> (*settings)(const InstanceValues& values);
};

/// "qxfx": any effect, its parameter list as text.
enum GenericParam : int { kEffect, kParams, kProgress, kDuration, kMilliseconds, kSource, kDataPath, kGenericCount };
extern const PluginKind kGenericPlugin;

/// "qxfx-rect": the effects whose list is one or two rectangles in thousandths of the
/// frame (pan and zoom), each side a parameter of its own that hosts can keyframe.
enum RectParam : int {
    kRectEffect,
    kLeft,
    kTop,
    kRight,
    kBottom,
    kToLeft,
    kToTop,
    kToRight,
    kToBottom,
    kRectProgress,
    kRectDuration,
    kRectMilliseconds,
    kRectCount,
};
extern const PluginKind kRectanglePlugin;

/// Seconds of span at a duration value of 1.
inline constexpr double kDurationScale = 1000.0;

/// The progress for a frame at host time `time`: time over the span when the duration
/// value is above 0 (clamped to 0..1), else the explicit progress value (clamped too).
float progressAt(double time, bool milliseconds, double durationValue, double progressValue);

/// The span in seconds of a duration value.
double spanSeconds(double durationValue);

}  // namespace qx::frei0r
