#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx import MODEL -o OBJECT [--images DIR]`: a Wavefront OBJ or glTF 2.0 model into
/// the engine's object format, with its textures. Returns the process exit code.
int runImport(std::span<const std::string_view> args);

}  // namespace qx::qxfx
