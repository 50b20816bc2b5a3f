#include "platform/os/WideText.h"

namespace qx::os {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUtf8(std::string& out, char32_t c)
{
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

void appendUtf16(std::u16string& out, char32_t c)
{
    if (c < 0x10000) {
        out += char16_t(c);
    } else {
        c -= 0x10000;
        out += char16_t(0xD800 + (c >> 10));
        out += char16_t(0xDC00 + (c & 0x3FF));
    }
}

// Decodes one UTF-8 sequence at `pos`, advancing it; rejects overlong forms and surrogates.
char32_t decodeUtf8(std::string_view text, size_t& pos)
{
    const auto lead = static_cast<unsigned char>(text[pos++]);
    if (lead < 0x80) return lead;
    int extra = 0;
    char32_t c = 0;
    char32_t minimum = 0;
    if ((lead & 0xE0) == 0xC0) {
        extra = 1, c = lead & 0x1F, minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        extra = 2, c = lead & 0x0F, minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        extra = 3, c = lead & 0x07, minimum = 0x10000;
    } else {
        return kReplacement;
    }
    for (int i = 0; i < extra; ++i) {
        if (pos >= text.size() || (static_cast<unsigned char>(text[pos]) & 0xC0) != 0x80) return kReplacement;
        c = (c << 6) | (static_cast<unsigned char>(text[pos++]) & 0x3F);
    }
    if (c < minimum || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return kReplacement;
    return c;
}

}  // namespace

std::string toUtf8(std::u16string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            c = kReplacement;
        }
        appendUtf8(out, c);
    }
    return out;
}

std::u16string fromUtf8(std::string_view text)
{
    std::u16string out;
    out.reserve(text.size());
    for (size_t pos = 0; pos < text.size();) appendUtf16(out, decodeUtf8(text, pos));
    return out;
}

}  // namespace qx::os
