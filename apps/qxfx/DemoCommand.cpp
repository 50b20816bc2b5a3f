#include "apps/qxfx/DemoCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/Catalogue.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/ContactSheet.h"
#include "apps/qxfx/DemoCompositions.h"
#include "apps/qxfx/FrameCanvas.h"
#include "apps/qxfx/ProgressBar.h"
#include "apps/qxfx/TestPattern.h"
#include "apps/qxfx/VideoWriter.h"
#include "apps/session/ContentPack.h"
#include "apps/session/EffectSession.h"
#include "apps/session/TransitionJob.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx demo [options]\n"
    "Renders every effect of the catalogue over the test pattern with its default\n"
    "parameters, then the pack's particle, lens-flare and image-filter scenes, then the\n"
    "pack's slideshow and carousel compositions with five pictures it draws (written to\n"
    "DIR/pictures), and last the pack's 3D transition between two versions of the pattern,\n"
    "into DIR/demo.mp4 and DIR/contact-sheet.png (each at progress 0, 0.5 and 1). Effects\n"
    "that cannot be set up or run are skipped with a note.\n"
    "  --out DIR       output folder (default out)\n"
    "  --size WxH      frame size (default 320x180)\n"
    "  --frames N      frames per effect, odd so that the middle one is at 0.5 (default 25)\n"
    "  --data PATH     data path of the content pack (default: the built or installed pack)\n"
    "  --threads N     encoding threads (default 0: automatic)\n";

constexpr float kFps = 25.0f;
constexpr const char* kTransitionCaption = "20000  Cube (transition)";

struct DemoOptions {
    std::string outDir = "out";
    int width = 320;
    int height = 180;
    long frames = 25;
    std::string dataPath = findDataPath("/proc/self/exe");
    int threads = 0;
    bool help = false;
};

DemoOptions parseOptions(std::span<const std::string_view> arguments)
{
    DemoOptions o;
    ArgReader args(arguments);
    while (!args.done()) {
        const auto option = args.take();
        if (option == "--out")
            o.outDir = args.value(option);
        else if (option == "--size")
            std::tie(o.width, o.height) = args.size(option, kMaxFrameSide);
        else if (option == "--frames")
            o.frames = args.integer(option, 3, 100001);
        else if (option == "--data")
            o.dataPath = args.value(option);
        else if (option == "--threads")
            o.threads = int(args.integer(option, 0, 64));
        else if (option == "-h" || option == "--help")
            o.help = true;
        else
            throw CommandError("unknown option '" + std::string(option) + "' (see 'qxfx demo --help')");
    }
    if (o.frames % 2 == 0) throw CommandError("--frames must be odd, so that the middle frame is at progress 0.5");
    return o;
}

/// One effect of the demo: an entry of the catalogue with its default source, or a scene of
/// the pack with the effect that plays it.
struct DemoItem {
    LONG id;
    std::string source;
    std::string caption;
};

std::vector<DemoItem> demoItems()
{
    std::vector<DemoItem> items;
    for (const CatalogueEntry& entry : readCatalogue())
        items.push_back({entry.id, packSource(entry.id),
                         std::to_string(entry.id) + "  " + (entry.name.empty() ? "(no name)" : entry.name)});
    for (const PackScene& scene : packShowcase()) {
        // "Effects\Soleil.afx" is shown as "Soleil".
        const std::string name = scene.source.substr(scene.source.rfind('\\') + 1);
        items.push_back(
            {scene.effectId, scene.source, std::to_string(scene.effectId) + "  " + name.substr(0, name.rfind('.'))});
    }
    return items;
}

// Frame `index` of an item: kept when it is at progress 0, 0.5 or 1, and written to the
// video with the item's caption.
void showFrame(Frame shown, long index, const std::string& caption, const DemoOptions& o,
               std::array<Frame, 3>& pictures, VideoWriter& video)
{
    const long middle = (o.frames - 1) / 2;
    if (index == 0 || index == middle || index == o.frames - 1)
        pictures[index == 0 ? 0 : index == middle ? 1 : 2] = shown;
    makeOpaque(shown);
    const auto surface = surfaceOver(shown);
    const draw2d::CairoContext cr(cairo_create(surface.get()));
    drawCaption(cr.get(), 4, 4, caption, std::max(10.0, o.height / 16.0));
    cairo_surface_flush(surface.get());
    video.write(shown);
}

// Renders one effect into the video and returns its pictures at progress 0, 0.5 and 1.
// CommandError when the host refuses the effect; frames already written stay.
std::array<Frame, 3> renderEffect(const DemoItem& item, const DemoOptions& o, VideoWriter& video)
{
    EffectSettings settings;
    settings.effectId = item.id;
    settings.dataPath = o.dataPath;
    settings.source = item.source;
    settings.fps = kFps;
    settings.durationSeconds = double(o.frames) / kFps;
    EffectSession session(settings, o.width, o.height);
    std::array<Frame, 3> pictures;
    for (long i = 0; i < o.frames; ++i) {
        drawTestPattern(session.input(), int(i), int(o.frames));
        session.process(float(double(i) / double(o.frames - 1)));
        showFrame(session.output(), i, item.caption, o, pictures, video);
    }
    return pictures;
}

// The pack's 3D transition from the test pattern to the same pattern with red and blue
// swapped, so that the two clips are told apart on the turning cube.
std::array<Frame, 3> renderTransition(const DemoOptions& o, VideoWriter& video)
{
    TransitionSettings settings;
    settings.dataPath = o.dataPath;
    TransitionJob job(settings, o.width, o.height);
    if (!job.playsScene()) throw CommandError(whyNoScene(settings));
    std::array<Frame, 3> pictures;
    for (long i = 0; i < o.frames; ++i) {
        drawTestPattern(job.first(), int(i), int(o.frames));
        std::transform(
            job.first().samples.begin(), job.first().samples.end(), job.second().samples.begin(),
            [](uint32_t sample) { return (sample & 0xFF00FF00u) | (sample >> 16 & 0xFFu) | (sample & 0xFFu) << 16; });
        showFrame(job.run(float(double(i) / double(o.frames - 1))), i, kTransitionCaption, o, pictures, video);
    }
    return pictures;
}

int renderDemo(const DemoOptions& o)
{
    std::error_code error;
    std::filesystem::create_directories(o.outDir, error);
    if (error) throw CommandError("'" + o.outDir + "': cannot create (" + error.message() + ")");
    const auto items = demoItems();
    VideoWriter video(o.outDir + "/demo.mp4", o.width, o.height, av_d2q(kFps, 1000), o.threads);
    ContactSheet sheet;
    ProgressBar bar("demo", long(items.size()) + 1);
    int rendered = 0;
    for (size_t i = 0; i < items.size(); ++i) {
        try {
            auto pictures = renderEffect(items[i], o, video);
            sheet.add(items[i].caption, pictures);
            ++rendered;
        } catch (const CommandError& skipped) {
            std::fprintf(stderr, "qxfx demo: skipped effect %d: %s\n", items[i].id, skipped.what());
            sheet.addSkipped(items[i].caption, std::string("skipped: ") + skipped.what());
        }
        bar.update(long(i + 1));
    }
    rendered += renderDemoCompositions({o.outDir, o.dataPath, o.width, o.height, o.frames}, video, sheet);
    try {
        auto pictures = renderTransition(o, video);
        sheet.add(kTransitionCaption, pictures);
        ++rendered;
    } catch (const CommandError& skipped) {
        std::fprintf(stderr, "qxfx demo: skipped effect %d: %s\n", int(CQX3DTransform::kClientId), skipped.what());
        sheet.addSkipped(kTransitionCaption, std::string("skipped: ") + skipped.what());
    }
    bar.update(long(items.size()) + 1);
    video.finish();
    sheet.write(o.outDir + "/contact-sheet.png");
    std::fprintf(stderr,
                 "qxfx demo: %d of %zu effects, scenes, compositions and transitions in %s/demo.mp4 and "
                 "%s/contact-sheet.png\n",
                 rendered, items.size() + 3, o.outDir.c_str(), o.outDir.c_str());
    return 0;
}

}  // namespace

int runDemo(std::span<const std::string_view> args)
{
    return runCommand("demo", args, {kUsage}, parseOptions, [](auto& options) { return renderDemo(options); });
}

}  // namespace qx::qxfx
