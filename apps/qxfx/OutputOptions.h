#pragma once
// The options that every command writing video shares: where the output goes and how it
// is encoded, whether an existing file may be replaced, threads and how much is said.
// Each command reads its own options first and hands the rest to readOutputOption.
#include "apps/qxfx/ArgReader.h"
#include "apps/qxfx/OutputTarget.h"
#include "apps/qxfx/VideoWriter.h"

#include <string>

namespace qx::qxfx {

struct OutputOptions {
    std::string output;
    bool discard = false;
    Overwrite overwrite = Overwrite::Refuse;
    EncodeSettings encode;  // lossless, format, codec, crf, preset, threads
};

/// The help text of these options, for a command's usage.
extern const char* const kOutputOptionsHelp;

/// Reads `option` when it is one of these; false otherwise.
bool readOutputOption(ArgReader& args, std::string_view option, OutputOptions& o);

/// `encode` for frames at a constant `fps`, counted one after another.
EncodeSettings constantRate(EncodeSettings encode, double fps);

/// CommandError unless exactly one of -o and --discard is given, or when a pipe has no
/// format; `command` names the command in the message.
void checkOutputOptions(const OutputOptions& o, const char* command);

}  // namespace qx::qxfx

namespace qx::qxfx {

/// A video output written safely: to a temporary file beside the target that takes the
/// target's name at finish(); dropped, temporary and all, when the command fails first.
class VideoOutput {
public:
    VideoOutput(const OutputOptions& o, std::span<const std::string> inputs, int width, int height,
                const EncodeSettings& encode);
    VideoWriter& writer() { return writer_; }
    const std::string& target() const { return target_.target(); }
    /// Completes the file and gives it its name.
    void finish();

private:
    OutputTarget target_;  // declared first: the writer closes the file before it goes
    VideoWriter writer_;
};

}  // namespace qx::qxfx
