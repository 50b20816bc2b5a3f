#include "wrap3d/OffscreenTarget.h"

#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"

#include <cstring>

namespace qx::wrap3d {

OffscreenTarget::~OffscreenTarget() { Release(); }

void OffscreenTarget::Release()
{
    readback.reset();
    if (qx4d::Renderer* renderer = qx4d::Renderer::Instance()) {
        renderer->ReleaseRenderTarget(renderTarget);
        renderer->ReleaseDepthStencil(depthStencil);
    }
}

bool OffscreenTarget::Create(int32_t newWidth, int32_t newHeight)
{
    Release();
    width = newWidth;
    height = newHeight;
    gpu::Device* device = qx4d::CurrentDevice();
    qx4d::Renderer* renderer = qx4d::Renderer::Instance();
    if (!device || !renderer || width <= 0 || height <= 0 ||
        FAILED(device->CreateOffscreenPlainSurface(UINT(width), UINT(height), gpu::D3DFMT_A8R8G8B8,
                                                   gpu::D3DPOOL_SYSTEMMEM, &readback)))
        return false;
    renderTarget = renderer->CreateRenderTarget(uint32_t(width), uint32_t(height));
    depthStencil = renderer->CreateDepthStencil(uint32_t(width), uint32_t(height), gpu::D3DFMT_D24S8);
    return !renderTarget.IsNull() && !depthStencil.IsNull();
}

bool OffscreenTarget::Begin()
{
    gpu::Device* device = qx4d::CurrentDevice();
    qx4d::Renderer* renderer = qx4d::Renderer::Instance();
    const qx4d::RenderTarget* target = renderer ? renderer->GetRenderTarget(renderTarget) : nullptr;
    const qx4d::DepthStencilSurface* depth = renderer ? renderer->GetDepthStencil(depthStencil) : nullptr;
    if (!device || !target || !depth) return false;
    device->GetRenderTarget(0, &savedColor);
    device->GetDepthStencilSurface(&savedDepth);
    device->SetRenderTarget(0, target->surface);
    device->SetDepthStencilSurface(depth->surface);
    return true;
}

void OffscreenTarget::End(uint32_t* out)
{
    gpu::Device* device = qx4d::CurrentDevice();
    qx4d::Renderer* renderer = qx4d::Renderer::Instance();
    const qx4d::RenderTarget* target = renderer ? renderer->GetRenderTarget(renderTarget) : nullptr;
    if (!device) return;
    if (target && readback) device->GetRenderTargetData(target->surface, readback);
    device->SetRenderTarget(0, savedColor);
    device->SetDepthStencilSurface(savedDepth);
    savedColor.reset();
    savedDepth.reset();
    gpu::D3DLOCKED_RECT locked;
    if (!readback || !out || FAILED(readback->LockRect(&locked, gpu::D3DLOCK_READONLY))) return;
    // The callers' rows are width x 4 bytes. This device layer's pitch is exactly that, and
    // the frame goes over in one block; a wider pitch would run past the caller's buffer,
    // so it is taken row by row.
    const size_t rowBytes = size_t(width) * 4;
    if (size_t(locked.Pitch) == rowBytes) {
        std::memcpy(out, locked.pBits, rowBytes * size_t(height));
    } else {
        for (int32_t row = 0; row < height; ++row)
            std::memcpy(reinterpret_cast<uint8_t*>(out) + rowBytes * size_t(row),
                        static_cast<const uint8_t*>(locked.pBits) + size_t(locked.Pitch) * size_t(row), rowBytes);
    }
    readback->UnlockRect();
}

}  // namespace qx::wrap3d
