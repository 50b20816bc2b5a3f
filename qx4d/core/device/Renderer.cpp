// The renderer's creation and release of resources, and the shared block pools.
#include "qx4d/core/device/Renderer.h"

namespace qx4d {

namespace {

constexpr uint32_t kMaxDeclarationElements = 64;

bool IsPoolCandidate(const PooledBuffer& buffer) { return !(buffer.flags & (kResourceExclusive | kResourceDynamic)); }

}  // namespace

Renderer::~Renderer()
{
    declarations.Clear();
    vertexBuffers.Clear();
    {
        std::lock_guard lock(textureLock);
        textures.Clear();
    }
    depthStencils.Clear();
    renderTargets.Clear();
    indexBuffers.Clear();
    effects.Clear();
}

ResourceHandle Renderer::CreateVertexDeclaration(const gpu::D3DVERTEXELEMENT9* elements, uint32_t count)
{
    if (!elements || count == 0 || count > kMaxDeclarationElements) return ResourceHandle();
    ResourceHandle shared = declarations.Share([&](const VertexDeclaration& d) { return d.Matches(elements, count); });
    if (!shared.IsNull()) return shared;
    return declarations.Make(std::make_unique<VertexDeclaration>(elements, count));
}

ResourceHandle Renderer::AddVertices(const void* data, uint32_t count, uint32_t stride, uint32_t& first)
{
    const uint64_t bytes = uint64_t(count) * stride;
    if (bytes == 0 || bytes > kVertexPoolBytes) return ResourceHandle();
    // The handle is the pool's: blocks go back through FreeVertices, not by release.
    for (const auto& buffer : vertexBuffers.items) {
        if (IsPoolCandidate(*buffer) && buffer->Take(data, uint32_t(bytes), stride, first)) return buffer->handle;
    }
    const ResourceHandle made = vertexBuffers.Make(std::make_unique<VertexBuffer>(kVertexPoolBytes, 0u));
    VertexBuffer* buffer = vertexBuffers.Resolve(made);
    if (!buffer || !buffer->Take(data, uint32_t(bytes), stride, first)) return ResourceHandle();
    return made;
}

ResourceHandle Renderer::AddIndices(const void* data, uint32_t count, uint32_t format, uint32_t& first)
{
    const uint64_t bytes = uint64_t(count) * format;
    if ((format != 2 && format != 4) || bytes == 0 || bytes > kIndexPoolBytes) return ResourceHandle();
    // A pool buffer holds indices of one size.
    const uint32_t sizeFlag = format == 4 ? kResourceIndex32 : 0u;
    for (const auto& buffer : indexBuffers.items) {
        if (IsPoolCandidate(*buffer) && (buffer->flags & kResourceIndex32) == sizeFlag &&
            buffer->Take(data, uint32_t(bytes), format, first))
            return buffer->handle;
    }
    const ResourceHandle made = indexBuffers.Make(std::make_unique<IndexBuffer>(kIndexPoolBytes, sizeFlag));
    IndexBuffer* buffer = indexBuffers.Resolve(made);
    if (!buffer || !buffer->Take(data, uint32_t(bytes), format, first)) return ResourceHandle();
    return made;
}

// A buffer for one user is never given to the pools.
ResourceHandle Renderer::CreateVertexBuffer(uint32_t bytes, uint32_t flags)
{
    if (bytes == 0) return ResourceHandle();
    return vertexBuffers.Make(std::make_unique<VertexBuffer>(bytes, flags | kResourceExclusive));
}

ResourceHandle Renderer::CreateIndexBuffer(uint32_t bytes, uint32_t flags)
{
    if (bytes == 0) return ResourceHandle();
    return indexBuffers.Make(std::make_unique<IndexBuffer>(bytes, flags | kResourceExclusive));
}

void Renderer::FreeVertices(const ResourceHandle& handle, uint32_t first)
{
    VertexBuffer* buffer = vertexBuffers.Resolve(handle);
    if (buffer && buffer->Free(first)) {
        UnbindVertexBuffer(handle);
        vertexBuffers.Destroy(handle.Index());
    }
}

void Renderer::FreeIndices(const ResourceHandle& handle, uint32_t first)
{
    IndexBuffer* buffer = indexBuffers.Resolve(handle);
    if (buffer && buffer->Free(first)) {
        UnbindIndices(handle);
        indexBuffers.Destroy(handle.Index());
    }
}

ResourceHandle Renderer::LoadTexture(const String& name)
{
    std::lock_guard lock(textureLock);
    ResourceHandle shared = textures.Share([&](const Texture& t) { return t.name == name; });
    if (!shared.IsNull()) return shared;
    auto texture = std::make_unique<Texture>();
    texture->name = name;
    return textures.Make(std::move(texture));
}

// The same search as LoadTexture, the count raised alike; never loads.
ResourceHandle Renderer::FindTexture(const String& name)
{
    std::lock_guard lock(textureLock);
    return textures.Share([&](const Texture& t) { return t.name == name; });
}

ResourceHandle Renderer::CreateTexture(uint32_t width, uint32_t height, gpu::D3DFORMAT format, uint32_t usage)
{
    auto texture = std::make_unique<Texture>();
    texture->info.Width = width;
    texture->info.Height = height;
    texture->info.MipLevels = 1;
    texture->info.Format = format;
    texture->usage = usage;
    std::lock_guard lock(textureLock);
    return textures.Make(std::move(texture));
}

ResourceHandle Renderer::CreateRenderTexture(uint32_t width, uint32_t height, gpu::D3DFORMAT format)
{
    auto texture = std::make_unique<Texture>();
    texture->info.Width = width;
    texture->info.Height = height;
    texture->info.MipLevels = 1;
    texture->info.Format = format;
    texture->usage = gpu::D3DUSAGE_RENDERTARGET;
    texture->flags = kResourceExclusive;
    std::lock_guard lock(textureLock);
    return textures.Make(std::move(texture));
}

ResourceHandle Renderer::CreateDepthStencil(uint32_t width, uint32_t height, gpu::D3DFORMAT format)
{
    ResourceHandle shared = depthStencils.Share([&](const DepthStencilSurface& s) {
        return s.desc.Width == width && s.desc.Height == height && s.desc.Format == format &&
               !(s.flags & kResourceExclusive);
    });
    if (!shared.IsNull()) return shared;
    return depthStencils.Make(std::make_unique<DepthStencilSurface>(width, height, format));
}

ResourceHandle Renderer::CreateRenderTarget(uint32_t width, uint32_t height)
{
    ResourceHandle shared = renderTargets.Share([&](const RenderTarget& s) {
        return s.desc.Width == width && s.desc.Height == height && !(s.flags & kResourceExclusive);
    });
    if (!shared.IsNull()) return shared;
    return renderTargets.Make(std::make_unique<RenderTarget>(width, height, gpu::D3DFMT_A8R8G8B8));
}

ResourceHandle Renderer::LoadEffect(const String& fileName)
{
    ResourceHandle shared = effects.Share([&](const Effect& e) { return !e.source && e.name == fileName; });
    if (!shared.IsNull()) return shared;
    auto effect = std::make_unique<Effect>();
    effect->name = fileName;
    return effects.Make(std::move(effect));
}

ResourceHandle Renderer::CreateEffect(const std::string& text)
{
    ResourceHandle shared = effects.Share([&](const Effect& e) { return e.source && *e.source == text; });
    if (!shared.IsNull()) return shared;
    auto effect = std::make_unique<Effect>();
    effect->source = text;
    return effects.Make(std::move(effect));
}

template <typename T>
void Renderer::ReleaseFrom(ResourceList<T>& list, ResourceHandle& handle,
                           void (Renderer::*unbind)(const ResourceHandle&))
{
    T* resource = list.Resolve(handle);
    if (resource && --resource->refCount <= 0) {
        (this->*unbind)(handle);
        list.Destroy(handle.Index());
    }
    handle = ResourceHandle();
}

void Renderer::ReleaseVertexDeclaration(ResourceHandle& handle)
{
    ReleaseFrom(declarations, handle, &Renderer::UnbindDeclaration);
}

void Renderer::ReleaseVertexBuffer(ResourceHandle& handle)
{
    ReleaseFrom(vertexBuffers, handle, &Renderer::UnbindVertexBuffer);
}

void Renderer::ReleaseIndexBuffer(ResourceHandle& handle)
{
    ReleaseFrom(indexBuffers, handle, &Renderer::UnbindIndices);
}

void Renderer::ReleaseTexture(ResourceHandle& handle)
{
    std::lock_guard lock(textureLock);
    ReleaseFrom(textures, handle, &Renderer::UnbindTexture);
}

void Renderer::ReleaseDepthStencil(ResourceHandle& handle)
{
    ReleaseFrom(depthStencils, handle, &Renderer::UnbindNothing);
}

void Renderer::ReleaseRenderTarget(ResourceHandle& handle)
{
    ReleaseFrom(renderTargets, handle, &Renderer::UnbindNothing);
}

void Renderer::ReleaseEffect(ResourceHandle& handle) { ReleaseFrom(effects, handle, &Renderer::UnbindEffect); }

Texture* Renderer::GetTexture(const ResourceHandle& handle)
{
    std::lock_guard lock(textureLock);
    return textures.Resolve(handle);
}

}  // namespace qx4d
