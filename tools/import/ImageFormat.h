#pragma once
// The image formats the engine loads textures from (PNG, JPEG, TGA, BMP, DDS), told by
// their first bytes; TGA, which has no signature, by its name.
#include <cstdint>
#include <span>
#include <string>

namespace qx4d::tools {

/// "png", "jpg", "bmp", "dds" or "tga"; empty for data the engine can't read.
/// `declared` is the extension or type the model gives, for formats without a signature.
std::string EngineImageFormat(std::span<const uint8_t> bytes, const std::string& declared);

/// The extension of a file name or the subtype of a MIME type, in lower case: "png" for
/// "Wood.PNG" and for "image/png".
std::string DeclaredFormat(const std::string& nameOrMime);

}  // namespace qx4d::tools
