#include "apps/qxfx/ImportCommand.h"

#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/CommandRun.h"
#include "apps/qxfx/ProgressBar.h"
#include "tools/import/ModelImport.h"

#include <cstdio>
#include <optional>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx import MODEL -o OBJECT [--images DIR]\n"
    "Brings a Wavefront OBJ (.obj with its .mtl) or glTF 2.0 (.gltf, .glb) model into the\n"
    "engine's object format. Node transforms are baked into the meshes; materials become\n"
    "texture.mat, texture_alpha.mat or color.mat; a skinned mesh keeps its bones at its\n"
    "pose; meshes that the first animation moves are baked to MDD frames at 30 a second.\n"
    "  -o, --output PATH    the object file to write (Objects/model.qxo)\n"
    "      --images DIR     the folder that IMAGES: stands for (default: Images beside the\n"
    "                       object's folder); textures go to DIR/<object name>/\n";

constexpr long kProgressSteps = 1000;

struct ImportArguments {
    qx4d::tools::ImportOptions options;
    bool help = false;
};

CommandError unknownOption(std::string_view option)
{
    return CommandError("unknown option '" + std::string(option) + "' (see 'qxfx import --help')");
}

void readArgument(ArgReader& args, std::string_view arg, ImportArguments& parsed, std::optional<std::string>& input)
{
    if (arg == "-o" || arg == "--output")
        parsed.options.output = args.value(arg);
    else if (arg == "--images")
        parsed.options.images = args.value(arg);
    else if (arg == "-h" || arg == "--help")
        parsed.help = true;
    else if (arg.starts_with("-"))
        throw unknownOption(arg);
    else if (input)
        throw CommandError("give one model, not '" + *input + "' and '" + std::string(arg) + "'");
    else
        input = std::string(arg);
}

ImportArguments parseArguments(std::span<const std::string_view> arguments)
{
    ImportArguments parsed;
    ArgReader args(arguments);
    std::optional<std::string> input;
    while (!args.done()) readArgument(args, args.take(), parsed, input);
    if (parsed.help) return parsed;
    if (!input) throw CommandError("give the model to import (see 'qxfx import --help')");
    if (parsed.options.output.empty()) throw CommandError("give the object file to write with -o");
    parsed.options.input = *input;
    return parsed;
}

void printSummary(const qx4d::tools::ImportOptions& options, const qx4d::tools::ImportSummary& summary)
{
    for (const std::string& warning : summary.warnings) {
        std::fprintf(stderr, "qxfx import: warning: %s\n", warning.c_str());
    }
    std::printf("%s: %zu mesh item(s)", options.output.string().c_str(), summary.meshItems + summary.mddItems);
    if (summary.boneItems) std::printf(", %zu bone(s)", summary.boneItems);
    if (summary.mddItems) std::printf(", %zu baked to %u MDD frames", summary.mddItems, summary.frames);
    std::printf(", %zu texture(s)\n", summary.textures.size());
    for (const auto& texture : summary.textures) std::printf("  %s\n", texture.string().c_str());
}

}  // namespace

int runImport(std::span<const std::string_view> args)
{
    return runCommand("import", args, {kUsage}, parseArguments, [](ImportArguments& parsed) {
        ProgressBar bar("import", kProgressSteps);
        parsed.options.progress = [&bar](double done) { bar.update(long(done * kProgressSteps)); };
        try {
            printSummary(parsed.options, qx4d::tools::ImportModel(parsed.options));
        } catch (const qx4d::tools::ImportError& error) {
            throw CommandError(error.what());
        }
        return 0;
    });
}

}  // namespace qx::qxfx
