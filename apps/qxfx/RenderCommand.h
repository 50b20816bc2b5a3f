#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx render`: one effect over a video, an image or the test pattern, written to a
/// video, to PNG frames, or discarded. Returns the process exit code.
int runRender(std::span<const std::string_view> args);

}  // namespace qx::qxfx
