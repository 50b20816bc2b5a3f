#include "qx4d/content/EmitterValues.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace qx4d {

namespace {

/// The pieces of `text`, or nothing when there are fewer than `needed`.
std::vector<String> Pieces(const String& text, const char16_t* separators, size_t needed)
{
    std::vector<String> pieces;
    text.Split(separators, pieces);
    if (pieces.size() < needed) pieces.clear();
    return pieces;
}

void ParseRanges(const String& text, std::span<FloatRange> out)
{
    const std::vector<String> pieces = Pieces(text, kRangeSeparators, out.size() * 2);
    for (size_t i = 0; i < out.size() && !pieces.empty(); ++i)
        out[i] = {pieces[i * 2].ToFloat(), pieces[i * 2 + 1].ToFloat()};
}

}  // namespace

void ParseRange(const String& text, FloatRange& out) { ParseRanges(text, std::span(&out, 1)); }

void ParseRange2(const String& text, FloatRange2& out) { ParseRanges(text, out); }

void ParseRange3(const String& text, FloatRange3& out) { ParseRanges(text, out); }

void ParseFloat3(const String& text, const char16_t* separators, Float3& out)
{
    const std::vector<String> pieces = Pieces(text, separators, out.size());
    for (size_t i = 0; i < pieces.size() && i < out.size(); ++i) out[i] = pieces[i].ToFloat();
}

void ParseFloat4(const String& text, std::array<float, 4>& out)
{
    const std::vector<String> pieces = Pieces(text, kRangeSeparators, out.size());
    for (size_t i = 0; i < pieces.size() && i < out.size(); ++i) out[i] = pieces[i].ToFloat();
}

void ParseColorRange(const String& text, ColorRange& out)
{
    const std::vector<String> pieces = Pieces(text, kListSeparators, 6);
    if (pieces.empty()) return;
    const size_t channels = pieces.size() >= 8 ? 4 : 3;
    for (size_t c = 0; c < channels; ++c) {
        const int64_t a = pieces[c * 2].ToInt(), b = pieces[c * 2 + 1].ToInt();
        // Wide arithmetic: the difference of two extreme integers does not fit 32 bits.
        out[c] = {int32_t(std::min(a, b)),
                  int32_t(std::clamp<int64_t>(std::max(a, b) - std::min(a, b) + 1, 1, INT32_MAX))};
    }
    if (channels == 3) out[3] = ChannelRange{};
}

void ParseByteRange(const String& text, ByteRange& out)
{
    const std::vector<String> pieces = Pieces(text, kListSeparators, 2);
    if (pieces.empty()) return;
    const int32_t a = pieces[0].ToInt(), b = pieces[1].ToInt();
    const int32_t low = std::min(a, b);
    out = {uint8_t(low), uint8_t(uint32_t(std::max(a, b)) - uint32_t(low))};
}

}  // namespace qx4d
