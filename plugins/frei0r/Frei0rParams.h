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

#include <exception>
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

/// The largest frame side any filter of the set renders.
inline constexpr unsigned kMaxFrameSide = 16384;

/// Whether a host's frame size can be rendered: neither side 0 nor past kMaxFrameSide.
inline bool usableFrameSize(unsigned width, unsigned height)
{
    return width > 0 && height > 0 && width <= kMaxFrameSide && height <= kMaxFrameSide;
}

/// A new instance made from the frame size (and `rest`) for f0r_construct; null for an
/// unusable size or when it cannot be made, since frei0r has no way to say why.
template <typename Instance, typename... Rest>
f0r_instance_t newInstance(unsigned width, unsigned height, const Rest&... rest)
{
    if (!usableFrameSize(width, height)) return nullptr;
    try {
        return new Instance(rest..., int(width), int(height));
    } catch (const std::exception&) {
        return nullptr;
    }
}

/// Describes `params[index]` to a host; an index outside the list leaves `info` as it was.
void describeParam(std::span<const ParamInfo> params, f0r_param_info_t* info, int index);

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
    int spanIndex;  ///< the span in seconds, as text
    /// The effect's settings from the values; nothing when they name no effect.
    std::optional<qxfx::EffectSettings> (*settings)(const InstanceValues& values);
};

/// "qxfx": any effect, its parameter list as text.
enum GenericParam : int {
    kEffect,
    kParams,
    kProgress,
    kDuration,
    kMilliseconds,
    kSource,
    kDataPath,
    kSpan,
    kGenericCount
};
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
    kRectSpan,
    kRectCount,
};
extern const PluginKind kRectanglePlugin;

/// Seconds of span at a duration value of 1.
inline constexpr double kDurationScale = 1000.0;

/// The progress for a frame at host time `time`: time over the span when the duration
/// value is above 0 (clamped to 0..1), else the explicit progress value (clamped too).
float progressAt(double time, bool milliseconds, double durationValue, double progressValue);

/// Hands value `index` to a host: a string as a pointer to its text, else the double.
void readValue(const InstanceValues& values, std::span<const ParamInfo> params, int index, f0r_param_t param);

/// The span in seconds of a duration value.
double spanSeconds(double durationValue);

/// The longest span the `span` text takes: a day.
inline constexpr double kMaxSpanSeconds = 86400.0;

/// The span in seconds that a `span` text gives when it holds a number of seconds from 0
/// to a day ("10", "2.5"), else that of the duration value.
double spanOfText(const std::string& spanText, double durationValue);

/// The span in seconds that an instance's values give, by spanOfText.
double spanOfValues(const InstanceValues& values, const PluginKind& kind);

/// The progress of a frame `seconds` into the clip: seconds over `span` when the span is
/// above 0, else the explicit progress value (both clamped to 0..1).
float progressOver(double seconds, double span, double progressValue);

/// The host's frame times in seconds. ffmpeg counts milliseconds, MLT and GStreamer
/// seconds; the milliseconds flag says so, and without it a host whose first two frames lie
/// more than 1.5 apart is taken to count milliseconds, since no video shows its frames
/// 1.5 s apart. Forgetting the flag under ffmpeg then no longer ends a fade at once.
class HostClock {
public:
    double seconds(double time, bool millisecondsFlag);

private:
    double firstTime_ = 0.0;
    int framesSeen_ = 0;
    bool milliseconds_ = false;
};

}  // namespace qx::frei0r
