// One frame of an SWF movie of 100 shapes drawn at 1920 by 1080: solid rectangles,
// circles with radial gradients and bars with linear gradients, some turned, some
// outlined; smoothed (as `qxfx swf` draws) and at the player's low quality (as the
// compositor's animations are drawn).
#include "bench/common/Frames.h"
#include "platform/swf/Movie.h"
#include "tools/swf/SwfWriter.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

using namespace qx;
using swftool::ShapeBuilder;

swf::FillStyle gradient(swf::FillKind kind, double size, swf::Rgba from, swf::Rgba to)
{
    swf::FillStyle fill;
    fill.kind = kind;
    fill.matrix = {size / 32768.0, 0, 0, size / 32768.0, 0, 0};
    fill.gradient.stops = {{0, from}, {255, to}};
    return fill;
}

// 100 shapes spread over a 1920 by 1080 stage, each placed once.
std::vector<uint8_t> hundredShapes()
{
    swftool::SwfWriter writer(10, {0, bench::kFrameWidth * 20, 0, bench::kFrameHeight * 20}, 25.0);
    writer.background({240, 240, 240, 255});
    for (uint16_t i = 0; i < 100; ++i) {
        ShapeBuilder shape;
        const uint8_t shade = uint8_t(i * 37 % 256);
        if (i % 4 == 0) {
            shape.fills = {gradient(swf::FillKind::Radial, 4000, {255, 255, 255, 255}, {shade, 40, 160, 255})};
            shape.lines = {swf::LineStyle{40, {0, 0, 0, 255}}};
            shape.line(1).circle(0, 0, 2000, 1);
        } else if (i % 4 == 1) {
            shape.fills = {gradient(swf::FillKind::Linear, 6000, {shade, 0, 0, 255}, {0, shade, 255, 200})};
            shape.rectangle(-3000, -600, 3000, 600, 1);
        } else {
            shape.fills = {swf::FillStyle{swf::FillKind::Solid, {shade, uint8_t(255 - shade), 90, 230}}};
            shape.rectangle(-1500, -1000, 1500, 1000, 1);
        }
        writer.defineShape(uint16_t(i + 1), shape);
        const double turn = i * 0.4;
        const double x = (i % 10) * 3600 + 2000;
        const double y = (i / 10) * 2000 + 1200;
        writer.place(uint16_t(i + 1), uint16_t(i + 1),
                     {std::cos(turn), std::sin(turn), -std::sin(turn), std::cos(turn), x, y});
    }
    writer.showFrame();
    return writer.finish();
}

void drawFrame(benchmark::State& state, bool smooth)
{
    const auto movie = swf::Movie::load(hundredShapes());
    draw2d::Bitmap frame(bench::kFrameWidth, bench::kFrameHeight);
    const swf::RenderOptions options{swf::ScaleMode::ShowAll, smooth, {}};
    for (auto _ : state) {
        benchmark::DoNotOptimize(movie->render(0, frame, options));
        benchmark::ClobberMemory();
    }
}

void BM_SwfFrame100ShapesSmooth(benchmark::State& state) { drawFrame(state, true); }
void BM_SwfFrame100ShapesLowQuality(benchmark::State& state) { drawFrame(state, false); }
BENCHMARK(BM_SwfFrame100ShapesSmooth)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SwfFrame100ShapesLowQuality)->Unit(benchmark::kMillisecond);

}  // namespace
