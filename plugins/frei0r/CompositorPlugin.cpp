// The frei0r filter "qxfx-composite": the compositor inside ffmpeg, GStreamer and MLT. It
// draws a picture, an SWF animation or a movie (the `overlay` file) over each frame, with
// the compositor's geometry, key and opacity as parameters. Every numeric parameter is a
// double from 0 to 1, as frei0r asks; the overlay file is opened again only when it
// changes, the rest is put before every frame, as the compositor reads it.
#include "apps/session/CompositeJob.h"
#include "apps/session/OverlayFile.h"
#include "platform/os/WideText.h"
#include "platform/video/MovieReaderComponent.h"
#include "plugins/frei0r/Frei0rParams.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace {

using qx::frei0r::ParamInfo;

enum CompositeParam : int {
    kOverlay,
    kX,
    kY,
    kWidth,
    kHeight,
    kSrcX,
    kSrcY,
    kSrcWidth,
    kSrcHeight,
    kAngle,
    kOpacity,
    kKey,
    kSimilarity,
    kProgress,
    kDuration,
    kMilliseconds,
    kMediaStart,
    kSpan,
    kCount,
};

// The order is that of ffmpeg's positional list: the file and its place first.
constexpr std::array<ParamInfo, kCount> kParams = {{
    {"overlay", F0R_PARAM_STRING, "Picture, SWF animation (.swf, .dat) or movie drawn over the frame"},
    {"x", F0R_PARAM_DOUBLE, "Left of the picture, fraction of the frame's width"},
    {"y", F0R_PARAM_DOUBLE, "Top of the picture, fraction of the frame's height"},
    {"width", F0R_PARAM_DOUBLE, "Width of the picture, fraction of the frame's", 1.0},
    {"height", F0R_PARAM_DOUBLE, "Height of the picture, fraction of the frame's", 1.0},
    {"src x", F0R_PARAM_DOUBLE, "Left of the part of the picture shown, fraction of its width"},
    {"src y", F0R_PARAM_DOUBLE, "Top of the part of the picture shown, fraction of its height"},
    {"src width", F0R_PARAM_DOUBLE, "Width of the part of the picture shown", 1.0},
    {"src height", F0R_PARAM_DOUBLE, "Height of the part of the picture shown", 1.0},
    {"angle", F0R_PARAM_DOUBLE, "Turn around the picture's centre, clockwise: 0 to 1 is 0 to 360 degrees"},
    {"opacity", F0R_PARAM_DOUBLE, "Opacity of the picture", 1.0},
    {"key", F0R_PARAM_STRING, "Colour made transparent, RRGGBB in hex (empty: none)"},
    {"similarity", F0R_PARAM_DOUBLE, "Tolerance of the key per channel: 0 to 1 is 0 to 255"},
    {"progress", F0R_PARAM_DOUBLE, "Progress through the clip, 0 to 1, used while duration is 0"},
    {"duration", F0R_PARAM_DOUBLE,
     "Span of the clip in thousands of seconds (0.01 = 10 s); above 0 the progress follows the host's time"},
    {"milliseconds", F0R_PARAM_BOOL, "The host's time is in milliseconds (ffmpeg), not seconds (MLT, GStreamer)"},
    {"media start", F0R_PARAM_DOUBLE, "Where a movie overlay starts, in thousands of seconds"},
    {"span", F0R_PARAM_STRING,
     "Span of the clip in seconds, 0 to 86400 (\"10\", \"2.5\"); above 0 the progress follows the host's time "
     "and duration is not used"},
}};

constexpr qx::ULONG kNoKey = qx::CQXCompositor::kNoKey;

double unit(double value) { return std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 1.0); }

// RRGGBB in hex as the compositor's key (red in the low byte); no key for anything else.
qx::ULONG keyOf(const std::string& text)
{
    unsigned value = 0;
    if (text.size() != 6 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos ||
        std::sscanf(text.c_str(), "%6x", &value) != 1) {
        return kNoKey;
    }
    return qx::ULONG((value >> 16) & 0xFF) | qx::ULONG(value & 0xFF00) | qx::ULONG(value & 0xFF) << 16;
}

class CompositorFilter {
public:
    CompositorFilter(int width, int height) : width_(width), height_(height)
    {
        for (const auto& param : kParams) {
            values_.texts.emplace_back(param.defaultText);
            values_.numbers.push_back(param.defaultNumber);
        }
    }

    void set(int index, f0r_param_t param)
    {
        std::lock_guard guard(lock_);
        if (kParams[size_t(index)].type == F0R_PARAM_STRING) {
            // A string arrives as a pointer to the text pointer, from every host.
            const char* text = *static_cast<const char* const*>(param);
            const std::string value = text ? text : "";
            changed_ = changed_ || (index == kOverlay && value != values_.texts[kOverlay]);
            values_.texts[size_t(index)] = value;
        } else {
            values_.numbers[size_t(index)] = *static_cast<const double*>(param);
        }
    }

    void get(int index, f0r_param_t param)
    {
        std::lock_guard guard(lock_);
        qx::frei0r::readValue(values_, kParams, index, param);
    }

    // A frame the compositor cannot draw passes through: frei0r has no way to report it.
    void update(double time, const uint32_t* in, uint32_t* out)
    {
        std::lock_guard guard(lock_);
        const size_t samples = size_t(width_) * size_t(height_);
        if (changed_) setUp();
        if (!job_) {
            std::memcpy(out, in, samples * sizeof(uint32_t));
            return;
        }
        std::memcpy(job_->first().samples.data(), in, samples * sizeof(uint32_t));
        putProperties();
        const auto& n = values_.numbers;
        // The host's unit is found from its first frame steps when the flag is not set.
        const double seconds = clock_.seconds(time, n[kMilliseconds] >= 0.5);
        const float progress = qx::frei0r::progressOver(seconds, span(), n[kProgress]);
        try {
            const auto& result = job_->run(progress, true);
            std::memcpy(out, result.samples.data(), samples * sizeof(uint32_t));
        } catch (const std::exception&) {
            std::memcpy(out, in, samples * sizeof(uint32_t));
        }
    }

private:
    void setUp()
    {
        changed_ = false;
        job_.reset();
        overlay_.reset();
        if (values_.texts[kOverlay].empty()) return;
        try {
            overlay_ = std::make_unique<qx::qxfx::OverlayFile>(values_.texts[kOverlay]);
            job_ = std::make_unique<qx::qxfx::CompositeJob>(width_, height_);
            const qx::Bstr path(qx::os::fromUtf8(overlay_->path()));
            job_->compositor().put_OverlayPath(path.get());
            putProperties();
            job_->setUp();
        } catch (const std::exception&) {
            job_.reset();
        }
    }

    void putProperties()
    {
        auto& c = job_->compositor();
        const auto& n = values_.numbers;
        c.put_OffsetX(float(unit(n[kX])));
        c.put_OffsetY(float(unit(n[kY])));
        c.put_Width(float(unit(n[kWidth])));
        c.put_Height(float(unit(n[kHeight])));
        c.put_SrcOffsetX(float(unit(n[kSrcX])));
        c.put_SrcOffsetY(float(unit(n[kSrcY])));
        c.put_SrcWidth(float(unit(n[kSrcWidth])));
        c.put_SrcHeight(float(unit(n[kSrcHeight])));
        c.put_Angle(float(unit(n[kAngle]) * 360.0));
        c.put_Opacity(float(unit(n[kOpacity])));
        const qx::ULONG key = keyOf(values_.texts[kKey]);
        const qx::ULONG level = qx::ULONG(std::lround(unit(n[kSimilarity]) * 255.0));
        c.put_KeyColor(key);
        c.put_Similarity(key == kNoKey ? kNoKey : level | level << 8 | level << 16);
        c.put_Duration(span());
        c.put_MediaStart(unit(n[kMediaStart]) * qx::frei0r::kDurationScale);
    }

    double span() const { return qx::frei0r::spanOfText(values_.texts[kSpan], values_.numbers[kDuration]); }

    std::mutex lock_;  // hosts may call from several threads: one frame at a time
    int width_;
    int height_;
    qx::frei0r::InstanceValues values_;
    qx::frei0r::HostClock clock_;
    bool changed_ = true;
    std::unique_ptr<qx::qxfx::OverlayFile> overlay_;
    std::unique_ptr<qx::qxfx::CompositeJob> job_;
};

CompositorFilter* filterOf(f0r_instance_t instance) { return static_cast<CompositorFilter*>(instance); }

bool validIndex(int index) { return index >= 0 && index < kCount; }

}  // namespace

extern "C" {

int f0r_init()
{
    // Movie overlays are read by the movie reader component, found by class identifier.
    qx::video::RegisterMovieReader();
    return 1;
}

void f0r_deinit() {}

void f0r_get_plugin_info(f0r_plugin_info_t* info)
{
    info->name = "qxfx-composite";
    info->author = "QXDynamicEffects";
    info->plugin_type = F0R_PLUGIN_TYPE_FILTER;
    info->color_model = F0R_COLOR_MODEL_BGRA8888;  // the compositor's own frame layout
    info->frei0r_version = FREI0R_MAJOR_VERSION;
    info->major_version = 5;
    info->minor_version = 0;
    info->num_params = kCount;
    info->explanation = "A picture, SWF animation or movie over the video, placed, turned, keyed and faded";
}

void f0r_get_param_info(f0r_param_info_t* info, int param_index)
{
    qx::frei0r::describeParam(kParams, info, param_index);
}

f0r_instance_t f0r_construct(unsigned int width, unsigned int height)
{
    return qx::frei0r::newInstance<CompositorFilter>(width, height);
}

void f0r_destruct(f0r_instance_t instance) { delete filterOf(instance); }

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t param, int param_index)
{
    if (instance && param && validIndex(param_index)) filterOf(instance)->set(param_index, param);
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t param, int param_index)
{
    if (instance && param && validIndex(param_index)) filterOf(instance)->get(param_index, param);
}

void f0r_update(f0r_instance_t instance, double time, const uint32_t* inframe, uint32_t* outframe)
{
    if (instance && inframe && outframe) filterOf(instance)->update(time, inframe, outframe);
}

}  // extern "C"
