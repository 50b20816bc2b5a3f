#include "platform/com/Bstr.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace qx {

namespace {

// The characters follow a 32-bit byte count; the block is kept 8-byte aligned for them.
constexpr size_t kPrefix = sizeof(uint32_t);

uint32_t* blockOf(BSTR text) { return reinterpret_cast<uint32_t*>(reinterpret_cast<char*>(text) - kPrefix); }

}  // namespace

BSTR SysAllocStringLen(const char16_t* text, UINT length)
{
    if (length > (std::numeric_limits<uint32_t>::max() - kPrefix) / sizeof(char16_t) - 1) return nullptr;
    const size_t bytes = size_t(length) * sizeof(char16_t);
    auto* block = static_cast<uint32_t*>(std::malloc(kPrefix + bytes + sizeof(char16_t)));
    if (!block) return nullptr;
    *block = uint32_t(bytes);
    auto* chars = reinterpret_cast<char16_t*>(block + 1);
    if (text) {
        std::memcpy(chars, text, bytes);
    } else {
        std::memset(chars, 0, bytes);
    }
    chars[length] = u'\0';
    return chars;
}

BSTR SysAllocString(const char16_t* text)
{
    if (!text) return nullptr;
    return SysAllocStringLen(text, UINT(std::char_traits<char16_t>::length(text)));
}

void SysFreeString(BSTR text)
{
    if (text) std::free(blockOf(text));
}

UINT SysStringLen(BSTR text) { return text ? *blockOf(text) / sizeof(char16_t) : 0; }

}  // namespace qx
