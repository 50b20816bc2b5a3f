#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx transition`: two clips joined by a 3D transition over their overlap, written to
/// a video, to PNG frames, or discarded. Returns the process exit code.
int runTransition(std::span<const std::string_view> args);

}  // namespace qx::qxfx
