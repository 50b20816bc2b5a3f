#pragma once
// What vertex and index buffers share: a list of blocks for static sharing, a write
// position for dynamic use, and a shadow copy in system memory that refills a static
// buffer when the device comes back.
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Resource.h"

#include <cstdint>
#include <vector>

namespace qx4d {

struct BufferBlock {
    uint32_t offset = 0;
    uint32_t size = 0;
    bool free = true;
    /// The stride its data was placed with, so a block is found again by its first element.
    uint32_t stride = 1;
};

class PooledBuffer : public Resource {
public:
    PooledBuffer(uint32_t capacity, uint32_t flags);

    void OnDeviceLost() override { ReleaseDevice(); }
    void ReleaseDevice() override { buffer.reset(); }
    /// Makes the device buffer if absent: dynamic in the default pool, or static in the
    /// managed pool refilled from the shadow copy. The write position goes back to 0.
    bool Restore() override;

    /// Places `bytes` of data at a multiple of `stride`: in a block of a static buffer, or
    /// at the write position of a dynamic one. `first` is the place over the stride.
    bool Take(const void* data, uint32_t bytes, uint32_t stride, uint32_t& first);
    /// Marks the block of element `first` free and merges it with free neighbours. True
    /// when the whole buffer is then one free block.
    bool Free(uint32_t first);

    uint32_t capacity;
    uint32_t writePosition = 0;
    std::vector<BufferBlock> blocks;
    std::vector<uint8_t> shadow;  // static buffers only
    std::shared_ptr<gpu::Buffer> buffer;

protected:
    /// Makes the device object of this kind; false on failure.
    virtual bool CreateDeviceBuffer(gpu::Device& device, uint32_t usage, gpu::D3DPOOL pool) = 0;
    /// Called after a restore made the buffer; the quad-list index buffer fills itself.
    virtual void AfterRestore() {}

private:
    bool TakeStatic(const void* data, uint32_t bytes, uint32_t stride, uint32_t& first);
    bool TakeDynamic(const void* data, uint32_t bytes, uint32_t stride, uint32_t& first);
    bool Write(uint32_t offset, const void* data, uint32_t bytes, uint32_t lockFlags);
};

}  // namespace qx4d
