#pragma once
// Whole pictures embedded in bitmap tags (JPEG, and from SWF 8 on PNG and GIF), decoded
// by FFmpeg's decoders, which are hardened against damaged and hostile data.
#include "platform/swf/BitmapDecoder.h"

namespace qx::swf {

/// The picture in `data`, chosen by its signature, premultiplied; nothing when it is no
/// picture of those formats, is damaged, or exceeds the bitmap limits.
std::optional<DecodedBitmap> decodePicture(std::span<const uint8_t> data);

}  // namespace qx::swf
