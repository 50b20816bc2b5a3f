// `String::Format`: printf-style formatting with the Windows C runtime's wide rules.
// Numbers go through the C library's snprintf one conversion at a time; strings and
// characters are handled here, since `%s` of a wide format takes wide text.
#include "qx4d/core/String.h"

#include "platform/os/CodePage.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>

namespace qx4d {

namespace {

enum class Length { Default, Short, Char, Long, LongLong, Size };

// One parsed conversion: "%-08.3ld" has flags "-0", width 8, precision 3, Length::Long.
struct Conversion {
    std::string flags;
    int width = -1;
    int precision = -1;
    Length length = Length::Default;
    char16_t type = 0;
};

bool isFlag(char16_t c) { return c == u'-' || c == u'+' || c == u' ' || c == u'#' || c == u'0'; }
bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// Reads a width or precision: digits, or '*' for an int argument; `absent` when neither
// stands there. Absurd counts are capped so that a bad format can't ask for gigabytes of
// padding.
int readCount(const char16_t*& p, va_list& args, int absent)
{
    constexpr int kMaxCount = 4096;
    if (*p == u'*') {
        ++p;
        const int value = va_arg(args, int);
        return value < 0 ? -1 : std::min(value, kMaxCount);
    }
    if (!isDigit(*p)) return absent;
    int value = 0;
    while (isDigit(*p)) value = std::min(value * 10 + int(*p++ - u'0'), kMaxCount);
    return value;
}

Length readLength(const char16_t*& p)
{
    auto follows = [&p](std::u16string_view text) {
        if (std::u16string_view(p).substr(0, text.size()) != text) return false;
        p += text.size();
        return true;
    };
    if (follows(u"I64") || follows(u"ll") || follows(u"j")) return Length::LongLong;
    if (follows(u"I32")) return Length::Long;
    if (follows(u"hh")) return Length::Char;
    if (follows(u"z") || follows(u"t") || follows(u"I")) return Length::Size;
    if (follows(u"h")) return Length::Short;
    if (follows(u"l") || follows(u"w")) return Length::Long;
    follows(u"L");  // long double is double in the Windows C runtime
    return Length::Default;
}

void pad(std::u16string& out, const Conversion& spec, std::u16string_view text)
{
    const size_t width = spec.width > 0 ? size_t(spec.width) : 0;
    const size_t fill = width > text.size() ? width - text.size() : 0;
    const bool left = spec.flags.find('-') != std::string::npos;
    if (!left) out.append(fill, u' ');
    out.append(text);
    if (left) out.append(fill, u' ');
}

// Wide text for %s, %ls, %ws; narrow (ANSI) text for %S and %hs.
void appendString(std::u16string& out, const Conversion& spec, va_list& args)
{
    const bool narrow = spec.length == Length::Short || (spec.type == u'S' && spec.length != Length::Long);
    std::u16string text;
    if (narrow) {
        const char* value = va_arg(args, const char*);
        text = value ? qx::os::toWide(qx::os::CodePage::Ansi, value) : u"(null)";
    } else {
        const char16_t* value = va_arg(args, const char16_t*);
        text = value ? value : u"(null)";
    }
    if (spec.precision >= 0 && text.size() > size_t(spec.precision)) text.resize(size_t(spec.precision));
    pad(out, spec, text);
}

void appendChar(std::u16string& out, const Conversion& spec, va_list& args)
{
    const int value = va_arg(args, int);
    const bool narrow = spec.length == Length::Short || (spec.type == u'C' && spec.length != Length::Long);
    const char16_t c = narrow ? qx::os::toWide(qx::os::CodePage::Ansi, static_cast<unsigned char>(value))
                              : static_cast<char16_t>(value);
    pad(out, spec, std::u16string_view(&c, 1));
}

// Builds the narrow conversion for snprintf, with width and precision already resolved.
std::string narrowSpec(const Conversion& spec, const char* length)
{
    std::string text = "%" + spec.flags;
    if (spec.width >= 0) text += std::to_string(spec.width);
    if (spec.precision >= 0) text += "." + std::to_string(spec.precision);
    return text + length + char(spec.type);
}

template <typename... Value>
void appendPrinted(std::u16string& out, const std::string& format, Value... value)
{
    char text[4096 + 400];
    const int written = std::snprintf(text, sizeof text, format.c_str(), value...);
    if (written <= 0) return;
    for (int i = 0; i < std::min<int>(written, int(sizeof text) - 1); ++i) out.push_back(char16_t(static_cast<unsigned char>(text[i])));
}

// Integers: Windows `long` is 32-bit, so %ld reads an int-sized argument.
void appendInteger(std::u16string& out, const Conversion& spec, va_list& args)
{
    const bool isSigned = spec.type == u'd' || spec.type == u'i';
    switch (spec.length) {
    case Length::LongLong:
        if (isSigned) appendPrinted(out, narrowSpec(spec, "ll"), va_arg(args, long long));
        else appendPrinted(out, narrowSpec(spec, "ll"), va_arg(args, unsigned long long));
        return;
    case Length::Size:
        appendPrinted(out, narrowSpec(spec, "z"), va_arg(args, size_t));
        return;
    case Length::Short:
        appendPrinted(out, narrowSpec(spec, "h"), va_arg(args, int));
        return;
    case Length::Char:
        appendPrinted(out, narrowSpec(spec, "hh"), va_arg(args, int));
        return;
    default:
        if (isSigned) appendPrinted(out, narrowSpec(spec, ""), va_arg(args, int));
        else appendPrinted(out, narrowSpec(spec, ""), va_arg(args, unsigned int));
    }
}

void appendConversion(std::u16string& out, const Conversion& spec, va_list& args)
{
    switch (spec.type) {
    case u's': case u'S': appendString(out, spec, args); return;
    case u'c': case u'C': appendChar(out, spec, args); return;
    case u'd': case u'i': case u'u': case u'o': case u'x': case u'X': appendInteger(out, spec, args); return;
    case u'f': case u'F': case u'e': case u'E': case u'g': case u'G': case u'a': case u'A':
        appendPrinted(out, narrowSpec(spec, ""), va_arg(args, double));
        return;
    case u'p': appendPrinted(out, narrowSpec(spec, ""), va_arg(args, void*)); return;
    default: return;  // %n and unknown conversions write nothing and take no argument.
    }
}

}  // namespace

void String::Format(const char16_t* format, ...)
{
    clear();
    if (!format) return;
    va_list args;
    va_start(args, format);
    for (const char16_t* p = format; *p;) {
        if (*p != u'%') {
            push_back(*p++);
            continue;
        }
        ++p;
        if (*p == u'%') {
            push_back(*p++);
            continue;
        }
        Conversion spec;
        while (isFlag(*p)) spec.flags += char(*p++);
        spec.width = readCount(p, args, -1);
        if (*p == u'.') spec.precision = readCount(++p, args, 0);
        spec.length = readLength(p);
        if (!*p) break;
        spec.type = *p++;
        appendConversion(*this, spec, args);
    }
    va_end(args);
}

}  // namespace qx4d
