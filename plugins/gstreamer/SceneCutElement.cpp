/**
 * SECTION:element-qxscenecut
 * @title: qxscenecut
 *
 * Finds the cuts of a YV12 stream by comparing the 16-bin histograms of the luma of each
 * frame with those of the frame before, and passes the video on untouched. For each cut
 * it posts an element message as it finds it, and at the end of the stream one with the
 * whole list.
 *
 * The message of a cut, "qx-scene-cut", has:
 * - "time" (guint64): the cut time in nanoseconds of stream time, which is the stream
 *   time of the first frame of the new scene plus 0.1 second, as the detector reports
 *   its cuts;
 * - "stream-time" (guint64): the stream time of that frame;
 * - "frame" (guint64): its number, counting from 0 at the start of the stream.
 *
 * The message at the end of the stream, "qx-scene-cuts", has "times" and "frames", two
 * arrays of guint64 in the same order, and "count".
 *
 * The detector's quality is that of the histograms: a cut between two pictures with the
 * same distribution of brightness (a mirror image, a pan over a flat scene) is not seen.
 * Frames are never dropped for lateness, since each must be compared with the next.
 *
 * ## Example launch line
 * |[
 * gst-launch-1.0 -m filesrc location=clip.mkv ! decodebin ! videoconvert ! video/x-raw,format=YV12 ! qxscenecut !
 * fakesink
 * ]|
 */
#include "plugins/gstreamer/SceneCutElement.h"

#include "filters/SceneDetect.h"
#include "platform/com/TaskMemory.h"
#include "plugins/gstreamer/FilterHost.h"
#include "plugins/gstreamer/FrameLayout.h"
#include "plugins/gstreamer/MediaCaps.h"

#include <memory>
#include <new>
#include <vector>

GST_DEBUG_CATEGORY_STATIC(qx_scene_cut_debug);
#define GST_CAT_DEFAULT qx_scene_cut_debug

namespace {

using namespace qx;

/// The graph as the detector sees it: its position is the stream time of the frame being
/// compared, and a question for it means the detector found a cut there.
class ElementGraph final : public com::ComObject<media::IFilterGraph, media::IMediaSeeking> {
public:
    HRESULT GetCurrentPosition(media::LONGLONG* pCurrent) override
    {
        if (!pCurrent) return E_POINTER;
        *pCurrent = position;
        asked = true;
        return S_OK;
    }

    media::LONGLONG position = 0;
    bool asked = false;
};

struct SceneCutState {
    com::ComPtr<CQXSceneDetect> detect = CQXSceneDetect::Create();
    com::ComPtr<ElementGraph> graph{new ElementGraph};
    gst::FilterHost host{*detect.get()};
    std::vector<uint8_t> scratch;
    /// The frame number of each cut, in the order found.
    std::vector<uint64_t> cutFrames;
    uint64_t frames = 0;

    SceneCutState() { detect->JoinFilterGraph(graph.get(), u"qxscenecut"); }
    ~SceneCutState() { detect->JoinFilterGraph(nullptr, nullptr); }
};

}  // namespace

struct _GstQxSceneCut {
    GstVideoFilter parent;
    std::unique_ptr<SceneCutState> state;  // made in init, gone in finalize
};

G_DEFINE_TYPE(GstQxSceneCut, gst_qx_scene_cut, GST_TYPE_VIDEO_FILTER)

namespace {

SceneCutState& stateOf(gpointer object) { return *GST_QX_SCENE_CUT(object)->state; }

gboolean setInfo(GstVideoFilter* filter, GstCaps*, GstVideoInfo* inInfo, GstCaps*, GstVideoInfo*)
{
    SceneCutState& s = stateOf(filter);
    const auto type = gst::mediaTypeOf(*inInfo);
    if (!type) return FALSE;
    // A new type reconnects the graph; the detector keeps its last frame and its cuts.
    const HRESULT hr = s.host.connect(
        *type, [](const media::CMediaType&) { return S_OK; }, [](media::IMediaSample&) { return S_OK; });
    if (FAILED(hr)) {
        GST_WARNING_OBJECT(filter, "the scene detector refused the caps (status 0x%08x)", unsigned(hr));
        return FALSE;
    }
    return TRUE;
}

/// The stream time of `buffer` in reference-time units; the last position when it has none.
media::LONGLONG streamPosition(GstBaseTransform* trans, GstBuffer* buffer, media::LONGLONG last)
{
    if (!GST_BUFFER_PTS_IS_VALID(buffer)) return last;
    const guint64 time = gst_segment_to_stream_time(&trans->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    return time == GST_CLOCK_TIME_NONE ? last : media::LONGLONG(time / 100);
}

void postCut(GstVideoFilter* filter, media::LONGLONG position, uint64_t frame)
{
    const guint64 streamTime = guint64(position) * 100;
    GstStructure* cut =
        gst_structure_new("qx-scene-cut", "time", G_TYPE_UINT64, guint64(position + CQXSceneDetect::kCutOffset) * 100,
                          "stream-time", G_TYPE_UINT64, streamTime, "frame", G_TYPE_UINT64, guint64(frame), nullptr);
    gst_element_post_message(GST_ELEMENT(filter), gst_message_new_element(GST_OBJECT(filter), cut));
}

GstFlowReturn transformFrameInPlace(GstVideoFilter* filter, GstVideoFrame* frame)
{
    SceneCutState& s = stateOf(filter);
    const auto sample = media::CMediaSample::Wrap(gst::packedBytes(*frame, s.scratch));
    if (!sample) return GST_FLOW_ERROR;
    s.graph->position = streamPosition(GST_BASE_TRANSFORM(filter), frame->buffer, s.graph->position);
    s.graph->asked = false;
    const HRESULT hr = s.host.deliver(sample.get());
    if (FAILED(hr)) {
        GST_ELEMENT_ERROR(filter, STREAM, FAILED, ("The scene detector failed on a frame."),
                          ("status 0x%08x", unsigned(hr)));
        return GST_FLOW_ERROR;
    }
    if (s.graph->asked) {
        s.cutFrames.push_back(s.frames);
        postCut(filter, s.graph->position, s.frames);
    }
    ++s.frames;
    return GST_FLOW_OK;
}

/// An array of guint64 values.
GValue uint64Array(const std::vector<uint64_t>& values)
{
    GValue array = G_VALUE_INIT;
    gst_value_array_init(&array, guint(values.size()));
    for (const uint64_t v : values) {
        GValue item = G_VALUE_INIT;
        g_value_init(&item, G_TYPE_UINT64);
        g_value_set_uint64(&item, v);
        gst_value_array_append_and_take_value(&array, &item);
    }
    return array;
}

/// The whole list, as the detector gives it at the end of the run.
void postAllCuts(GstBaseTransform* trans)
{
    SceneCutState& s = stateOf(trans);
    int64_t* scenes = nullptr;
    LONG count = 0;
    std::vector<uint64_t> times;
    if (s.detect->GetScenes(&scenes, &count) == S_OK) {
        for (LONG i = 0; i < count; ++i) times.push_back(guint64(scenes[i]) * 100);
        CoTaskMemFree(scenes);
    }
    GstStructure* list = gst_structure_new("qx-scene-cuts", "count", G_TYPE_UINT, guint(times.size()), nullptr);
    GValue timesValue = uint64Array(times);
    GValue framesValue = uint64Array(s.cutFrames);
    gst_structure_take_value(list, "times", &timesValue);
    gst_structure_take_value(list, "frames", &framesValue);
    gst_element_post_message(GST_ELEMENT(trans), gst_message_new_element(GST_OBJECT(trans), list));
}

gboolean sinkEvent(GstBaseTransform* trans, GstEvent* event)
{
    if (GST_EVENT_TYPE(event) == GST_EVENT_EOS) postAllCuts(trans);
    return GST_BASE_TRANSFORM_CLASS(gst_qx_scene_cut_parent_class)->sink_event(trans, event);
}

gboolean start(GstBaseTransform* trans)
{
    // Each run of the element is a new run of the detector.
    SceneCutState& s = stateOf(trans);
    s.detect->Reset();
    s.cutFrames.clear();
    s.frames = 0;
    return TRUE;
}

gboolean stop(GstBaseTransform* trans)
{
    stateOf(trans).host.disconnect();
    return TRUE;
}

void finalize(GObject* object)
{
    GST_QX_SCENE_CUT(object)->state.~unique_ptr();
    G_OBJECT_CLASS(gst_qx_scene_cut_parent_class)->finalize(object);
}

}  // namespace

static void gst_qx_scene_cut_class_init(GstQxSceneCutClass* klass)
{
    GST_DEBUG_CATEGORY_INIT(qx_scene_cut_debug, "qxscenecut", 0, "QX scene detection");
    G_OBJECT_CLASS(klass)->finalize = finalize;

    auto* elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(elementClass, "QX scene detection", "Filter/Analyzer/Video",
                                          "Finds the cuts of a video by the histograms of its frames",
                                          "QXDynamicEffects");
    for (const auto& pin : CQXSceneDetect::kSetup.Pins()) {
        GstCaps* caps = gst::capsOfPin(pin);
        gst_element_class_add_pad_template(elementClass, gst_pad_template_new(pin.bOutput ? "src" : "sink",
                                                                              pin.bOutput ? GST_PAD_SRC : GST_PAD_SINK,
                                                                              GST_PAD_ALWAYS, caps));
        gst_caps_unref(caps);
    }

    auto* transformClass = GST_BASE_TRANSFORM_CLASS(klass);
    transformClass->sink_event = sinkEvent;
    transformClass->start = start;
    transformClass->stop = stop;
    // The frames pass on as they came: the detector only reads them.
    transformClass->passthrough_on_same_caps = TRUE;
    transformClass->transform_ip_on_passthrough = TRUE;

    auto* filterClass = GST_VIDEO_FILTER_CLASS(klass);
    filterClass->set_info = setInfo;
    filterClass->transform_frame_ip = transformFrameInPlace;
}

static void gst_qx_scene_cut_init(GstQxSceneCut* self)
{
    new (&self->state) std::unique_ptr<SceneCutState>(std::make_unique<SceneCutState>());
    // Late frames must still be compared, each with the next: no frame is skipped.
    gst_base_transform_set_qos_enabled(GST_BASE_TRANSFORM(self), FALSE);
}
