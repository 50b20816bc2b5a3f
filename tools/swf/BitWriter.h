#pragma once
// The bit-level writing of SWF records, and the style arrays that shapes and morph
// shapes share, for the project's SWF writer.
#include "platform/swf/Shape.h"

#include <cstdint>
#include <span>
#include <vector>

namespace qx::swftool {

using swf::ColorTransform;
using swf::FillStyle;
using swf::LineStyle;
using swf::Matrix;
using swf::Rect;
using swf::Rgba;

/// Bits written from the high bit down, and the compound records of the format.
class BitWriter {
public:
    void ub(uint32_t value, unsigned bits);
    void sb(int32_t value, unsigned bits);
    void align();
    void u8(uint8_t value);
    void u16(uint16_t value);
    void u32(uint32_t value);
    void bytes(std::span<const uint8_t> data);
    void rect(const Rect& r);
    void matrix(const Matrix& m);
    void colorTransform(const ColorTransform& cx, bool withAlpha);
    void color(Rgba c, bool withAlpha);

    std::vector<uint8_t> take();
    size_t size() const { return data_.size(); }

private:
    std::vector<uint8_t> data_;
    unsigned bitsUsed_ = 0;  // bits of the last byte already written
};

/// Bits needed for `value` as a signed field, and for `value` as an unsigned one.
unsigned signedBits(int64_t value);
unsigned unsignedBits(uint64_t value);

/// Writes the style arrays of a shape of `version`.
void writeFillStyles(BitWriter& out, const std::vector<FillStyle>& fills, int version);
void writeLineStyles(BitWriter& out, const std::vector<LineStyle>& lines, int version);

/// A style count: one byte, or 0xFF and 16 bits from shape version 2 on.
void writeCount(BitWriter& out, size_t count, int version);
/// The cap and join fields of a version 4 line style, up to its colour or fill.
void writeLineStyle2Flags(BitWriter& out, const LineStyle& line);

}  // namespace qx::swftool
