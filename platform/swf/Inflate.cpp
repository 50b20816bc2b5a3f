#include "platform/swf/Inflate.h"

#include <lzma.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <climits>
#include <memory>

namespace qx::swf {

namespace {

// Output grows in steps, so that a lying size in a header costs nothing until the data
// really inflates that far.
constexpr size_t kFirstStep = size_t(1) << 16;

struct ZlibEnd {
    void operator()(z_stream* stream) const { inflateEnd(stream); }
};
struct LzmaEnd {
    void operator()(lzma_stream* stream) const { lzma_end(stream); }
};

size_t nextCapacity(size_t current, size_t limit) { return std::min(limit, std::max(kFirstStep, current * 2)); }

}  // namespace

Inflated inflateZlib(std::span<const uint8_t> input, size_t limit)
{
    Inflated result;
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) return result;
    const std::unique_ptr<z_stream, ZlibEnd> owner(&stream);
    stream.next_in = const_cast<Bytef*>(input.data());
    stream.avail_in = uInt(std::min<size_t>(input.size(), UINT_MAX));
    std::vector<uint8_t>& out = result.bytes;
    while (out.size() < limit) {
        const size_t used = out.size();
        out.resize(nextCapacity(used, limit));
        stream.next_out = out.data() + used;
        stream.avail_out = uInt(std::min<size_t>(out.size() - used, UINT_MAX));
        const int rc = inflate(&stream, Z_NO_FLUSH);
        out.resize(size_t(stream.next_out - out.data()));
        if (rc == Z_STREAM_END) {
            result.complete = true;
            break;
        }
        if (rc != Z_OK) break;  // damaged data, or input that ends before the stream does
    }
    return result;
}

std::optional<std::vector<uint8_t>> inflateExactly(std::span<const uint8_t> input, size_t size)
{
    Inflated inflated = inflateZlib(input, size);
    if (inflated.bytes.size() != size) return std::nullopt;
    return std::move(inflated.bytes);
}

Inflated decodeLzma(std::span<const uint8_t> properties, std::span<const uint8_t> input, uint64_t declaredSize,
                    size_t limit)
{
    Inflated result;
    if (properties.size() != 5) return result;
    // The .lzma ("alone") header is the 5 property bytes and the decoded size: SWF files
    // end their stream without an end marker, so the size tells the decoder where to stop.
    std::array<uint8_t, 13> header{};
    std::copy(properties.begin(), properties.end(), header.begin());
    for (size_t i = 0; i < 8; ++i) header[5 + i] = uint8_t(declaredSize >> (8 * i));
    lzma_stream stream = LZMA_STREAM_INIT;
    // The decoder's own memory is capped too: a dictionary size in the properties could
    // ask for gigabytes.
    if (lzma_alone_decoder(&stream, uint64_t(1) << 28) != LZMA_OK) return result;
    const std::unique_ptr<lzma_stream, LzmaEnd> owner(&stream);
    std::vector<uint8_t>& out = result.bytes;
    const std::array<std::span<const uint8_t>, 2> parts{std::span<const uint8_t>(header), input};
    for (const auto part : parts) {
        stream.next_in = part.data();
        stream.avail_in = part.size();
        while (out.size() < limit && (stream.avail_in > 0 || &part == &parts.back())) {
            const size_t used = out.size();
            out.resize(nextCapacity(used, limit));
            stream.next_out = out.data() + used;
            stream.avail_out = out.size() - used;
            const lzma_ret rc = lzma_code(&stream, &part == &parts.back() ? LZMA_FINISH : LZMA_RUN);
            out.resize(size_t(stream.next_out - out.data()));
            if (rc == LZMA_STREAM_END) {
                result.complete = true;
                return result;
            }
            if (rc != LZMA_OK) return result;
        }
    }
    return result;
}

}  // namespace qx::swf
