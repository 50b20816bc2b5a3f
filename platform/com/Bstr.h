#pragma once
// BSTR: a length-prefixed, null-terminated UTF-16 string owned by whoever receives it.
// The 32-bit prefix before the characters holds the length in bytes, as on Windows.
#include "platform/com/HResult.h"

#include <string_view>
#include <utility>

namespace qx {

using BSTR = char16_t*;

/// A new BSTR copy of a null-terminated text; null for a null text or when out of memory.
BSTR SysAllocString(const char16_t* text);
/// A new BSTR of `length` units copied from `text` (or zero-filled when `text` is null).
BSTR SysAllocStringLen(const char16_t* text, UINT length);
void SysFreeString(BSTR text);
/// Length in characters; 0 for null.
UINT SysStringLen(BSTR text);

/// Owner of one BSTR, for code of this library that makes or receives them.
class Bstr {
public:
    Bstr() = default;
    explicit Bstr(std::u16string_view text) : text_(SysAllocStringLen(text.data(), UINT(text.size()))) {}
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    Bstr(Bstr&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
    Bstr& operator=(Bstr&& other) noexcept
    {
        std::swap(text_, other.text_);
        return *this;
    }
    ~Bstr() { SysFreeString(text_); }

    BSTR get() const { return text_; }
    /// Where a callee writes a new BSTR; the previous one is freed first.
    BSTR* out()
    {
        SysFreeString(std::exchange(text_, nullptr));
        return &text_;
    }
    std::u16string_view view() const
    {
        return text_ ? std::u16string_view(text_, SysStringLen(text_)) : std::u16string_view();
    }

private:
    BSTR text_ = nullptr;
};

}  // namespace qx
