// qxfx: the command-line host of the effect library.
#include "apps/qxfx/AnimCommand.h"
#include "apps/qxfx/CompositeCommand.h"
#include "apps/qxfx/CropCommand.h"
#include "apps/qxfx/DemoCommand.h"
#include "apps/qxfx/EditCommand.h"
#include "apps/qxfx/ImportCommand.h"
#include "apps/qxfx/ListCommand.h"
#include "apps/qxfx/RenderCommand.h"
#include "apps/qxfx/ScenesCommand.h"
#include "apps/qxfx/SwfCommand.h"

extern "C" {
#include <libavutil/log.h>
}

#include <cstdio>
#include <exception>
#include <string_view>
#include <vector>

namespace {

constexpr const char* kUsage =
    "usage: qxfx <command> [options]\n"
    "commands:\n"
    "  list     the catalogue of effects\n"
    "  render   one effect over a video, an image or the test pattern\n"
    "  composite  a picture, SWF animation or movie over a video\n"
    "  swf      an SWF animation to a video\n"
    "  anim     a composition with your pictures (slideshow, title) to a video\n"
    "  crop     a video centred in frames of a fixed size, with anti-flicker\n"
    "  scenes   the scene cuts of a video\n"
    "  demo     every effect over the test pattern, as a video and a contact sheet\n"
    "  import   an OBJ or glTF model into the engine's object format\n"
    "  edit     an effect's properties dialog, printing the parameter text\n"
    "Run 'qxfx <command> --help' for the options of a command.\n";

int dispatch(std::string_view command, const std::vector<std::string_view>& args)
{
    if (command == "list") return qx::qxfx::runList(args);
    if (command == "render") return qx::qxfx::runRender(args);
    if (command == "composite") return qx::qxfx::runComposite(args);
    if (command == "swf") return qx::qxfx::runSwf(args);
    if (command == "anim") return qx::qxfx::runAnim(args);
    if (command == "demo") return qx::qxfx::runDemo(args);
    if (command == "import") return qx::qxfx::runImport(args);
    if (command == "edit") return qx::qxfx::runEdit(args);
    if (command == "crop") return qx::qxfx::runCrop(args);
    if (command == "scenes") return qx::qxfx::runScenes(args);
    if (command == "--help" || command == "-h") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (command.empty())
        std::fputs(kUsage, stderr);
    else
        std::fprintf(stderr, "qxfx: unknown command '%.*s' (see 'qxfx --help')\n", int(command.size()), command.data());
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string_view> args(argv + std::min(argc, 2), argv + argc);
    // Problems reach the user as one line of ours; FFmpeg's own log would add its lines.
    av_log_set_level(AV_LOG_QUIET);
    try {
        return dispatch(argc > 1 ? argv[1] : "", args);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qxfx: %s\n", error.what());
        return 1;
    }
}
