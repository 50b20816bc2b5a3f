// Feeds arbitrary bytes, as a DIB header and its bits, to the bitmap handle, then runs
// the operations that walk its pixels, so that no header can make them step outside.
#include "fuzz/FuzzCheck.h"
#include "platform/imaging/BitmapHandle.h"
#include "platform/imaging/ColorOps.h"
#include "platform/imaging/Filters.h"

#include <cstddef>
#include <cstdint>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qx::imaging;
    const std::span<const uint8_t> input(data, size);
    const auto header = readDibHeader(input);
    if (!header) return 0;
    BitmapHandle bitmap;
    if (bitmap.loadDib(*header, input.subspan(kDibHeaderSize)) != 1) return 0;
    // Keep the per-input work small enough for a fuzzer.
    if (bitmap.pixels().size() > 4096) return 0;
    const int32_t argument = int32_t(header->clrUsed);
    changeHue(bitmap, argument);
    posterize(bitmap, argument);
    blur(bitmap, int32_t(header->clrImportant % 64));
    motionBlur(bitmap, int32_t(header->clrImportant % 64), argument, (argument & 1) != 0);
    uint8_t row[64];
    bitmap.readRow(int32_t(header->xPelsPerMeter), row);
    const auto block = bitmap.toDib();
    QX_FUZZ_CHECK(block.size() == kDibHeaderSize + bitmap.stride() * size_t(bitmap.height()));
    return 0;
}
