/**
 * SECTION:element-qxcrop
 * @title: qxcrop
 *
 * Puts every frame in the centre of a black frame of a fixed size (transparent black
 * for BGRA), and can soften the picture against interlace flicker with a blur along the
 * columns. The frame is padded, never scaled: an output smaller than the input keeps
 * the middle of the picture.
 *
 * A side set to 0 takes the size of the first frames of the stream and keeps it: later
 * frames of another size are centred in that size.
 *
 * The anti-flicker blur averages each pixel with the pixels that follow it in memory
 * along its column, over height / 100 * level / 10 rows rounded up (a level of 10 on
 * 1080 rows averages 11 rows). The frames are worked on as the bottom-up frames of the
 * original filter, so in GStreamer's top-down picture the blur reaches downwards.
 *
 * ## Example launch line
 * |[
 * gst-launch-1.0 videotestsrc num-buffers=100 ! video/x-raw,format=BGRx,width=640,height=480 ! qxcrop width=720
 * height=576 anti-flicker=10 ! videoconvert ! autovideosink
 * ]|
 */
#include "plugins/gstreamer/CropElement.h"

#include "filters/CropTransform.h"
#include "plugins/gstreamer/FilterHost.h"
#include "plugins/gstreamer/FrameLayout.h"
#include "plugins/gstreamer/MediaCaps.h"
#include "plugins/gstreamer/OutputAllocator.h"

#include <gst/video/video.h>

#include <memory>
#include <mutex>
#include <new>

GST_DEBUG_CATEGORY_STATIC(qx_crop_debug);
#define GST_CAT_DEFAULT qx_crop_debug

namespace {

using namespace qx;

// The largest side an output may be given, as the command line allows.
constexpr int kMaxSide = 16384;

/// What the element holds besides its GObject parts.
struct CropState {
    std::mutex lock;
    com::ComPtr<CQXCropTransform> crop = CQXCropTransform::Create();
    gst::FilterHost host{*crop.get()};
    com::ComPtr<gst::OutputAllocator> output;
    GstVideoInfo inInfo;
    GstVideoInfo outInfo;
    std::vector<uint8_t> inScratch;
    std::vector<uint8_t> outScratch;
    // The properties; a size set since the last negotiation reaches the filter at the next.
    int width = 0;
    int height = 0;
    int antiFlicker = 0;
    bool sizePending = true;
    bool delivered = false;
};

enum Property { PROP_0, PROP_WIDTH, PROP_HEIGHT, PROP_ANTI_FLICKER };

}  // namespace

struct _GstQxCrop {
    GstBaseTransform parent;
    std::unique_ptr<CropState> state;  // made in init, gone in finalize
};

G_DEFINE_TYPE(GstQxCrop, gst_qx_crop, GST_TYPE_BASE_TRANSFORM)

namespace {

CropState& stateOf(gpointer object) { return *GST_QX_CROP(object)->state; }

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* pspec)
{
    CropState& s = stateOf(object);
    {
        std::lock_guard lock(s.lock);
        switch (id) {
        case PROP_WIDTH:
            s.width = g_value_get_int(value);
            s.sizePending = true;
            break;
        case PROP_HEIGHT:
            s.height = g_value_get_int(value);
            s.sizePending = true;
            break;
        case PROP_ANTI_FLICKER:
            s.antiFlicker = g_value_get_int(value);
            s.crop->SetAntiFlickeringLevel(int16_t(s.antiFlicker));
            return;
        default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec); return;
        }
    }
    gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(object));
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* pspec)
{
    CropState& s = stateOf(object);
    std::lock_guard lock(s.lock);
    switch (id) {
    case PROP_WIDTH: g_value_set_int(value, s.width); break;
    case PROP_HEIGHT: g_value_set_int(value, s.height); break;
    case PROP_ANTI_FLICKER: g_value_set_int(value, s.antiFlicker); break;
    default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec); break;
    }
}

/// The output size the next negotiation gives: the properties when they changed, else
/// what the filter holds; 0 for a side that follows the input.
std::pair<int, int> outputSize(CropState& s)
{
    std::lock_guard lock(s.lock);
    if (s.sizePending) return {s.width, s.height};
    return {s.crop->Width(), s.crop->Height()};
}

GstCaps* transformCaps(GstBaseTransform* trans, GstPadDirection direction, GstCaps* caps, GstCaps* filter)
{
    const auto [width, height] = outputSize(stateOf(trans));
    GstCaps* result = gst_caps_new_empty();
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        GstStructure* structure = gst_structure_copy(gst_caps_get_structure(caps, i));
        // Downstream the set sides are fixed; upstream any input fits, padded or cut.
        for (const auto& [field, side] : {std::pair{"width", width}, std::pair{"height", height}}) {
            if (side <= 0) continue;
            if (direction == GST_PAD_SINK)
                gst_structure_set(structure, field, G_TYPE_INT, side, nullptr);
            else
                gst_structure_set(structure, field, GST_TYPE_INT_RANGE, 1, G_MAXINT, nullptr);
        }
        result = gst_caps_merge_structure(result, structure);
    }
    if (filter) {
        GstCaps* both = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(result);
        result = both;
    }
    GST_DEBUG_OBJECT(trans, "%" GST_PTR_FORMAT " gives %" GST_PTR_FORMAT, static_cast<void*>(caps),
                     static_cast<void*>(result));
    return result;
}

/// The sink after the filter takes the output type of the negotiated caps, no other.
media::CHostSink::Acceptor acceptorOf(const media::CMediaType& expected)
{
    return [expected](const media::CMediaType& offered) {
        const auto a = offered.VideoInfo();
        const auto b = expected.VideoInfo();
        const bool same = a && b && offered.subtype == expected.subtype &&
                          a->bmiHeader.biWidth == b->bmiHeader.biWidth &&
                          a->bmiHeader.biHeight == b->bmiHeader.biHeight;
        return same ? S_OK : media::VFW_E_TYPE_NOT_ACCEPTED;
    };
}

gboolean setCaps(GstBaseTransform* trans, GstCaps* incaps, GstCaps* outcaps)
{
    CropState& s = stateOf(trans);
    GstVideoInfo in;
    GstVideoInfo out;
    if (!gst_video_info_from_caps(&in, incaps) || !gst_video_info_from_caps(&out, outcaps)) return FALSE;
    const auto inputType = gst::mediaTypeOf(in);
    const auto outputType = gst::mediaTypeOf(out);
    if (!inputType || !outputType) return FALSE;
    std::lock_guard lock(s.lock);
    if (s.sizePending) s.crop->PutSize(s.width, s.height);
    s.sizePending = false;
    s.output = com::ComPtr<gst::OutputAllocator>(new (std::nothrow) gst::OutputAllocator(gst::packedFrameSize(out)));
    if (!s.output) return FALSE;
    const HRESULT hr = s.host.connect(
        *inputType, acceptorOf(*outputType),
        [&s](media::IMediaSample&) {
            s.delivered = true;
            return S_OK;
        },
        com::ComPtr<media::IMemAllocator>(s.output.get()));
    if (FAILED(hr)) {
        GST_WARNING_OBJECT(trans, "the crop transform refused %dx%d to %dx%d (status 0x%08x)",
                           GST_VIDEO_INFO_WIDTH(&in), GST_VIDEO_INFO_HEIGHT(&in), GST_VIDEO_INFO_WIDTH(&out),
                           GST_VIDEO_INFO_HEIGHT(&out), unsigned(hr));
        return FALSE;
    }
    s.inInfo = in;
    s.outInfo = out;
    return TRUE;
}

/// Times of the buffer in reference-time units, on the sample the filter reads.
void stampSample(media::IMediaSample& sample, GstBuffer* buffer)
{
    if (!GST_BUFFER_PTS_IS_VALID(buffer)) return;
    const media::REFERENCE_TIME start = media::REFERENCE_TIME(GST_BUFFER_PTS(buffer) / 100);
    if (!GST_BUFFER_DURATION_IS_VALID(buffer)) {
        sample.SetTime(&start, nullptr);
        return;
    }
    const media::REFERENCE_TIME stop = start + media::REFERENCE_TIME(GST_BUFFER_DURATION(buffer) / 100);
    sample.SetTime(&start, &stop);
}

GstFlowReturn transform(GstBaseTransform* trans, GstBuffer* inbuf, GstBuffer* outbuf)
{
    CropState& s = stateOf(trans);
    std::lock_guard lock(s.lock);
    GstVideoFrame in;
    GstVideoFrame out;
    if (!gst_video_frame_map(&in, &s.inInfo, inbuf, GST_MAP_READ)) return GST_FLOW_ERROR;
    if (!gst_video_frame_map(&out, &s.outInfo, outbuf, GST_MAP_WRITE)) {
        gst_video_frame_unmap(&in);
        return GST_FLOW_ERROR;
    }
    // The filter only reads its input; the sample lends it the mapped frame.
    const auto input = media::CMediaSample::Wrap(gst::packedBytes(in, s.inScratch));
    const bool outputPacked = gst::isPacked(out);
    if (outputPacked) {
        s.output->setTarget(gst::packedBytes(out, s.outScratch));
    } else {
        s.outScratch.resize(gst::packedFrameSize(s.outInfo));
        s.output->setTarget(s.outScratch);
    }
    HRESULT hr = E_OUTOFMEMORY;
    s.delivered = false;
    if (input) {
        stampSample(*input.get(), inbuf);
        hr = s.host.deliver(input.get());
    }
    if (!outputPacked) gst::unpackInto(s.outScratch, out);
    gst_video_frame_unmap(&out);
    gst_video_frame_unmap(&in);
    if (FAILED(hr) || !s.delivered) {
        GST_ELEMENT_ERROR(trans, STREAM, FAILED, ("The crop transform failed on a frame."),
                          ("status 0x%08x", unsigned(hr)));
        return GST_FLOW_ERROR;
    }
    return GST_FLOW_OK;
}

gboolean unitSize(GstBaseTransform*, GstCaps* caps, gsize* size)
{
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps)) return FALSE;
    *size = GST_VIDEO_INFO_SIZE(&info);
    return TRUE;
}

gboolean start(GstBaseTransform* trans)
{
    CropState& s = stateOf(trans);
    std::lock_guard lock(s.lock);
    // A new stream takes the sizes as set again, sides at 0 included.
    s.sizePending = true;
    return TRUE;
}

gboolean stop(GstBaseTransform* trans)
{
    CropState& s = stateOf(trans);
    std::lock_guard lock(s.lock);
    s.host.disconnect();
    return TRUE;
}

void finalize(GObject* object)
{
    GST_QX_CROP(object)->state.~unique_ptr();
    G_OBJECT_CLASS(gst_qx_crop_parent_class)->finalize(object);
}

constexpr auto kParamFlags = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);

}  // namespace

static void gst_qx_crop_class_init(GstQxCropClass* klass)
{
    GST_DEBUG_CATEGORY_INIT(qx_crop_debug, "qxcrop", 0, "QX crop transform");
    auto* objectClass = G_OBJECT_CLASS(klass);
    objectClass->set_property = setProperty;
    objectClass->get_property = getProperty;
    objectClass->finalize = finalize;
    g_object_class_install_property(
        objectClass, PROP_WIDTH,
        g_param_spec_int("width", "Width", "Width of the output frames; 0 keeps the width of the first input frames", 0,
                         kMaxSide, 0, kParamFlags));
    g_object_class_install_property(
        objectClass, PROP_HEIGHT,
        g_param_spec_int("height", "Height",
                         "Height of the output frames; 0 keeps the height of the first input frames", 0, kMaxSide, 0,
                         kParamFlags));
    g_object_class_install_property(
        objectClass, PROP_ANTI_FLICKER,
        g_param_spec_int("anti-flicker", "Anti-flicker level",
                         "Strength of the blur along the columns against interlace flicker; 0 for none", 0, G_MAXINT16,
                         0, kParamFlags));

    auto* elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(elementClass, "QX crop transform", "Filter/Effect/Video",
                                          "Centres frames in a black frame of a fixed size, with an anti-flicker blur",
                                          "QXDynamicEffects");
    for (const auto& pin : CQXCropTransform::kSetup.Pins()) {
        GstCaps* caps = gst::capsOfPin(pin);
        gst_element_class_add_pad_template(elementClass, gst_pad_template_new(pin.bOutput ? "src" : "sink",
                                                                              pin.bOutput ? GST_PAD_SRC : GST_PAD_SINK,
                                                                              GST_PAD_ALWAYS, caps));
        gst_caps_unref(caps);
    }

    auto* transformClass = GST_BASE_TRANSFORM_CLASS(klass);
    transformClass->transform_caps = transformCaps;
    transformClass->set_caps = setCaps;
    transformClass->get_unit_size = unitSize;
    transformClass->transform = transform;
    transformClass->start = start;
    transformClass->stop = stop;
    transformClass->passthrough_on_same_caps = FALSE;
}

static void gst_qx_crop_init(GstQxCrop* self)
{
    new (&self->state) std::unique_ptr<CropState>(std::make_unique<CropState>());
}
