#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx swf`: the frames of an SWF animation to a video, at the animation's own rate.
/// Returns the process exit code.
int runSwf(std::span<const std::string_view> args);

}  // namespace qx::qxfx
