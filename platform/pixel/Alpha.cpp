#include "platform/pixel/Alpha.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace qx::pixel {

namespace {

// x * a / 255, rounded, exact for 8-bit x and a.
constexpr uint32_t mulDiv255(uint32_t x, uint32_t a)
{
    const uint32_t t = x * a + 128;
    return (t + (t >> 8)) >> 8;
}

uint32_t premultiplied(uint32_t s)
{
    const uint32_t a = alphaOf(s);
    if (a == 255) return s;
    if (a == 0) return 0;
    return (a << 24) | (mulDiv255((s >> 16) & 0xFF, a) << 16) | (mulDiv255((s >> 8) & 0xFF, a) << 8) |
           mulDiv255(s & 0xFF, a);
}

// Reciprocals of alpha in 16.16 fixed point for the division back to straight alpha.
constexpr std::array<uint32_t, 256> makeReciprocals()
{
    std::array<uint32_t, 256> table{};
    for (uint32_t a = 1; a < 256; ++a) table[a] = (255u * 65536u + a / 2) / a;
    return table;
}
constexpr auto kReciprocal = makeReciprocals();

uint32_t straight(uint32_t s)
{
    const uint32_t a = alphaOf(s);
    if (a == 255) return s;
    if (a == 0) return 0;
    const uint32_t r = kReciprocal[a];
    const auto channel = [r](uint32_t c) { return std::min<uint32_t>(255, (c * r + 32768) >> 16); };
    return (a << 24) | (channel((s >> 16) & 0xFF) << 16) | (channel((s >> 8) & 0xFF) << 8) | channel(s & 0xFF);
}

template <uint32_t (*Convert)(uint32_t)>
void convert(std::span<const uint32_t> source, std::span<uint32_t> target)
{
    const size_t n = std::min(source.size(), target.size());
    for (size_t i = 0; i < n; ++i) target[i] = Convert(source[i]);
}

// In place, opaque samples are neither converted nor written back.
template <uint32_t (*Convert)(uint32_t)>
void convertInPlace(std::span<uint32_t> samples)
{
    for (uint32_t& s : samples) {
        if (alphaOf(s) != 255) s = Convert(s);
    }
}

}  // namespace

bool allOpaque(std::span<const uint32_t> samples)
{
    // AND of all alphas, in blocks so that the common opaque case runs vectorised. The
    // blocks are short because draws ask about row segments of a few dozen samples, which
    // a long block would leave to the one-by-one tail.
    constexpr size_t kBlock = 32;
    size_t i = 0;
    for (; i + kBlock <= samples.size(); i += kBlock) {
        uint32_t all = kAlphaMask;
        for (size_t j = 0; j < kBlock; ++j) all &= samples[i + j];
        if ((all & kAlphaMask) != kAlphaMask) return false;
    }
    for (; i < samples.size(); ++i) {
        if ((samples[i] & kAlphaMask) != kAlphaMask) return false;
    }
    return true;
}

__attribute__((target_clones("avx2", "default"))) bool copyAndCheckOpaque(std::span<const uint32_t> source,
                                                                          std::span<uint32_t> target)
{
    uint32_t all = kAlphaMask;
    const size_t n = std::min(source.size(), target.size());
    for (size_t i = 0; i < n; ++i) {
        target[i] = source[i];
        all &= source[i];
    }
    return (all & kAlphaMask) == kAlphaMask;
}

__attribute__((target_clones("avx2", "default"))) void copyOpaque(std::span<const uint32_t> source,
                                                                  std::span<uint32_t> target)
{
    const size_t n = std::min(source.size(), target.size());
    for (size_t i = 0; i < n; ++i) target[i] = source[i] | kAlphaMask;
}

// Opaque rows, the common case, are recognised by a vectorised scan and left alone.
void premultiply(std::span<uint32_t> samples)
{
    if (!allOpaque(samples)) convertInPlace<premultiplied>(samples);
}
void premultiply(std::span<const uint32_t> source, std::span<uint32_t> target)
{
    if (allOpaque(source) && target.size() >= source.size()) {
        std::memcpy(target.data(), source.data(), source.size_bytes());
    } else {
        convert<premultiplied>(source, target);
    }
}

void unpremultiply(std::span<uint32_t> samples)
{
    if (!allOpaque(samples)) convertInPlace<straight>(samples);
}
void unpremultiply(std::span<const uint32_t> source, std::span<uint32_t> target) { convert<straight>(source, target); }

}  // namespace qx::pixel
