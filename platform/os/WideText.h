#pragma once
// UTF-16 text, the system's wide text, to and from UTF-8 for the Linux side (paths,
// terminals). Ill-formed sequences become U+FFFD rather than being dropped.
#include <string>
#include <string_view>

namespace qx::os {

std::string toUtf8(std::u16string_view text);
std::u16string fromUtf8(std::string_view text);

}  // namespace qx::os
