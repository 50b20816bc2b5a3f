#include "platform/transform/Surface.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace qx::transform {
namespace {

std::unique_ptr<SurfaceLock> lock(DXSurface& surface, DWORD flags, const Bounds* bounds = nullptr, ULONG timeout = 0)
{
    std::unique_ptr<SurfaceLock> held;
    EXPECT_EQ(surface.LockSurface(bounds, timeout, flags, held), S_OK);
    return held;
}

TEST(Surface, PacksAndUnpacksPartsOfTheLockedBounds)
{
    auto surface = DXSurface::create(4, 3);
    ASSERT_TRUE(surface);
    const Bounds middle{1, 1, 3, 3};
    uint32_t block[] = {1, 2, 3, 4};
    lock(*surface, DXLOCKF_READWRITE, &middle)->PackRect({block, false, {0, 0, 2, 2}, 0});

    std::vector<uint32_t> all(12);
    lock(*surface, DXLOCKF_READ)->UnpackRect({all.data(), false, {0, 0, 4, 3}, 0});
    EXPECT_EQ(all, (std::vector<uint32_t>{0, 0, 0, 0, 0, 1, 2, 0, 0, 3, 4, 0}));

    // A row padding of one sample leaves a gap between the rows of the caller's buffer.
    std::vector<uint32_t> padded(5, 99);
    lock(*surface, DXLOCKF_READ, &middle)->UnpackRect({padded.data(), false, {0, 0, 2, 2}, 1});
    EXPECT_EQ(padded, (std::vector<uint32_t>{1, 2, 99, 3, 4}));
}

TEST(Surface, WholeRowsOfAWriteLockCanBeWrittenInPlace)
{
    auto surface = DXSurface::create(4, 3);
    ASSERT_TRUE(surface);
    // Rows 1 and 2, whole: their eight samples, in surface order.
    const Bounds lowerRows{0, 1, 4, 3};
    {
        const auto held = lock(*surface, DXLOCKF_READWRITE, &lowerRows);
        const auto samples = held->wholeRowsInPlace();
        ASSERT_EQ(samples.size(), 8u);
        for (size_t i = 0; i < samples.size(); ++i) samples[i] = uint32_t(i + 1);
    }
    std::vector<uint32_t> all(12);
    lock(*surface, DXLOCKF_READ)->UnpackRect({all.data(), false, {0, 0, 4, 3}, 0});
    EXPECT_EQ(all, (std::vector<uint32_t>{0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8}));

    // Reading in place: the same samples, from a lock of either kind.
    {
        const auto reader = lock(*surface, DXLOCKF_READ, &lowerRows);
        const auto read = reader->wholeRowsToRead();
        EXPECT_EQ(std::vector<uint32_t>(read.begin(), read.end()), (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7, 8}));
    }

    // Part of the rows, or a lock for reading: nothing to write in place.
    const Bounds narrower{0, 0, 3, 3};
    EXPECT_TRUE(lock(*surface, DXLOCKF_READWRITE, &narrower)->wholeRowsInPlace().empty());
    EXPECT_TRUE(lock(*surface, DXLOCKF_READ, &narrower)->wholeRowsToRead().empty());
    const Bounds shifted{1, 0, 4, 3};
    EXPECT_TRUE(lock(*surface, DXLOCKF_READWRITE, &shifted)->wholeRowsInPlace().empty());
    EXPECT_TRUE(lock(*surface, DXLOCKF_READ)->wholeRowsInPlace().empty());
}

TEST(Surface, NativeAccessWritesTheLockedPartInPlace)
{
    auto surface = DXSurface::create(4, 3);
    const Bounds middle{1, 1, 3, 3};
    {
        auto writer = lock(*surface, DXLOCKF_READWRITE, &middle);
        const SurfaceLock::NativeSamples native = writer->GetNativeType();
        ASSERT_NE(native.first, nullptr);
        EXPECT_EQ(native.pitch, 4);  // rows lie a whole surface row apart
        native.first[0] = 1;
        native.first[1] = 2;
        native.first[native.pitch] = 3;
        native.first[native.pitch + 1] = 4;
    }
    std::vector<uint32_t> all(12);
    lock(*surface, DXLOCKF_READ)->UnpackRect({all.data(), false, {0, 0, 4, 3}, 0});
    EXPECT_EQ(all, (std::vector<uint32_t>{0, 0, 0, 0, 0, 1, 2, 0, 0, 3, 4, 0}));
    // A reader gets nothing to write through.
    EXPECT_EQ(lock(*surface, DXLOCKF_READ)->GetNativeType().first, nullptr);
}

TEST(Surface, ConvertsPremultipliedSamplesAtItsEdge)
{
    auto surface = DXSurface::create(1, 1);
    uint32_t straight = 0x80FF0000;  // half-transparent red
    lock(*surface, DXLOCKF_READWRITE)->PackRect({&straight, false, {0, 0, 1, 1}, 0});
    uint32_t premultiplied = 0;
    lock(*surface, DXLOCKF_READ)->UnpackRect({&premultiplied, true, {0, 0, 1, 1}, 0});
    EXPECT_EQ(premultiplied, 0x80800000u);
    lock(*surface, DXLOCKF_READWRITE)->PackRect({&premultiplied, true, {0, 0, 1, 1}, 0});
    uint32_t back = 0;
    lock(*surface, DXLOCKF_READ)->UnpackRect({&back, false, {0, 0, 1, 1}, 0});
    EXPECT_EQ(back, straight);
}

TEST(Surface, RefusesRectanglesOutsideTheLockAndWritesThroughReadLocks)
{
    auto surface = DXSurface::create(4, 4);
    std::unique_ptr<SurfaceLock> held;
    const Bounds outside{2, 2, 5, 4};
    EXPECT_EQ(surface->LockSurface(&outside, 0, DXLOCKF_READ, held), E_INVALIDARG);
    const Bounds quarter{0, 0, 2, 2};
    auto reader = lock(*surface, DXLOCKF_READ, &quarter);
    uint32_t samples[9] = {};
    EXPECT_EQ(reader->UnpackRect({samples, false, {0, 0, 3, 3}, 0}), E_INVALIDARG);
    EXPECT_EQ(reader->UnpackRect({nullptr, false, {0, 0, 1, 1}, 0}), E_POINTER);
    EXPECT_EQ(reader->PackRect({samples, false, {0, 0, 1, 1}, 0}), E_ACCESSDENIED);
}

TEST(Surface, ReadersShareAndAWriterWaitsForItsTimeOut)
{
    auto surface = DXSurface::create(2, 2);
    auto first = lock(*surface, DXLOCKF_READ);
    auto second = lock(*surface, DXLOCKF_READ);
    std::unique_ptr<SurfaceLock> writer;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(surface->LockSurface(nullptr, 50, DXLOCKF_READWRITE, writer), DXT_E_LOCK_TIMEOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
    first.reset();
    second.reset();
    EXPECT_EQ(surface->LockSurface(nullptr, 0, DXLOCKF_READWRITE, writer), S_OK);
}

TEST(Surface, WrapsCallerMemoryAndRefusesTooLittle)
{
    std::vector<uint32_t> memory(6, 7);
    EXPECT_FALSE(DXSurface::wrap(memory, 4, 2));
    EXPECT_FALSE(DXSurface::create(-1, 2));
    auto surface = DXSurface::wrap(memory, 3, 2);
    ASSERT_TRUE(surface);
    uint32_t value = 5;
    const Bounds last{2, 1, 3, 2};
    lock(*surface, DXLOCKF_READWRITE, &last)->PackRect({&value, false, {0, 0, 1, 1}, 0});
    EXPECT_EQ(memory[5], 5u);
}

}  // namespace
}  // namespace qx::transform
