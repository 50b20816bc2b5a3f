#include "apps/qxfx/Messages.h"

extern "C" {
#include <libavutil/log.h>
}

#include "apps/session/CommandError.h"

#include <csignal>
#include <cstdio>

namespace qx::qxfx {

namespace {

Verbosity gVerbosity = Verbosity::Normal;
volatile std::sig_atomic_t gRaised = 0;
struct sigaction gPreviousInt {};
struct sigaction gPreviousTerm {};

void onSignal(int) { gRaised = 1; }

}  // namespace

void setVerbosity(Verbosity verbosity)
{
    gVerbosity = verbosity;
    av_log_set_level(verbosity == Verbosity::Verbose ? AV_LOG_INFO : AV_LOG_QUIET);
}

void setFfmpegLogLevel(const std::string& name)
{
    static constexpr std::pair<const char*, int> kLevels[] = {
        {"quiet", AV_LOG_QUIET}, {"error", AV_LOG_ERROR},     {"warning", AV_LOG_WARNING},
        {"info", AV_LOG_INFO},   {"verbose", AV_LOG_VERBOSE}, {"debug", AV_LOG_DEBUG},
    };
    for (const auto& [levelName, level] : kLevels) {
        if (name == levelName) {
            av_log_set_level(level);
            return;
        }
    }
    throw CommandError("bad value '" + name + "' for --loglevel (quiet, error, warning, info, verbose or debug)");
}

void warn(const std::string& text)
{
    if (gVerbosity != Verbosity::Quiet) std::fprintf(stderr, "qxfx: warning: %s\n", text.c_str());
}

InterruptGuard::InterruptGuard()
{
    gRaised = 0;
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    // The handler goes after the first signal: a second one ends the process.
    action.sa_flags = SA_RESETHAND;
    sigaction(SIGINT, &action, &gPreviousInt);
    sigaction(SIGTERM, &action, &gPreviousTerm);
}

InterruptGuard::~InterruptGuard()
{
    sigaction(SIGINT, &gPreviousInt, nullptr);
    sigaction(SIGTERM, &gPreviousTerm, nullptr);
}

bool InterruptGuard::raised() { return gRaised != 0; }

int exitCodeOfRun(const char* command, long written, const std::string& target)
{
    if (!InterruptGuard::raised()) return 0;
    std::fprintf(stderr, "qxfx %s: interrupted; %ld frames written%s\n", command, written,
                 target.empty() ? "" : (" to '" + target + "'").c_str());
    return 130;
}

}  // namespace qx::qxfx
