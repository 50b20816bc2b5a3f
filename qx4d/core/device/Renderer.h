#pragma once
// Owns every device resource through small shared handles, caches what is bound so that
// the device is called only on a change, and tears everything down and restores it when
// the device is lost. Textures are also reached from video threads: the texture list and
// the 8 texture bindings are guarded by one lock, and nothing else is.
#include "qx4d/core/Singleton.h"
#include "qx4d/core/device/DepthStencilSurface.h"
#include "qx4d/core/device/Effect.h"
#include "qx4d/core/device/IndexBuffer.h"
#include "qx4d/core/device/RenderTarget.h"
#include "qx4d/core/device/ResourceList.h"
#include "qx4d/core/device/Texture.h"
#include "qx4d/core/device/VertexBuffer.h"
#include "qx4d/core/device/VertexDeclaration.h"

#include <array>
#include <mutex>
#include <string>

namespace qx4d {

class Renderer : public Singleton<Renderer> {
public:
    /// Vertex blocks above this many bytes are refused; new shared vertex buffers have it.
    static constexpr uint32_t kVertexPoolBytes = 0x400000;
    static constexpr uint32_t kIndexPoolBytes = 0x100000;
    static constexpr int kTextureStages = 8;

    Renderer() = default;
    ~Renderer();

    // Creation: each gives the null handle on failure.
    /// `count` includes the end marker.
    ResourceHandle CreateVertexDeclaration(const gpu::D3DVERTEXELEMENT9* elements, uint32_t count);
    ResourceHandle AddVertices(const void* data, uint32_t count, uint32_t stride, uint32_t& first);
    ResourceHandle CreateVertexBuffer(uint32_t bytes, uint32_t flags);
    void FreeVertices(const ResourceHandle& handle, uint32_t first);
    /// `format`: bytes per index, 2 or 4.
    ResourceHandle AddIndices(const void* data, uint32_t count, uint32_t format, uint32_t& first);
    ResourceHandle CreateIndexBuffer(uint32_t bytes, uint32_t flags);
    void FreeIndices(const ResourceHandle& handle, uint32_t first);
    ResourceHandle LoadTexture(const String& name);
    ResourceHandle FindTexture(const String& name);
    ResourceHandle CreateTexture(uint32_t width, uint32_t height, gpu::D3DFORMAT format, uint32_t usage);
    ResourceHandle CreateRenderTexture(uint32_t width, uint32_t height, gpu::D3DFORMAT format);
    ResourceHandle CreateDepthStencil(uint32_t width, uint32_t height, gpu::D3DFORMAT format);
    ResourceHandle CreateRenderTarget(uint32_t width, uint32_t height);
    ResourceHandle LoadEffect(const String& fileName);
    ResourceHandle CreateEffect(const std::string& text);

    // Release: the count goes down; at 0 the resource is unbound and destroyed. The
    // caller's handle becomes the null handle in any case.
    void ReleaseVertexDeclaration(ResourceHandle& handle);
    void ReleaseVertexBuffer(ResourceHandle& handle);
    void ReleaseIndexBuffer(ResourceHandle& handle);
    void ReleaseTexture(ResourceHandle& handle);
    void ReleaseDepthStencil(ResourceHandle& handle);
    void ReleaseRenderTarget(ResourceHandle& handle);
    void ReleaseEffect(ResourceHandle& handle);

    // Resolving a handle to its resource; null for the null handle and stale handles.
    VertexDeclaration* GetVertexDeclaration(const ResourceHandle& handle) const { return declarations.Resolve(handle); }
    VertexBuffer* GetVertexBuffer(const ResourceHandle& handle) const { return vertexBuffers.Resolve(handle); }
    IndexBuffer* GetIndexBuffer(const ResourceHandle& handle) const { return indexBuffers.Resolve(handle); }
    /// Takes the texture lock while reading the list.
    Texture* GetTexture(const ResourceHandle& handle);
    DepthStencilSurface* GetDepthStencil(const ResourceHandle& handle) const { return depthStencils.Resolve(handle); }
    RenderTarget* GetRenderTarget(const ResourceHandle& handle) const { return renderTargets.Resolve(handle); }
    Effect* GetEffect(const ResourceHandle& handle) const { return effects.Resolve(handle); }
    std::recursive_mutex& TextureLock() { return textureLock; }

    // Bound state: the device is called only on a change.
    void SetVertexDeclaration(const ResourceHandle& handle);
    void SetStream(const ResourceHandle& handle, uint32_t stride);
    void SetIndices(const ResourceHandle& handle);
    void SetTexture(int stage, const ResourceHandle& handle);
    void ClearTexture(int stage);
    void ClearStream(int index);
    void SetEffect(const ResourceHandle& handle);
    void EndEffect();
    void SetSrcBlend(uint32_t value);
    void SetDestBlend(uint32_t value);
    /// D3DRS_FOGCOLOR, set on the device only when it differs from the cached value.
    void SetFogColor(uint32_t color);
    void ResetState();
    void OnDeviceLost();
    bool OnDeviceReset();

    const ResourceHandle& BoundEffect() const { return boundEffect; }
    uint32_t PassCount() const { return passCount; }

    uint32_t fogColor = 0;
    bool fogOn = false;

private:
    void EndRunningEffect();
    void UnbindVertexBuffer(const ResourceHandle& handle);
    void SetStreamAt(int index, const ResourceHandle& handle, uint32_t stride);
    template <typename T>
    void ReleaseFrom(ResourceList<T>& list, ResourceHandle& handle, void (Renderer::*unbind)(const ResourceHandle&));
    void UnbindDeclaration(const ResourceHandle& handle);
    void UnbindTexture(const ResourceHandle& handle);
    void UnbindIndices(const ResourceHandle& handle);
    void UnbindEffect(const ResourceHandle& handle);
    void UnbindNothing(const ResourceHandle&) {}

    ResourceList<VertexDeclaration> declarations;
    ResourceHandle boundDeclaration;
    ResourceList<VertexBuffer> vertexBuffers;
    std::array<ResourceHandle, 2> boundStreams;
    std::array<uint32_t, 2> streamStrides{};
    ResourceList<Texture> textures;
    std::array<ResourceHandle, kTextureStages> boundTextures;
    ResourceList<DepthStencilSurface> depthStencils;
    ResourceList<RenderTarget> renderTargets;
    ResourceList<IndexBuffer> indexBuffers;
    ResourceHandle boundIndices;
    // Shaders live inside effects: these two lists stay empty, their bindings null.
    ResourceHandle boundVertexShader;
    ResourceHandle boundPixelShader;
    ResourceList<Effect> effects;
    ResourceHandle boundEffect;
    uint32_t passCount = 0;
    std::recursive_mutex textureLock;
};

}  // namespace qx4d
