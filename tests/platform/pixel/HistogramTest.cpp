#include "platform/pixel/Histogram.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace qx::pixel {
namespace {

/// Bytes with every value and no regular pattern, of a length with a remainder after
/// any vector width.
std::vector<uint8_t> scrambled(size_t length)
{
    std::vector<uint8_t> bytes(length);
    uint32_t state = 12345;
    for (auto& b : bytes) {
        state = state * 1664525u + 1013904223u;
        b = uint8_t(state >> 24);
    }
    return bytes;
}

std::vector<HistogramKernel> kernelsOfThisProcessor()
{
    switch (histogramKernel()) {
    case HistogramKernel::avx512: return {HistogramKernel::scalar, HistogramKernel::avx2, HistogramKernel::avx512};
    case HistogramKernel::avx2: return {HistogramKernel::scalar, HistogramKernel::avx2};
    case HistogramKernel::scalar: break;
    }
    return {HistogramKernel::scalar};
}

TEST(Histogram, SixteenBinsAreTheTopFourBits)
{
    std::vector<uint8_t> bytes;
    for (int v = 0; v < 256; ++v) bytes.insert(bytes.end(), size_t(v % 16 + 1), uint8_t(v));
    ByteHistogram expected{};
    for (int v = 0; v < 256; ++v) expected[size_t(v >> 4)] += v % 16 + 1;
    EXPECT_EQ(countBins(bytes, 16), expected);
}

TEST(Histogram, EveryKernelCountsAsTheScalarOneAtEveryLength)
{
    // Lengths around the vector sizes and past the 255 vectors after which byte
    // counters are summed, with long runs of one value that fill a counter.
    for (const size_t length : {0, 1, 31, 32, 63, 64, 65, 255 * 64 + 17, 255 * 32 * 2 + 3, 100003}) {
        for (const bool uniform : {false, true}) {
            const auto bytes = uniform ? std::vector<uint8_t>(length, 0xA7) : scrambled(length);
            const auto reference = countSixteenBins(bytes, HistogramKernel::scalar);
            EXPECT_EQ(std::accumulate(reference.begin(), reference.end(), 0), int32_t(length));
            for (const auto kernel : kernelsOfThisProcessor())
                EXPECT_EQ(countSixteenBins(bytes, kernel), reference)
                    << "length " << length << " kernel " << int(kernel);
        }
    }
}

TEST(Histogram, OtherBinCountsScaleTheByte)
{
    const std::vector<uint8_t> bytes = {0, 85, 86, 170, 171, 255};
    ByteHistogram three{};
    three[0] = 2;  // (b * 3) >> 8: 0 for 0 and 85
    three[1] = 2;
    three[2] = 2;
    EXPECT_EQ(countBins(bytes, 3), three);
    const auto all = countBins(bytes, 256);
    EXPECT_EQ(all[255], 1);
    EXPECT_EQ(all[86], 1);
    EXPECT_EQ(countBins(bytes, 1)[0], 6);
}

}  // namespace
}  // namespace qx::pixel
