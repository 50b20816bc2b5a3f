#pragma once
// The two single-byte code pages of the system: the "system ANSI code page" is
// Windows-1252 and the "OEM code page" (zip entry names) CP850, one code unit per byte.
#include <string>
#include <string_view>

namespace qx::os {

enum class CodePage { Ansi, Oem };

char16_t toWide(CodePage page, unsigned char byte);
std::u16string toWide(CodePage page, std::string_view bytes);
/// Characters the code page lacks become '?', the default character of the conversion.
std::string fromWide(CodePage page, std::u16string_view text);

}  // namespace qx::os
