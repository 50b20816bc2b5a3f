#include "plugins/gstreamer/FrameLayout.h"

#include <algorithm>
#include <cstring>

namespace qx::gst {

namespace {

/// The bytes of one row of `plane`, and its rows, as a packed frame holds them.
struct PlaneShape {
    size_t rowBytes;
    size_t rows;
};

PlaneShape shapeOf(const GstVideoFrame& frame, guint plane)
{
    const GstVideoInfo* info = &frame.info;
    for (guint c = 0; c < GST_VIDEO_INFO_N_COMPONENTS(info); ++c) {
        if (guint(GST_VIDEO_INFO_COMP_PLANE(info, c)) != plane) continue;
        return {size_t(GST_VIDEO_INFO_COMP_WIDTH(info, c)) * size_t(GST_VIDEO_INFO_COMP_PSTRIDE(info, c)),
                size_t(GST_VIDEO_INFO_COMP_HEIGHT(info, c))};
    }
    return {0, 0};
}

/// Calls `copy(packedOffset, planeRow, rowBytes)` for every row of every plane.
template <typename Copy>
void forEachRow(const GstVideoFrame& frame, Copy copy)
{
    size_t offset = 0;
    for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&frame); ++plane) {
        const PlaneShape shape = shapeOf(frame, plane);
        auto* base = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
        const size_t stride = size_t(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane));
        for (size_t row = 0; row < shape.rows; ++row) {
            copy(offset, base + row * stride, shape.rowBytes);
            offset += shape.rowBytes;
        }
    }
}

size_t packedSize(const GstVideoFrame& frame)
{
    size_t bytes = 0;
    for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&frame); ++plane) {
        const PlaneShape shape = shapeOf(frame, plane);
        bytes += shape.rowBytes * shape.rows;
    }
    return bytes;
}

}  // namespace

bool isPacked(const GstVideoFrame& frame)
{
    const auto* first = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    size_t offset = 0;
    for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&frame); ++plane) {
        const PlaneShape shape = shapeOf(frame, plane);
        if (GST_VIDEO_FRAME_PLANE_DATA(&frame, plane) != first + offset) return false;
        if (size_t(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane)) != shape.rowBytes && shape.rows > 1) return false;
        offset += shape.rowBytes * shape.rows;
    }
    return true;
}

std::span<uint8_t> packedBytes(const GstVideoFrame& frame, std::vector<uint8_t>& scratch)
{
    if (isPacked(frame)) {
        return {static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)), packedSize(frame)};
    }
    scratch.resize(packedSize(frame));
    forEachRow(frame,
               [&](size_t offset, uint8_t* row, size_t bytes) { std::memcpy(scratch.data() + offset, row, bytes); });
    return scratch;
}

void unpackInto(std::span<const uint8_t> packed, GstVideoFrame& frame)
{
    forEachRow(frame, [&](size_t offset, uint8_t* row, size_t bytes) {
        if (offset + bytes <= packed.size()) std::memcpy(row, packed.data() + offset, bytes);
    });
}

}  // namespace qx::gst
