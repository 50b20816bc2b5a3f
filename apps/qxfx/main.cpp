// qxfx: the command-line host of the effect library.
#include "apps/qxfx/ListCommand.h"

#include <cstdio>
#include <string_view>
#include <vector>

namespace {

constexpr const char* kUsage =
    "usage: qxfx <command> [options]\n"
    "commands:\n"
    "  list     the catalogue of effects\n"
    "Run 'qxfx <command> --help' for the options of a command.\n";

}  // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string_view> args(argv + std::min(argc, 2), argv + argc);
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "list") return qx::qxfx::runList(args);
    if (command == "--help" || command == "-h") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    std::fprintf(stderr, command.empty() ? "qxfx: no command\n%s" : "qxfx: unknown command '%s'\n%s",
                 command.empty() ? kUsage : argv[1], kUsage);
    return 2;
}
