#pragma once
// qxtransition: the 3D transition between two video streams, a GStreamer video aggregator
// with two inputs.
#include <gst/video/gstvideoaggregator.h>

G_BEGIN_DECLS

#define GST_TYPE_QX_TRANSITION (gst_qx_transition_get_type())
G_DECLARE_FINAL_TYPE(GstQxTransition, gst_qx_transition, GST, QX_TRANSITION, GstVideoAggregator)

G_END_DECLS
