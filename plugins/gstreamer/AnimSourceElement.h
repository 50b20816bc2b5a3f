#pragma once
// qxanimsrc: a composition with the user's pictures as a seekable GStreamer video source.
#include <gst/base/gstpushsrc.h>

G_BEGIN_DECLS

#define GST_TYPE_QX_ANIM_SRC (gst_qx_anim_src_get_type())
G_DECLARE_FINAL_TYPE(GstQxAnimSrc, gst_qx_anim_src, GST, QX_ANIM_SRC, GstPushSrc)

G_END_DECLS
