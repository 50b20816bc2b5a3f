#include "platform/swf/SwfFile.h"

#include "platform/swf/ByteReader.h"
#include "platform/swf/Inflate.h"

#include <algorithm>
#include <cstring>

namespace qx::swf {

namespace {

constexpr size_t kSignatureBytes = 8;   // signature, version, file length
constexpr size_t kLzmaPrefixBytes = 9;  // after those: the compressed length and 5 property bytes

// The body size the file declares, capped: the declared length counts the 8 bytes of
// signature and length.
size_t declaredBody(uint32_t fileLength)
{
    return std::min<size_t>(fileLength > kSignatureBytes ? fileLength - kSignatureBytes : 0, kMaxMovieBytes);
}

std::optional<SwfBody> decompress(std::span<const uint8_t> file)
{
    ByteReader reader(file);
    const auto signature = reader.bytes(3);
    reader.u8();  // version
    const uint32_t fileLength = reader.u32();
    if (reader.failed()) return std::nullopt;
    const size_t body = declaredBody(fileLength);
    SwfBody result;
    if (std::memcmp(signature.data(), "FWS", 3) == 0) {
        const auto rest = file.subspan(kSignatureBytes);
        const size_t kept = std::min(rest.size(), kMaxMovieBytes);
        result.bytes.assign(rest.begin(), rest.begin() + ptrdiff_t(kept));
        result.complete = rest.size() >= body;
        return result;
    }
    Inflated inflated;
    if (std::memcmp(signature.data(), "CWS", 3) == 0) {
        inflated = inflateZlib(file.subspan(kSignatureBytes), body);
    } else if (std::memcmp(signature.data(), "ZWS", 3) == 0) {
        // After the length: the compressed length (not needed), then the LZMA properties.
        if (file.size() < kSignatureBytes + kLzmaPrefixBytes) return std::nullopt;
        const auto properties = file.subspan(kSignatureBytes + 4, 5);
        inflated = decodeLzma(properties, file.subspan(kSignatureBytes + kLzmaPrefixBytes), body, body);
    } else {
        return std::nullopt;
    }
    result.complete = inflated.bytes.size() >= body;
    result.bytes = std::move(inflated.bytes);
    return result;
}

}  // namespace

std::optional<SwfBody> readSwf(std::span<const uint8_t> file)
{
    auto body = decompress(file);
    if (!body) return std::nullopt;
    body->header.version = file[3];
    ByteReader reader(body->bytes);
    body->header.stage = reader.rect();
    const uint16_t rate = reader.u16();
    body->header.frameRate = (rate >> 8) + (rate & 0xFF) / 256.0;
    body->header.declaredFrames = reader.u16();
    if (reader.failed()) return std::nullopt;
    body->tagsOffset = reader.position();
    return body;
}

std::optional<MovieHeader> readHeader(std::span<const uint8_t> file)
{
    auto body = readSwf(file);
    if (!body) return std::nullopt;
    return body->header;
}

}  // namespace qx::swf
