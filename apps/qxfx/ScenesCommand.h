#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx scenes`: a video through the scene detector; prints the cuts, as a table or as
/// JSON. Returns the process exit code.
int runScenes(std::span<const std::string_view> args);

}  // namespace qx::qxfx
