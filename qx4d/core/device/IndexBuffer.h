#pragma once
// An index buffer resource: 16- or 32-bit indices (flag 0x08), optionally filled as a
// quad list (flag 0x10) every time it is made.
#include "qx4d/core/device/PooledBuffer.h"

namespace qx4d {

class IndexBuffer : public PooledBuffer {
public:
    using PooledBuffer::PooledBuffer;

    /// 2 or 4.
    uint32_t IndexSize() const { return (flags & kResourceIndex32) ? 4 : 2; }

protected:
    bool CreateDeviceBuffer(gpu::Device& device, uint32_t usage, gpu::D3DPOOL pool) override;
    void AfterRestore() override;
};

}  // namespace qx4d
