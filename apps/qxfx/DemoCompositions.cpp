#include "apps/qxfx/DemoCompositions.h"

#include "apps/qxfx/AnimJob.h"
#include "apps/qxfx/FrameCanvas.h"
#include "apps/qxfx/TestPattern.h"

#include <cairo.h>

#include <array>
#include <cstdio>
#include <filesystem>

namespace qx::qxfx {

namespace {

constexpr int kPictureWidth = 960, kPictureHeight = 720;
constexpr const char* kCompositions[] = {"Compositions/Slideshow.cpo", "Compositions/Carousel.cpo3d"};

/// Five pictures of the test pattern at different moments, each with its number written
/// large, so that one can tell which place took which picture.
std::vector<std::string> writePictures(const std::string& folder)
{
    std::filesystem::create_directories(folder);
    std::vector<std::string> paths;
    for (int i = 0; i < 5; ++i) {
        Frame picture = makeFrame(kPictureWidth, kPictureHeight);
        drawTestPattern(picture, i * 9, 45);
        makeOpaque(picture);
        const auto surface = surfaceOver(picture);
        {
            const draw2d::CairoContext cr(cairo_create(surface.get()));
            drawCaption(cr.get(), kPictureWidth * 0.4, kPictureHeight * 0.35, std::to_string(i + 1),
                        kPictureHeight / 4.0);
        }
        const std::string path = folder + "/picture-" + std::to_string(i + 1) + ".png";
        if (cairo_surface_write_to_png(surface.get(), path.c_str()) != CAIRO_STATUS_SUCCESS) {
            throw CommandError("'" + path + "': cannot write");
        }
        paths.push_back(path);
    }
    return paths;
}

std::array<Frame, 3> playComposition(const AnimSettings& settings, long frames, const std::string& caption,
                                     VideoWriter& video)
{
    std::array<Frame, 3> pictures;
    const long middle = (frames - 1) / 2;
    renderComposition(settings, frames, [&](const Frame& frame, long i) {
        if (i == 0 || i == middle || i == frames - 1) pictures[i == 0 ? 0 : i == middle ? 1 : 2] = frame;
        Frame shown = frame;
        const auto surface = surfaceOver(shown);
        {
            const draw2d::CairoContext cr(cairo_create(surface.get()));
            drawCaption(cr.get(), 4, 4, caption, std::max(10.0, settings.height / 16.0));
        }
        cairo_surface_flush(surface.get());
        video.write(shown);
        return true;
    });
    return pictures;
}

}  // namespace

int renderDemoCompositions(const DemoFrameOptions& o, VideoWriter& video, ContactSheet& sheet)
{
    const std::vector<std::string> pictures = writePictures(o.outDir + "/pictures");
    int played = 0;
    for (const char* composition : kCompositions) {
        const std::string caption = std::string("anim  ") + composition;
        AnimSettings settings;
        settings.composition = composition;
        settings.images = pictures;
        settings.dataPath = o.dataPath;
        settings.width = o.width;
        settings.height = o.height;
        try {
            settings.duration = compositionDuration(settings);
            if (settings.duration <= 0.0) throw CommandError("no such composition in the pack");
            settings.fps = double(o.frames) / settings.duration;  // the whole composition in the demo's frames
            auto shots = playComposition(settings, o.frames, caption, video);
            sheet.add(caption, shots);
            ++played;
        } catch (const CommandError& skipped) {
            std::fprintf(stderr, "qxfx demo: skipped %s: %s\n", composition, skipped.what());
            sheet.addSkipped(caption, std::string("skipped: ") + skipped.what());
        }
    }
    return played;
}

}  // namespace qx::qxfx
