/**
 * SECTION:element-qxanimsrc
 * @title: qxanimsrc
 *
 * Plays a composition with up to five of the user's pictures in its places, as a
 * slideshow or a title: a 3D composition (a ".cpo3d" file, named under the content pack's
 * Scenes folder, e.g. "Compositions\Carousel.cpo3d"), rendered by the scene engine, or a
 * 2D composition (any other file under that folder, e.g. "Compositions\Slideshow.cpo").
 * Pictures repeat when the composition has more places than pictures.
 *
 * Frames are BGRx of the negotiated size and rate (the width, height and framerate
 * properties are the sizes chosen when downstream leaves them open). The stream lasts the
 * composition's own duration, or the duration property, then ends. It can be sought to
 * any frame; the position in the composition follows the seek.
 *
 * ## Example launch line
 * |[
 * gst-launch-1.0 qxanimsrc composition="Compositions\\Slideshow.cpo" image1=a.jpg image2=b.jpg image3=c.jpg !
 * videoconvert ! x264enc ! mp4mux ! filesink location=slideshow.mp4
 * ]|
 */
#include "plugins/gstreamer/AnimSourceElement.h"

#include "apps/session/ContentPack.h"
#include "filters/Anim3DVideoSource.h"
#include "platform/os/WideText.h"
#include "plugins/gstreamer/FrameHandoff.h"
#include "wrap3d/DataPath.h"

#include <gst/video/video.h>

#include <array>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>

GST_DEBUG_CATEGORY_STATIC(qx_anim_src_debug);
#define GST_CAT_DEFAULT qx_anim_src_debug

namespace {

using namespace qx;

constexpr int kMaxSide = 16384;
constexpr size_t kImages = CAnim3DVideoSource::kMaxImages;

/// The element's properties and its graph: the composition source and the hand-off.
struct AnimSrcState {
    std::mutex lock;  // the properties
    std::string composition;
    std::array<std::string, kImages> images;
    std::string dataPath;
    double duration = 0.0;
    guint stretchMode = 1;
    int width = 640;
    int height = 360;
    int fpsN = 25;
    int fpsD = 1;

    // Touched by the streaming thread and the seeks it runs, one at a time.
    com::ComPtr<CAnim3DVideoSource> source;
    com::ComPtr<gst::FrameHandoff> handoff;
    com::ComPtr<media::IMediaSeeking> seeking;
    GstVideoInfo info;
    bool negotiated = false;
    guint64 seekTime = 0;   // where the last seek went, in nanoseconds
    guint64 seekFrame = 0;  // the frame there, once the rate is known
    guint64 sinceSeek = 0;  // frames sent since
    guint64 totalFrames = 0;
};

}  // namespace

struct _GstQxAnimSrc {
    GstPushSrc parent;
    std::unique_ptr<AnimSrcState> state;  // made in init, gone in finalize
};

G_DEFINE_TYPE(GstQxAnimSrc, gst_qx_anim_src, GST_TYPE_PUSH_SRC)

namespace {

AnimSrcState& stateOf(gpointer object) { return *GST_QX_ANIM_SRC(object)->state; }

enum Property {
    PROP_0,
    PROP_COMPOSITION,
    PROP_IMAGE1,
    PROP_IMAGE5 = PROP_IMAGE1 + int(kImages) - 1,
    PROP_DURATION,
    PROP_STRETCH_MODE,
    PROP_WIDTH,
    PROP_HEIGHT,
    PROP_FRAMERATE,
    PROP_DATA_PATH,
};

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* pspec)
{
    AnimSrcState& s = stateOf(object);
    std::lock_guard lock(s.lock);
    const auto text = [value] { return std::string(g_value_get_string(value) ? g_value_get_string(value) : ""); };
    if (id >= PROP_IMAGE1 && id <= PROP_IMAGE5) {
        s.images[id - PROP_IMAGE1] = text();
        return;
    }
    switch (id) {
    case PROP_COMPOSITION: s.composition = text(); break;
    case PROP_DURATION: s.duration = g_value_get_double(value); break;
    case PROP_STRETCH_MODE: s.stretchMode = g_value_get_uint(value); break;
    case PROP_WIDTH: s.width = g_value_get_int(value); break;
    case PROP_HEIGHT: s.height = g_value_get_int(value); break;
    case PROP_FRAMERATE:
        s.fpsN = gst_value_get_fraction_numerator(value);
        s.fpsD = gst_value_get_fraction_denominator(value);
        break;
    case PROP_DATA_PATH: s.dataPath = text(); break;
    default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* pspec)
{
    AnimSrcState& s = stateOf(object);
    std::lock_guard lock(s.lock);
    if (id >= PROP_IMAGE1 && id <= PROP_IMAGE5) {
        g_value_set_string(value, s.images[id - PROP_IMAGE1].c_str());
        return;
    }
    switch (id) {
    case PROP_COMPOSITION: g_value_set_string(value, s.composition.c_str()); break;
    case PROP_DURATION: g_value_set_double(value, s.duration); break;
    case PROP_STRETCH_MODE: g_value_set_uint(value, s.stretchMode); break;
    case PROP_WIDTH: g_value_set_int(value, s.width); break;
    case PROP_HEIGHT: g_value_set_int(value, s.height); break;
    case PROP_FRAMERATE: gst_value_set_fraction(value, s.fpsN, s.fpsD); break;
    case PROP_DATA_PATH: g_value_set_string(value, s.dataPath.c_str()); break;
    default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
}

/// The data path is the process's: the first element to play sets it, when no host has.
void useDataPath(const std::string& chosen)
{
    if (!DataPath().empty()) return;
    const std::string path = chosen.empty() ? findModuleDataPath() : chosen;
    SetDataPathBuffer(os::fromUtf8(path));
    SetDataPath(os::fromUtf8(path));
}

void tearDown(AnimSrcState& s)
{
    if (s.handoff) s.handoff->shut();  // the filter's thread must not wait for a taker
    if (s.source) s.source->Stop();
    if (s.handoff) s.handoff->Stop();
    if (s.source) s.source->Stream().Disconnect();
    s.seeking.reset();
    s.source.reset();
    s.handoff.reset();
}

guint64 frameAt(const AnimSrcState& s, guint64 time)
{
    return gst_util_uint64_scale(time, guint64(s.info.fps_n), guint64(s.info.fps_d) * GST_SECOND);
}

guint64 timeOf(const AnimSrcState& s, guint64 frame)
{
    return gst_util_uint64_scale(frame, guint64(s.info.fps_d) * GST_SECOND, guint64(s.info.fps_n));
}

/// Seeks the source to frame `frame` of the negotiated rate.
void seekSource(AnimSrcState& s, guint64 frame)
{
    s.seekFrame = frame;
    s.sinceSeek = 0;
    if (!s.seeking) return;
    media::LONGLONG position = media::LONGLONG(timeOf(s, frame) / 100);
    s.seeking->SetPositions(&position, media::AM_SEEKING_AbsolutePositioning, nullptr, 0);
}

com::ComPtr<CAnim3DVideoSource> makeSource(AnimSrcState& s, double& seconds)
{
    auto source = CAnim3DVideoSource::Create();
    if (!source) return {};
    std::lock_guard lock(s.lock);
    useDataPath(s.dataPath);
    Bstr composition(os::fromUtf8(s.composition));
    source->put_Source(composition.get());
    float own = 0.0f;
    source->GetSceneDuration(composition.get(), &own);
    seconds = s.duration > 0.0 ? s.duration : double(own);
    source->put_Duration(seconds);
    source->put_Width(GST_VIDEO_INFO_WIDTH(&s.info));
    source->put_Height(GST_VIDEO_INFO_HEIGHT(&s.info));
    source->put_Fps(float(double(s.info.fps_n) / s.info.fps_d));
    source->put_StretchMode(BYTE(s.stretchMode));
    for (size_t i = 0; i < kImages; ++i) {
        if (s.images[i].empty()) continue;
        Bstr picture(os::fromUtf8(s.images[i]));
        source->PutImage(i, picture.get());
    }
    return source;
}

/// A new graph for the negotiated frames, playing from the last seek.
gboolean setCaps(GstBaseSrc* src, GstCaps* caps)
{
    AnimSrcState& s = stateOf(src);
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps) || info.fps_n <= 0 || info.fps_d <= 0) return FALSE;
    tearDown(s);
    s.info = info;
    double seconds = 0.0;
    s.source = makeSource(s, seconds);
    if (!s.source) return FALSE;
    if (seconds <= 0.0) {
        GST_ELEMENT_ERROR(src, RESOURCE, NOT_FOUND, ("No composition, or one without a duration."),
                          ("composition \"%s\"", s.composition.c_str()));
        return FALSE;
    }
    s.totalFrames = guint64(
        gst_util_uint64_scale_round(guint64(seconds * 1e6), guint64(info.fps_n), guint64(info.fps_d) * 1000000));
    s.handoff = gst::FrameHandoff::Create(media::MEDIASUBTYPE_RGB32, s.source->FrameBytes());
    if (!s.handoff || FAILED(s.source->Stream().Connect(&s.handoff->Input(), nullptr))) {
        GST_WARNING_OBJECT(src, "the composition source refused %dx%d", info.width, info.height);
        tearDown(s);
        return FALSE;
    }
    void* seeking = nullptr;
    s.source->Stream().NonDelegatingQueryInterface(media::IMediaSeeking::iid, &seeking);
    s.seeking = com::ComPtr<media::IMediaSeeking>::adopt(static_cast<media::IMediaSeeking*>(seeking));
    seekSource(s, frameAt(s, s.seekTime));
    gst_base_src_set_blocksize(src, guint(GST_VIDEO_INFO_SIZE(&info)));
    s.negotiated = true;
    s.handoff->Pause();
    return SUCCEEDED(s.source->Pause());
}

GstCaps* fixate(GstBaseSrc* src, GstCaps* caps)
{
    AnimSrcState& s = stateOf(src);
    caps = gst_caps_make_writable(caps);
    GstStructure* structure = gst_caps_get_structure(caps, 0);
    {
        std::lock_guard lock(s.lock);
        gst_structure_fixate_field_nearest_int(structure, "width", s.width);
        gst_structure_fixate_field_nearest_int(structure, "height", s.height);
        gst_structure_fixate_field_nearest_fraction(structure, "framerate", s.fpsN, s.fpsD);
    }
    return GST_BASE_SRC_CLASS(gst_qx_anim_src_parent_class)->fixate(src, caps);
}

gboolean isSeekable(GstBaseSrc*) { return TRUE; }

// A seek goes to a whole frame; the source then plays from there. Before the caps are
// known (the first seek comes as the element starts) the time waits for setCaps.
gboolean doSeek(GstBaseSrc* src, GstSegment* segment)
{
    AnimSrcState& s = stateOf(src);
    segment->time = segment->start;
    s.seekTime = segment->position;
    if (s.negotiated) {
        const guint64 frame = frameAt(s, segment->position);
        segment->position = timeOf(s, frame);
        seekSource(s, frame);
    }
    return TRUE;
}

gboolean query(GstBaseSrc* src, GstQuery* query)
{
    AnimSrcState& s = stateOf(src);
    if (GST_QUERY_TYPE(query) == GST_QUERY_DURATION && s.negotiated) {
        GstFormat format;
        gst_query_parse_duration(query, &format, nullptr);
        const guint64 frames = s.totalFrames;
        gint64 value = -1;
        if (format == GST_FORMAT_TIME) {
            value = gint64(timeOf(s, frames));
        } else if (format == GST_FORMAT_DEFAULT) {
            value = gint64(frames);
        } else if (format == GST_FORMAT_BYTES) {
            value = gint64(frames * GST_VIDEO_INFO_SIZE(&s.info));
        }
        if (value < 0) return FALSE;
        gst_query_set_duration(query, format, value);
        return TRUE;
    }
    if (GST_QUERY_TYPE(query) == GST_QUERY_CONVERT && s.negotiated) {
        GstFormat from, to;
        gint64 value, result;
        gst_query_parse_convert(query, &from, &value, &to, nullptr);
        if (!gst_video_info_convert(&s.info, from, value, to, &result)) return FALSE;
        gst_query_set_convert(query, from, value, to, result);
        return TRUE;
    }
    return GST_BASE_SRC_CLASS(gst_qx_anim_src_parent_class)->query(src, query);
}

/// The frame's rows top-down, as GStreamer lays them out; the source's are bottom-up.
void copyRows(const std::vector<uint8_t>& bytes, GstVideoFrame& frame)
{
    const int width = GST_VIDEO_FRAME_WIDTH(&frame);
    const int height = GST_VIDEO_FRAME_HEIGHT(&frame);
    const size_t row = size_t(width) * 4;
    auto* out = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    const int stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
    for (int y = 0; y < height; ++y)
        std::memcpy(out + size_t(y) * size_t(stride), &bytes[size_t(height - 1 - y) * row], row);
}

GstFlowReturn fill(GstPushSrc* src, GstBuffer* buffer)
{
    AnimSrcState& s = stateOf(src);
    if (!s.negotiated) return GST_FLOW_NOT_NEGOTIATED;
    const guint64 number = s.seekFrame + s.sinceSeek;
    if (number >= s.totalFrames) return GST_FLOW_EOS;
    const std::optional<gst::FrameHandoff::Frame> frame = s.handoff->take();
    if (!frame) return GST_FLOW_FLUSHING;
    if (frame->bytes.size() < GST_VIDEO_INFO_WIDTH(&s.info) * size_t(GST_VIDEO_INFO_HEIGHT(&s.info)) * 4) {
        return GST_FLOW_ERROR;
    }
    GstVideoFrame out;
    if (!gst_video_frame_map(&out, &s.info, buffer, GST_MAP_WRITE)) return GST_FLOW_ERROR;
    copyRows(frame->bytes, out);
    gst_video_frame_unmap(&out);
    GST_BUFFER_PTS(buffer) = timeOf(s, number);
    GST_BUFFER_DTS(buffer) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DURATION(buffer) = timeOf(s, number + 1) - timeOf(s, number);
    GST_BUFFER_OFFSET(buffer) = number;
    GST_BUFFER_OFFSET_END(buffer) = number + 1;
    ++s.sinceSeek;
    return GST_FLOW_OK;
}

gboolean unlock(GstBaseSrc* src)
{
    if (auto& s = stateOf(src); s.handoff) s.handoff->setUnlocked(true);
    return TRUE;
}

gboolean unlockStop(GstBaseSrc* src)
{
    if (auto& s = stateOf(src); s.handoff) s.handoff->setUnlocked(false);
    return TRUE;
}

gboolean start(GstBaseSrc* src)
{
    AnimSrcState& s = stateOf(src);
    s.negotiated = false;
    s.seekTime = 0;
    s.seekFrame = 0;
    s.sinceSeek = 0;
    return TRUE;
}

gboolean stop(GstBaseSrc* src)
{
    AnimSrcState& s = stateOf(src);
    tearDown(s);
    s.negotiated = false;
    return TRUE;
}

void finalize(GObject* object)
{
    tearDown(stateOf(object));
    GST_QX_ANIM_SRC(object)->state.~unique_ptr();
    G_OBJECT_CLASS(gst_qx_anim_src_parent_class)->finalize(object);
}

void installProperties(GObjectClass* objectClass)
{
    constexpr auto flags = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS);
    g_object_class_install_property(
        objectClass, PROP_COMPOSITION,
        g_param_spec_string("composition", "Composition",
                            "The composition, under the content pack's Scenes folder (.cpo3d: 3D; any other: 2D)", "",
                            flags));
    static const char* const kNames[kImages] = {"image1", "image2", "image3", "image4", "image5"};
    static const char* const kNicks[kImages] = {"Image 1", "Image 2", "Image 3", "Image 4", "Image 5"};
    for (size_t i = 0; i < kImages; ++i) {
        g_object_class_install_property(
            objectClass, guint(PROP_IMAGE1 + int(i)),
            g_param_spec_string(kNames[i], kNicks[i], "A picture for the composition's places, in order", "", flags));
    }
    g_object_class_install_property(objectClass, PROP_DURATION,
                                    g_param_spec_double("duration", "Duration",
                                                        "Seconds to play (0: the composition's own)", 0.0, 86400.0, 0.0,
                                                        flags));
    g_object_class_install_property(
        objectClass, PROP_STRETCH_MODE,
        g_param_spec_uint("stretch-mode", "Stretch mode",
                          "How pictures fill their places: 0 stretched, 2 fitted inside, any other filled and cropped",
                          0, 255, 1, flags));
    g_object_class_install_property(
        objectClass, PROP_WIDTH,
        g_param_spec_int("width", "Width", "Frame width when downstream leaves it open", 1, kMaxSide, 640, flags));
    g_object_class_install_property(
        objectClass, PROP_HEIGHT,
        g_param_spec_int("height", "Height", "Frame height when downstream leaves it open", 1, kMaxSide, 360, flags));
    g_object_class_install_property(objectClass, PROP_FRAMERATE,
                                    gst_param_spec_fraction("framerate", "Frame rate",
                                                            "Frame rate when downstream leaves it open", 1, 1000, 1000,
                                                            1, 25, 1, flags));
    g_object_class_install_property(
        objectClass, PROP_DATA_PATH,
        g_param_spec_string("data-path", "Data path",
                            "The content pack (empty: the one installed with the plugin, or the build's); the first "
                            "element that plays sets it for the process",
                            "", flags));
}

}  // namespace

static void gst_qx_anim_src_class_init(GstQxAnimSrcClass* klass)
{
    GST_DEBUG_CATEGORY_INIT(qx_anim_src_debug, "qxanimsrc", 0, "QX composition source");
    auto* objectClass = G_OBJECT_CLASS(klass);
    objectClass->finalize = finalize;
    objectClass->set_property = setProperty;
    objectClass->get_property = getProperty;
    installProperties(objectClass);

    auto* elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(elementClass, "QX composition source", "Source/Video",
                                          "Plays a 2D or 3D composition with the user's pictures in its places",
                                          "QXDynamicEffects");
    GstCaps* caps =
        gst_caps_from_string("video/x-raw, format=BGRx, width=[1,16384], height=[1,16384], framerate=[1/1000,1000/1]");
    gst_element_class_add_pad_template(elementClass, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);

    auto* baseClass = GST_BASE_SRC_CLASS(klass);
    baseClass->set_caps = setCaps;
    baseClass->fixate = fixate;
    baseClass->is_seekable = isSeekable;
    baseClass->do_seek = doSeek;
    baseClass->query = query;
    baseClass->unlock = unlock;
    baseClass->unlock_stop = unlockStop;
    baseClass->start = start;
    baseClass->stop = stop;
    GST_PUSH_SRC_CLASS(klass)->fill = fill;
}

static void gst_qx_anim_src_init(GstQxAnimSrc* self)
{
    new (&self->state) std::unique_ptr<AnimSrcState>(std::make_unique<AnimSrcState>());
    gst_base_src_set_format(GST_BASE_SRC(self), GST_FORMAT_TIME);
    gst_base_src_set_live(GST_BASE_SRC(self), FALSE);
}
