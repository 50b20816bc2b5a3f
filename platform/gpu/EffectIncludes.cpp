#include "platform/gpu/EffectIncludes.h"

#include <cctype>

namespace qx::gpu {

namespace {

constexpr int kMaxDepth = 16;
constexpr size_t kMaxText = 16u << 20;

// The file name of an include line, or nothing when the line is something else.
std::optional<std::string> includedName(const std::string& line)
{
    size_t at = line.find_first_not_of(" \t");
    if (at == std::string::npos || line[at] != '#') return std::nullopt;
    at = line.find_first_not_of(" \t", at + 1);
    if (at == std::string::npos || line.compare(at, 7, "include") != 0) return std::nullopt;
    at = line.find_first_of("\"<", at + 7);
    if (at == std::string::npos) return std::nullopt;
    const size_t end = line.find(line[at] == '"' ? '"' : '>', at + 1);
    if (end == std::string::npos) return std::nullopt;
    return line.substr(at + 1, end - at - 1);
}

bool expand(const std::string& text, const IncludeResolver& resolver, int depth, std::string& out)
{
    if (depth > kMaxDepth) return false;
    size_t at = 0;
    while (at < text.size()) {
        size_t end = text.find('\n', at);
        end = end == std::string::npos ? text.size() : end + 1;
        const std::string line = text.substr(at, end - at);
        at = end;
        const std::optional<std::string> name = includedName(line);
        if (!name) {
            out += line;
        } else {
            const std::optional<std::string> included = resolver ? resolver(*name) : std::nullopt;
            if (!included || !expand(*included, resolver, depth + 1, out)) return false;
            out += '\n';
        }
        if (out.size() > kMaxText) return false;
    }
    return true;
}

}  // namespace

bool expandIncludes(const std::string& text, const IncludeResolver& resolver, std::string& out)
{
    out.clear();
    return expand(text, resolver, 0, out);
}

}  // namespace qx::gpu
