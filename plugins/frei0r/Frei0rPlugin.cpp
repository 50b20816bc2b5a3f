// The frei0r entry points of one filter of the set, chosen at build time by
// QX_FREI0R_KIND: "qxfx" (any effect of the catalogue, chosen by id) or "qxfx-rect" (the
// pan and zoom effects with their rectangles as parameters), for ffmpeg
// (-vf frei0r=qxfx:...), GStreamer (frei0r-filter-qxfx) and MLT (frei0r.qxfx).
#include "plugins/frei0r/Frei0rFilter.h"
#include "wrap3d/Context.h"

namespace {

using qx::frei0r::Frei0rFilter;

const qx::frei0r::PluginKind& kKind = qx::frei0r::QX_FREI0R_KIND;

Frei0rFilter* filterOf(f0r_instance_t instance) { return static_cast<Frei0rFilter*>(instance); }

bool validIndex(int index) { return index >= 0 && size_t(index) < kKind.params.size(); }

}  // namespace

extern "C" {

int f0r_init() { return 1; }

// The host is done with the plugin: the scene context goes now, on this thread, not
// while the host's loader unloads the module.
void f0r_deinit() { qx::DestroyContext(); }

void f0r_get_plugin_info(f0r_plugin_info_t* info)
{
    info->name = kKind.name;
    info->author = "QXDynamicEffects";
    info->plugin_type = F0R_PLUGIN_TYPE_FILTER;
    // B, G, R, A bytes are the effect host's own frame layout, so frames go in and out
    // without a conversion here. ffmpeg gives BGRA frames for this model, GStreamer
    // negotiates video/x-raw,format=BGRA, and MLT converts its RGBA to and from it; all
    // three take it, where PACKED32 would leave the byte order to the host.
    info->color_model = F0R_COLOR_MODEL_BGRA8888;
    info->frei0r_version = FREI0R_MAJOR_VERSION;
    info->major_version = 5;
    info->minor_version = 0;
    info->num_params = int(kKind.params.size());
    info->explanation = kKind.explanation;
}

void f0r_get_param_info(f0r_param_info_t* info, int param_index)
{
    qx::frei0r::describeParam(kKind.params, info, param_index);
}

f0r_instance_t f0r_construct(unsigned int width, unsigned int height)
{
    return qx::frei0r::newInstance<Frei0rFilter>(width, height, kKind);
}

void f0r_destruct(f0r_instance_t instance) { delete filterOf(instance); }

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t param, int param_index)
{
    if (!instance || !param || !validIndex(param_index)) return;
    auto* filter = filterOf(instance);
    if (kKind.params[size_t(param_index)].type != F0R_PARAM_STRING) {
        filter->setNumber(param_index, *static_cast<const double*>(param));
    } else {
        // A string arrives as a pointer to the text pointer, from ffmpeg, MLT and
        // GStreamer alike.
        filter->setText(param_index, *static_cast<const char* const*>(param));
    }
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t param, int param_index)
{
    if (instance && param && validIndex(param_index)) filterOf(instance)->getValue(param_index, param);
}

void f0r_update(f0r_instance_t instance, double time, const uint32_t* inframe, uint32_t* outframe)
{
    if (instance && inframe && outframe) filterOf(instance)->update(time, inframe, outframe);
}

}  // extern "C"
