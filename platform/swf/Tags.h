#pragma once
// The tag stream: each tag a 16-bit code-and-length word (code in the upper 10 bits,
// length in the lower 6, 0x3F meaning a 32-bit length follows), then its body. A tag
// whose length runs past the data is cut to what is there and ends the stream.
#include <cstdint>
#include <span>
#include <vector>

namespace qx::swf {

/// The tag codes this reader acts on.
enum TagCode : uint16_t {
    kEnd = 0,
    kShowFrame = 1,
    kDefineShape = 2,
    kPlaceObject = 4,
    kRemoveObject = 5,
    kDefineBits = 6,
    kJpegTables = 8,
    kSetBackgroundColor = 9,
    kDefineBitsLossless = 20,
    kDefineBitsJpeg2 = 21,
    kDefineShape2 = 22,
    kPlaceObject2 = 26,
    kRemoveObject2 = 28,
    kDefineShape3 = 32,
    kDefineBitsJpeg3 = 35,
    kDefineBitsLossless2 = 36,
    kDefineSprite = 39,
    kFrameLabel = 43,
    kDefineMorphShape = 46,
    kPlaceObject3 = 70,
    kDefineShape4 = 83,
    kDefineMorphShape2 = 84,
    kDefineBitsJpeg4 = 90,
};

struct Tag {
    uint16_t code = 0;
    std::span<const uint8_t> body;
};

/// The tags of `stream` up to the End tag or the end of the data. `truncated` is set
/// when a tag claimed more bytes than were left.
std::vector<Tag> splitTags(std::span<const uint8_t> stream, bool* truncated = nullptr);

}  // namespace qx::swf
