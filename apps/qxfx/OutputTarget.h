#pragma once
// Where a command writes its result, so that a clip is never lost to it: the output may
// not be one of the inputs, an existing file is replaced only when asked, and a video is
// written to a temporary file beside the target that takes the target's name only once
// it is complete, so that a failure, a full disk or an interruption leaves no broken file
// (and the file it would have replaced untouched). Frame-number patterns are written in
// place, into a folder made for them; "-" is standard output.
#include <span>
#include <string>

namespace qx::qxfx {

enum class Overwrite {
    Refuse,  ///< an existing target is an error that says to give -y
    Always,  ///< -y
    Never,   ///< -n: an existing target is an error, whatever else is given
};

class OutputTarget {
public:
    /// Checks `target` against `inputs` and the overwrite rule; CommandError naming the
    /// problem (the folder that does not exist included).
    OutputTarget(std::string target, std::span<const std::string> inputs, Overwrite overwrite);
    ~OutputTarget();
    OutputTarget(const OutputTarget&) = delete;
    OutputTarget& operator=(const OutputTarget&) = delete;

    /// The path to write: the temporary file, or the target itself for a pattern or a pipe.
    const std::string& writePath() const { return writePath_; }
    const std::string& target() const { return target_; }
    bool isPipe() const { return target_ == "-"; }
    bool isPattern() const { return pattern_; }

    /// Gives the complete file the target's name; CommandError when the rename fails.
    void commit();

private:
    std::string target_;
    std::string writePath_;
    bool pattern_ = false;
    bool committed_ = false;
};

/// True when `path` names a numbered frame pattern such as "frames/f-%04d.png".
bool isFramePattern(const std::string& path);

}  // namespace qx::qxfx
