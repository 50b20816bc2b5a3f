#include "qx4d/core/RadixSort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

namespace qx4d {
namespace {

std::vector<uint32_t> RanksOf(const RadixSort& sorter, size_t count)
{
    const uint32_t* ranks = sorter.GetRanks();
    return std::vector<uint32_t>(ranks, ranks + count);
}

std::vector<uint32_t> Identity(size_t count)
{
    std::vector<uint32_t> order(count);
    std::iota(order.begin(), order.end(), 0u);
    return order;
}

// The reference order of integer keys: a stable sort of the indices.
template <typename Key>
std::vector<uint32_t> StableOrder(const std::vector<Key>& keys)
{
    auto order = Identity(keys.size());
    std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) { return keys[a] < keys[b]; });
    return order;
}

// The reference order of float keys from a fresh sorter: ascending values, equal positive
// keys in their input order, equal negative keys in reverse input order.
std::vector<uint32_t> FloatOrder(const std::vector<float>& keys)
{
    auto order = Identity(keys.size());
    std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        if (keys[a] != keys[b]) {
            return keys[a] < keys[b];
        }
        return std::signbit(keys[a]) && a > b;
    });
    return order;
}

// Keys from a small pool so that equal keys are frequent, spread over the whole range of
// the type so that every byte position varies.
template <typename Key>
std::vector<Key> RandomKeys(size_t count, uint32_t seed)
{
    std::mt19937_64 random(seed);
    std::vector<Key> pool(count / 4 + 1);
    for (Key& key : pool) {
        key = Key(random() >> (random() % (8 * sizeof(Key))));
        if (std::is_signed_v<Key> && random() % 2) {
            key = Key(-key);
        }
    }
    std::vector<Key> keys(count);
    for (Key& key : keys) {
        key = pool[random() % pool.size()];
    }
    return keys;
}

std::vector<float> RandomFloats(size_t count, uint32_t seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> mantissa(1.0f, 2.0f);
    std::uniform_int_distribution<int> exponent(-40, 40);
    std::vector<float> pool(count / 4 + 1);
    for (float& key : pool) {
        key = std::ldexp(mantissa(random), exponent(random)) * (random() % 2 ? -1.0f : 1.0f);
    }
    std::vector<float> keys(count);
    for (float& key : keys) {
        key = pool[random() % pool.size()];
    }
    return keys;
}

template <typename Key>
void ExpectStableIntegerSort(int32_t kind)
{
    for (size_t count : {2u, 17u, 1000u, 5000u}) {
        const auto keys = RandomKeys<Key>(count, uint32_t(count) * 7 + uint32_t(kind));
        RadixSort sorter(kind);
        sorter.Sort(keys.data(), uint32_t(keys.size()));
        EXPECT_EQ(RanksOf(sorter, count), StableOrder(keys)) << "kind " << kind << ", " << count << " keys";
    }
}

TEST(RadixSort, IntegerKindsMatchAStableSort)
{
    ExpectStableIntegerSort<int32_t>(RadixSort::KindInt32);
    ExpectStableIntegerSort<uint32_t>(RadixSort::KindUInt32);
    ExpectStableIntegerSort<int64_t>(RadixSort::KindInt64);
    ExpectStableIntegerSort<uint64_t>(RadixSort::KindUInt64);
}

TEST(RadixSort, FloatsSortAsNumbersWithNegativeTiesReversed)
{
    // Counts large enough that the keys are never in order by chance: keys already in
    // order return at once and keep the identity, ties included.
    for (size_t count : {64u, 1000u, 10000u}) {
        const auto keys = RandomFloats(count, uint32_t(count));
        RadixSort sorter(RadixSort::KindFloat);
        sorter.Sort(keys.data(), uint32_t(keys.size()));
        EXPECT_EQ(RanksOf(sorter, count), FloatOrder(keys)) << count << " keys";
    }
}

TEST(RadixSort, SignedIntegersPutNegativesFirstWithoutReversal)
{
    const std::vector<int32_t> keys = {5, -1, -300, 7, -1, 0, -2147483647 - 1, 2147483647, 5};
    RadixSort sorter(RadixSort::KindInt32);
    sorter.Sort(keys.data(), uint32_t(keys.size()));
    EXPECT_EQ(RanksOf(sorter, keys.size()), (std::vector<uint32_t>{6, 2, 1, 4, 5, 0, 8, 3, 7}));
}

TEST(RadixSort, UnsignedKindTakesTheTopBitAsMagnitude)
{
    const std::vector<uint32_t> keys = {0x80000000u, 1u, 0xFFFFFFFFu, 0u};
    RadixSort sorter(RadixSort::KindUInt32);
    sorter.Sort(keys.data(), uint32_t(keys.size()));
    EXPECT_EQ(RanksOf(sorter, keys.size()), (std::vector<uint32_t>{3, 1, 0, 2}));
}

TEST(RadixSort, NegativeFloatsSharingTheTopByteComeOutByReversal)
{
    // -1.0, -1.5 and -1.25 all have the top byte 0xBF; only the lower bytes differ.
    const std::vector<float> keys = {-1.0f, -1.5f, -1.25f};
    RadixSort sorter(RadixSort::KindFloat);
    sorter.Sort(keys.data(), uint32_t(keys.size()));
    EXPECT_EQ(RanksOf(sorter, keys.size()), (std::vector<uint32_t>{1, 2, 0}));

    // Equal ones are reversed as a whole.
    const std::vector<float> equal = {-3.0f, -3.0f, -2.0f, -3.0f};
    RadixSort second(RadixSort::KindFloat);
    second.Sort(equal.data(), uint32_t(equal.size()));
    EXPECT_EQ(RanksOf(second, equal.size()), (std::vector<uint32_t>{3, 1, 0, 2}));
}

TEST(RadixSort, MixedSignFloats)
{
    const std::vector<float> keys = {2.5f, -0.5f, 1e-30f, -1e30f, 0.0f, 3.0f, -0.5f};
    RadixSort sorter(RadixSort::KindFloat);
    sorter.Sort(keys.data(), uint32_t(keys.size()));
    EXPECT_EQ(RanksOf(sorter, keys.size()), (std::vector<uint32_t>{3, 6, 1, 4, 2, 0, 5}));
}

TEST(RadixSort, SecondSortOfTheSameKeysIsAHit)
{
    const auto keys = RandomFloats(2000, 99);
    RadixSort sorter(RadixSort::KindFloat);
    sorter.Sort(keys.data(), uint32_t(keys.size()));
    const auto first = RanksOf(sorter, keys.size());
    EXPECT_EQ(sorter.GetHits(), 0u);

    sorter.Sort(keys.data(), uint32_t(keys.size()));
    EXPECT_EQ(sorter.GetHits(), 1u);
    EXPECT_EQ(sorter.GetTotalCalls(), 2u);
    EXPECT_EQ(RanksOf(sorter, keys.size()), first);
}

TEST(RadixSort, SameCountStartsFromTheLastOrder)
{
    std::vector<float> keys = {4.0f, 1.0f, 3.0f, 2.0f};
    RadixSort sorter(RadixSort::KindFloat);
    sorter.Sort(keys.data(), 4);
    EXPECT_EQ(RanksOf(sorter, 4), (std::vector<uint32_t>{1, 3, 2, 0}));

    // Keys that move a little: the result is sorted again, from the last order.
    keys = {4.0f, 2.5f, 3.0f, 2.0f};
    sorter.Sort(keys.data(), 4);
    EXPECT_EQ(RanksOf(sorter, 4), (std::vector<uint32_t>{3, 1, 2, 0}));
    EXPECT_EQ(sorter.GetHits(), 0u);

    // Ties keep the last order rather than the index order: 1 and 3 are equal now and
    // stay as the previous sort left them.
    keys = {4.0f, 2.0f, 3.0f, 2.0f};
    sorter.Sort(keys.data(), 4);
    EXPECT_EQ(sorter.GetHits(), 1u);
    EXPECT_EQ(RanksOf(sorter, 4), (std::vector<uint32_t>{3, 1, 2, 0}));
}

TEST(RadixSort, NewCountRestartsFromTheIdentity)
{
    const std::vector<uint32_t> keys = {3, 2, 1, 0, 9};
    RadixSort sorter(RadixSort::KindUInt32);
    sorter.Sort(keys.data(), 4);
    EXPECT_EQ(RanksOf(sorter, 4), (std::vector<uint32_t>{3, 2, 1, 0}));
    sorter.Sort(keys.data(), 5);
    EXPECT_EQ(RanksOf(sorter, 5), (std::vector<uint32_t>{3, 2, 1, 0, 4}));
    EXPECT_EQ(sorter.GetCount(), 5u);
    sorter.Sort(keys.data() + 3, 2);  // {0, 9}: in order from the identity
    EXPECT_EQ(RanksOf(sorter, 2), (std::vector<uint32_t>{0, 1}));
    EXPECT_EQ(sorter.GetHits(), 1u);
}

TEST(RadixSort, NullKeysOrNoKeysDoNothing)
{
    RadixSort sorter(RadixSort::KindFloat);
    sorter.Sort(static_cast<const float*>(nullptr), 10);
    const float key = 1.0f;
    sorter.Sort(&key, 0);
    EXPECT_EQ(sorter.GetTotalCalls(), 0u);
    EXPECT_EQ(sorter.GetRanks(), nullptr);
}

TEST(RadixSort, KeysOfTheWrongSizeForTheKindAreRefused)
{
    const std::vector<float> keys = {2.0f, 1.0f};
    RadixSort sorter(RadixSort::KindUInt64);
    sorter.Sort(keys.data(), 2);
    EXPECT_EQ(sorter.GetRanks(), nullptr);
    RadixSort unknown(9);
    unknown.Sort(keys.data(), 2);
    EXPECT_EQ(unknown.GetRanks(), nullptr);
}

}  // namespace
}  // namespace qx4d
