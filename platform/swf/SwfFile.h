#pragma once
// The outer layer of an SWF file: the signature ("FWS" plain, "CWS" zlib, "ZWS" LZMA),
// the version, the declared length, and the header fields that follow in the (possibly
// compressed) body: stage rectangle, frame rate and frame count. What follows is the
// tag stream.
#include "platform/swf/Types.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qx::swf {

/// The largest uncompressed movie accepted: a compressed file claiming or inflating to
/// more is cut here.
inline constexpr size_t kMaxMovieBytes = size_t(256) << 20;

struct MovieHeader {
    uint8_t version = 0;
    Rect stage;                   // twips
    double frameRate = 0.0;       // frames per second, as the file declares it
    uint16_t declaredFrames = 0;  // not to be trusted: writers put 0 there
};

struct SwfBody {
    MovieHeader header;
    std::vector<uint8_t> bytes;  // the uncompressed file after its 8-byte signature and length
    size_t tagsOffset = 0;       // where the tag stream starts in `bytes`
    bool complete = true;        // false when the file or its compressed stream ends early
};

/// Reads the signature and header of `file`; nothing when it is not an SWF file or its
/// header cannot be read. A body that is shorter than declared is kept as far as it goes.
std::optional<SwfBody> readSwf(std::span<const uint8_t> file);

/// Only the header, as the closed header library answered it (LoadHeader, GetFPS).
std::optional<MovieHeader> readHeader(std::span<const uint8_t> file);

}  // namespace qx::swf
