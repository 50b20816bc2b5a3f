#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx crop`: a video through the crop transform, centred in frames of a fixed size
/// with the anti-flicker blur, written to a video, to PNG frames, or discarded. Returns
/// the process exit code.
int runCrop(std::span<const std::string_view> args);

}  // namespace qx::qxfx
