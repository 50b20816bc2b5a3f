#include "qx4d/core/String.h"

#include "platform/os/CRuntime.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qx4d {

namespace {

// The smallest magnitude that rounds to infinity when a double is stored to a float:
// half a unit in the last place above the largest float.
constexpr double kFloatOverflow = double(std::numeric_limits<float>::max()) + 0x1p103;

// Stores a double to a float as the hardware does, without the undefined conversion of
// values beyond the float range.
float narrowToFloat(double value)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    if (std::fabs(value) >= kFloatOverflow) return value > 0 ? infinity : -infinity;
    return static_cast<float>(value);
}

char16_t foldAscii(char16_t c) { return (c >= u'A' && c <= u'Z') ? char16_t(c + (u'a' - u'A')) : c; }

}  // namespace

float String::ToFloat() const { return narrowToFloat(qx::os::_wtof(*this)); }

int32_t String::ToInt() const { return qx::os::_wtoi(*this); }

uint32_t String::ToUInt() const { return qx::os::wcstoul(*this); }

bool String::ToBool() const { return *this == u"1" || EqualsNoCase(u"true") == 0; }

int String::EqualsNoCase(std::u16string_view text) const
{
    const size_t common = std::min(size(), text.size());
    for (size_t i = 0; i < common; ++i) {
        const int difference = int(foldAscii((*this)[i])) - int(foldAscii(text[i]));
        if (difference != 0) return difference;
    }
    // The shorter text compares as if ended by a zero unit.
    if (size() == text.size()) return 0;
    return size() < text.size() ? -int(foldAscii(text[common])) : int(foldAscii((*this)[common]));
}

bool String::StartsWith(std::u16string_view text) const { return find(text) == 0; }

int String::ReplaceChar(char16_t from, char16_t to)
{
    if (from == to) return 0;
    int count = 0;
    for (char16_t& c : *this) {
        if (c == from) {
            c = to;
            ++count;
        }
    }
    return count;
}

String String::Left(size_t count) const { return String(std::u16string_view(*this).substr(0, count)); }

String String::Mid(size_t position) const { return Mid(position, npos); }

String String::Mid(size_t position, size_t count) const
{
    if (position > size()) return String();
    return String(std::u16string_view(*this).substr(position, count));
}

void String::Split(const char16_t* delimiters, std::vector<String>& out) const
{
    if (empty()) return;
    const std::u16string_view separators = delimiters ? std::u16string_view(delimiters) : std::u16string_view();
    if (separators.empty()) {
        out.push_back(*this);
        return;
    }
    const std::u16string_view text(*this);
    size_t position = text.find_first_not_of(separators);
    while (position != npos) {
        const size_t pieceEnd = std::min(text.find_first_of(separators, position), text.size());
        out.emplace_back(text.substr(position, pieceEnd - position));
        position = text.find_first_not_of(separators, pieceEnd);
    }
}

}  // namespace qx4d
