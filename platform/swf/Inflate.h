#pragma once
// Decompression of the zlib and LZMA streams of SWF files, with a cap on the output so
// that a small file cannot make an unbounded allocation (a "zlib bomb").
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qx::swf {

/// Inflates the zlib stream `input` to at most `limit` bytes. A stream that ends early
/// or is damaged gives what was inflated before the damage (`complete` false); nothing at
/// all gives an empty vector. Output beyond `limit` is dropped.
struct Inflated {
    std::vector<uint8_t> bytes;
    bool complete = false;
};
Inflated inflateZlib(std::span<const uint8_t> input, size_t limit);

/// Inflates exactly `size` bytes from a zlib stream, as bitmap data must be; nothing when
/// the stream holds fewer.
std::optional<std::vector<uint8_t>> inflateExactly(std::span<const uint8_t> input, size_t size);

/// Decodes a raw LZMA stream whose 5 property bytes are `properties` (the layout of SWF's
/// "ZWS" files) and whose decoded size is declared as `declaredSize`, to at most `limit`
/// bytes, with the same partial-result rule.
Inflated decodeLzma(std::span<const uint8_t> properties, std::span<const uint8_t> input, uint64_t declaredSize,
                    size_t limit);

}  // namespace qx::swf
