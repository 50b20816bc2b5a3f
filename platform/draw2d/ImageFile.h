#pragma once
// Pictures from files (PNG, JPEG, BMP, GIF, TGA), as the drawing library opens them into
// bitmaps: 32-bit straight alpha, whatever the file's own format.
#include "platform/draw2d/Bitmap.h"

#include <memory>
#include <string>

namespace qx::draw2d {

/// The largest picture opened: 16384 samples a side, 2^26 in all.
inline constexpr int kMaxImageSide = 16384;
inline constexpr int64_t kMaxImageSamples = int64_t(1) << 26;

/// The picture in the file at `path` (UTF-8); null when the file cannot be read, is no
/// picture of a known format, or is larger than the limits.
std::unique_ptr<Bitmap> loadImageFile(const std::string& path);

}  // namespace qx::draw2d
