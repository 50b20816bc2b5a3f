#pragma once
// The FFmpeg owners of the video layer, under the name the command line's code uses.
#include "platform/video/AvHandles.h"

namespace qx::qxfx {
namespace av = video::av;
}  // namespace qx::qxfx
