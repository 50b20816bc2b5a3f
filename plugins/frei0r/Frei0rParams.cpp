#include "plugins/frei0r/Frei0rParams.h"

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
    {"source", F0R_PARAM_STRING, "Source file of effects that read one (scenes, animations)"},
    {"data path", F0R_PARAM_STRING, "Folder of the content pack"},
}};

std::optional<qxfx::EffectSettings> genericSettings(const ParamValues& values)
{
    const auto id = effectId(values.texts[kEffect]);
    if (!id) return std::nullopt;
    qxfx::EffectSettings settings;
    settings.effectId = *id;
    if (!values.texts[kParams].empty()) settings.params = values.texts[kParams];
    settings.source = values.texts[kSource];
    settings.dataPath = values.texts[kDataPath];
    settings.durationSeconds = spanSeconds(values.numbers[kDuration]);
    return settings;
}

// Sides in thousandths of the frame: 0 to 1 here is 0 to 1000 there, exactly for every
// value that a thousandth can hold. The defaults are those of the zoom effects.
constexpr std::array<ParamInfo, kRectCount> kRectParams = {{
    {"effect", F0R_PARAM_STRING, "Effect id: 0 to 5 move or zoom through one rectangle, 6 from one to another", 0.0,
     "0"},
    {"left", F0R_PARAM_DOUBLE, "Left side of the rectangle, in the frame's width", 0.1},
    {"top", F0R_PARAM_DOUBLE, "Top side of the rectangle, in the frame's height", 0.1},
    {"right", F0R_PARAM_DOUBLE, "Right side of the rectangle, in the frame's width", 0.9},
    {"bottom", F0R_PARAM_DOUBLE, "Bottom side of the rectangle, in the frame's height", 0.9},
    {"to left", F0R_PARAM_DOUBLE, "Left side of the second rectangle (effects with two)", 0.5},
    {"to top", F0R_PARAM_DOUBLE, "Top side of the second rectangle", 0.5},
    {"to right", F0R_PARAM_DOUBLE, "Right side of the second rectangle", 1.0},
    {"to bottom", F0R_PARAM_DOUBLE, "Bottom side of the second rectangle", 1.0},
    {"progress", F0R_PARAM_DOUBLE, "Progress of the effect, 0 to 1, used while duration is 0"},
    {"duration", F0R_PARAM_DOUBLE,
     "Span of the effect in thousands of seconds (0.01 = 10 s); above 0 the progress follows the host's time"},
    {"milliseconds", F0R_PARAM_BOOL, "The host's time is in milliseconds (ffmpeg), not seconds (MLT, GStreamer)"},
}};

// The rectangle effects are those of the catalogue's first category ("Standard") whose
// default list holds one rectangle or two (4 or 8 values); the fades of that category
// hold a colour. The list is given as many sides as the defaults have.
int rectangleSides(LONG id)
{
    const auto host = CQXDynamicEffect::Create();
    LONG index = -1;
    LONG category = -1;
    LONG firstCategory = -1;
    if (host->GetIndexFromID(id, &index) != S_OK || host->GetEffectCategoryFromIndex(index, &category) != S_OK ||
        host->GetCategoryIDFromIndex(0, &firstCategory) != S_OK || category != firstCategory) {
        return 0;
    }
    const auto defaults = qxfx::defaultParamsText(id).value_or("");
    const int values = int(std::count(defaults.begin(), defaults.end(), ';'));
    return values == 4 || values == 8 ? values : 0;
}

std::optional<qxfx::EffectSettings> rectangleSettings(const ParamValues& values)
{
    const auto id = effectId(values.texts[kRectEffect]);
    const int sides = id ? rectangleSides(*id) : 0;
    if (sides == 0) return std::nullopt;
    qxfx::EffectSettings settings;
    settings.effectId = *id;
    settings.params.emplace();
    for (int side = 0; side < sides; ++side) {
        *settings.params += std::to_string(std::lround(clampUnit(values.numbers[size_t(kLeft + side)]) * 1000.0)) + ";";
    }
    settings.durationSeconds = spanSeconds(values.numbers[kRectDuration]);
    return settings;
}

}  // namespace

const PluginKind kGenericPlugin = {
    "qxfx",
    "Effects of the QXDynamicEffects catalogue (pan and zoom, fades, colours, old film...)",
    kGenericParams,
    kProgress,
    kDuration,
    kMilliseconds,
    genericSettings,
};

const PluginKind kRectanglePlugin = {
    "qxfx-rect",
    "Pan and zoom of the QXDynamicEffects catalogue, with the rectangles as parameters",
    kRectParams,
    kRectProgress,
    kRectDuration,
    kRectMilliseconds,
    rectangleSettings,
};

double spanSeconds(double durationValue) { return clampUnit(durationValue) * kDurationScale; }

float progressAt(double time, bool milliseconds, double durationValue, double progressValue)
{
    const double span = spanSeconds(durationValue);
    if (span <= 0.0) return float(clampUnit(progressValue));
    const double seconds = milliseconds ? time / 1000.0 : time;
    return float(clampUnit(seconds / span));
}

}  // namespace qx::frei0r
