#include "platform/os/FilePath.h"

#include "platform/os/WideText.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>

namespace qx::os {

namespace fs = std::filesystem;

namespace {

bool sameIgnoringCase(const std::string& a, const std::string& b)
{
    return std::ranges::equal(a, b, [](char x, char y) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
        return lower(x) == lower(y);
    });
}

// The entry of `folder` whose name matches `name` without regard to case.
std::optional<fs::path> entryIgnoringCase(const fs::path& folder, const std::string& name)
{
    std::error_code error;
    for (fs::directory_iterator it(folder.empty() ? fs::path(".") : folder, error), end; !error && it != end;
         it.increment(error)) {
        const std::string entry = it->path().filename().string();
        if (sameIgnoringCase(entry, name)) return folder / entry;
    }
    return std::nullopt;
}

}  // namespace

std::string toPosixPath(std::u16string_view path)
{
    std::string posix = toUtf8(path);
    std::ranges::replace(posix, '\\', '/');
    return posix;
}

std::string findPath(std::u16string_view path)
{
    const fs::path wanted(toPosixPath(path));
    std::error_code error;
    if (fs::exists(wanted, error)) return wanted.string();
    fs::path found = wanted.root_path();
    for (const fs::path& part : wanted.relative_path()) {
        const fs::path exact = found / part;
        if (part == "." || part == ".." || fs::exists(exact, error)) {
            found = exact;
            continue;
        }
        const auto match = entryIgnoringCase(found, part.string());
        if (!match) return wanted.string();
        found = *match;
    }
    return found.string();
}

bool pathExists(std::u16string_view path)
{
    std::error_code error;
    return fs::exists(findPath(path), error);
}

std::u16string extensionOf(std::u16string_view path)
{
    const size_t name = path.find_last_of(u"\\/");
    const std::u16string_view last = name == std::u16string_view::npos ? path : path.substr(name + 1);
    const size_t dot = last.rfind(u'.');
    return dot == std::u16string_view::npos ? std::u16string() : std::u16string(last.substr(dot));
}

std::u16string asciiLower(std::u16string_view text)
{
    std::u16string lower(text);
    for (char16_t& c : lower) {
        if (c >= u'A' && c <= u'Z') c = char16_t(c - u'A' + u'a');
    }
    return lower;
}

}  // namespace qx::os
