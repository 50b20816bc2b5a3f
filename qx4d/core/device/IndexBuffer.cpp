#include "qx4d/core/device/IndexBuffer.h"

#include <cstring>

namespace qx4d {

namespace {

// Quads q = 0, 1, ... as the two triangles 4q, 4q+1, 4q+2 and 4q, 4q+2, 4q+3.
template <typename Index>
void FillQuads(uint8_t* target, uint32_t quads)
{
    for (uint32_t q = 0; q < quads; ++q) {
        const Index base = Index(4 * q);
        const Index quad[6] = {base, Index(base + 1), Index(base + 2), base, Index(base + 2), Index(base + 3)};
        std::memcpy(target + size_t(q) * sizeof(quad), quad, sizeof(quad));
    }
}

}  // namespace

bool IndexBuffer::CreateDeviceBuffer(gpu::Device& device, uint32_t usage, gpu::D3DPOOL pool)
{
    const gpu::D3DFORMAT format = (flags & kResourceIndex32) ? gpu::D3DFMT_INDEX32 : gpu::D3DFMT_INDEX16;
    return qx::SUCCEEDED(device.CreateIndexBuffer(capacity, usage, format, pool, &buffer));
}

void IndexBuffer::AfterRestore()
{
    if (!(flags & kResourceQuadList)) return;
    const uint32_t quads = capacity / (IndexSize() * 6);
    void* target = nullptr;
    if (qx::FAILED(buffer->Lock(0, 0, &target, gpu::D3DLOCK_DISCARD))) return;
    if (IndexSize() == 4)
        FillQuads<uint32_t>(static_cast<uint8_t*>(target), quads);
    else
        FillQuads<uint16_t>(static_cast<uint8_t*>(target), quads);
    buffer->Unlock();
    writePosition = capacity;
}

}  // namespace qx4d
