#pragma once
// The engine's wide string: UTF-16 code units with the whole behaviour of a standard
// string, plus the conversions and slicing every description reader uses. Tokens,
// attribute values, paths and names are all `String`s.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qx4d {

class String : public std::u16string {
public:
    using std::u16string::u16string;
    String() = default;
    String(const std::u16string& text) : std::u16string(text) {}
    String(std::u16string&& text) : std::u16string(std::move(text)) {}
    explicit String(std::u16string_view text) : std::u16string(text) {}

    /// The C runtime's `_wtof`, narrowed to float: no check, a numeric prefix counts and
    /// text that is no number gives 0. Values beyond the float range become infinite.
    float ToFloat() const;
    /// `_wtoi`: 32-bit signed, the same prefix rules.
    int32_t ToInt() const;
    /// `wcstoul` in base 10.
    uint32_t ToUInt() const;
    /// True for exactly "1" or for "true" in any case.
    bool ToBool() const;

    /// Case-free comparison as `_wcsicmp` does it in the C locale (ASCII letters fold to
    /// lower case): zero means equal, otherwise the sign of the first difference.
    int EqualsNoCase(std::u16string_view text) const;
    /// True exactly when the first occurrence of `text` is at position 0.
    bool StartsWith(std::u16string_view text) const;
    /// Replaces every `from` by `to` and returns how many were replaced.
    int ReplaceChar(char16_t from, char16_t to);

    /// Replaces the contents by the printf-style formatted text, with the Windows C
    /// runtime's wide rules: `%s` takes a `const char16_t*`, `%S` and `%hs` a narrow
    /// `const char*`, `%c` a `char16_t`, `%ld` a 32-bit value, `%lld` and `%I64d` 64-bit.
    void Format(const char16_t* format, ...);

    /// The first `count` units, or the whole text when `count` is not below the length.
    String Left(size_t count) const;
    /// From `position` to the end; empty when `position` is beyond the end.
    String Mid(size_t position) const;
    /// At most `count` units from `position`; empty when `position` is beyond the end.
    String Mid(size_t position, size_t count) const;

    /// Appends to `out` every maximal run of characters that holds none of `delimiters`;
    /// empty pieces are dropped. A null or empty `delimiters` appends the whole text as
    /// one piece, and an empty text appends nothing.
    void Split(const char16_t* delimiters, std::vector<String>& out) const;
};

}  // namespace qx4d
