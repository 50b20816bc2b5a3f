#include "plugins/gstreamer/MediaCaps.h"

#include <array>

namespace qx::gst {

namespace {

struct FormatMapping {
    GstVideoFormat format;
    const GUID* subtype;
    uint16_t bitCount;
};

constexpr std::array<FormatMapping, 3> kFormats = {{
    {GST_VIDEO_FORMAT_BGRx, &media::MEDIASUBTYPE_RGB32, 32},
    {GST_VIDEO_FORMAT_BGRA, &media::MEDIASUBTYPE_ARGB32, 32},
    {GST_VIDEO_FORMAT_YV12, &media::MEDIASUBTYPE_YV12, 12},
}};

const FormatMapping* mappingOf(GstVideoFormat format)
{
    for (const auto& mapping : kFormats)
        if (mapping.format == format) return &mapping;
    return nullptr;
}

const FormatMapping* mappingOf(const GUID& subtype)
{
    for (const auto& mapping : kFormats)
        if (*mapping.subtype == subtype) return &mapping;
    return nullptr;
}

}  // namespace

size_t packedFrameSize(const GstVideoInfo& info)
{
    size_t bytes = 0;
    for (guint plane = 0; plane < GST_VIDEO_INFO_N_PLANES(&info); ++plane) {
        for (guint c = 0; c < GST_VIDEO_INFO_N_COMPONENTS(&info); ++c) {
            if (guint(GST_VIDEO_INFO_COMP_PLANE(&info, c)) != plane) continue;
            bytes += size_t(GST_VIDEO_INFO_COMP_WIDTH(&info, c)) * size_t(GST_VIDEO_INFO_COMP_PSTRIDE(&info, c)) *
                     size_t(GST_VIDEO_INFO_COMP_HEIGHT(&info, c));
            break;  // one component tells the plane's size
        }
    }
    return bytes;
}

std::optional<media::CMediaType> mediaTypeOf(const GstVideoInfo& info)
{
    const FormatMapping* mapping = mappingOf(GST_VIDEO_INFO_FORMAT(&info));
    if (!mapping) return std::nullopt;
    media::CMediaType type;
    type.majortype = media::MEDIATYPE_Video;
    type.subtype = *mapping->subtype;
    media::VIDEOINFOHEADER header;
    header.bmiHeader.biWidth = GST_VIDEO_INFO_WIDTH(&info);
    header.bmiHeader.biHeight = GST_VIDEO_INFO_HEIGHT(&info);
    header.bmiHeader.biBitCount = mapping->bitCount;
    header.bmiHeader.biSizeImage = DWORD(packedFrameSize(info));
    if (GST_VIDEO_INFO_FPS_N(&info) > 0) {
        header.AvgTimePerFrame = media::REFERENCE_TIME(
            gst_util_uint64_scale(media::kUnitsPerSecond, GST_VIDEO_INFO_FPS_D(&info), GST_VIDEO_INFO_FPS_N(&info)));
    }
    type.SetVideoInfo(header);
    type.lSampleSize = header.bmiHeader.biSizeImage;
    return type;
}

GstCaps* capsOfPin(const media::AMOVIESETUP_PIN& pin)
{
    GValue formats = G_VALUE_INIT;
    g_value_init(&formats, GST_TYPE_LIST);
    for (const auto& type : pin.MediaTypes()) {
        const FormatMapping* mapping = mappingOf(*type.clsMinorType);
        if (!mapping) continue;
        GValue name = G_VALUE_INIT;
        g_value_init(&name, G_TYPE_STRING);
        g_value_set_static_string(&name, gst_video_format_to_string(mapping->format));
        gst_value_list_append_and_take_value(&formats, &name);
    }
    GstCaps* caps =
        gst_caps_new_simple("video/x-raw", "width", GST_TYPE_INT_RANGE, 1, G_MAXINT, "height", GST_TYPE_INT_RANGE, 1,
                            G_MAXINT, "framerate", GST_TYPE_FRACTION_RANGE, 0, 1, G_MAXINT, 1, nullptr);
    gst_caps_set_value(caps, "format", &formats);
    g_value_unset(&formats);
    return caps;
}

}  // namespace qx::gst
