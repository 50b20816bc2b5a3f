#pragma once
// qxscenecut: scene detection as a pass-through GStreamer element that posts the cuts.
#include <gst/video/gstvideofilter.h>

G_BEGIN_DECLS

#define GST_TYPE_QX_SCENE_CUT (gst_qx_scene_cut_get_type())
G_DECLARE_FINAL_TYPE(GstQxSceneCut, gst_qx_scene_cut, GST, QX_SCENE_CUT, GstVideoFilter)

G_END_DECLS
