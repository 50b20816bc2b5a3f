// The renderer's bound state, effects with their pass rules, and device loss and reset.
#include "qx4d/core/device/Renderer.h"

namespace qx4d {

void Renderer::SetVertexDeclaration(const ResourceHandle& handle)
{
    if (handle.SameAs(boundDeclaration)) return;
    boundDeclaration = handle;
    VertexDeclaration* declaration = declarations.Resolve(handle);
    if (gpu::Device* device = CurrentDevice())
        device->SetVertexDeclaration(declaration ? declaration->declaration : nullptr);
}

void Renderer::SetStreamAt(int index, const ResourceHandle& handle, uint32_t stride)
{
    const uint32_t boundStride = handle.IsNull() ? 0 : stride;
    if (handle.SameAs(boundStreams[size_t(index)]) && boundStride == streamStrides[size_t(index)]) return;
    boundStreams[size_t(index)] = handle;
    streamStrides[size_t(index)] = boundStride;
    VertexBuffer* buffer = vertexBuffers.Resolve(handle);
    if (gpu::Device* device = CurrentDevice())
        device->SetStreamSource(uint32_t(index), buffer ? buffer->buffer : nullptr, 0, boundStride);
}

void Renderer::SetStream(const ResourceHandle& handle, uint32_t stride) { SetStreamAt(0, handle, stride); }

void Renderer::ClearStream(int index)
{
    if (index >= 0 && index < 2 && !boundStreams[size_t(index)].IsNull()) SetStreamAt(index, ResourceHandle(), 0);
}

void Renderer::SetIndices(const ResourceHandle& handle)
{
    if (handle.SameAs(boundIndices)) return;
    boundIndices = handle;
    IndexBuffer* buffer = indexBuffers.Resolve(handle);
    if (gpu::Device* device = CurrentDevice()) device->SetIndices(buffer ? buffer->buffer : nullptr);
}

void Renderer::SetTexture(int stage, const ResourceHandle& handle)
{
    std::lock_guard lock(textureLock);
    if (stage < 0 || stage >= kTextureStages || handle.SameAs(boundTextures[size_t(stage)])) return;
    boundTextures[size_t(stage)] = handle;
    Texture* texture = textures.Resolve(handle);
    if (gpu::Device* device = CurrentDevice())
        device->SetTexture(uint32_t(stage), texture ? texture->baseTexture : nullptr);
}

void Renderer::ClearTexture(int stage)
{
    std::lock_guard lock(textureLock);
    if (stage >= 0 && stage < kTextureStages && !boundTextures[size_t(stage)].IsNull())
        SetTexture(stage, ResourceHandle());
}

// Ends the running effect: its last pass runs now, when it has several, which is how
// effect files restore the states their first pass set.
void Renderer::EndRunningEffect()
{
    Effect* running = effects.Resolve(boundEffect);
    if (!running || !running->effect) return;
    running->effect->EndPass();
    if (passCount > 1 && qx::SUCCEEDED(running->effect->BeginPass(passCount - 1))) running->effect->EndPass();
    running->effect->End();
}

void Renderer::SetEffect(const ResourceHandle& handle)
{
    if (handle.SameAs(boundEffect)) {
        if (Effect* running = effects.Resolve(boundEffect); running && running->effect)
            running->effect->CommitChanges();
        return;
    }
    EndRunningEffect();
    boundEffect = handle;
    passCount = 0;
    Effect* next = effects.Resolve(handle);
    if (next && next->effect) {
        next->effect->Begin(&passCount, gpu::D3DXFX_DONOTSAVESTATE);
        next->effect->BeginPass(0);
    }
}

void Renderer::EndEffect()
{
    EndRunningEffect();
    boundEffect = ResourceHandle();
    passCount = 0;
}

void Renderer::SetSrcBlend(uint32_t value)
{
    if (gpu::Device* device = CurrentDevice()) device->SetRenderState(gpu::D3DRS_SRCBLEND, value);
}

void Renderer::SetDestBlend(uint32_t value)
{
    if (gpu::Device* device = CurrentDevice()) device->SetRenderState(gpu::D3DRS_DESTBLEND, value);
}

void Renderer::SetFogColor(uint32_t color)
{
    if (color == fogColor) return;
    fogColor = color;
    if (gpu::Device* device = CurrentDevice()) device->SetRenderState(gpu::D3DRS_FOGCOLOR, color);
}

void Renderer::ResetState()
{
    boundDeclaration = ResourceHandle();  // only the cache
    SetIndices(ResourceHandle());
    boundVertexShader = ResourceHandle();
    boundPixelShader = ResourceHandle();
    gpu::Device* device = CurrentDevice();
    if (device) device->SetPassShaders(nullptr);
    boundEffect = ResourceHandle();
    passCount = 0;
    for (int stage = 0; stage < kTextureStages; ++stage) ClearTexture(stage);
    ClearStream(0);
    ClearStream(1);
    fogOn = false;
    for (uint32_t sampler = 0; device && sampler < uint32_t(kTextureStages); ++sampler) {
        device->SetSamplerState(sampler, gpu::D3DSAMP_MINFILTER, gpu::D3DTEXF_LINEAR);
        device->SetSamplerState(sampler, gpu::D3DSAMP_MAGFILTER, gpu::D3DTEXF_LINEAR);
        device->SetSamplerState(sampler, gpu::D3DSAMP_MIPFILTER, gpu::D3DTEXF_LINEAR);
    }
}

namespace {

template <typename T>
void LoseAll(ResourceList<T>& list)
{
    for (size_t i = list.items.size(); i-- > 0;) list.items[i]->OnDeviceLost();
}

// Restores from the last to the first; once one has failed, no other is called.
template <typename T>
void RestoreAll(ResourceList<T>& list, bool& ok)
{
    for (size_t i = list.items.size(); ok && i-- > 0;) ok = list.items[i]->Restore();
}

}  // namespace

// Loss and restore run on the engine's worker while a frame's thread waits for them: the
// context is handed back when they end.
void Renderer::ReleaseContext()
{
    if (GraphicsDevice* graphics = GraphicsDevice::Current()) graphics->ReleaseThread();
}

void Renderer::OnDeviceLost()
{
    LoseAll(declarations);
    {
        std::lock_guard lock(textureLock);
        LoseAll(textures);
    }
    LoseAll(depthStencils);
    LoseAll(renderTargets);
    LoseAll(vertexBuffers);
    LoseAll(indexBuffers);
    // (The vertex and pixel shader lists are empty.)
    EndEffect();
    LoseAll(effects);
    ReleaseContext();
}

bool Renderer::OnDeviceReset()
{
    bool ok = true;
    RestoreAll(declarations, ok);
    {
        std::lock_guard lock(textureLock);
        RestoreAll(textures, ok);
    }
    RestoreAll(depthStencils, ok);
    RestoreAll(renderTargets, ok);
    RestoreAll(vertexBuffers, ok);
    RestoreAll(indexBuffers, ok);
    RestoreAll(effects, ok);
    ResetState();
    ReleaseContext();
    return ok;
}

void Renderer::UnbindDeclaration(const ResourceHandle& handle)
{
    if (handle.SameAs(boundDeclaration)) SetVertexDeclaration(ResourceHandle());
}

void Renderer::UnbindVertexBuffer(const ResourceHandle& handle)
{
    for (int index = 0; index < 2; ++index) {
        if (handle.SameAs(boundStreams[size_t(index)])) ClearStream(index);
    }
}

void Renderer::UnbindTexture(const ResourceHandle& handle)
{
    for (int stage = 0; stage < kTextureStages; ++stage) {
        if (handle.SameAs(boundTextures[size_t(stage)])) ClearTexture(stage);
    }
}

void Renderer::UnbindIndices(const ResourceHandle& handle)
{
    if (handle.SameAs(boundIndices)) SetIndices(ResourceHandle());
}

void Renderer::UnbindEffect(const ResourceHandle& handle)
{
    if (handle.SameAs(boundEffect)) EndEffect();
}

}  // namespace qx4d
