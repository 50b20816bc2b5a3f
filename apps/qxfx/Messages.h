#pragma once
// What the command line says besides its result: one-line warnings on standard error
// when something a user would miss happens (an effect that has nothing to play, audio
// that cannot be kept), silenced by -q; -v adds FFmpeg's own messages.
#include <string>

namespace qx::qxfx {

enum class Verbosity { Quiet, Normal, Verbose };

/// Sets how much is said from now on; FFmpeg's log follows.
void setVerbosity(Verbosity verbosity);
/// FFmpeg's messages from level `name` on (quiet, error, warning, info, verbose, debug);
/// CommandError for another name.
void setFfmpegLogLevel(const std::string& name);
/// "qxfx: warning: TEXT" on standard error unless quiet.
void warn(const std::string& text);

/// Stops a long run cleanly on the first Ctrl-C (or SIGTERM): while one of these lives,
/// the signal only raises a flag that the run checks between frames, so the output is
/// finished and closed as if the input had ended; a second signal ends the process.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    static bool raised();
};

/// The exit code of a run that ends here: 0, or 130 after an interruption, which is said
/// on standard error with the frames written and their file (`target`; empty when the
/// frames were dropped).
int exitCodeOfRun(const char* command, long written, const std::string& target);

}  // namespace qx::qxfx
