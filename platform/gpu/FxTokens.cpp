#include "platform/gpu/FxTokens.h"

#include <cctype>

namespace qx::gpu {

namespace {

bool isWordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.'; }

// The end of a comment or string that starts at `at`, or `at` when there is none.
size_t skipCommentOrString(const std::string& text, size_t at)
{
    if (text.compare(at, 2, "//") == 0) {
        const size_t end = text.find('\n', at);
        return end == std::string::npos ? text.size() : end;
    }
    if (text.compare(at, 2, "/*") == 0) {
        const size_t end = text.find("*/", at + 2);
        return end == std::string::npos ? text.size() : end + 2;
    }
    if (text[at] == '"') {
        size_t end = at + 1;
        while (end < text.size() && text[end] != '"' && text[end] != '\n') end += text[end] == '\\' ? 2 : 1;
        return std::min(end + 1, text.size());
    }
    return at;
}

}  // namespace

std::vector<FxToken> tokenizeEffect(const std::string& text)
{
    std::vector<FxToken> tokens;
    size_t at = 0;
    while (at < text.size()) {
        const size_t skipped = skipCommentOrString(text, at);
        if (skipped != at) {
            at = skipped;
            continue;
        }
        if (std::isspace(static_cast<unsigned char>(text[at]))) {
            ++at;
            continue;
        }
        size_t end = at + 1;
        if (isWordCharacter(text[at])) {
            while (end < text.size() && isWordCharacter(text[end])) ++end;
        }
        tokens.push_back({text.substr(at, end - at), at, end});
        at = end;
    }
    return tokens;
}

}  // namespace qx::gpu
