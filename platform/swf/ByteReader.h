#pragma once
// A cursor over SWF bytes: little-endian integers, bit fields read from the high bit
// down, and the compound records (rectangles, matrices, colour transforms). Every read
// is bounded by the buffer: a read past the end gives zeros and marks the reader
// failed, so parsers check once after a record instead of before every field.
#include "platform/swf/Types.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace qx::swf {

class ByteReader {
public:
    explicit ByteReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    bool failed() const { return failed_; }
    /// Bytes left after the cursor (a partly read byte counts as read).
    size_t remaining() const { return failed_ ? 0 : bytes_.size() - position_; }
    size_t position() const { return position_; }

    uint8_t u8();
    uint16_t u16();
    uint32_t u32();
    int16_t s16() { return int16_t(u16()); }
    /// An 8.8 fixed-point number.
    double fixed8() { return s16() / 256.0; }
    /// The next `count` bytes, or an empty span (and failure) when fewer are left.
    std::span<const uint8_t> bytes(size_t count);
    /// All bytes left.
    std::span<const uint8_t> rest();
    void skip(size_t count) { bytes(count); }
    /// A null-terminated string; unterminated text fails.
    std::string string();

    /// Unsigned and signed bit fields of up to 32 bits, and 16.16 fixed-point ones.
    uint32_t ub(unsigned bits);
    int32_t sb(unsigned bits);
    double fb(unsigned bits) { return sb(bits) / 65536.0; }
    /// Moves to the next whole byte after bit fields.
    void align() { bitCount_ = 0; }

    Rect rect();
    Matrix matrix();
    Rgba rgb();
    Rgba rgba();
    /// CXFORM, or CXFORMWITHALPHA when `withAlpha`.
    ColorTransform colorTransform(bool withAlpha);

private:
    bool take(size_t count);

    std::span<const uint8_t> bytes_;
    size_t position_ = 0;
    uint8_t bitBuffer_ = 0;
    unsigned bitCount_ = 0;  // unread bits left in bitBuffer_
    bool failed_ = false;
};

}  // namespace qx::swf
