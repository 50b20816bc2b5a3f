#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx anim`: a composition with the user's pictures to a video or PNG frames.
/// Returns the process exit code.
int runAnim(std::span<const std::string_view> args);

}  // namespace qx::qxfx
