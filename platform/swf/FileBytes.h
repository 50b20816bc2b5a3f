#pragma once
// The bytes of a file, for readers that take a whole file at once.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qx::swf {

/// The contents of the regular file at `path`; nothing for a folder, a file that cannot
/// be read, or one larger than `limit` bytes.
std::optional<std::vector<uint8_t>> readWholeFile(const std::string& path, uintmax_t limit = uintmax_t(1) << 30);

}  // namespace qx::swf
