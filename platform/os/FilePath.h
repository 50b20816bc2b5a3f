#pragma once
// Windows file names on the Linux file system: backslashes become slashes, the text
// becomes UTF-8, and a name that is not found as written is looked for without regard
// to case, folder by folder, since content made on Windows is not consistent in case.
#include <string>
#include <string_view>

namespace qx::os {

/// The POSIX path of a Windows-style path: separators turned to '/', in UTF-8.
std::string toPosixPath(std::u16string_view path);
/// The path of an existing file or folder for `path`, matching each part without regard
/// to case where the exact name is missing; the mapped path itself when nothing matches.
std::string findPath(std::u16string_view path);
/// `_waccess(path, 0)`: whether the file or folder exists.
bool pathExists(std::u16string_view path);
/// The extension of the last part of `path`, from its last dot ("" when it has none).
std::u16string extensionOf(std::u16string_view path);
/// Lower case of ASCII letters, for comparisons that ignore case.
std::u16string asciiLower(std::u16string_view text);

}  // namespace qx::os
