#include "qx4d/core/device/PooledBuffer.h"

#include <cstring>

namespace qx4d {

namespace {

uint64_t RoundUp(uint64_t value, uint32_t multiple) { return (value + multiple - 1) / multiple * multiple; }

}  // namespace

PooledBuffer::PooledBuffer(uint32_t capacityBytes, uint32_t resourceFlags) : capacity(capacityBytes)
{
    flags = resourceFlags;
    blocks.push_back({0, capacity, true, 1});
    if (!(flags & kResourceDynamic)) shadow.assign(capacity, 0);
}

bool PooledBuffer::Restore()
{
    if (buffer) return true;
    gpu::Device* device = CurrentDevice();
    if (!device) return false;
    const bool dynamic = flags & kResourceDynamic;
    if (dynamic) {
        if (!CreateDeviceBuffer(*device, gpu::D3DUSAGE_DYNAMIC | gpu::D3DUSAGE_WRITEONLY, gpu::D3DPOOL_DEFAULT))
            return false;
    } else {
        if (!CreateDeviceBuffer(*device, gpu::D3DUSAGE_WRITEONLY, gpu::D3DPOOL_MANAGED)) return false;
        if (!shadow.empty() && !Write(0, shadow.data(), capacity, 0)) return false;
    }
    writePosition = 0;
    AfterRestore();
    return true;
}

bool PooledBuffer::Write(uint32_t offset, const void* data, uint32_t bytes, uint32_t lockFlags)
{
    void* target = nullptr;
    if (!buffer || qx::FAILED(buffer->Lock(offset, bytes, &target, lockFlags))) return false;
    std::memcpy(target, data, bytes);
    buffer->Unlock();
    return true;
}

bool PooledBuffer::Take(const void* data, uint32_t bytes, uint32_t stride, uint32_t& first)
{
    if (!data || bytes == 0 || stride == 0 || bytes > capacity) return false;
    return (flags & kResourceDynamic) ? TakeDynamic(data, bytes, stride, first)
                                      : TakeStatic(data, bytes, stride, first);
}

bool PooledBuffer::TakeStatic(const void* data, uint32_t bytes, uint32_t stride, uint32_t& first)
{
    for (size_t i = 0; i < blocks.size(); ++i) {
        const BufferBlock block = blocks[i];
        if (!block.free || block.size < bytes) continue;
        const auto aligned = uint32_t(RoundUp(block.offset, stride));
        const uint32_t gap = aligned - block.offset;
        if (uint64_t(gap) + bytes > block.size) continue;  // large enough, but loses too much by rounding
        if (gap > 0) blocks[i - 1].size += gap;            // block 0 starts at 0, which every stride divides
        const uint32_t rest = block.size - gap - bytes;
        blocks[i] = BufferBlock{aligned, bytes, false, stride};
        if (rest > 0)
            blocks.insert(blocks.begin() + std::ptrdiff_t(i) + 1, BufferBlock{aligned + bytes, rest, true, 1});
        first = aligned / stride;
        std::memcpy(shadow.data() + aligned, data, bytes);
        return Write(aligned, data, bytes, 0);
    }
    return false;
}

bool PooledBuffer::TakeDynamic(const void* data, uint32_t bytes, uint32_t stride, uint32_t& first)
{
    uint64_t position = RoundUp(writePosition, stride);
    uint32_t lockFlags = gpu::D3DLOCK_NOOVERWRITE;
    if (position + bytes > capacity) {
        position = 0;
        lockFlags = gpu::D3DLOCK_DISCARD;
    }
    if (!Write(uint32_t(position), data, bytes, lockFlags)) return false;
    first = uint32_t(position / stride);
    writePosition = uint32_t(position) + bytes;
    return true;
}

bool PooledBuffer::Free(uint32_t first)
{
    if (flags & kResourceDynamic) return false;
    for (size_t i = 0; i < blocks.size(); ++i) {
        BufferBlock& block = blocks[i];
        if (block.free || uint64_t(first) * block.stride != block.offset) continue;
        block = BufferBlock{block.offset, block.size, true, 1};
        if (i + 1 < blocks.size() && blocks[i + 1].free) {
            block.size += blocks[i + 1].size;
            blocks.erase(blocks.begin() + std::ptrdiff_t(i) + 1);
        }
        if (i > 0 && blocks[i - 1].free) {
            blocks[i - 1].size += block.size;
            blocks.erase(blocks.begin() + std::ptrdiff_t(i));
        }
        break;
    }
    return blocks.size() == 1 && blocks[0].free;
}

}  // namespace qx4d
