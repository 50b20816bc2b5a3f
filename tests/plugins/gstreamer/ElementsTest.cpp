// The elements of the qxfx plugin in GStreamer's check harness, loaded from the build by
// GStreamer itself: caps negotiation, frames whose expected bytes follow from where the
// input lands, the messages of the scene cuts, and refusals.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

struct HarnessDeleter {
    void operator()(GstHarness* h) const { gst_harness_teardown(h); }
};
using Harness = std::unique_ptr<GstHarness, HarnessDeleter>;

struct BufferDeleter {
    void operator()(GstBuffer* b) const { gst_buffer_unref(b); }
};
using Buffer = std::unique_ptr<GstBuffer, BufferDeleter>;

Buffer bufferOf(const std::vector<uint8_t>& bytes, GstClockTime pts)
{
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, bytes.size(), nullptr);
    gst_buffer_fill(buffer, 0, bytes.data(), bytes.size());
    GST_BUFFER_PTS(buffer) = pts;
    GST_BUFFER_DURATION(buffer) = 40 * GST_MSECOND;
    return Buffer(buffer);
}

std::vector<uint8_t> bytesOf(GstBuffer* buffer)
{
    std::vector<uint8_t> bytes(gst_buffer_get_size(buffer));
    gst_buffer_extract(buffer, 0, bytes.data(), bytes.size());
    return bytes;
}

class Elements : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        // The plugin from the build, a registry of this test's own, no plugin of the
        // system (the harness needs none), and the scan in this process, so that a
        // sanitizer build loads its own instrumented module.
        setenv("GST_PLUGIN_PATH_1_0", QX_GST_PLUGIN_DIR, 1);
        setenv("GST_PLUGIN_SYSTEM_PATH_1_0", "", 1);
        setenv("GST_REGISTRY_1_0", QX_GST_REGISTRY, 1);
        setenv("GST_REGISTRY_FORK", "no", 1);
        gst_init(nullptr, nullptr);
    }

    static Harness harness(const char* element) { return Harness(gst_harness_new(element)); }

    /// Pushes `bytes` and returns what came out; empty when nothing did.
    static std::vector<uint8_t> pushAndPull(GstHarness* h, const std::vector<uint8_t>& bytes, GstClockTime pts = 0)
    {
        if (gst_harness_push(h, bufferOf(bytes, pts).release()) != GST_FLOW_OK) return {};
        Buffer out(gst_harness_try_pull(h));
        return out ? bytesOf(out.get()) : std::vector<uint8_t>();
    }

    static std::pair<int, int> outputSize(GstHarness* h)
    {
        GstCaps* caps = gst_pad_get_current_caps(h->sinkpad);
        if (!caps) return {0, 0};
        int width = 0;
        int height = 0;
        gst_structure_get_int(gst_caps_get_structure(caps, 0), "width", &width);
        gst_structure_get_int(gst_caps_get_structure(caps, 0), "height", &height);
        gst_caps_unref(caps);
        return {width, height};
    }
};

std::string bgrxCaps(int width, int height)
{
    return "video/x-raw,format=BGRx,width=" + std::to_string(width) + ",height=" + std::to_string(height) +
           ",framerate=25/1";
}

/// A BGRx frame whose samples are numbered in memory order from 1, each opaque.
std::vector<uint8_t> numberedBgrx(int width, int height)
{
    std::vector<uint8_t> bytes(size_t(width) * size_t(height) * 4);
    for (size_t i = 0; i < bytes.size() / 4; ++i) {
        const uint32_t sample = 0xFF000000u | uint32_t(i + 1);
        std::memcpy(bytes.data() + i * 4, &sample, 4);
    }
    return bytes;
}

uint32_t sampleAt(const std::vector<uint8_t>& bytes, int width, int x, int y)
{
    uint32_t sample = 0;
    std::memcpy(&sample, bytes.data() + (size_t(y) * size_t(width) + size_t(x)) * 4, 4);
    return sample;
}

TEST_F(Elements, CropCentresFramesInTheSetSize)
{
    const auto h = harness("qxcrop");
    g_object_set(h->element, "width", 8, "height", 6, nullptr);
    gst_harness_set_src_caps_str(h.get(), bgrxCaps(4, 2).c_str());
    const auto out = pushAndPull(h.get(), numberedBgrx(4, 2));
    ASSERT_EQ(outputSize(h.get()), std::pair(8, 6));
    ASSERT_EQ(out.size(), 8u * 6u * 4u);
    // x = (8 - 4) / 2 = 2 and y = (6 - 2) / 2 = 2, rows in the order they came.
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 8; ++x) {
            const bool inside = x >= 2 && x < 6 && y >= 2 && y < 4;
            const uint32_t expected = inside ? 0xFF000000u | uint32_t((y - 2) * 4 + (x - 2) + 1) : 0u;
            ASSERT_EQ(sampleAt(out, 8, x, y), expected) << x << "," << y;
        }
    }
}

TEST_F(Elements, CropKeepsTheFirstInputSizeForSidesLeftAtZero)
{
    const auto h = harness("qxcrop");
    g_object_set(h->element, "height", 4, nullptr);
    gst_harness_set_src_caps_str(h.get(), bgrxCaps(4, 2).c_str());
    EXPECT_EQ(pushAndPull(h.get(), numberedBgrx(4, 2)).size(), 4u * 4u * 4u);
    EXPECT_EQ(outputSize(h.get()), std::pair(4, 4));
    // A wider input later is cut to the middle of the width taken at first.
    gst_harness_set_src_caps_str(h.get(), bgrxCaps(6, 2).c_str());
    const auto out = pushAndPull(h.get(), numberedBgrx(6, 2), 40 * GST_MSECOND);
    EXPECT_EQ(outputSize(h.get()), std::pair(4, 4));
    ASSERT_EQ(out.size(), 4u * 4u * 4u);
    EXPECT_EQ(sampleAt(out, 4, 0, 1), 0xFF000000u | 2u);   // column 1 of the 6
    EXPECT_EQ(sampleAt(out, 4, 3, 2), 0xFF000000u | 11u);  // column 4 of the second row
    EXPECT_EQ(sampleAt(out, 4, 0, 0), 0u);
}

TEST_F(Elements, CropTakesANewSizeSetWhilePlayingAtTheNextFrame)
{
    const auto h = harness("qxcrop");
    g_object_set(h->element, "width", 8, "height", 6, nullptr);
    gst_harness_set_src_caps_str(h.get(), bgrxCaps(4, 2).c_str());
    EXPECT_EQ(pushAndPull(h.get(), numberedBgrx(4, 2)).size(), 8u * 6u * 4u);
    g_object_set(h->element, "width", 6, nullptr);
    const auto out = pushAndPull(h.get(), numberedBgrx(4, 2), 40 * GST_MSECOND);
    EXPECT_EQ(outputSize(h.get()), std::pair(6, 6));
    ASSERT_EQ(out.size(), 6u * 6u * 4u);
    EXPECT_EQ(sampleAt(out, 6, 1, 2), 0xFF000000u | 1u);
}

TEST_F(Elements, CropAntiFlickerAveragesEachPixelWithThoseBelowIt)
{
    // 2 x 480 with one white row at 100: level 10 makes a run of 5 rows (480 / 100 *
    // 10 / 10, rounded up). Each pixel averages itself and the 4 rows that follow it in
    // memory, so the line reaches the 4 rows above it at a fifth of its brightness.
    const auto h = harness("qxcrop");
    g_object_set(h->element, "anti-flicker", 10, nullptr);
    gst_harness_set_src_caps_str(h.get(), bgrxCaps(2, 480).c_str());
    std::vector<uint8_t> frame(2 * 480 * 4, 0);
    std::fill_n(frame.begin() + 100 * 8, 8, uint8_t(255));
    const auto out = pushAndPull(h.get(), frame);
    ASSERT_EQ(out.size(), frame.size());
    for (int y = 0; y < 480; ++y) {
        const uint32_t grey = y >= 96 && y <= 100 ? 51u : 0u;
        ASSERT_EQ(sampleAt(out, 2, 1, y) & 0xFFFFFFu, grey * 0x010101u) << "row " << y;
    }
}

TEST_F(Elements, CropRefusesFormatsItCannotTake)
{
    const auto h = harness("qxcrop");
    gst_harness_set_src_caps_str(h.get(), "video/x-raw,format=I420,width=4,height=2,framerate=25/1");
    EXPECT_EQ(gst_harness_push(h.get(), bufferOf(std::vector<uint8_t>(12), 0).release()), GST_FLOW_NOT_NEGOTIATED);
}

/// A YV12 frame of `width` x `height` in GStreamer's own layout for those caps: luma of
/// one value, chroma at 128.
std::vector<uint8_t> yv12Frame(int width, int height, uint8_t luma)
{
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_YV12, guint(width), guint(height));
    std::vector<uint8_t> bytes(GST_VIDEO_INFO_SIZE(&info), 128);
    for (int y = 0; y < height; ++y)
        std::memset(bytes.data() + GST_VIDEO_INFO_PLANE_OFFSET(&info, 0) +
                        size_t(y) * size_t(GST_VIDEO_INFO_PLANE_STRIDE(&info, 0)),
                    luma, size_t(width));
    return bytes;
}

std::string yv12Caps(int width, int height)
{
    return "video/x-raw,format=YV12,width=" + std::to_string(width) + ",height=" + std::to_string(height) +
           ",framerate=25/1";
}

struct CutMessages {
    std::vector<std::tuple<guint64, guint64, guint64>> cuts;  ///< time, stream time, frame
    std::vector<guint64> listedTimes;
    std::vector<guint64> listedFrames;
    bool listed = false;
};

std::vector<guint64> uint64sOf(const GstStructure* structure, const char* field)
{
    std::vector<guint64> values;
    const GValue* array = gst_structure_get_value(structure, field);
    for (guint i = 0; array && i < gst_value_array_get_size(array); ++i)
        values.push_back(g_value_get_uint64(gst_value_array_get_value(array, i)));
    return values;
}

CutMessages drain(GstBus* bus)
{
    CutMessages result;
    while (GstMessage* message = gst_bus_pop_filtered(bus, GST_MESSAGE_ELEMENT)) {
        const GstStructure* s = gst_message_get_structure(message);
        if (gst_structure_has_name(s, "qx-scene-cut")) {
            guint64 time = 0;
            guint64 streamTime = 0;
            guint64 frame = 0;
            gst_structure_get_uint64(s, "time", &time);
            gst_structure_get_uint64(s, "stream-time", &streamTime);
            gst_structure_get_uint64(s, "frame", &frame);
            result.cuts.emplace_back(time, streamTime, frame);
        } else if (gst_structure_has_name(s, "qx-scene-cuts")) {
            result.listed = true;
            result.listedTimes = uint64sOf(s, "times");
            result.listedFrames = uint64sOf(s, "frames");
        }
        gst_message_unref(message);
    }
    return result;
}

struct SceneHarness {
    Harness h{gst_harness_new("qxscenecut")};
    GstBus* bus = gst_bus_new();

    explicit SceneHarness(const std::string& caps)
    {
        gst_element_set_bus(h->element, bus);
        gst_harness_set_src_caps_str(h.get(), caps.c_str());
    }
    ~SceneHarness()
    {
        gst_element_set_bus(h->element, nullptr);
        gst_object_unref(bus);
    }
    /// Pushes frames 40 ms apart from `first`; whether each came out as it went in.
    bool play(const std::vector<std::vector<uint8_t>>& frames, GstClockTime first = 0)
    {
        bool untouched = true;
        for (size_t i = 0; i < frames.size(); ++i) {
            auto buffer = bufferOf(frames[i], first + i * 40 * GST_MSECOND);
            GstBuffer* pushed = buffer.get();
            if (gst_harness_push(h.get(), buffer.release()) != GST_FLOW_OK) return false;
            Buffer out(gst_harness_try_pull(h.get()));
            untouched = untouched && out && out.get() == pushed && bytesOf(out.get()) == frames[i];
        }
        return untouched;
    }
    CutMessages end()
    {
        gst_harness_push_event(h.get(), gst_event_new_eos());
        return drain(bus);
    }
};

TEST_F(Elements, SceneCutPostsEachCutAndTheListAtTheEnd)
{
    SceneHarness scene(yv12Caps(64, 48));
    gboolean qos = TRUE;
    g_object_get(scene.h->element, "qos", &qos, nullptr);
    EXPECT_FALSE(qos);
    const auto black = yv12Frame(64, 48, 0);
    const auto white = yv12Frame(64, 48, 255);
    EXPECT_TRUE(scene.play({black, black, white, white, black}, GST_SECOND));
    const CutMessages messages = scene.end();
    // Cuts at frames 2 and 4, whose stream times are 1.08 and 1.16 s: the times are 0.1 s
    // later, as the detector reports them.
    using Cut = std::tuple<guint64, guint64, guint64>;
    EXPECT_EQ(messages.cuts, (std::vector<Cut>{{1180 * GST_MSECOND, 1080 * GST_MSECOND, 2},
                                               {1260 * GST_MSECOND, 1160 * GST_MSECOND, 4}}));
    ASSERT_TRUE(messages.listed);
    EXPECT_EQ(messages.listedTimes, (std::vector<guint64>{1180 * GST_MSECOND, 1260 * GST_MSECOND}));
    EXPECT_EQ(messages.listedFrames, (std::vector<guint64>{2, 4}));
}

TEST_F(Elements, SceneCutOfAnEmptyOrOneFrameClipListsNothing)
{
    for (const size_t frames : {0, 1}) {
        SceneHarness scene(yv12Caps(64, 48));
        EXPECT_TRUE(scene.play(std::vector<std::vector<uint8_t>>(frames, yv12Frame(64, 48, 255))));
        const CutMessages messages = scene.end();
        EXPECT_TRUE(messages.cuts.empty());
        ASSERT_TRUE(messages.listed) << frames << " frames";
        EXPECT_TRUE(messages.listedTimes.empty());
    }
}

TEST_F(Elements, SceneCutTakesOddAndPaddedLayouts)
{
    // 5 x 3 has chroma planes of 3 x 2 and padded rows in GStreamer's layout; 10 x 4 has
    // chroma rows of 5 bytes in strides of 8. Both go through a packed copy.
    for (const auto& [width, height] : {std::pair{5, 3}, std::pair{10, 4}}) {
        SceneHarness scene(yv12Caps(width, height));
        EXPECT_TRUE(scene.play({yv12Frame(width, height, 0), yv12Frame(width, height, 255)}));
        EXPECT_EQ(scene.end().cuts.size(), 1u) << width << "x" << height;
    }
}

TEST_F(Elements, SceneCutGoesOnThroughASizeChange)
{
    SceneHarness scene(yv12Caps(64, 48));
    EXPECT_TRUE(scene.play({yv12Frame(64, 48, 0)}));
    // Smaller frames are too short for the planes of the first: passed on, not compared.
    gst_harness_set_src_caps_str(scene.h.get(), yv12Caps(32, 24).c_str());
    EXPECT_TRUE(scene.play({yv12Frame(32, 24, 255)}, 40 * GST_MSECOND));
    // Larger ones are compared on those planes.
    gst_harness_set_src_caps_str(scene.h.get(), yv12Caps(128, 96).c_str());
    EXPECT_TRUE(scene.play({yv12Frame(128, 96, 255)}, 80 * GST_MSECOND));
    EXPECT_EQ(scene.end().cuts.size(), 1u);
}

TEST_F(Elements, SceneCutRefusesOtherFormats)
{
    const auto h = harness("qxscenecut");
    gst_harness_set_src_caps_str(h.get(), bgrxCaps(4, 2).c_str());
    EXPECT_EQ(gst_harness_push(h.get(), bufferOf(std::vector<uint8_t>(32), 0).release()), GST_FLOW_NOT_NEGOTIATED);
}

/// A folder with a 2D composition under Scenes: a red square, a quarter of a unit wide,
/// sliding from x -1 to 1 at y 1 over two seconds; and its picture, a BMP.
class SlideFolder {
public:
    SlideFolder() : root_(std::filesystem::temp_directory_path() / ("qx-anim-" + std::to_string(::getpid())))
    {
        std::filesystem::create_directories(root_ / "Scenes");
        std::ofstream(root_ / "Scenes" / "slide.cpo")
            << "Duration 2\nImage\n{\n  Name \"Square\"\n  Size 0.5 0.5\n  Position (envelope)\n"
               "  { X 2 Key -1 0 3 0 0 0 0 0 0 Key 1 2 3 0 0 0 0 0 0 Behaviors 1 1 }\n"
               "  { Y 1 Key 1 0 3 0 0 0 0 0 0 Behaviors 1 1 }\n}\n";
        writeRedBmp(root_ / "red.bmp", 8, 8);
    }
    ~SlideFolder() { std::filesystem::remove_all(root_); }
    std::string path(const char* name = "") const { return (root_ / name).string(); }

private:
    /// A 24-bit bottom-up BMP of pure red.
    static void writeRedBmp(const std::filesystem::path& path, uint32_t width, uint32_t height)
    {
        const uint32_t rowBytes = (width * 3 + 3) & ~3u;
        std::vector<uint8_t> file(54 + size_t(rowBytes) * height, 0);
        const auto put32 = [&](size_t at, uint32_t v) { std::memcpy(&file[at], &v, 4); };
        file[0] = 'B';
        file[1] = 'M';
        put32(2, uint32_t(file.size()));
        put32(10, 54);
        put32(14, 40);
        put32(18, width);
        put32(22, height);
        file[26] = 1;
        file[28] = 24;
        for (uint32_t y = 0; y < height; ++y)
            for (uint32_t x = 0; x < width; ++x) file[54 + y * rowBytes + x * 3 + 2] = 0xFF;
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()));
    }
    std::filesystem::path root_;
};

/// The middle column of the red in row 20 of a 160-wide BGRx frame; -1 without red.
int redCentre(const std::vector<uint8_t>& frame)
{
    int first = -1, last = -1;
    for (int x = 0; x < 160; ++x) {
        const uint32_t sample = sampleAt(frame, 160, x, 20) & 0xFFFFFFu;
        if (sample == 0xFF0000u) {
            if (first < 0) first = x;
            last = x;
        }
    }
    return first < 0 ? -1 : (first + last) / 2;
}

/// The next buffer of `h` with its time; events on the way are dropped.
std::pair<std::vector<uint8_t>, GstClockTime> pullFrame(GstHarness* h)
{
    Buffer buffer(gst_harness_pull(h));
    if (!buffer) return {{}, GST_CLOCK_TIME_NONE};
    return {bytesOf(buffer.get()), GST_BUFFER_PTS(buffer.get())};
}

bool endsWithEos(GstHarness* h)
{
    while (GstEvent* event = gst_harness_pull_event(h)) {
        const bool eos = GST_EVENT_TYPE(event) == GST_EVENT_EOS;
        gst_event_unref(event);
        if (eos) return true;
    }
    return false;
}

// The source plays its two seconds at 10 frames a second and ends; a flushing seek to
// one second gives, from there, the frames it gave the first time.
TEST_F(Elements, AnimSourcePlaysSeeksAndEnds)
{
    const SlideFolder folder;
    const Harness h(gst_harness_new_with_padnames("qxanimsrc", nullptr, "src"));
    g_object_set(h->element, "data-path", folder.path().c_str(), "composition", "slide.cpo", "image1",
                 folder.path("red.bmp").c_str(), nullptr);
    gst_harness_set_sink_caps_str(h.get(), "video/x-raw,format=BGRx,width=160,height=120,framerate=10/1");
    gst_harness_play(h.get());
    std::vector<std::vector<uint8_t>> frames;
    for (int i = 0; i < 20; ++i) {
        auto [bytes, time] = pullFrame(h.get());
        ASSERT_EQ(bytes.size(), 160u * 120u * 4u) << i;
        EXPECT_EQ(time, GstClockTime(i) * 100 * GST_MSECOND);
        frames.push_back(std::move(bytes));
    }
    EXPECT_NEAR(redCentre(frames[0]), 40, 1);
    EXPECT_NEAR(redCentre(frames[10]), 80, 1);
    EXPECT_TRUE(endsWithEos(h.get()));
    EXPECT_EQ(gst_harness_buffers_in_queue(h.get()), 0u);

    ASSERT_TRUE(gst_harness_push_upstream_event(h.get(), gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH,
                                                                            GST_SEEK_TYPE_SET, GST_SECOND,
                                                                            GST_SEEK_TYPE_NONE, GST_CLOCK_TIME_NONE)));
    for (int i = 10; i < 13; ++i) {
        auto [bytes, time] = pullFrame(h.get());
        EXPECT_EQ(time, GstClockTime(i) * 100 * GST_MSECOND);
        EXPECT_EQ(bytes, frames[size_t(i)]) << i;
    }
}

TEST_F(Elements, AnimSourceWithoutCompositionFails)
{
    const SlideFolder folder;
    const Harness h(gst_harness_new_with_padnames("qxanimsrc", nullptr, "src"));
    g_object_set(h->element, "data-path", folder.path().c_str(), "composition", "missing.cpo", nullptr);
    gst_harness_set_sink_caps_str(h.get(), "video/x-raw,format=BGRx,width=160,height=120,framerate=10/1");
    gst_harness_play(h.get());
    // The caps are refused, the stream ends without a frame.
    EXPECT_TRUE(endsWithEos(h.get()));
    EXPECT_EQ(gst_harness_buffers_in_queue(h.get()), 0u);
}

}  // namespace
