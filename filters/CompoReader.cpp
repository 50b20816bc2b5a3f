#include "filters/CompoReader.h"

#include "platform/os/CRuntime.h"
#include "platform/os/CodePage.h"
#include "platform/os/WideText.h"

#include <fstream>
#include <iterator>
#include <vector>

namespace qx {
namespace {

bool isBlank(char16_t c) { return c == u' ' || c == u'\t'; }
bool isLineEnd(char16_t c) { return c == u'\r' || c == u'\n'; }

std::u16string utf16(std::span<const uint8_t> bytes, bool bigEndian)
{
    std::u16string text(bytes.size() / 2, u'\0');
    for (size_t i = 0; i < text.size(); ++i) {
        const uint8_t first = bytes[2 * i], second = bytes[2 * i + 1];
        text[i] = bigEndian ? char16_t(first << 8 | second) : char16_t(second << 8 | first);
    }
    return text;
}

std::u16string decode(std::span<const uint8_t> bytes)
{
    if (bytes.size() >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
        const auto rest = bytes.subspan(3);
        return os::fromUtf8(std::string_view(reinterpret_cast<const char*>(rest.data()), rest.size()));
    }
    if (bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) return utf16(bytes.subspan(2), false);
    if (bytes.size() >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) return utf16(bytes.subspan(2), true);
    return os::toWide(os::CodePage::Ansi, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

}  // namespace

CompoReader::CompoReader(std::span<const uint8_t> bytes) : text_(decode(bytes)) {}

std::optional<CompoReader> CompoReader::open(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) return std::nullopt;
    return CompoReader(bytes);
}

void CompoReader::skipBlanks(bool crossLines)
{
    while (cursor_ < text_.size() && (isBlank(text_[cursor_]) || (crossLines && isLineEnd(text_[cursor_])))) {
        ++cursor_;
    }
}

std::u16string_view CompoReader::Token(bool crossLines)
{
    skipBlanks(crossLines);
    const size_t start = cursor_;
    while (cursor_ < text_.size() && !isBlank(text_[cursor_]) && !isLineEnd(text_[cursor_])) ++cursor_;
    return std::u16string_view(text_).substr(start, cursor_ - start);
}

void CompoReader::SkipLine()
{
    while (!Token(false).empty()) {}
}

int32_t CompoReader::Integer() { return os::_wtoi(Token(true)); }

float CompoReader::Float() { return float(os::_wtof(Token(true))); }

std::u16string CompoReader::QuotedString()
{
    skipBlanks(true);
    std::u16string text;
    int quotes = 0;
    while (cursor_ < text_.size() && quotes < 2) {
        const char16_t c = text_[cursor_];
        if (isLineEnd(c)) return {};
        ++cursor_;
        if (c == u'"') {
            ++quotes;
        } else {
            text.push_back(c);
        }
    }
    return quotes == 2 ? text : std::u16string();
}

}  // namespace qx
