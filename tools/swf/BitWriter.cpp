#include "tools/swf/BitWriter.h"

#include <algorithm>
#include <cmath>

namespace qx::swftool {

using namespace swf;

namespace {

int32_t fixed16(double value) { return int32_t(std::lround(value * 65536.0)); }

}  // namespace

void BitWriter::ub(uint32_t value, unsigned bits)
{
    for (unsigned i = bits; i-- > 0;) {
        if (bitsUsed_ == 0) data_.push_back(0);
        if ((value >> i) & 1) data_.back() |= uint8_t(0x80 >> bitsUsed_);
        bitsUsed_ = (bitsUsed_ + 1) % 8;
    }
}

void BitWriter::sb(int32_t value, unsigned bits) { ub(uint32_t(value) & (bits >= 32 ? ~0u : (1u << bits) - 1), bits); }

void BitWriter::align() { bitsUsed_ = 0; }

void BitWriter::u8(uint8_t value)
{
    align();
    data_.push_back(value);
}

void BitWriter::u16(uint16_t value)
{
    u8(uint8_t(value));
    u8(uint8_t(value >> 8));
}

void BitWriter::u32(uint32_t value)
{
    u16(uint16_t(value));
    u16(uint16_t(value >> 16));
}

void BitWriter::bytes(std::span<const uint8_t> data)
{
    align();
    data_.insert(data_.end(), data.begin(), data.end());
}

void BitWriter::rect(const Rect& r)
{
    align();
    const unsigned bits = std::max({signedBits(r.xMin), signedBits(r.xMax), signedBits(r.yMin), signedBits(r.yMax)});
    ub(bits, 5);
    for (const int32_t v : {r.xMin, r.xMax, r.yMin, r.yMax}) sb(v, bits);
    align();
}

void BitWriter::matrix(const Matrix& m)
{
    align();
    const bool scales = m.a != 1.0 || m.d != 1.0;
    ub(scales, 1);
    if (scales) {
        const unsigned bits = std::max(signedBits(fixed16(m.a)), signedBits(fixed16(m.d)));
        ub(bits, 5);
        sb(fixed16(m.a), bits);
        sb(fixed16(m.d), bits);
    }
    const bool rotates = m.b != 0.0 || m.c != 0.0;
    ub(rotates, 1);
    if (rotates) {
        const unsigned bits = std::max(signedBits(fixed16(m.b)), signedBits(fixed16(m.c)));
        ub(bits, 5);
        sb(fixed16(m.b), bits);
        sb(fixed16(m.c), bits);
    }
    const int32_t tx = int32_t(std::lround(m.tx));
    const int32_t ty = int32_t(std::lround(m.ty));
    const unsigned bits = tx == 0 && ty == 0 ? 0 : std::max(signedBits(tx), signedBits(ty));
    ub(bits, 5);
    sb(tx, bits);
    sb(ty, bits);
    align();
}

void BitWriter::colorTransform(const ColorTransform& cx, bool withAlpha)
{
    align();
    const int channels = withAlpha ? 4 : 3;
    unsigned bits = 1;
    for (int i = 0; i < channels; ++i) bits = std::max({bits, signedBits(cx.multiply[i]), signedBits(cx.add[i])});
    ub(1, 1);  // add terms
    ub(1, 1);  // multiply terms
    ub(bits, 4);
    for (int i = 0; i < channels; ++i) sb(cx.multiply[i], bits);
    for (int i = 0; i < channels; ++i) sb(cx.add[i], bits);
    align();
}

void BitWriter::color(Rgba c, bool withAlpha)
{
    u8(c.r);
    u8(c.g);
    u8(c.b);
    if (withAlpha) u8(c.a);
}

std::vector<uint8_t> BitWriter::take()
{
    align();
    return std::move(data_);
}

unsigned signedBits(int64_t value)
{
    unsigned bits = 1;
    while (value < -(int64_t(1) << (bits - 1)) || value >= (int64_t(1) << (bits - 1))) ++bits;
    return bits;
}

unsigned unsignedBits(uint64_t value)
{
    unsigned bits = 0;
    while (value >> bits) ++bits;
    return bits;
}

// --- Styles ---

namespace {

void writeGradient(BitWriter& out, const Gradient& gradient, int version, bool focal)
{
    out.ub(uint32_t(gradient.spread), 2);
    out.ub(0, 2);
    out.ub(uint32_t(gradient.stops.size()), 4);
    for (const GradientStop& stop : gradient.stops) {
        out.u8(stop.ratio);
        out.color(stop.color, version >= 3);
    }
    if (focal) out.u16(uint16_t(int16_t(std::lround(gradient.focalPoint * 256.0))));
}

void writeFillStyle(BitWriter& out, const FillStyle& fill, int version)
{
    switch (fill.kind) {
    case FillKind::Solid:
        out.u8(0x00);
        out.color(fill.color, version >= 3);
        return;
    case FillKind::Linear:
    case FillKind::Radial:
    case FillKind::Focal:
        out.u8(fill.kind == FillKind::Linear ? 0x10 : fill.kind == FillKind::Radial ? 0x12 : 0x13);
        out.matrix(fill.matrix);
        writeGradient(out, fill.gradient, version, fill.kind == FillKind::Focal);
        return;
    case FillKind::Bitmap:
        out.u8(uint8_t(0x40 | (fill.repeat ? 0 : 1) | (fill.smooth ? 0 : 2)));
        out.u16(fill.bitmapId);
        out.matrix(fill.matrix);
        return;
    }
}

}  // namespace

void writeCount(BitWriter& out, size_t count, int version)
{
    if (count >= 0xFF && version >= 2) {
        out.u8(0xFF);
        out.u16(uint16_t(count));
    } else {
        out.u8(uint8_t(count));
    }
}

void writeLineStyle2Flags(BitWriter& out, const LineStyle& line)
{
    out.ub(uint32_t(line.cap), 2);
    out.ub(uint32_t(line.join), 2);
    out.ub(line.hasFill, 1);
    out.ub(0, 3);
    out.ub(0, 5);
    out.ub(0, 1);
    out.ub(uint32_t(line.cap), 2);
    if (line.join == JoinStyle::Miter) out.u16(uint16_t(int16_t(std::lround(line.miterLimit * 256.0))));
}

void writeFillStyles(BitWriter& out, const std::vector<FillStyle>& fills, int version)
{
    writeCount(out, fills.size(), version);
    for (const FillStyle& fill : fills) writeFillStyle(out, fill, version);
}

void writeLineStyles(BitWriter& out, const std::vector<LineStyle>& lines, int version)
{
    writeCount(out, lines.size(), version);
    for (const LineStyle& line : lines) {
        out.u16(line.width);
        if (version >= 4) {
            writeLineStyle2Flags(out, line);
            if (line.hasFill)
                writeFillStyle(out, line.fill, version);
            else
                out.color(line.color, true);
        } else {
            out.color(line.color, version >= 3);
        }
    }
}

}  // namespace qx::swftool
