#pragma once
// Index sort of numeric keys by their bytes, lowest byte first. The keys never move: the
// sorter hands out a list of ranks, ranks[0] being the index of the smallest key. It keeps
// that list between calls and starts the next sort of as many keys from it, so a sorter
// that lives over frames (particles, the render queue) pays almost nothing while the
// order holds.
#include <array>
#include <cstdint>
#include <vector>

namespace qx4d {

class RadixSort {
public:
    /// The key kinds; the numbers are those that callers pass.
    enum Kind : int32_t {
        KindInt32 = 0,
        KindUInt32 = 1,
        KindInt64 = 2,
        KindUInt64 = 3,
        KindFloat = 4,
    };

    explicit RadixSort(int32_t keyKind);

    /// Each form sorts only under the kinds of its key size (4 bytes: 0, 1, 4; 8 bytes: 2,
    /// 3) and does nothing under another, since it would read the keys with the wrong
    /// stride. The kind, not the pointer type, decides how the bytes compare.
    void Sort(const float* keys, uint32_t keyCount);
    void Sort(const uint32_t* keys, uint32_t keyCount);
    void Sort(const int32_t* keys, uint32_t keyCount);
    void Sort(const uint64_t* keys, uint32_t keyCount);
    void Sort(const int64_t* keys, uint32_t keyCount);

    /// Valid for the count of the last sort; null before the first.
    const uint32_t* GetRanks() const { return ranks.empty() ? nullptr : ranks.data(); }
    uint32_t GetCount() const { return count; }
    uint32_t GetTotalCalls() const { return totalCalls; }
    /// Sorts that found their keys already in order and returned at once.
    uint32_t GetHits() const { return hits; }

private:
    static constexpr int kMaxKeyBytes = 8;

    bool IsSigned() const { return kind == KindInt32 || kind == KindInt64 || kind == KindFloat; }
    uint32_t KeyBytes() const { return (kind == KindInt64 || kind == KindUInt64) ? 8 : 4; }

    void SortBytes(const void* keys, uint32_t keyCount, uint32_t keyBytes);
    void PrepareRanks(uint32_t keyCount);
    template <typename Key>
    bool CountAndCheckOrder(const Key* keys);
    bool CountAndCheckOrder(const void* keys);
    template <typename Key>
    void CountKeyBytes(const Key* keys, uint32_t index);
    void RunPasses(const uint8_t* keyBytes, uint32_t negatives);
    void ScatterPass(const uint8_t* keyBytes, uint32_t byteIndex, const uint32_t* histogram);
    void ScatterByOffsets(const uint8_t* keyBytes, uint32_t byteIndex);
    void SignedTopPass(const uint8_t* keyBytes, uint32_t byteIndex, const uint32_t* histogram, uint32_t negatives);
    void FloatTopPass(const uint8_t* keyBytes, uint32_t byteIndex, const uint32_t* histogram, uint32_t negatives);

    int32_t kind;
    uint32_t capacity = 0;
    uint32_t count = 0;
    std::vector<uint32_t> ranks;
    std::vector<uint32_t> ranksOther;
    uint32_t totalCalls = 0;
    uint32_t hits = 0;
    std::array<uint32_t, 256 * kMaxKeyBytes> histograms{};
    std::array<uint32_t, 256> offsets{};
};

}  // namespace qx4d
