#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx edit`: opens the properties dialog of an effect over a picture and prints the
/// parameter text it gives back. Returns the process exit code.
int runEdit(std::span<const std::string_view> args);

}  // namespace qx::qxfx
