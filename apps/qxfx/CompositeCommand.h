#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx composite`: a picture, an SWF animation or a movie over a video, an image or
/// the test pattern, through the compositor. Returns the process exit code.
int runComposite(std::span<const std::string_view> args);

}  // namespace qx::qxfx
