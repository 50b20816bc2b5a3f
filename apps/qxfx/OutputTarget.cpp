#include "apps/qxfx/OutputTarget.h"

#include "apps/session/CommandError.h"

#include <cstdio>
#include <filesystem>
#include <regex>
#include <system_error>
#include <unistd.h>

namespace qx::qxfx {

namespace fs = std::filesystem;

namespace {

std::string inQuotes(const std::string& path) { return "'" + path + "'"; }

bool samePlace(const fs::path& a, const fs::path& b)
{
    std::error_code error;
    if (fs::exists(a, error) && fs::exists(b, error)) return fs::equivalent(a, b, error);
    return fs::weakly_canonical(a, error) == fs::weakly_canonical(b, error);
}

// The first frame's name of a pattern: what an earlier run would have left there.
std::string firstFrameName(const std::string& pattern)
{
    char name[4096];
    std::snprintf(name, sizeof name, std::regex_replace(pattern, std::regex("%0?(\\d*)d"), "%0$1d").c_str(), 1);
    return name;
}

void checkFolder(const fs::path& folder, const std::string& target)
{
    std::error_code error;
    if (folder.empty() || fs::is_directory(folder, error)) return;
    if (fs::exists(folder, error))
        throw CommandError(inQuotes(target) + ": " + inQuotes(folder.string()) + " is not a folder");
    throw CommandError(inQuotes(target) + ": the folder " + inQuotes(folder.string()) + " does not exist");
}

}  // namespace

bool isFramePattern(const std::string& path) { return std::regex_search(path, std::regex("%0?\\d*d")); }

OutputTarget::OutputTarget(std::string target, std::span<const std::string> inputs, Overwrite overwrite)
    : target_(std::move(target)), writePath_(target_), pattern_(isFramePattern(target_))
{
    if (isPipe()) return;
    for (const std::string& input : inputs) {
        if (!input.empty() && input != "-" && samePlace(input, target_))
            throw CommandError(inQuotes(target_) + " is an input of this command: it is never written over");
    }
    const fs::path path(target_);
    std::error_code error;
    if (pattern_) {
        // The folder of a pattern is made for it, as frames are usually wanted apart.
        if (path.has_parent_path()) fs::create_directories(path.parent_path(), error);
        if (error) throw CommandError(inQuotes(target_) + ": cannot make its folder (" + error.message() + ")");
    }
    checkFolder(path.parent_path(), target_);
    const std::string existing = pattern_ ? firstFrameName(target_) : target_;
    if (fs::exists(existing, error)) {
        if (overwrite == Overwrite::Never) throw CommandError(inQuotes(existing) + " exists and -n keeps it");
        if (overwrite == Overwrite::Refuse)
            throw CommandError(inQuotes(existing) + " exists (give -y to overwrite it)");
        if (fs::is_directory(existing, error)) throw CommandError(inQuotes(existing) + " is a folder");
    }
    if (pattern_) return;
    // Beside the target, so that the rename stays on one file system; hidden, and named
    // after the process so that two runs never share it.
    const fs::path name = path.filename();
    writePath_ =
        (path.parent_path() / ("." + name.string() + ".qxfx-" + std::to_string(::getpid()) + ".part")).string();
}

OutputTarget::~OutputTarget()
{
    if (!committed_ && writePath_ != target_) {
        std::error_code ignored;
        fs::remove(writePath_, ignored);
    }
}

void OutputTarget::commit()
{
    if (committed_ || writePath_ == target_) {
        committed_ = true;
        return;
    }
    std::error_code error;
    fs::rename(writePath_, target_, error);
    if (error)
        throw CommandError(inQuotes(target_) + ": cannot put the finished file in place (" + error.message() + ")");
    committed_ = true;
}

}  // namespace qx::qxfx
