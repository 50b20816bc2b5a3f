#pragma once
// The process-wide data path that the host sets once: a buffer that the scene context
// reads when it starts, and a string that the vector animation prefixes to its source. It
// lives with the scene bridge, below the host and the video objects that read it.
#include <string>
#include <string_view>

namespace qx {

inline constexpr size_t kMaxDataPath = 260;  // characters, the terminator included

/// Fills the buffer that the scene engine reads when it starts.
void SetDataPathBuffer(std::u16string_view path);
std::u16string DataPathBuffer();
/// Sets the string that animations prefix to their source, with a backslash between.
void SetDataPath(std::u16string_view path);
std::u16string DataPath();

}  // namespace qx
