#pragma once
// Pictures from files for the composition players: anything FFmpeg decodes as a still
// (PNG, JPEG, BMP, TGA, DDS...), as a straight-alpha bitmap of its own size.
#include "platform/draw2d/Bitmap.h"

#include <memory>
#include <string>

namespace qx {

/// The picture at `path` (a POSIX path); null when the file gives none.
std::unique_ptr<draw2d::Bitmap> LoadPictureFile(const std::string& path);

/// The picture at `path` drawn over the whole of a new bitmap of `width` by `height`,
/// its shape not kept; null when the file gives none.
std::unique_ptr<draw2d::Bitmap> LoadPictureStretched(const std::string& path, int width, int height);

}  // namespace qx
