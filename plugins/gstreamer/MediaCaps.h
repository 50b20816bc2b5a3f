#pragma once
// Between GStreamer's caps and the streaming layer's media types. A raw video format maps
// to the subtype of the same bytes: BGRx to RGB32, BGRA to ARGB32, YV12 to YV12. The
// frames' size goes into the VIDEOINFOHEADER with a positive height, as a DIB declares
// it: GStreamer's rows are top-down and are handed over as the filters take their
// frames, so a filter sees the picture upside down, as an image routine of the effect
// host sees its frames.
#include "platform/media/FilterSetup.h"

#include <gst/gst.h>
#include <gst/video/video.h>

#include <optional>

namespace qx::gst {

/// The media type of frames of `info`; nothing for a format no filter here takes.
std::optional<media::CMediaType> mediaTypeOf(const GstVideoInfo& info);

/// The bytes of a frame of `info` laid out as the media type says: planes one after the
/// other, rows without padding (chroma planes of YV12 are half the size, rounded up).
size_t packedFrameSize(const GstVideoInfo& info);

/// Raw video caps of the formats `pin` takes, any size and rate.
GstCaps* capsOfPin(const media::AMOVIESETUP_PIN& pin);

}  // namespace qx::gst
