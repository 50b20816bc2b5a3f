#pragma once
// Frames of GStreamer as the streaming layer lays them out: planes one after the other,
// rows without padding. A mapped frame laid out so already is used where it lies; one
// with padded rows or planes elsewhere (a buffer pool's alignment, memories of their
// own) goes through a packed copy.
#include <gst/video/video.h>

#include <cstdint>
#include <span>
#include <vector>

namespace qx::gst {

/// Whether the planes of `frame` lie one after the other in one block, rows unpadded.
bool isPacked(const GstVideoFrame& frame);

/// The frame's bytes packed: its own memory when packed, else a copy made in `scratch`.
std::span<uint8_t> packedBytes(const GstVideoFrame& frame, std::vector<uint8_t>& scratch);

/// Writes packed bytes into the rows of `frame`, whatever its layout.
void unpackInto(std::span<const uint8_t> packed, GstVideoFrame& frame);

}  // namespace qx::gst
