#pragma once
// Histograms of byte planes. A histogram of `bins` bins puts the byte b in bin
// (b * bins) >> 8; with 16 bins that is its top four bits, the case worked in vector
// instructions (AVX-512 or AVX2, as the processor has them). Any other count is counted
// one byte at a time.
#include <array>
#include <cstdint>
#include <span>

namespace qx::pixel {

/// The counters of one histogram; bins past the count asked for stay 0.
using ByteHistogram = std::array<int32_t, 256>;

/// The histogram of `bytes` in `bins` bins (1 to 256). The counters are 32-bit, so a
/// plane of 2^31 bytes or more is not counted.
ByteHistogram countBins(std::span<const uint8_t> bytes, int32_t bins);

/// How the 16-bin count is worked out, widest first.
enum class HistogramKernel { avx512, avx2, scalar };

/// The kernel this processor runs.
HistogramKernel histogramKernel();

/// The 16-bin histogram through one kernel, which the processor must have; for tests and
/// measurements that set the kernels side by side.
ByteHistogram countSixteenBins(std::span<const uint8_t> bytes, HistogramKernel kernel);

}  // namespace qx::pixel
