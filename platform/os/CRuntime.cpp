#include "platform/os/CRuntime.h"

#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale.h>
#include <string>

namespace qx::os {

namespace {

bool isBlank(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }
bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// Skips leading blanks and reads a sign; returns the position of the first digit.
size_t skipBlanksAndSign(std::u16string_view text, bool& negative)
{
    size_t pos = 0;
    while (pos < text.size() && isBlank(text[pos])) ++pos;
    negative = false;
    if (pos < text.size() && (text[pos] == u'+' || text[pos] == u'-')) negative = text[pos++] == u'-';
    return pos;
}

// Reads decimal digits, saturating at `limit`; reports whether any digit was read.
uint64_t readDigits(std::u16string_view text, size_t& pos, uint64_t limit, bool& any)
{
    uint64_t value = 0;
    any = false;
    for (; pos < text.size() && isDigit(text[pos]); ++pos) {
        any = true;
        value = std::min(limit, value * 10 + uint64_t(text[pos] - u'0'));
    }
    return value;
}

std::atomic<uint32_t> randomSeed{1};

}  // namespace

int32_t _wtol(std::u16string_view text)
{
    bool negative = false;
    bool any = false;
    size_t pos = skipBlanksAndSign(text, negative);
    const uint64_t limit = uint64_t(std::numeric_limits<int32_t>::max()) + (negative ? 1 : 0);
    const uint64_t magnitude = readDigits(text, pos, limit, any);
    return negative ? int32_t(-int64_t(magnitude)) : int32_t(magnitude);
}

int32_t _wtoi(std::u16string_view text) { return _wtol(text); }

double _wtof(std::u16string_view text)
{
    bool negative = false;
    size_t pos = skipBlanksAndSign(text, negative);
    std::string number;
    const auto takeDigits = [&]() {
        const size_t start = pos;
        for (; pos < text.size() && isDigit(text[pos]); ++pos) number += char(text[pos]);
        return pos > start;
    };
    bool mantissa = takeDigits();
    if (pos < text.size() && text[pos] == u'.') {
        number += '.';
        ++pos;
        mantissa = takeDigits() || mantissa;
    }
    if (!mantissa) return 0.0;
    if (pos < text.size() && (text[pos] == u'e' || text[pos] == u'E')) {
        // The exponent counts only when digits follow its optional sign.
        size_t look = pos + 1;
        std::string exponent = "e";
        if (look < text.size() && (text[look] == u'+' || text[look] == u'-')) exponent += char(text[look++]);
        if (look < text.size() && isDigit(text[look])) {
            number += exponent;
            pos = look;
            takeDigits();
        }
    }
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    const double value = strtod_l(number.c_str(), nullptr, cLocale);
    return negative ? -value : value;
}

uint32_t wcstoul(std::u16string_view text, size_t* consumed)
{
    bool negative = false;
    bool any = false;
    size_t pos = skipBlanksAndSign(text, negative);
    const uint64_t overflow = uint64_t(std::numeric_limits<uint32_t>::max()) + 1;
    const uint64_t magnitude = readDigits(text, pos, overflow, any);
    if (consumed) *consumed = any ? pos : 0;
    if (magnitude >= overflow) return std::numeric_limits<uint32_t>::max();
    return negative ? uint32_t(0u - uint32_t(magnitude)) : uint32_t(magnitude);
}

int rand()
{
    uint32_t seed = randomSeed.load(std::memory_order_relaxed);
    uint32_t next = 0;
    do {
        next = seed * 214013u + 2531011u;
    } while (!randomSeed.compare_exchange_weak(seed, next, std::memory_order_relaxed));
    return int((next >> 16) & 0x7FFF);
}

void srand(uint32_t seed) { randomSeed.store(seed, std::memory_order_relaxed); }

}  // namespace qx::os
