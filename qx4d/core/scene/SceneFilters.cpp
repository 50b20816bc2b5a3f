// The image filter chain of a scene: two targets that the frame and the filters draw into
// by turns, made for the size of the frame's own target. The frame is drawn into the
// first; each filter reads one and writes the other, and the last writes the frame's
// target.
#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Scene.h"

#include <algorithm>

namespace qx4d {

void Scene::SetFrameSize(int32_t width, int32_t height)
{
    if (width == frameWidth && height == frameHeight && !filterTargets[0].IsNull()) return;
    frameWidth = width;
    frameHeight = height;
    SetUpFilterChain();
}

void Scene::ReleaseFilterChain()
{
    if (Renderer* renderer = Renderer::Instance()) {
        for (ResourceHandle& texture : filterTargets) renderer->ReleaseTexture(texture);
        renderer->ReleaseDepthStencil(filterDepth);
    }
    savedTarget.reset();
    savedDepth.reset();
}

void Scene::SetUpFilterChain()
{
    ReleaseFilterChain();
    Renderer* renderer = Renderer::Instance();
    if (filters.empty() || frameWidth <= 0 || frameHeight <= 0 || !renderer) return;
    std::erase_if(filters, [&](const auto& filter) { return !filter->Create(frameWidth, frameHeight); });
    if (filters.empty()) return;
    const auto w = uint32_t(frameWidth), h = uint32_t(frameHeight);
    filterTargets[0] = renderer->CreateRenderTexture(w, h, gpu::D3DFMT_X8R8G8B8);
    if (filters.size() > 1) filterTargets[1] = renderer->CreateRenderTexture(w, h, gpu::D3DFMT_X8R8G8B8);
    filterDepth = renderer->CreateDepthStencil(w, h, gpu::D3DFMT_D24X8);
    for (size_t i = 0; i < filters.size(); ++i) filters[i]->source = filterTargets[i % 2];
}

bool Scene::BeginFilterChain(gpu::Device& device)
{
    Renderer* renderer = Renderer::Instance();
    const Texture* first = renderer && !filters.empty() ? renderer->GetTexture(filterTargets[0]) : nullptr;
    const DepthStencilSurface* depth = renderer ? renderer->GetDepthStencil(filterDepth) : nullptr;
    if (!first || !first->surface || !depth) return false;
    device.GetRenderTarget(0, &savedTarget);
    device.GetDepthStencilSurface(&savedDepth);
    device.SetRenderTarget(0, first->surface);
    device.SetDepthStencilSurface(depth->surface);
    return true;
}

void Scene::EndFilterChain(gpu::Device& device)
{
    Renderer* renderer = Renderer::Instance();
    device.SetDepthStencilSurface(nullptr);
    for (size_t i = 0; i < filters.size(); ++i) {
        if (i + 1 == filters.size()) {
            filters[i]->target = savedTarget;
        } else {
            const Texture* next = renderer->GetTexture(filterTargets[(i + 1) % 2]);
            filters[i]->target = next ? next->surface : nullptr;
        }
        filters[i]->Render();
        filters[i]->target.reset();
    }
    device.SetDepthStencilSurface(savedDepth);
    savedTarget.reset();
    savedDepth.reset();
}

}  // namespace qx4d
