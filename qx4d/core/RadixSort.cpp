#include "qx4d/core/RadixSort.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <numeric>
#include <type_traits>
#include <utility>

namespace qx4d {

// Keys are read both as numbers and as bytes in memory order, lowest byte first.
static_assert(std::endian::native == std::endian::little);

namespace {

// The byte `byteIndex` of key `index`, keys being `keySize` bytes each, little-endian.
inline uint8_t KeyByte(const uint8_t* keys, uint32_t keySize, uint32_t index, uint32_t byteIndex)
{
    return keys[size_t(index) * keySize + byteIndex];
}

template <typename Key>
Key LoadKey(const void* keys, uint32_t index)
{
    Key key;
    std::memcpy(&key, static_cast<const uint8_t*>(keys) + size_t(index) * sizeof(Key), sizeof(Key));
    return key;
}

}  // namespace

RadixSort::RadixSort(int32_t keyKind) : kind(keyKind) {}

void RadixSort::Sort(const float* keys, uint32_t keyCount) { SortBytes(keys, keyCount, 4); }
void RadixSort::Sort(const uint32_t* keys, uint32_t keyCount) { SortBytes(keys, keyCount, 4); }
void RadixSort::Sort(const int32_t* keys, uint32_t keyCount) { SortBytes(keys, keyCount, 4); }
void RadixSort::Sort(const uint64_t* keys, uint32_t keyCount) { SortBytes(keys, keyCount, 8); }
void RadixSort::Sort(const int64_t* keys, uint32_t keyCount) { SortBytes(keys, keyCount, 8); }

void RadixSort::SortBytes(const void* keys, uint32_t keyCount, uint32_t keyBytes)
{
    if (keys == nullptr || keyCount == 0) {
        return;
    }
    ++totalCalls;
    if (kind < KindInt32 || kind > KindFloat || keyBytes != KeyBytes()) {
        return;
    }
    PrepareRanks(keyCount);
    if (CountAndCheckOrder(keys)) {
        ++hits;
        return;
    }
    const uint32_t* top = histograms.data() + 256 * (KeyBytes() - 1);
    const uint32_t negatives = IsSigned() ? std::accumulate(top + 0x80, top + 0x100, 0u) : 0u;
    RunPasses(static_cast<const uint8_t*>(keys), negatives);
}

// A new count starts from the identity order; the same count starts from the last order,
// which is what makes a second sort of nearly the same keys cheap.
void RadixSort::PrepareRanks(uint32_t keyCount)
{
    if (keyCount == count) {
        return;
    }
    if (keyCount > capacity) {
        ranks.resize(keyCount);
        ranksOther.resize(keyCount);
        capacity = keyCount;
    }
    std::iota(ranks.begin(), ranks.begin() + keyCount, 0u);
    count = keyCount;
}

bool RadixSort::CountAndCheckOrder(const void* keys)
{
    switch (kind) {
    case KindInt32: return CountAndCheckOrder(static_cast<const int32_t*>(keys));
    case KindUInt32: return CountAndCheckOrder(static_cast<const uint32_t*>(keys));
    case KindInt64: return CountAndCheckOrder(static_cast<const int64_t*>(keys));
    case KindUInt64: return CountAndCheckOrder(static_cast<const uint64_t*>(keys));
    default: return CountAndCheckOrder(static_cast<const float*>(keys));
    }
}

// First a walk in the present rank order, up to the first key smaller than the one before
// it. If the walk gets through, the order stands and nothing else is done: a sorter that
// lives over frames then pays one read per key. Otherwise one pass over the keys in memory
// order fills the histograms of all bytes. (Counting during the walk, as a single loop,
// gives the same histograms; apart, a hit costs no counting at all.)
template <typename Key>
bool RadixSort::CountAndCheckOrder(const Key* keys)
{
    Key previous = LoadKey<Key>(keys, ranks[0]);
    uint32_t i = 1;
    for (; i < count; ++i) {
        const Key current = LoadKey<Key>(keys, ranks[i]);
        if (current < previous) {
            break;
        }
        previous = current;
    }
    if (i == count) {
        return true;
    }
    histograms.fill(0);
    for (uint32_t k = 0; k < count; ++k) {
        CountKeyBytes(keys, k);
    }
    return false;
}

template <typename Key>
void RadixSort::CountKeyBytes(const Key* keys, uint32_t index)
{
    using Bits = std::conditional_t<sizeof(Key) == 8, uint64_t, uint32_t>;
    const Bits bits = LoadKey<Bits>(keys, index);
    for (uint32_t b = 0; b < sizeof(Key); ++b) {
        ++histograms[256 * b + uint32_t(bits >> (8 * b) & 0xFF)];
    }
}

void RadixSort::RunPasses(const uint8_t* keyBytes, uint32_t negatives)
{
    const uint32_t topByte = KeyBytes() - 1;
    for (uint32_t b = 0; b <= topByte; ++b) {
        const uint32_t* histogram = histograms.data() + 256 * b;
        const bool isTop = b == topByte;
        if (isTop && kind == KindFloat) {
            FloatTopPass(keyBytes, b, histogram, negatives);
        } else if (histogram[keyBytes[b]] == count) {
            continue;  // every key has the first key's value in this byte
        } else if (isTop && IsSigned()) {
            SignedTopPass(keyBytes, b, histogram, negatives);
        } else {
            ScatterPass(keyBytes, b, histogram);
        }
    }
}

void RadixSort::ScatterPass(const uint8_t* keyBytes, uint32_t byteIndex, const uint32_t* histogram)
{
    offsets[0] = 0;
    for (int i = 1; i < 256; ++i) {
        offsets[i] = offsets[i - 1] + histogram[i - 1];
    }
    ScatterByOffsets(keyBytes, byteIndex);
}

// Moves every rank, in the present order, to the next slot of its byte's bucket.
void RadixSort::ScatterByOffsets(const uint8_t* keyBytes, uint32_t byteIndex)
{
    const uint32_t keySize = KeyBytes();
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t r = ranks[i];
        ranksOther[offsets[KeyByte(keyBytes, keySize, r, byteIndex)]++] = r;
    }
    std::swap(ranks, ranksOther);
}

// Two's complement: top bytes 0x80 to 0xFF are the negatives and come first, in the same
// ascending byte order as the positives.
void RadixSort::SignedTopPass(const uint8_t* keyBytes, uint32_t byteIndex, const uint32_t* histogram,
                              uint32_t negatives)
{
    offsets[0] = negatives;
    for (int i = 1; i < 128; ++i) {
        offsets[i] = offsets[i - 1] + histogram[i - 1];
    }
    offsets[128] = 0;
    for (int i = 129; i < 256; ++i) {
        offsets[i] = offsets[i - 1] + histogram[i - 1];
    }
    ScatterByOffsets(keyBytes, byteIndex);
}

// Sign and magnitude: a larger magnitude is a smaller negative, so the negative buckets
// run from 0xFF down and are filled from their ends, which reverses the order of the lower
// passes among negatives (equal negative keys come out reversed too).
void RadixSort::FloatTopPass(const uint8_t* keyBytes, uint32_t byteIndex, const uint32_t* histogram, uint32_t negatives)
{
    const uint8_t firstTop = keyBytes[byteIndex];
    if (histogram[firstTop] == count) {
        if (firstTop >= 0x80) {
            std::reverse(ranks.begin(), ranks.begin() + count);
        }
        return;
    }
    offsets[0] = negatives;
    for (int i = 1; i < 128; ++i) {
        offsets[i] = offsets[i - 1] + histogram[i - 1];
    }
    offsets[255] = 0;
    for (int j = 0; j < 127; ++j) {
        offsets[254 - j] = offsets[255 - j] + histogram[255 - j];
    }
    for (int i = 128; i < 256; ++i) {
        offsets[i] += histogram[i];
    }
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t r = ranks[i];
        const uint8_t top = KeyByte(keyBytes, 4, r, byteIndex);
        if (top < 0x80) {
            ranksOther[offsets[top]++] = r;
        } else {
            ranksOther[--offsets[top]] = r;
        }
    }
    std::swap(ranks, ranksOther);
}

}  // namespace qx4d
