#include "platform/swf/ByteReader.h"

#include <algorithm>

namespace qx::swf {

bool ByteReader::take(size_t count)
{
    bitCount_ = 0;
    if (failed_ || count > bytes_.size() - position_) {
        failed_ = true;
        return false;
    }
    return true;
}

uint8_t ByteReader::u8()
{
    if (!take(1)) return 0;
    return bytes_[position_++];
}

uint16_t ByteReader::u16()
{
    if (!take(2)) return 0;
    const uint16_t value = uint16_t(bytes_[position_] | bytes_[position_ + 1] << 8);
    position_ += 2;
    return value;
}

uint32_t ByteReader::u32()
{
    if (!take(4)) return 0;
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = value << 8 | bytes_[position_ + size_t(i)];
    position_ += 4;
    return value;
}

std::span<const uint8_t> ByteReader::bytes(size_t count)
{
    if (!take(count)) return {};
    const auto result = bytes_.subspan(position_, count);
    position_ += count;
    return result;
}

std::span<const uint8_t> ByteReader::rest() { return bytes(remaining()); }

std::string ByteReader::string()
{
    bitCount_ = 0;
    if (failed_) return {};
    const auto tail = bytes_.subspan(position_);
    const auto end = std::find(tail.begin(), tail.end(), uint8_t(0));
    if (end == tail.end()) {
        failed_ = true;
        return {};
    }
    std::string text(tail.begin(), end);
    position_ += text.size() + 1;
    return text;
}

uint32_t ByteReader::ub(unsigned bits)
{
    if (bits > 32) {
        failed_ = true;
        return 0;
    }
    uint64_t value = 0;
    while (bits > 0 && !failed_) {
        if (bitCount_ == 0) {
            if (position_ >= bytes_.size()) {
                failed_ = true;
                return 0;
            }
            bitBuffer_ = bytes_[position_++];
            bitCount_ = 8;
        }
        const unsigned now = std::min(bits, bitCount_);
        const unsigned shift = bitCount_ - now;
        value = value << now | ((bitBuffer_ >> shift) & ((1u << now) - 1));
        bitCount_ -= now;
        bits -= now;
    }
    return failed_ ? 0 : uint32_t(value);
}

int32_t ByteReader::sb(unsigned bits)
{
    const uint32_t raw = ub(bits);
    if (bits == 0 || bits >= 32) return int32_t(raw);
    const uint32_t sign = 1u << (bits - 1);
    return int32_t((raw ^ sign) - sign);  // sign extension without shifting into the sign bit
}

Rect ByteReader::rect()
{
    align();
    const unsigned bits = ub(5);
    Rect r;
    r.xMin = sb(bits);
    r.xMax = sb(bits);
    r.yMin = sb(bits);
    r.yMax = sb(bits);
    align();
    return r;
}

Matrix ByteReader::matrix()
{
    align();
    Matrix m;
    if (ub(1)) {
        const unsigned bits = ub(5);
        m.a = fb(bits);
        m.d = fb(bits);
    }
    if (ub(1)) {
        const unsigned bits = ub(5);
        m.b = fb(bits);
        m.c = fb(bits);
    }
    const unsigned bits = ub(5);
    m.tx = sb(bits);
    m.ty = sb(bits);
    align();
    return m;
}

Rgba ByteReader::rgb()
{
    Rgba color;
    color.r = u8();
    color.g = u8();
    color.b = u8();
    return color;
}

Rgba ByteReader::rgba()
{
    Rgba color = rgb();
    color.a = u8();
    return color;
}

ColorTransform ByteReader::colorTransform(bool withAlpha)
{
    align();
    ColorTransform cx;
    const bool hasAdd = ub(1);
    const bool hasMultiply = ub(1);
    const unsigned bits = ub(4);
    const int channels = withAlpha ? 4 : 3;
    if (hasMultiply) {
        for (int i = 0; i < channels; ++i) cx.multiply[i] = sb(bits);
    }
    if (hasAdd) {
        for (int i = 0; i < channels; ++i) cx.add[i] = sb(bits);
    }
    align();
    return cx;
}

}  // namespace qx::swf
