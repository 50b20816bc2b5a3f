#pragma once
// Thousands of small quads (particles, flare elements) reach the card in batches: writers
// fill a staging array of vertices, and each flush places it in one dynamic vertex buffer
// and draws it through an index buffer filled once as a quad list.
#include "platform/gpu/Types.h"
#include "qx4d/core/Singleton.h"
#include "qx4d/core/device/ResourceHandle.h"

#include <cstdint>
#include <memory>
#include <span>

namespace qx4d {

/// The vertex of a particle quad (24 bytes).
struct ParticleVertex {
    float x, y, z;
    float u, v;
    uint32_t color;  // D3DCOLOR: 0xAARRGGBB
};
static_assert(sizeof(ParticleVertex) == 24);

/// The vertex of a lens-flare quad (32 bytes): a position in pixels, the texture
/// coordinates and a colour.
struct LensFlareVertex {
    float x, y, z;
    float u, v;
    float r, g, b;
};
static_assert(sizeof(LensFlareVertex) == 32);

/// What every bucket shares, whatever its vertex.
class BucketBase {
public:
    BucketBase() = default;
    virtual ~BucketBase();
    BucketBase(const BucketBase&) = delete;
    BucketBase& operator=(const BucketBase&) = delete;

    /// Binds the declaration, the stream, the indices and the effect; clears stage 0 and
    /// the bucket's texture.
    void Begin();
    /// Flushes what is left.
    void End() { Flush(); }
    /// The texture of the next flush; a writer flushes before it changes it.
    void SetTexture(const ResourceHandle& handle) { texture = handle; }
    /// Draws the staged vertices, if any, and empties the staging array.
    virtual void Flush() = 0;

    ResourceHandle declaration;
    ResourceHandle vertexBuffer;
    ResourceHandle indexBuffer;
    ResourceHandle texture;
    ResourceHandle effect;

protected:
    /// Makes the declaration, a dynamic vertex buffer of `capacity` quads, the quad-list
    /// index buffer and the effect, named `bufferName`.
    bool CreateResources(uint32_t capacity, std::span<const qx::gpu::D3DVERTEXELEMENT9> elements, uint32_t stride,
                         const char16_t* effectFile, const char16_t* bufferName);
    /// Places `count` vertices of `stride` bytes and draws them as `count / 2` triangles.
    void DrawStaged(const void* vertices, uint32_t count, uint32_t stride);

    uint32_t vertexStride = 0;
};

template <typename T>
class Bucket : public BucketBase {
public:
    /// Stores the handles and makes a staging array of `count` vertices (not quads).
    void Init(uint32_t count, ResourceHandle newDeclaration, ResourceHandle newVertexBuffer,
              ResourceHandle newIndexBuffer, ResourceHandle newEffect)
    {
        declaration = std::move(newDeclaration);
        vertexBuffer = std::move(newVertexBuffer);
        indexBuffer = std::move(newIndexBuffer);
        effect = std::move(newEffect);
        vertexStride = sizeof(T);
        staging = std::make_unique<T[]>(count);
        begin = cursor = staging.get();
        end = begin + count;
    }
    void Flush() override
    {
        if (cursor > begin) DrawStaged(begin, uint32_t(cursor - begin), sizeof(T));
        cursor = begin;
    }
    /// Room for `vertices` more before the next flush.
    bool HasRoom(size_t vertices) const { return size_t(end - cursor) >= vertices; }

    T* begin = nullptr;
    T* end = nullptr;
    T* cursor = nullptr;

protected:
    bool CreateBucket(uint32_t capacity, std::span<const qx::gpu::D3DVERTEXELEMENT9> elements,
                      const char16_t* effectFile, const char16_t* bufferName)
    {
        if (!CreateResources(capacity, elements, sizeof(T), effectFile, bufferName)) return false;
        Init(capacity, declaration, vertexBuffer, indexBuffer, effect);
        return true;
    }

private:
    std::unique_ptr<T[]> staging;
};

class ParticleBucket : public Bucket<ParticleVertex>, public Singleton<ParticleBucket> {
public:
    /// The declaration, buffers for `capacity` quads and "Particle.fx"; false on failure.
    bool Create(uint32_t capacity);
};

class LensFlareBucket : public Bucket<LensFlareVertex>, public Singleton<LensFlareBucket> {
public:
    /// The declaration, buffers for `capacity` quads and "LensFlare2.fx"; false on failure.
    bool Create(uint32_t capacity);
};

}  // namespace qx4d
