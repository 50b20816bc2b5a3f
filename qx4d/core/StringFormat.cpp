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

void pad(std::u16string& out, const Conversion& conversion, std::u16string_view text)
{
    const size_t width = conversion.width > 0 ? size_t(conversion.width) : 0;
    const size_t fill = width > text.size() ? width - text.size() : 0;
    const bool left = conversion.flags.find('-') != std::string::npos;
    if (!left) out.append(fill, u' ');
    out.append(text);
    if (left) out.append(fill, u' ');
}

// Wide text for %s, %ls, %ws; narrow (ANSI) text for %S and %hs.
void appendString(std::u16string& out, const Conversion& conversion, va_list& args)
{
    const bool narrow =
        conversion.length == Length::Short || (conversion.type == u'S' && conversion.length != Length::Long);
    std::u16string text;
    if (narrow) {
        const char* value = va_arg(args, const char*);
        text = value ? qx::os::toWide(qx::os::CodePage::Ansi, value) : u"(null)";
    } else {
        const char16_t* value = va_arg(args, const char16_t*);
        text = value ? value : u"(null)";
    }
    if (conversion.precision >= 0 && text.size() > size_t(conversion.precision))
        text.resize(size_t(conversion.precision));
    pad(out, conversion, text);
}

void appendChar(std::u16string& out, const Conversion& conversion, va_list& args)
{
    const int value = va_arg(args, int);
    const bool narrow =
        conversion.length == Length::Short || (conversion.type == u'C' && conversion.length != Length::Long);
    const char16_t c = narrow ? qx::os::toWide(qx::os::CodePage::Ansi, static_cast<unsigned char>(value))
                              : static_cast<char16_t>(value);
    pad(out, conversion, std::u16string_view(&c, 1));
}

// Builds the narrow conversion for snprintf, with width and precision already resolved.
std::string narrowFormat(const Conversion& conversion, const char* length)
{
    std::string text = "%" + conversion.flags;
    if (conversion.width >= 0) text += std::to_string(conversion.width);
    if (conversion.precision >= 0) text += "." + std::to_string(conversion.precision);
    return text + length + char(conversion.type);
}

template <typename... Value>
void appendPrinted(std::u16string& out, const std::string& format, Value... value)
{
    char text[4096 + 400];
    const int written = std::snprintf(text, sizeof text, format.c_str(), value...);
    if (written <= 0) return;
    for (int i = 0; i < std::min<int>(written, int(sizeof text) - 1); ++i)
        out.push_back(char16_t(static_cast<unsigned char>(text[i])));
}

// Integers: Windows `long` is 32-bit, so %ld reads an int-sized argument.
void appendInteger(std::u16string& out, const Conversion& conversion, va_list& args)
{
    const bool isSigned = conversion.type == u'd' || conversion.type == u'i';
    switch (conversion.length) {
    case Length::LongLong:
        if (isSigned)
            appendPrinted(out, narrowFormat(conversion, "ll"), va_arg(args, long long));
        else
            appendPrinted(out, narrowFormat(conversion, "ll"), va_arg(args, unsigned long long));
        return;
    case Length::Size: appendPrinted(out, narrowFormat(conversion, "z"), va_arg(args, size_t)); return;
    case Length::Short: appendPrinted(out, narrowFormat(conversion, "h"), va_arg(args, int)); return;
    case Length::Char: appendPrinted(out, narrowFormat(conversion, "hh"), va_arg(args, int)); return;
    default:
        if (isSigned)
            appendPrinted(out, narrowFormat(conversion, ""), va_arg(args, int));
        else
            appendPrinted(out, narrowFormat(conversion, ""), va_arg(args, unsigned int));
    }
}

void appendConversion(std::u16string& out, const Conversion& conversion, va_list& args)
{
    switch (conversion.type) {
    case u's':
    case u'S': appendString(out, conversion, args); return;
    case u'c':
    case u'C': appendChar(out, conversion, args); return;
    case u'd':
    case u'i':
    case u'u':
    case u'o':
    case u'x':
    case u'X': appendInteger(out, conversion, args); return;
    case u'f':
    case u'F':
    case u'e':
    case u'E':
    case u'g':
    case u'G':
    case u'a':
    case u'A': appendPrinted(out, narrowFormat(conversion, ""), va_arg(args, double)); return;
    case u'p': appendPrinted(out, narrowFormat(conversion, ""), va_arg(args, void*)); return;
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
        Conversion conversion;
        while (isFlag(*p)) conversion.flags += char(*p++);
        conversion.width = readCount(p, args, -1);
        if (*p == u'.') conversion.precision = readCount(++p, args, 0);
        conversion.length = readLength(p);
        if (!*p) break;
        conversion.type = *p++;
        appendConversion(*this, conversion, args);
    }
    va_end(args);
}

}  // namespace qx4d
