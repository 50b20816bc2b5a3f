/**
 * SECTION:element-qxtransition
 * @title: qxtransition
 *
 * Plays a 3D scene of the content pack as a transition between two video streams: the
 * stream on the pad `sink_0` is the clip that leaves, the one on `sink_1` the clip that
 * enters. The output has the size and rate of `sink_0`; the other stream is converted
 * and stretched to it. Progress is the `progress` property (controllable), or, with a
 * `duration`, the stream time of the output over it. While one stream has no frame (it
 * ended, or has not started) the frame of the other passes; a scene that cannot be played
 * cuts hard from the first stream to the second at progress 0.5.
 *
 * ## Example launch line
 * |[
 * gst-launch-1.0 qxtransition name=mix duration=2000000000 ! videoconvert ! autovideosink
 *   videotestsrc num-buffers=50 ! mix.sink_0 videotestsrc pattern=smpte num-buffers=50 ! mix.sink_1
 * ]|
 */
#include "plugins/gstreamer/TransitionElement.h"

#include "apps/session/ContentPack.h"
#include "apps/session/TransitionJob.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

GST_DEBUG_CATEGORY_STATIC(qx_transition_debug);
#define GST_CAT_DEFAULT qx_transition_debug

namespace {

using namespace qx;

enum Property : guint { kPropScene = 1, kPropDataPath, kPropAspect, kPropProgress, kPropDuration };

/// The properties, under the object lock, and the transition made from them on the
/// streaming thread.
struct TransitionState {
    std::string scene = qxfx::kPackTransitionScene;
    std::string dataPath;
    float aspect = 0.0f;
    double progress = 0.0;
    guint64 duration = 0;
    bool changed = true;
    std::unique_ptr<qxfx::TransitionJob> job;
};

}  // namespace

struct _GstQxTransition {
    GstVideoAggregator parent;
    std::unique_ptr<TransitionState> state;  // made in init, gone in finalize
};

G_DEFINE_TYPE(GstQxTransition, gst_qx_transition, GST_TYPE_VIDEO_AGGREGATOR)

// The pads convert their frames to the output's format and stretch them to its size.
G_DECLARE_FINAL_TYPE(GstQxTransitionPad, gst_qx_transition_pad, GST, QX_TRANSITION_PAD, GstVideoAggregatorConvertPad)
struct _GstQxTransitionPad {
    GstVideoAggregatorConvertPad parent;
};
G_DEFINE_TYPE(GstQxTransitionPad, gst_qx_transition_pad, GST_TYPE_VIDEO_AGGREGATOR_CONVERT_PAD)

namespace {

TransitionState& stateOf(gpointer object) { return *GST_QX_TRANSITION(object)->state; }

void createConversionInfo(GstVideoAggregatorConvertPad* pad, GstVideoAggregator* agg, GstVideoInfo* info)
{
    GST_VIDEO_AGGREGATOR_CONVERT_PAD_CLASS(gst_qx_transition_pad_parent_class)->create_conversion_info(pad, agg, info);
    if (!info->finfo || GST_VIDEO_INFO_FORMAT(info) == GST_VIDEO_FORMAT_UNKNOWN) return;
    GstVideoInfo stretched = *info;
    gst_video_info_set_format(&stretched, GST_VIDEO_INFO_FORMAT(info), GST_VIDEO_INFO_WIDTH(&agg->info),
                              GST_VIDEO_INFO_HEIGHT(&agg->info));
    stretched.colorimetry = info->colorimetry;
    stretched.par_n = agg->info.par_n;
    stretched.par_d = agg->info.par_d;
    stretched.fps_n = info->fps_n;
    stretched.fps_d = info->fps_d;
    *info = stretched;
}

/// The pad of the clip that leaves (0) or enters (1): the request pads in the order of
/// their numbers. Null while it is missing.
GstVideoAggregatorPad* inputPad(GstElement* element, int which)
{
    GstVideoAggregatorPad* found[2] = {};
    guint numbers[2] = {G_MAXUINT, G_MAXUINT};
    for (GList* item = element->sinkpads; item; item = item->next) {
        const gchar* name = GST_PAD_NAME(item->data);
        guint number = 0;
        if (std::sscanf(name, "sink_%u", &number) != 1) continue;
        if (number < numbers[0]) {
            numbers[1] = numbers[0];
            found[1] = found[0];
            numbers[0] = number;
            found[0] = GST_VIDEO_AGGREGATOR_PAD(item->data);
        } else if (number < numbers[1]) {
            numbers[1] = number;
            found[1] = GST_VIDEO_AGGREGATOR_PAD(item->data);
        }
    }
    return found[which];
}

// The output takes the first stream's size, shape and rate.
GstCaps* fixateSrcCaps(GstAggregator* agg, GstCaps* caps)
{
    caps = gst_caps_make_writable(caps);
    GstStructure* structure = gst_caps_get_structure(caps, 0);
    GST_OBJECT_LOCK(agg);
    GstVideoAggregatorPad* first = inputPad(GST_ELEMENT(agg), 0);
    const GstVideoInfo info = first ? first->info : GstVideoInfo{};
    GST_OBJECT_UNLOCK(agg);
    if (info.finfo && info.width > 0 && info.height > 0) {
        gst_structure_set(structure, "width", G_TYPE_INT, info.width, "height", G_TYPE_INT, info.height,
                          "pixel-aspect-ratio", GST_TYPE_FRACTION, std::max(info.par_n, 1), std::max(info.par_d, 1),
                          nullptr);
        if (info.fps_n > 0)
            gst_structure_set(structure, "framerate", GST_TYPE_FRACTION, info.fps_n, info.fps_d, nullptr);
    }
    if (gst_structure_has_field(structure, "framerate"))
        gst_structure_fixate_field_nearest_fraction(structure, "framerate", 25, 1);
    return gst_caps_fixate(caps);
}

/// Copies between a mapped BGRA frame of the output's size and a frame of the job.
void copyIn(const GstVideoFrame& from, qxfx::Frame& to)
{
    const auto* rows = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&from, 0));
    const size_t rowBytes = size_t(to.width) * sizeof(uint32_t);
    for (int y = 0; y < to.height; ++y)
        std::memcpy(&to.samples[size_t(y) * size_t(to.width)],
                    rows + size_t(y) * GST_VIDEO_FRAME_PLANE_STRIDE(&from, 0), rowBytes);
}

void copyOut(const uint32_t* samples, int width, int height, GstVideoFrame& to)
{
    auto* rows = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&to, 0));
    for (int y = 0; y < height; ++y)
        std::memcpy(rows + size_t(y) * GST_VIDEO_FRAME_PLANE_STRIDE(&to, 0), samples + size_t(y) * size_t(width),
                    size_t(width) * sizeof(uint32_t));
}

bool sameSize(const GstVideoFrame* frame, int width, int height)
{
    return frame && GST_VIDEO_FRAME_WIDTH(frame) == width && GST_VIDEO_FRAME_HEIGHT(frame) == height;
}

/// The transition for frames of `width` x `height`, made again after a property that
/// reaches set-up changed; null when it cannot be had (the frame then passes).
qxfx::TransitionJob* jobFor(GstVideoAggregator* vagg, int width, int height)
{
    TransitionState& s = stateOf(vagg);
    GST_OBJECT_LOCK(vagg);
    const bool remake = s.changed || !s.job || s.job->first().width != width || s.job->first().height != height;
    qxfx::TransitionSettings settings;
    settings.scene = s.scene;
    settings.dataPath = s.dataPath.empty() ? findModuleDataPath() : s.dataPath;
    settings.aspectRatio = s.aspect;
    s.changed = false;
    GST_OBJECT_UNLOCK(vagg);
    if (!remake) return s.job.get();
    s.job.reset();
    try {
        s.job = std::make_unique<qxfx::TransitionJob>(settings, width, height);
        if (!s.job->playsScene())
            GST_ELEMENT_WARNING(vagg, RESOURCE, NOT_FOUND,
                                ("%s; the transition cuts at the middle.", qxfx::whyNoScene(settings).c_str()),
                                (nullptr));
    } catch (const std::exception& error) {
        GST_WARNING_OBJECT(vagg, "no transition: %s", error.what());
    }
    return s.job.get();
}

/// The progress of the frame at `pts`: its stream time over the duration when there is
/// one, else the progress property (which a controller may have set for that time).
double progressAt(GstVideoAggregator* vagg, GstClockTime pts)
{
    GstSegment& segment = GST_AGGREGATOR_PAD(GST_AGGREGATOR(vagg)->srcpad)->segment;
    const GstClockTime streamTime =
        GST_CLOCK_TIME_IS_VALID(pts) ? gst_segment_to_stream_time(&segment, GST_FORMAT_TIME, pts) : GST_CLOCK_TIME_NONE;
    if (GST_CLOCK_TIME_IS_VALID(streamTime)) gst_object_sync_values(GST_OBJECT(vagg), streamTime);
    TransitionState& s = stateOf(vagg);
    GST_OBJECT_LOCK(vagg);
    double progress = s.progress;
    if (s.duration > 0 && GST_CLOCK_TIME_IS_VALID(streamTime)) progress = double(streamTime) / double(s.duration);
    GST_OBJECT_UNLOCK(vagg);
    return std::clamp(progress, 0.0, 1.0);
}

GstFlowReturn aggregateFrames(GstVideoAggregator* vagg, GstBuffer* outbuf)
{
    const int width = GST_VIDEO_INFO_WIDTH(&vagg->info);
    const int height = GST_VIDEO_INFO_HEIGHT(&vagg->info);
    GST_OBJECT_LOCK(vagg);
    GstVideoAggregatorPad* pads[2] = {inputPad(GST_ELEMENT(vagg), 0), inputPad(GST_ELEMENT(vagg), 1)};
    GstVideoFrame* inputs[2] = {};
    for (int i = 0; i < 2; ++i) {
        GstVideoFrame* frame = pads[i] ? gst_video_aggregator_pad_get_prepared_frame(pads[i]) : nullptr;
        inputs[i] = sameSize(frame, width, height) ? frame : nullptr;
    }
    GST_OBJECT_UNLOCK(vagg);
    const double progress = progressAt(vagg, GST_BUFFER_PTS(outbuf));
    GstVideoFrame out;
    if (!gst_video_frame_map(&out, &vagg->info, outbuf, GST_MAP_WRITE)) return GST_FLOW_ERROR;
    qxfx::TransitionJob* job = inputs[0] && inputs[1] ? jobFor(vagg, width, height) : nullptr;
    if (job) {
        copyIn(*inputs[0], job->first());
        copyIn(*inputs[1], job->second());
        try {
            copyOut(job->run(float(progress)).samples.data(), width, height, out);
        } catch (const std::exception&) {
            job = nullptr;
        }
    }
    if (!job) {
        // The frame of the stream that has one, the first's by preference; black for none.
        const GstVideoFrame* shown = inputs[0] ? inputs[0] : inputs[1];
        if (shown)
            gst_video_frame_copy(&out, shown);
        else
            for (int y = 0; y < height; ++y)
                std::memset(static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&out, 0)) +
                                size_t(y) * GST_VIDEO_FRAME_PLANE_STRIDE(&out, 0),
                            0, size_t(width) * sizeof(uint32_t));
    }
    gst_video_frame_unmap(&out);
    return GST_FLOW_OK;
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* pspec)
{
    TransitionState& s = stateOf(object);
    GST_OBJECT_LOCK(object);
    switch (id) {
    case kPropScene:
        s.scene = g_value_get_string(value) ? g_value_get_string(value) : "";
        s.changed = true;
        break;
    case kPropDataPath:
        s.dataPath = g_value_get_string(value) ? g_value_get_string(value) : "";
        s.changed = true;
        break;
    case kPropAspect:
        s.aspect = g_value_get_float(value);
        s.changed = true;
        break;
    case kPropProgress: s.progress = g_value_get_double(value); break;
    case kPropDuration: s.duration = g_value_get_uint64(value); break;
    default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
    GST_OBJECT_UNLOCK(object);
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* pspec)
{
    TransitionState& s = stateOf(object);
    GST_OBJECT_LOCK(object);
    switch (id) {
    case kPropScene: g_value_set_string(value, s.scene.c_str()); break;
    case kPropDataPath: g_value_set_string(value, s.dataPath.c_str()); break;
    case kPropAspect: g_value_set_float(value, s.aspect); break;
    case kPropProgress: g_value_set_double(value, s.progress); break;
    case kPropDuration: g_value_set_uint64(value, s.duration); break;
    default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
    }
    GST_OBJECT_UNLOCK(object);
}

void installProperties(GObjectClass* objectClass)
{
    const auto flags = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS);
    g_object_class_install_property(objectClass, kPropScene,
                                    g_param_spec_string("scene", "Scene",
                                                        "Transition scene under the pack's Scenes folder",
                                                        qxfx::kPackTransitionScene, flags));
    g_object_class_install_property(
        objectClass, kPropDataPath,
        g_param_spec_string("data-path", "Data path",
                            "Folder of the content pack (empty: the pack installed with the plugin, or the build's)",
                            "", flags));
    g_object_class_install_property(objectClass, kPropAspect,
                                    g_param_spec_float("aspect", "Aspect ratio",
                                                       "Frame shape handed to the scene (0: width over height)", 0.0f,
                                                       1000.0f, 0.0f, flags));
    g_object_class_install_property(objectClass, kPropProgress,
                                    g_param_spec_double("progress", "Progress",
                                                        "Progress of the transition, used while duration is 0", 0.0,
                                                        1.0, 0.0, GParamFlags(flags | GST_PARAM_CONTROLLABLE)));
    g_object_class_install_property(
        objectClass, kPropDuration,
        g_param_spec_uint64("duration", "Duration",
                            "Span of the transition in nanoseconds of stream time; above 0 the progress follows it", 0,
                            G_MAXUINT64, 0, flags));
}

GstPad* requestNewPad(GstElement* element, GstPadTemplate* templ, const gchar* name, const GstCaps* caps)
{
    // Two inputs at most: a third has no place in a transition.
    GST_OBJECT_LOCK(element);
    const bool full = inputPad(element, 1) != nullptr;
    GST_OBJECT_UNLOCK(element);
    if (full) return nullptr;
    return GST_ELEMENT_CLASS(gst_qx_transition_parent_class)->request_new_pad(element, templ, name, caps);
}

void finalize(GObject* object)
{
    GST_QX_TRANSITION(object)->state.~unique_ptr();
    G_OBJECT_CLASS(gst_qx_transition_parent_class)->finalize(object);
}

}  // namespace

static void gst_qx_transition_pad_class_init(GstQxTransitionPadClass* klass)
{
    GST_VIDEO_AGGREGATOR_CONVERT_PAD_CLASS(klass)->create_conversion_info = createConversionInfo;
}

static void gst_qx_transition_pad_init(GstQxTransitionPad*) {}

static void gst_qx_transition_class_init(GstQxTransitionClass* klass)
{
    GST_DEBUG_CATEGORY_INIT(qx_transition_debug, "qxtransition", 0, "QX 3D transition");
    auto* objectClass = G_OBJECT_CLASS(klass);
    objectClass->finalize = finalize;
    objectClass->set_property = setProperty;
    objectClass->get_property = getProperty;
    installProperties(objectClass);

    auto* elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(elementClass, "QX 3D transition", "Filter/Editor/Video/Compositor",
                                          "Plays a 3D scene as a transition between two video streams",
                                          "QXDynamicEffects");
    GstCaps* bgra = gst_caps_from_string(
        "video/x-raw, format=BGRA, width=[1, 16384], height=[1, 16384], "
        "framerate=[0/1, 2147483647/1]");
    GstCaps* any = gst_caps_from_string("video/x-raw");
    gst_element_class_add_pad_template(elementClass, gst_pad_template_new_with_gtype("src", GST_PAD_SRC, GST_PAD_ALWAYS,
                                                                                     bgra, GST_TYPE_AGGREGATOR_PAD));
    gst_element_class_add_pad_template(elementClass,
                                       gst_pad_template_new_with_gtype("sink_%u", GST_PAD_SINK, GST_PAD_REQUEST, any,
                                                                       gst_qx_transition_pad_get_type()));
    gst_caps_unref(bgra);
    gst_caps_unref(any);
    elementClass->request_new_pad = requestNewPad;

    GST_AGGREGATOR_CLASS(klass)->fixate_src_caps = fixateSrcCaps;
    GST_VIDEO_AGGREGATOR_CLASS(klass)->aggregate_frames = aggregateFrames;
}

static void gst_qx_transition_init(GstQxTransition* self)
{
    new (&self->state) std::unique_ptr<TransitionState>(std::make_unique<TransitionState>());
}
