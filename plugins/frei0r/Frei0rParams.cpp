#include "plugins/frei0r/Frei0rParams.h"

#include "apps/session/ContentPack.h"
#include "effects/PanZoom.h"
#include "host/EffectCatalog.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace qx::frei0r {

namespace {

// NaN, which a host may pass as easily as any double, counts as 0.
double clampUnit(double value) { return std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 1.0); }

std::optional<LONG> effectId(const std::string& text)
{
    LONG id = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return id;
}

// The order is the order of ffmpeg's positional list (frei0r=qxfx:EFFECT|PARAMS|...),
// so the values people set most come first.
constexpr std::array<ParamInfo, kGenericCount> kGenericParams = {{
    {"effect", F0R_PARAM_STRING, "Effect id of the catalogue, as 'qxfx list' shows it", 0.0, "0"},
    {"params", F0R_PARAM_STRING, "Parameter text, each value followed by ';' (empty: the effect's defaults)"},
    {"progress", F0R_PARAM_DOUBLE, "Progress of the effect, 0 to 1, used while duration is 0"},
    {"duration", F0R_PARAM_DOUBLE,
     "Span of the effect in thousands of seconds (0.01 = 10 s); above 0 the progress follows the host's time"},
    {"milliseconds", F0R_PARAM_BOOL, "The host's time is in milliseconds (ffmpeg), not seconds (MLT, GStreamer)"},
    {"source", F0R_PARAM_STRING,
     "Source file of effects that read one (scenes, animations), under the data path (empty: the pack's own)"},
    {"data path", F0R_PARAM_STRING,
     "Folder of the content pack (empty: the pack installed with the plugin, or the build's)"},
    {"span", F0R_PARAM_STRING,
     "Span of the effect in seconds, 0 to 86400 (\"10\", \"2.5\"); above 0 the progress follows the host's time "
     "and duration is not used"},
}};

std::optional<qxfx::EffectSettings> genericSettings(const InstanceValues& values)
{
    const auto id = effectId(values.texts[kEffect]);
    if (!id) return std::nullopt;
    qxfx::EffectSettings settings;
    settings.effectId = *id;
    if (!values.texts[kParams].empty()) settings.params = values.texts[kParams];
    settings.source = values.texts[kSource].empty() ? packSource(*id) : values.texts[kSource];
    settings.dataPath = values.texts[kDataPath].empty() ? findModuleDataPath() : values.texts[kDataPath];
    settings.durationSeconds = spanOfValues(values, kGenericPlugin);
    return settings;
}

// A side's value from 0 to 1 covers the side's range in the effect's table (0 to 1000
// thousandths of the frame), exactly for every value that a thousandth can hold.
constexpr double unitValue(const ParamDescriptor& side)
{
    return double(side.defaultValue - side.minimum) / double(side.maximum - side.minimum);
}

LONG sideValue(const ParamDescriptor& side, double unit)
{
    return LONG(std::lround(side.minimum + clampUnit(unit) * (double(side.maximum) - side.minimum)));
}

// The defaults are those of the zooms for the first rectangle, of the free move's
// destination for the second.
constexpr std::array<ParamInfo, kRectCount> kRectParams = {{
    {"effect", F0R_PARAM_STRING, "Effect id: 0 to 5 move or zoom through one rectangle, 6 from one to another", 0.0,
     "0"},
    {"left", F0R_PARAM_DOUBLE, "Left side of the rectangle, in the frame's width",
     unitValue(kZoomParams[RectangleParam::kLeft])},
    {"top", F0R_PARAM_DOUBLE, "Top side of the rectangle, in the frame's height",
     unitValue(kZoomParams[RectangleParam::kTop])},
    {"right", F0R_PARAM_DOUBLE, "Right side of the rectangle, in the frame's width",
     unitValue(kZoomParams[RectangleParam::kRight])},
    {"bottom", F0R_PARAM_DOUBLE, "Bottom side of the rectangle, in the frame's height",
     unitValue(kZoomParams[RectangleParam::kBottom])},
    {"to left", F0R_PARAM_DOUBLE, "Left side of the second rectangle (effects with two)",
     unitValue(kFreeMoveParams[FreeMoveParam::kDestinationLeft])},
    {"to top", F0R_PARAM_DOUBLE, "Top side of the second rectangle",
     unitValue(kFreeMoveParams[FreeMoveParam::kDestinationTop])},
    {"to right", F0R_PARAM_DOUBLE, "Right side of the second rectangle",
     unitValue(kFreeMoveParams[FreeMoveParam::kDestinationRight])},
    {"to bottom", F0R_PARAM_DOUBLE, "Bottom side of the second rectangle",
     unitValue(kFreeMoveParams[FreeMoveParam::kDestinationBottom])},
    {"progress", F0R_PARAM_DOUBLE, "Progress of the effect, 0 to 1, used while duration is 0"},
    {"duration", F0R_PARAM_DOUBLE,
     "Span of the effect in thousands of seconds (0.01 = 10 s); above 0 the progress follows the host's time"},
    {"milliseconds", F0R_PARAM_BOOL, "The host's time is in milliseconds (ffmpeg), not seconds (MLT, GStreamer)"},
    {"span", F0R_PARAM_STRING,
     "Span of the effect in seconds, 0 to 86400 (\"10\", \"2.5\"); above 0 the progress follows the host's time "
     "and duration is not used"},
}};

// The rectangle effects are those whose table holds nothing but the sides of one
// rectangle or two: the pans and zooms. The fades hold a colour, the puzzle counts.
ParamTable rectangleSides(LONG id)
{
    const EffectDescriptor* effect = findEffect(id);
    if (!effect || effect->params.empty() || effect->params.size() > size_t(kRectProgress - kLeft)) return {};
    const bool allSides = std::ranges::all_of(
        effect->params, [](const ParamDescriptor& param) { return param.kind == ParamKind::RectangleSide; });
    return allSides ? effect->params : ParamTable{};
}

std::optional<qxfx::EffectSettings> rectangleSettings(const InstanceValues& values)
{
    const auto id = effectId(values.texts[kRectEffect]);
    const ParamTable sides = id ? rectangleSides(*id) : ParamTable{};
    if (sides.empty()) return std::nullopt;
    qxfx::EffectSettings settings;
    settings.effectId = *id;
    settings.params.emplace();
    for (const ParamDescriptor& side : sides) {
        *settings.params += std::to_string(sideValue(side, values.numbers[size_t(kLeft + side.slot)])) + ";";
    }
    settings.durationSeconds = spanOfValues(values, kRectanglePlugin);
    return settings;
}

}  // namespace

const PluginKind kGenericPlugin = {
    "qxfx",         "Effects of the QXDynamicEffects catalogue (pan and zoom, fades, colours, old film...)",
    kGenericParams, kProgress,
    kDuration,      kMilliseconds,
    kSpan,          genericSettings,
};

const PluginKind kRectanglePlugin = {
    "qxfx-rect",   "Pan and zoom of the QXDynamicEffects catalogue, with the rectangles as parameters",
    kRectParams,   kRectProgress,
    kRectDuration, kRectMilliseconds,
    kRectSpan,     rectangleSettings,
};

void describeParam(std::span<const ParamInfo> params, f0r_param_info_t* info, int index)
{
    if (!info || index < 0 || size_t(index) >= params.size()) return;
    const ParamInfo& param = params[size_t(index)];
    info->name = param.name;
    info->type = param.type;
    info->explanation = param.explanation;
}

void readValue(const InstanceValues& values, std::span<const ParamInfo> params, int index, f0r_param_t param)
{
    if (params[size_t(index)].type == F0R_PARAM_STRING) {
        *static_cast<const char**>(param) = values.texts[size_t(index)].c_str();
    } else {
        *static_cast<double*>(param) = values.numbers[size_t(index)];
    }
}

double spanSeconds(double durationValue) { return clampUnit(durationValue) * kDurationScale; }

float progressOver(double seconds, double span, double progressValue)
{
    if (span <= 0.0) return float(clampUnit(progressValue));
    return float(clampUnit(seconds / span));
}

float progressAt(double time, bool milliseconds, double durationValue, double progressValue)
{
    return progressOver(milliseconds ? time / 1000.0 : time, spanSeconds(durationValue), progressValue);
}

double spanOfText(const std::string& text, double durationValue)
{
    double seconds = 0.0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (!text.empty() && ec == std::errc() && end == text.data() + text.size() && seconds > 0.0 &&
        seconds <= kMaxSpanSeconds)
        return seconds;
    return spanSeconds(durationValue);
}

double spanOfValues(const InstanceValues& values, const PluginKind& kind)
{
    return spanOfText(values.texts[size_t(kind.spanIndex)], values.numbers[size_t(kind.durationIndex)]);
}

double HostClock::seconds(double time, bool millisecondsFlag)
{
    constexpr double kLongestFrameStep = 1.5;
    if (framesSeen_ < 2 && std::isfinite(time)) {
        if (framesSeen_ == 0) firstTime_ = time;
        if (framesSeen_ == 1) milliseconds_ = std::abs(time - firstTime_) > kLongestFrameStep;
        ++framesSeen_;
    }
    return millisecondsFlag || milliseconds_ ? time / 1000.0 : time;
}

}  // namespace qx::frei0r
