#pragma once
// A vertex buffer resource: shared static blocks or dynamic ring (see PooledBuffer).
#include "qx4d/core/device/PooledBuffer.h"

namespace qx4d {

class VertexBuffer : public PooledBuffer {
public:
    using PooledBuffer::PooledBuffer;

protected:
    bool CreateDeviceBuffer(gpu::Device& device, uint32_t usage, gpu::D3DPOOL pool) override
    {
        return qx::SUCCEEDED(device.CreateVertexBuffer(capacity, usage, pool, &buffer));
    }
};

}  // namespace qx4d
