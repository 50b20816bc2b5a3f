#include "platform/swf/Tags.h"

#include "platform/swf/ByteReader.h"

namespace qx::swf {

std::vector<Tag> splitTags(std::span<const uint8_t> stream, bool* truncated)
{
    std::vector<Tag> tags;
    ByteReader reader(stream);
    bool cut = false;
    while (reader.remaining() >= 2) {
        const uint16_t word = reader.u16();
        const uint16_t code = word >> 6;
        size_t length = word & 0x3F;
        if (length == 0x3F) length = reader.u32();
        if (reader.failed()) {
            cut = true;
            break;
        }
        if (length > reader.remaining()) {
            cut = true;
            length = reader.remaining();
        }
        if (code == kEnd) break;
        tags.push_back({code, reader.bytes(length)});
        if (cut) break;
    }
    if (truncated) *truncated = cut;
    return tags;
}

}  // namespace qx::swf
