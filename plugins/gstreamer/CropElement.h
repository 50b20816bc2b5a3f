#pragma once
// qxcrop: the crop transform as a GStreamer element that changes the frame size.
#include <gst/base/gstbasetransform.h>

G_BEGIN_DECLS

#define GST_TYPE_QX_CROP (gst_qx_crop_get_type())
G_DECLARE_FINAL_TYPE(GstQxCrop, gst_qx_crop, GST, QX_CROP, GstBaseTransform)

G_END_DECLS
