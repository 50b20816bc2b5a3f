#pragma once
// GUIDs with the braced text form "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", which the
// registry and hosts use. Parsing is constexpr so identifiers can be written as text.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qx {

struct GUID {
    uint32_t Data1 = 0;
    uint16_t Data2 = 0;
    uint16_t Data3 = 0;
    std::array<uint8_t, 8> Data4{};

    friend constexpr bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using CLSID = GUID;

namespace detail {

constexpr int hexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

constexpr bool readHex(std::string_view text, size_t& pos, int digits, uint32_t& out)
{
    out = 0;
    for (int i = 0; i < digits; ++i, ++pos) {
        if (pos >= text.size()) return false;
        const int v = hexValue(text[pos]);
        if (v < 0) return false;
        out = (out << 4) | uint32_t(v);
    }
    return true;
}

}  // namespace detail

/// Parses the braced form; the braces are required, hex digits of either case.
constexpr std::optional<GUID> parseGuid(std::string_view text)
{
    if (text.size() != 38 || text.front() != '{' || text.back() != '}') return std::nullopt;
    GUID g;
    size_t pos = 1;
    uint32_t v = 0;
    const auto dash = [&]() { return text[pos++] == '-'; };
    if (!detail::readHex(text, pos, 8, v) || !dash()) return std::nullopt;
    g.Data1 = v;
    if (!detail::readHex(text, pos, 4, v) || !dash()) return std::nullopt;
    g.Data2 = uint16_t(v);
    if (!detail::readHex(text, pos, 4, v) || !dash()) return std::nullopt;
    g.Data3 = uint16_t(v);
    for (int i = 0; i < 8; ++i) {
        if (i == 2 && !dash()) return std::nullopt;
        if (!detail::readHex(text, pos, 2, v)) return std::nullopt;
        g.Data4[size_t(i)] = uint8_t(v);
    }
    return g;
}

/// A GUID written as a literal; a malformed literal fails to compile in a constant context.
consteval GUID guid(std::string_view text)
{
    const auto parsed = parseGuid(text);
    if (!parsed) throw "malformed GUID literal";
    return *parsed;
}

/// The braced upper-case form, as the registry writes it.
std::string formatGuid(const GUID& g);

}  // namespace qx
