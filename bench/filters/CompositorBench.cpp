// The compositor on one core against ffmpeg's filter chain for the same job, in the same
// run: a 640 by 360 picture turned by 0.3 radians, keyed on green and at half opacity,
// over a 1920 by 1080 frame. The compositor takes its picture from a picture file, or
// from its second input (a 1920 by 1080 frame scaled to a third); ffmpeg gets the 640 by
// 360 picture itself, and its overlay works on packed RGB, so neither side converts
// pixel formats.
#include "bench/common/BmpFile.h"
#include "bench/common/Frames.h"
#include "filters/Compositor.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
}

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

using qx::bench::kFrameHeight;
using qx::bench::kFrameWidth;

constexpr int kPictureWidth = 640;
constexpr int kPictureHeight = 360;
constexpr double kAngleRadians = 0.3;

// A picture with a green block to key out and detail elsewhere.
std::vector<uint32_t> logo(int width, int height)
{
    auto samples = qx::bench::makeTestFrame(width, height);
    for (int y = height / 4; y < height / 2; ++y) {
        for (int x = width / 4; x < width / 2; ++x) samples[size_t(y) * size_t(width) + size_t(x)] = 0xFF00FF00u;
    }
    return samples;
}

// The compositor with the picture from `overlay` (empty: its second input).
void runCompositor(benchmark::State& state, const std::string& overlay)
{
    using namespace qx;
    auto first = transform::DXSurface::create(kFrameWidth, kFrameHeight);
    auto second = transform::DXSurface::create(kFrameWidth, kFrameHeight);
    auto output = transform::DXSurface::create(kFrameWidth, kFrameHeight);
    const auto fill = [](transform::DXSurface& surface, const std::vector<uint32_t>& samples) {
        std::unique_ptr<transform::SurfaceLock> lock;
        surface.LockSurface(nullptr, 0, transform::DXLOCKF_READWRITE, lock);
        lock->PackRect({const_cast<uint32_t*>(samples.data()), false, {0, 0, kFrameWidth, kFrameHeight}, 0});
    };
    fill(*first, bench::makeTestFrame(kFrameWidth, kFrameHeight));
    fill(*second, logo(kFrameWidth, kFrameHeight));
    const auto compositor = CQXCompositor::Create();
    compositor->put_OffsetX(1.0f / 3.0f);
    compositor->put_OffsetY(1.0f / 3.0f);
    compositor->put_Width(1.0f / 3.0f);
    compositor->put_Height(1.0f / 3.0f);
    compositor->put_Angle(float(kAngleRadians * 180.0 / 3.14159265358979323846));
    compositor->put_KeyColor(0x00FF00u);
    compositor->put_Similarity(0x101010u);
    compositor->put_Opacity(0.5f);
    const std::u16string path(overlay.begin(), overlay.end());
    const Bstr overlayPath(path);
    compositor->put_OverlayPath(overlayPath.get());
    const std::shared_ptr<transform::DXSurface> inputs[] = {first, second};
    if (compositor->Setup(inputs, output, 0) != S_OK) throw std::runtime_error("compositor set-up failed");
    for (auto _ : state) {
        compositor->put_Progress(0.5f);
        benchmark::DoNotOptimize(compositor->Execute(nullptr, nullptr, nullptr));
    }
}

// A 640 by 360 picture file, resampled to the frame at set-up as the compositor does.
void BM_CompositorPictureTurnedKeyedHalfOpacity(benchmark::State& state)
{
    const std::string picture =
        qx::bench::writeBmp(logo(kPictureWidth, kPictureHeight), kPictureWidth, kPictureHeight, "qx-bench-logo");
    runCompositor(state, picture);
    std::filesystem::remove(picture);
}
BENCHMARK(BM_CompositorPictureTurnedKeyedHalfOpacity)->Unit(benchmark::kMillisecond);

// The same picture as the second input, scaled from a whole frame: one more frame to
// unpack, and a picture that changes with every frame.
void BM_CompositorSecondInputTurnedKeyedHalfOpacity(benchmark::State& state) { runCompositor(state, ""); }
BENCHMARK(BM_CompositorSecondInputTurnedKeyedHalfOpacity)->Unit(benchmark::kMillisecond);

struct GraphFree {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};
struct FrameFree {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FrameFree>;

Frame bgraFrame(const std::vector<uint32_t>& samples, int width, int height)
{
    Frame frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_BGRA;
    frame->width = width;
    frame->height = height;
    if (av_frame_get_buffer(frame.get(), 64) < 0) throw std::runtime_error("no frame");
    for (int y = 0; y < height; ++y) {
        std::memcpy(frame->data[0] + ptrdiff_t(y) * frame->linesize[0], samples.data() + size_t(y) * size_t(width),
                    size_t(width) * 4);
    }
    return frame;
}

AVFilterContext* source(AVFilterGraph* graph, const char* name, int width, int height)
{
    const std::string args = "video_size=" + std::to_string(width) + "x" + std::to_string(height) +
                             ":pix_fmt=" + std::to_string(int(AV_PIX_FMT_BGRA)) + ":time_base=1/25:pixel_aspect=1/1";
    AVFilterContext* context = nullptr;
    if (avfilter_graph_create_filter(&context, avfilter_get_by_name("buffer"), name, args.c_str(), nullptr, graph) <
        0) {
        throw std::runtime_error("no buffer source");
    }
    return context;
}

void BM_FfmpegRotateColorkeyOverlay(benchmark::State& state)
{
    const std::unique_ptr<AVFilterGraph, GraphFree> graph(avfilter_graph_alloc());
    graph->nb_threads = 1;
    AVFilterContext* main = source(graph.get(), "main", kFrameWidth, kFrameHeight);
    AVFilterContext* picture = source(graph.get(), "picture", kPictureWidth, kPictureHeight);
    AVFilterContext* sink = nullptr;
    if (avfilter_graph_create_filter(&sink, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr, graph.get()) <
        0) {
        throw std::runtime_error("no sink");
    }
    AVFilterInOut* outputs = avfilter_inout_alloc();
    outputs->name = av_strdup("main");
    outputs->filter_ctx = main;
    outputs->next = avfilter_inout_alloc();
    outputs->next->name = av_strdup("picture");
    outputs->next->filter_ctx = picture;
    AVFilterInOut* inputs = avfilter_inout_alloc();
    inputs->name = av_strdup("out");
    inputs->filter_ctx = sink;
    const std::string chain = "[picture]rotate=" + std::to_string(kAngleRadians) +
                              ":c=none,colorkey=0x00FF00:0.05,colorchannelmixer=aa=0.5[logo];"
                              "[main][logo]overlay=640:360:format=rgb[out]";
    const int parsed = avfilter_graph_parse_ptr(graph.get(), chain.c_str(), &inputs, &outputs, nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    if (parsed < 0 || avfilter_graph_config(graph.get(), nullptr) < 0) throw std::runtime_error("ffmpeg chain refused");
    const Frame background = bgraFrame(qx::bench::makeTestFrame(kFrameWidth, kFrameHeight), kFrameWidth, kFrameHeight);
    const Frame logoFrame = bgraFrame(logo(kPictureWidth, kPictureHeight), kPictureWidth, kPictureHeight);
    const Frame result(av_frame_alloc());
    int64_t pts = 0;
    for (auto _ : state) {
        background->pts = logoFrame->pts = pts++;
        if (av_buffersrc_add_frame_flags(main, background.get(), AV_BUFFERSRC_FLAG_KEEP_REF) < 0 ||
            av_buffersrc_add_frame_flags(picture, logoFrame.get(), AV_BUFFERSRC_FLAG_KEEP_REF) < 0 ||
            av_buffersink_get_frame(sink, result.get()) < 0) {
            throw std::runtime_error("no frame out");
        }
        av_frame_unref(result.get());
    }
}
BENCHMARK(BM_FfmpegRotateColorkeyOverlay)->Unit(benchmark::kMillisecond);

}  // namespace
