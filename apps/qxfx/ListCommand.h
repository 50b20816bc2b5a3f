#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx list [--json]`: prints the catalogue. Returns the process exit code.
int runList(std::span<const std::string_view> args);

}  // namespace qx::qxfx
