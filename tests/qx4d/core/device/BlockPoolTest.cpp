// The shared static block pools and the dynamic buffers.
#include "tests/qx4d/core/device/DeviceFixture.h"

#include <numeric>

namespace qx4d::testing {
namespace {

using BlockPoolTest = EngineTest;

std::vector<uint8_t> Bytes(size_t count, uint8_t first = 1)
{
    std::vector<uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

// The bytes the device buffer holds (its lock shows what was uploaded).
std::vector<uint8_t> DeviceBytes(PooledBuffer& buffer, uint32_t offset, uint32_t size)
{
    void* data = nullptr;
    EXPECT_EQ(buffer.buffer->Lock(offset, size, &data, gpu::D3DLOCK_READONLY), qx::S_OK);
    std::vector<uint8_t> bytes(static_cast<uint8_t*>(data), static_cast<uint8_t*>(data) + size);
    buffer.buffer->Unlock();
    return bytes;
}

TEST_F(BlockPoolTest, BlocksSplitRoundToTheStrideAndMergeBack)
{
    uint32_t first = 99;
    const auto a = Bytes(36);
    const ResourceHandle pool = renderer->AddVertices(a.data(), 3, 12, first);
    ASSERT_FALSE(pool.IsNull());
    EXPECT_EQ(first, 0u);
    // 36 is not a multiple of 16: the block starts at 48, the gap of 12 joins block A.
    const auto b = Bytes(32, 100);
    EXPECT_EQ(renderer->AddVertices(b.data(), 2, 16, first).Index(), pool.Index());
    EXPECT_EQ(first, 3u);
    VertexBuffer* buffer = renderer->GetVertexBuffer(pool);
    ASSERT_EQ(buffer->blocks.size(), 3u);
    EXPECT_EQ(buffer->blocks[0].size, 48u);
    EXPECT_EQ(buffer->blocks[1].offset, 48u);
    EXPECT_EQ(buffer->blocks[2].offset, 80u);
    EXPECT_EQ(buffer->blocks[2].size, Renderer::kVertexPoolBytes - 80);
    EXPECT_EQ(DeviceBytes(*buffer, 48, 32), b);

    renderer->FreeVertices(pool, 0);  // A: free, but B keeps the buffer
    EXPECT_EQ(buffer->blocks.size(), 3u);
    EXPECT_TRUE(buffer->blocks[0].free);
    renderer->FreeVertices(pool, 3);  // B: all one free block, the buffer goes
    EXPECT_TRUE(pool.IsNull());
}

TEST_F(BlockPoolTest, ABlockThatLosesTooMuchByRoundingIsPassedOver)
{
    uint32_t first = 0;
    const auto bytes = Bytes(8);
    const ResourceHandle pool = renderer->AddVertices(bytes.data(), 3, 1, first);  // [0, 3)
    renderer->AddVertices(bytes.data(), 6, 1, first);                              // [3, 9)
    renderer->AddVertices(bytes.data(), 1, 1, first);                              // [9, 10)
    renderer->FreeVertices(pool, 3);                                               // [3, 9) free: 6 bytes
    // 6 bytes at stride 2 would start at 4 and need 7: the block is passed over.
    renderer->AddVertices(bytes.data(), 3, 2, first);
    EXPECT_EQ(first, 5u);  // at byte 10
    EXPECT_TRUE(renderer->GetVertexBuffer(pool)->blocks[1].free);
}

TEST_F(BlockPoolTest, TheLimitIsExactly0x400000Bytes)
{
    std::vector<uint8_t> big(Renderer::kVertexPoolBytes + 1);
    uint32_t first = 7;
    const ResourceHandle whole = renderer->AddVertices(big.data(), 0x100000, 4, first);
    EXPECT_FALSE(whole.IsNull());
    EXPECT_EQ(first, 0u);
    EXPECT_TRUE(renderer->AddVertices(big.data(), 0x400001, 1, first).IsNull());
    // The full buffer takes nothing more: a second pool buffer is made.
    const ResourceHandle next = renderer->AddVertices(big.data(), 1, 4, first);
    EXPECT_NE(next.Index(), whole.Index());
}

TEST_F(BlockPoolTest, IndexPoolsKeepOneIndexSize)
{
    uint32_t first = 0;
    const auto bytes = Bytes(24);
    const ResourceHandle small = renderer->AddIndices(bytes.data(), 6, 2, first);
    const ResourceHandle wide = renderer->AddIndices(bytes.data(), 6, 4, first);
    ASSERT_FALSE(small.IsNull());
    ASSERT_FALSE(wide.IsNull());
    EXPECT_NE(small.Index(), wide.Index());
    EXPECT_EQ(renderer->AddIndices(bytes.data(), 2, 2, first).Index(), small.Index());
    EXPECT_EQ(first, 6u);
    EXPECT_EQ(renderer->GetIndexBuffer(wide)->buffer->format(), gpu::D3DFMT_INDEX32);
    EXPECT_TRUE(renderer->AddIndices(bytes.data(), 2, 3, first).IsNull());
}

TEST_F(BlockPoolTest, DynamicBuffersWrapWithDiscardAndIgnoreFrees)
{
    const ResourceHandle handle = renderer->CreateVertexBuffer(64, kResourceDynamic);
    VertexBuffer* buffer = renderer->GetVertexBuffer(handle);
    ASSERT_NE(buffer, nullptr);
    const auto bytes = Bytes(24);
    uint32_t first = 99;
    ASSERT_TRUE(buffer->Take(bytes.data(), 24, 12, first));
    EXPECT_EQ(first, 0u);
    ASSERT_TRUE(buffer->Take(bytes.data(), 20, 16, first));  // 24 rounds up to 32
    EXPECT_EQ(first, 2u);
    EXPECT_EQ(buffer->writePosition, 52u);
    ASSERT_TRUE(buffer->Take(bytes.data(), 16, 16, first));  // 64 + 16 > 64: back to 0
    EXPECT_EQ(first, 0u);
    EXPECT_EQ(buffer->writePosition, 16u);
    uint32_t pooled = 0;
    EXPECT_NE(renderer->AddVertices(bytes.data(), 1, 4, pooled).Index(), handle.Index());  // never a pool
    renderer->FreeVertices(handle, 0);
    EXPECT_FALSE(handle.IsNull());
}

TEST_F(BlockPoolTest, QuadListIndexBufferFillsItself)
{
    const ResourceHandle handle = renderer->CreateIndexBuffer(48, kResourceDynamic | kResourceQuadList);
    IndexBuffer* buffer = renderer->GetIndexBuffer(handle);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer->writePosition, 48u);
    const auto bytes = DeviceBytes(*buffer, 0, 48);
    std::vector<uint16_t> indices(24);
    std::memcpy(indices.data(), bytes.data(), 48);
    const std::vector<uint16_t> expected = {0, 1, 2,  0, 2,  3,  4,  5,  6,  4,  6,  7,
                                            8, 9, 10, 8, 10, 11, 12, 13, 14, 12, 14, 15};
    EXPECT_EQ(indices, expected);
}

}  // namespace
}  // namespace qx4d::testing
