#pragma once
// An overlay file as the compositor must be given it: the compositor chooses its source
// by extension (".dat" an SWF animation, ".mov" a movie, anything else a still picture),
// so an SWF file under another name, and any video FFmpeg reads, are shown to it through
// a symbolic link of the right extension in a private folder. The file is checked first,
// so that a file that cannot be used is reported rather than silently left out.
#include <filesystem>
#include <string>

namespace qx::qxfx {

class OverlayFile {
public:
    /// `path` empty: no file (the second input is the picture). CommandError when the
    /// file cannot be read as a picture, an animation or a movie.
    explicit OverlayFile(const std::string& path);
    ~OverlayFile();
    OverlayFile(const OverlayFile&) = delete;
    OverlayFile& operator=(const OverlayFile&) = delete;

    /// The absolute path to give the compositor; empty when there is no file.
    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::filesystem::path folder_;  // holds the link, when one was made
};

}  // namespace qx::qxfx
