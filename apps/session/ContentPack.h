#pragma once
// Where qxfx finds the default content pack: the one the build assembled, else the one
// installed beside the program.
#include <string>

namespace qx::qxfx {

/// The first pack folder that exists, or the empty text when there is none.
std::string defaultDataPath();

}  // namespace qx::qxfx
