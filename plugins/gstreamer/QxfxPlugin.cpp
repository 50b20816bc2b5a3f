// The GStreamer plugin "qxfx" (libgstqxfx.so): the streaming objects of the library as
// elements.
#include "plugins/gstreamer/AnimSourceElement.h"
#include "plugins/gstreamer/CropElement.h"
#include "plugins/gstreamer/SceneCutElement.h"
#include "plugins/gstreamer/TransitionElement.h"

#include <gst/gst.h>

namespace {

gboolean pluginInit(GstPlugin* plugin)
{
    // All are put in pipelines by hand, never picked by autoplugging.
    return gst_element_register(plugin, "qxcrop", GST_RANK_NONE, GST_TYPE_QX_CROP) &&
           gst_element_register(plugin, "qxscenecut", GST_RANK_NONE, GST_TYPE_QX_SCENE_CUT) &&
           gst_element_register(plugin, "qxanimsrc", GST_RANK_NONE, GST_TYPE_QX_ANIM_SRC) &&
           gst_element_register(plugin, "qxtransition", GST_RANK_NONE, GST_TYPE_QX_TRANSITION);
}

}  // namespace

#define PACKAGE "qxdynamiceffects"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, qxfx,
                  "Streaming objects of QXDynamicEffects: a crop to a fixed size, scene cuts, compositions, the 3D "
                  "transition",
                  pluginInit, "5.0", "Proprietary", "QXDynamicEffects", "QXDynamicEffects")
