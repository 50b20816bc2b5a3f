// The frei0r mixer "qxfx-transition": the 3D transition between two inputs inside the hosts
// that load frei0r mixers (MLT's frei0r transitions, GStreamer's frei0r mixer elements;
// ffmpeg has none). The first input is the clip that leaves, the second the clip that
// enters. Progress is an explicit parameter, which MLT and GStreamer can keyframe, or
// follows the host's time when a duration is set. A scene that cannot be played cuts
// hard at the middle, as the transform does: frei0r has no way to report it.
#include "apps/session/ContentPack.h"
#include "apps/session/TransitionJob.h"
#include "plugins/frei0r/Frei0rParams.h"
#include "wrap3d/Context.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>

namespace {

using qx::frei0r::ParamInfo;

enum TransitionParam : int { kScene, kProgress, kDuration, kAspect, kDataPath, kCount };

constexpr std::array<ParamInfo, kCount> kParams = {{
    {"scene", F0R_PARAM_STRING, "Transition scene under the pack's Scenes folder", 0.0, qx::qxfx::kPackTransitionScene},
    {"progress", F0R_PARAM_DOUBLE, "Progress of the transition, 0 to 1, used while duration is 0"},
    {"duration", F0R_PARAM_DOUBLE,
     "Span of the transition in thousands of seconds (0.001 = 1 s); above 0 the progress follows the host's "
     "time in seconds"},
    {"aspect", F0R_PARAM_DOUBLE, "Aspect ratio for the scene: 0 to 1 is 0 to 4 (0: the frame's width over height)"},
    {"data path", F0R_PARAM_STRING,
     "Folder of the content pack (empty: the pack installed with the plugin, or the build's)"},
}};

constexpr double kAspectScale = 4.0;

class TransitionMixer {
public:
    TransitionMixer(int width, int height) : width_(width), height_(height)
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
            changed_ = changed_ || value != values_.texts[size_t(index)];
            values_.texts[size_t(index)] = value;
        } else {
            const double value = *static_cast<const double*>(param);
            changed_ = changed_ || (index == kAspect && value != values_.numbers[kAspect]);
            values_.numbers[size_t(index)] = value;
        }
    }

    void get(int index, f0r_param_t param)
    {
        std::lock_guard guard(lock_);
        qx::frei0r::readValue(values_, kParams, index, param);
    }

    size_t frameBytes() const { return size_t(width_) * size_t(height_) * sizeof(uint32_t); }

    // Without a job (no memory for the frames) the first input passes through.
    void update(double time, const uint32_t* first, const uint32_t* second, uint32_t* out)
    {
        std::lock_guard guard(lock_);
        const size_t bytes = frameBytes();
        if (changed_) setUp();
        if (job_) {
            std::memcpy(job_->first().samples.data(), first, bytes);
            std::memcpy(job_->second().samples.data(), second, bytes);
            const auto& n = values_.numbers;
            try {
                std::memcpy(out,
                            job_->run(qx::frei0r::progressAt(time, false, n[kDuration], n[kProgress])).samples.data(),
                            bytes);
                return;
            } catch (const std::exception&) {}
        }
        if (out != first) std::memmove(out, first, bytes);
    }

private:
    void setUp()
    {
        changed_ = false;
        job_.reset();
        qx::qxfx::TransitionSettings settings;
        settings.scene = values_.texts[kScene];
        settings.dataPath = values_.texts[kDataPath].empty() ? qx::findModuleDataPath() : values_.texts[kDataPath];
        settings.aspectRatio = float(std::clamp(values_.numbers[kAspect], 0.0, 1.0) * kAspectScale);
        try {
            job_ = std::make_unique<qx::qxfx::TransitionJob>(settings, width_, height_);
        } catch (const std::exception&) {
            job_.reset();
        }
    }

    std::mutex lock_;  // hosts may call from several threads: one frame at a time
    int width_;
    int height_;
    qx::frei0r::InstanceValues values_;
    bool changed_ = true;
    std::unique_ptr<qx::qxfx::TransitionJob> job_;
};

TransitionMixer* mixerOf(f0r_instance_t instance) { return static_cast<TransitionMixer*>(instance); }

bool validIndex(int index) { return index >= 0 && index < kCount; }

}  // namespace

extern "C" {

int f0r_init() { return 1; }

// The host is done with the plugin: the scene context goes now, on this thread, not
// while the host's loader unloads the module.
void f0r_deinit() { qx::DestroyContext(); }

void f0r_get_plugin_info(f0r_plugin_info_t* info)
{
    info->name = "qxfx-transition";
    info->author = "QXDynamicEffects";
    info->plugin_type = F0R_PLUGIN_TYPE_MIXER2;
    info->color_model = F0R_COLOR_MODEL_BGRA8888;  // the transform's own frame layout
    info->frei0r_version = FREI0R_MAJOR_VERSION;
    info->major_version = 5;
    info->minor_version = 0;
    info->num_params = kCount;
    info->explanation = "A 3D scene between two clips: the first on a face that turns away, the second coming in";
}

void f0r_get_param_info(f0r_param_info_t* info, int param_index)
{
    qx::frei0r::describeParam(kParams, info, param_index);
}

f0r_instance_t f0r_construct(unsigned int width, unsigned int height)
{
    return qx::frei0r::newInstance<TransitionMixer>(width, height);
}

void f0r_destruct(f0r_instance_t instance) { delete mixerOf(instance); }

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t param, int param_index)
{
    if (instance && param && validIndex(param_index)) mixerOf(instance)->set(param_index, param);
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t param, int param_index)
{
    if (instance && param && validIndex(param_index)) mixerOf(instance)->get(param_index, param);
}

void f0r_update2(f0r_instance_t instance, double time, const uint32_t* inframe1, const uint32_t* inframe2,
                 const uint32_t*, uint32_t* outframe)
{
    if (instance && inframe1 && inframe2 && outframe) mixerOf(instance)->update(time, inframe1, inframe2, outframe);
}

// Hosts that look for the one-input entry point find it: with one input there is nothing
// to go to, and the frame passes.
void f0r_update(f0r_instance_t instance, double, const uint32_t* inframe, uint32_t* outframe)
{
    if (instance && inframe && outframe && outframe != inframe)
        std::memmove(outframe, inframe, mixerOf(instance)->frameBytes());
}

}  // extern "C"
