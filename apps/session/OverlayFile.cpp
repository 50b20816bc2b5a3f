#include "apps/session/OverlayFile.h"

#include "apps/session/CommandError.h"
#include "platform/os/FilePath.h"
#include "platform/os/WideText.h"
#include "platform/swf/FileBytes.h"
#include "platform/swf/SwfFile.h"
#include "platform/video/MovieReader.h"

#include <atomic>
#include <unistd.h>

namespace qx::qxfx {

namespace fs = std::filesystem;

namespace {

bool isAnimation(const fs::path& file)
{
    const auto bytes = swf::readWholeFile(file.string());
    return bytes && swf::readHeader(*bytes).has_value();
}

fs::path privateFolder()
{
    static std::atomic<int> count{0};
    return fs::temp_directory_path() / ("qxfx-overlay-" + std::to_string(::getpid()) + "-" + std::to_string(count++));
}

}  // namespace

OverlayFile::OverlayFile(const std::string& path)
{
    if (path.empty()) return;
    std::error_code error;
    const fs::path file = fs::absolute(path, error);
    if (error || !fs::is_regular_file(file, error)) throw CommandError("'" + path + "': no such file");
    const std::u16string extension = os::asciiLower(os::extensionOf(os::fromUtf8(file.string())));
    std::string wanted;  // the extension the compositor needs, when it differs
    if (extension == u".swf" || extension == u".dat") {
        if (!isAnimation(file)) throw CommandError("'" + path + "': not an SWF animation");
        if (extension == u".swf") wanted = ".dat";
    } else {
        std::string reason;
        if (!video::MovieReader::open(file.string(), 1, &reason)) throw CommandError("'" + path + "': " + reason);
        if (extension != u".mov" && video::MovieReader::countFrames(file.string()) > 1) wanted = ".mov";
    }
    path_ = file.string();
    if (wanted.empty()) return;
    folder_ = privateFolder();
    fs::create_directories(folder_, error);
    const fs::path link = folder_ / ("overlay" + wanted);
    fs::create_symlink(file, link, error);
    if (error)
        throw CommandError("'" + path + "': cannot link it as '" + link.string() + "' (" + error.message() + ")");
    path_ = link.string();
}

OverlayFile::~OverlayFile()
{
    std::error_code error;
    if (!folder_.empty()) fs::remove_all(folder_, error);
}

}  // namespace qx::qxfx
