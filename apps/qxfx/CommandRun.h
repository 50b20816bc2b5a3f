#pragma once
// How every command of qxfx runs: its options parsed, its help printed for --help, and a
// CommandError said on one line of standard error as "qxfx NAME: what" with exit code 1.
#include "apps/session/CommandError.h"

#include <cstdio>
#include <initializer_list>
#include <span>
#include <string_view>

namespace qx::qxfx {

/// Parses `args` with `parse`; prints the `help` texts in order when the options ask for
/// help, and otherwise returns what `run` returns for the options.
template <typename Parse, typename Run>
int runCommand(const char* name, std::span<const std::string_view> args, std::initializer_list<const char*> help,
               const Parse& parse, const Run& run)
{
    try {
        auto options = parse(args);
        if (options.help) {
            for (const char* text : help) std::fputs(text, stdout);
            return 0;
        }
        return run(options);
    } catch (const CommandError& error) {
        std::fprintf(stderr, "qxfx %s: %s\n", name, error.what());
        return 1;
    }
}

}  // namespace qx::qxfx
