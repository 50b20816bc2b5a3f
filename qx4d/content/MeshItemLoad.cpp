// Reading a mesh from its sub-chunks: declaration, geometry into the shared or dynamic
// buffers, levels of detail, textures and the surface with its material.
#include "qx4d/content/MeshItem.h"

#include "qx4d/content/Chunk.h"
#include "qx4d/content/Envelope.h"
#include "qx4d/content/ShaderKeys.h"
#include "qx4d/core/device/Renderer.h"

#include <algorithm>
#include <cfloat>
#include <cstring>
#include <numeric>

namespace qx4d {

namespace {

namespace gpu = qx::gpu;

/// More elements than any vertex has; the renderer refuses longer declarations.
constexpr uint32_t kMaxDeclarationElements = 64;
/// The shader constant space holds no more bone matrices than this.
constexpr uint32_t kMaxBones = 80;
/// `RDST` word bits.
constexpr uint32_t kStateAlphaBlend = 0x1;
constexpr uint32_t kStateDepth = 0x4;
constexpr uint32_t kStateDepthWrite = 0x8;
constexpr uint32_t kStateFogOff = 0x10;

/// Bytes of one element of a vertex declaration type; 0 for an unknown type.
uint32_t ElementBytes(uint8_t type)
{
    switch (type) {
    case gpu::D3DDECLTYPE_FLOAT1: return 4;
    case gpu::D3DDECLTYPE_FLOAT2: return 8;
    case gpu::D3DDECLTYPE_FLOAT3: return 12;
    case gpu::D3DDECLTYPE_FLOAT4: return 16;
    case 7:
    case 10:
    case 12:
    case 16: return 8;  // SHORT4, SHORT4N, USHORT4N, FLOAT16_4
    default: return type <= 16 ? 4 : 0;
    }
}

bool HasSkinning(std::span<const gpu::D3DVERTEXELEMENT9> elements)
{
    auto has = [&](uint8_t usage) {
        return std::any_of(elements.begin(), elements.end(),
                           [&](const auto& e) { return e.Usage == usage && e.UsageIndex == 0 && e.Stream == 0; });
    };
    return has(gpu::D3DDECLUSAGE_BLENDWEIGHT) && has(gpu::D3DDECLUSAGE_BLENDINDICES);
}

/// The material files that object files name, served by the engine's plain materials.
/// The first match wins; the lit materials are deliberately served by their unlit twins.
String MapMaterialName(const String& name)
{
    static const std::pair<std::u16string_view, std::u16string_view> kMapping[] = {
        {u"lit_textured.mat", u"texture.mat"},
        {u"lit_two_textures_normal_blend.mat", u"texture.mat"},
        {u"lit_colored.mat", u"color.mat"},
        {u"lit_colored_refl.mat", u"color_reflective.mat"},
        // Never reached: "lit_textured.mat" has been taken by the first row.
        {u"lit_textured.mat", u"texture_reflective.mat"},
        {u"lit_texture_alpha.mat", u"texture_alpha.mat"},
        {u"lit_two_textures_opacity.mat", u"two_textures_opacity.mat"},
    };
    for (const auto& [from, to] : kMapping)
        if (name == from) return String(to);
    return name;
}

/// The field of `material` that a surface envelope of this name drives; null for a name
/// the surface doesn't know.
float* SurfaceField(Material& material, const String& name)
{
    const std::pair<std::u16string_view, float*> kFields[] = {
        {u"Color.R", &material.Color[0]},
        {u"Color.G", &material.Color[1]},
        {u"Color.B", &material.Color[2]},
        {u"Luminosity", &material.Luminosity},
        {u"Diffuse", &material.Diffuse},
        {u"Specular", &material.Specular},
        {u"Glossiness", &material.Glossiness},
        {u"Reflective", &material.Reflective},
        {u"Transparency", &material.Transparency},
        {u"Color.TextureLayer[1].Opacity", &material.ColorTextureLayer1Opacity},
    };
    for (const auto& [fieldName, field] : kFields)
        if (name == fieldName) return field;
    return nullptr;
}

/// Static data into the shared pools, or, above a pool's size, into a buffer of its own.
ResourceHandle PlaceStaticVertices(Renderer& renderer, const void* data, uint32_t count, uint32_t stride,
                                   uint32_t& first)
{
    const uint64_t bytes = uint64_t(count) * stride;
    if (bytes <= Renderer::kVertexPoolBytes) return renderer.AddVertices(data, count, stride, first);
    const ResourceHandle own = renderer.CreateVertexBuffer(uint32_t(bytes), 0);
    VertexBuffer* buffer = renderer.GetVertexBuffer(own);
    return buffer && buffer->Take(data, uint32_t(bytes), stride, first) ? own : ResourceHandle();
}

ResourceHandle PlaceStaticIndices(Renderer& renderer, const void* data, uint32_t count, uint32_t size, uint32_t& first)
{
    const uint64_t bytes = uint64_t(count) * size;
    if (bytes <= Renderer::kIndexPoolBytes) return renderer.AddIndices(data, count, size, first);
    const ResourceHandle own = renderer.CreateIndexBuffer(uint32_t(bytes), size == 4 ? kResourceIndex32 : 0u);
    IndexBuffer* buffer = renderer.GetIndexBuffer(own);
    return buffer && buffer->Take(data, uint32_t(bytes), size, first) ? own : ResourceHandle();
}

}  // namespace

bool MeshItem::Load(Chunk& chunk)
{
    Chunk sub;
    while (chunk.NextChunk(sub)) {
        switch (sub.id) {
        case ChunkId("PRIM"): primitiveType = sub.ReadU16(); break;
        case ChunkId("DECL"):
            if (!LoadDeclaration(sub)) return false;
            break;
        case ChunkId("MISC"):
            if (!LoadGeometry(sub)) return false;
            break;
        case ChunkId("BONE"): {
            const uint32_t count = sub.ReadU32();
            bones.assign(std::min(count, kMaxBones), kIdentity3x4);
            break;
        }
        case ChunkId("LODS"):
            if (!LoadLods(sub)) return false;
            break;
        case ChunkId("BBOX"):
            for (float& value : boundingBox) value = sub.ReadF32();
            break;
        case ChunkId("DIST"): distance = sub.ReadF32(); break;
        case ChunkId("CLIP"): LoadClip(sub); break;
        case ChunkId("SURF"): LoadSurface(sub); break;
        default: break;
        }
    }
    return Finish();
}

bool MeshItem::LoadDeclaration(Chunk& chunk)
{
    const uint32_t count = chunk.ReadU32();
    if (count == 0 || count > kMaxDeclarationElements || uint64_t(count) * 8 > chunk.Remaining()) return false;
    declarationElements.resize(count);
    chunk.Read(declarationElements.data(), count * sizeof(gpu::D3DVERTEXELEMENT9));
    declarationElements.back() = gpu::D3DDECL_END;
    Renderer* renderer = Renderer::Instance();
    if (renderer) {
        renderer->ReleaseVertexDeclaration(declaration);
        declaration = renderer->CreateVertexDeclaration(declarationElements.data(), count);
    }
    return true;
}

bool MeshItem::LoadGeometry(Chunk& chunk)
{
    Renderer* renderer = Renderer::Instance();
    if (!renderer || vertexCount != 0) return false;  // a second geometry would leak the first one's blocks
    flags = chunk.ReadU32();
    if (flags & kMdd) {
        if (!mdd.Load(chunk)) return false;
        stride = mdd.Stride();
        vertexCount = 3 * mdd.triangleCount;
        vertexBuffer = renderer->CreateVertexBuffer(vertexCount * stride, kResourceDynamic);
        dynamicVertices = true;
    } else if (!LoadStaticVertices(chunk)) {
        return false;
    }
    return LoadIndices(chunk);
}

bool MeshItem::LoadStaticVertices(Chunk& chunk)
{
    vertexCount = chunk.ReadU32();
    stride = chunk.ReadU32();
    const uint64_t bytes = uint64_t(vertexCount) * stride;
    if (bytes > chunk.Remaining() || ((flags & kSortTriangles) && stride < 12 && vertexCount > 0)) {
        vertexCount = 0;
        return false;
    }
    if (bytes == 0) return true;
    const uint8_t* data = chunk.cursor;
    chunk.cursor += bytes;
    if (flags & kSortTriangles) {
        positions.resize(vertexCount);
        for (uint32_t v = 0; v < vertexCount; ++v)
            std::memcpy(positions[v].data(), data + size_t(v) * stride, sizeof(Float3));
    }
    vertexBuffer = PlaceStaticVertices(*Renderer::Instance(), data, vertexCount, stride, baseVertex);
    return true;
}

bool MeshItem::LoadIndices(Chunk& chunk)
{
    Renderer& renderer = *Renderer::Instance();
    std::vector<uint32_t>& indices = loadedIndices;
    if (!(flags & (kSortTriangles | kDynamicIndices))) {
        if (flags & kMdd) {
            indices.resize(vertexCount);
            std::iota(indices.begin(), indices.end(), 0u);
            indexCount = vertexCount;
        } else {
            indexCount = chunk.ReadU32();
            const uint32_t size = chunk.ReadU32();
            if ((size != 2 && size != 4) || uint64_t(indexCount) * size > chunk.Remaining()) return false;
            indices.resize(indexCount);
            for (uint32_t& index : indices) index = size == 2 ? chunk.ReadU16() : chunk.ReadU32();
        }
        if (std::any_of(indices.begin(), indices.end(), [&](uint32_t i) { return i >= vertexCount; })) return false;
        if (indices.empty()) return true;
        const bool narrow = vertexCount <= 0x10000;
        std::vector<uint16_t> shortIndices;
        if (narrow) shortIndices.assign(indices.begin(), indices.end());
        indexBuffer = narrow ? PlaceStaticIndices(renderer, shortIndices.data(), indexCount, 2, startIndex)
                             : PlaceStaticIndices(renderer, indices.data(), indexCount, 4, startIndex);
        return true;
    }
    // Indices that change each frame: kept here and written to a dynamic buffer.
    indexCount = chunk.ReadU32();
    chunk.ReadU32();
    if (uint64_t(indexCount) * 2 > chunk.Remaining()) return false;
    triangles.resize(indexCount);
    for (uint16_t& index : triangles) {
        index = chunk.ReadU16();
        if (index >= vertexCount) return false;
    }
    if (indexCount > 0) indexBuffer = renderer.CreateIndexBuffer(indexCount * 2, kResourceDynamic);
    dynamicIndices = true;
    return true;
}

bool MeshItem::LoadLods(Chunk& chunk)
{
    const uint32_t count = chunk.ReadU32();
    if (uint64_t(count) * sizeof(LodRecord) > chunk.Remaining()) return false;
    lods.resize(count);
    for (LodRecord& lod : lods) {
        lod.maxDistance = chunk.ReadF32();
        lod.baseVertex = chunk.ReadU32();
        lod.vertexCount = chunk.ReadU32();
        lod.startIndex = chunk.ReadU32();
        lod.primitiveCount = chunk.ReadU32();
    }
    return true;
}

void MeshItem::LoadClip(Chunk& chunk)
{
    Renderer* renderer = Renderer::Instance();
    Chunk still;
    while (chunk.NextChunk(still)) {
        if (still.id != ChunkId("STIL") || textureCount >= kMaxTextures || !renderer) continue;
        // A texture that can't be loaded keeps its slot with a null handle.
        textures[textureCount++] = renderer->LoadTexture(still.ReadString());
    }
}

void MeshItem::LoadSurface(Chunk& chunk)
{
    Chunk sub;
    while (chunk.NextChunk(sub)) {
        switch (sub.id) {
        case ChunkId("COLR"):
            for (float& component : material.Color) component = sub.ReadF32();
            break;
        case ChunkId("LUMI"): material.Luminosity = sub.ReadF32(); break;
        case ChunkId("DIFF"): material.Diffuse = sub.ReadF32(); break;
        case ChunkId("SPEC"): material.Specular = sub.ReadF32(); break;
        case ChunkId("GLOS"): material.Glossiness = sub.ReadF32(); break;
        case ChunkId("REFL"): material.Reflective = sub.ReadF32(); break;
        case ChunkId("TRAN"): material.Transparency = sub.ReadF32(); break;
        case ChunkId("SIDE"): side = sub.ReadU16(); break;
        case ChunkId("FX  "): LoadMaterialFile(sub.ReadString()); break;
        case ChunkId("RDST"): {
            const uint32_t states = sub.ReadU32();
            material.alphaBlendEnable = states & kStateAlphaBlend;
            if (material.alphaBlendEnable) {
                material.srcBlend = sub.ReadU16();
                material.destBlend = sub.ReadU16();
            }
            material.depthEnable = states & kStateDepth;
            material.depthWriteEnable = states & kStateDepthWrite;
            material.fogEnable = !(states & kStateFogOff);
            break;
        }
        case ChunkId("ENVL"): {
            auto envelope = std::make_unique<Envelope>();
            envelope->LoadChunks(sub);
            BindEnvelope(std::move(envelope));
            break;
        }
        default: break;
        }
    }
    FinishSurface();
}

void MeshItem::LoadMaterialFile(const String& fileName)
{
    const String mapped = MapMaterialName(fileName);
    material.Load(mapped);
    material.reflective = mapped.find(u"reflective") != String::npos;
}

void MeshItem::BindEnvelope(std::unique_ptr<Envelope> envelope)
{
    // A channel of another name keeps writing to its own storage.
    if (float* field = SurfaceField(material, envelope->GetName())) envelope->SetTarget(field);
    envelopes.push_back(std::move(envelope));
}

void MeshItem::FinishSurface()
{
    const ShadingScene& scene = CurrentShadingScene();
    for (const ShaderLight& light : scene.lights)
        material.shaderKeys.push_back(ShaderKeyForLight(light.type, light.edgeAngle));
    material.flags |= kMaterialMeshLit;
    // Skinned vertices read an array of model matrices, one a bone.
    if (HasSkinning(declarationElements)) material.bones = int32_t(bones.size());
    material.Build(declarationElements, scene);
}

bool MeshItem::Finish()
{
    // Every element must lie inside a vertex of stream 0, the one stream a mesh binds.
    for (size_t i = 0; i + 1 < declarationElements.size(); ++i) {
        const gpu::D3DVERTEXELEMENT9& element = declarationElements[i];
        const uint32_t bytes = ElementBytes(element.Type);
        if (element.Stream != 0 || bytes == 0 || uint32_t(element.Offset) + bytes > stride) return false;
    }
    if (primitiveType == gpu::D3DPT_LINELIST)
        primitiveCount = indexCount / 2;
    else if (primitiveType == gpu::D3DPT_TRIANGLELIST)
        primitiveCount = indexCount / 3;
    // A level whose range lies outside the geometry would draw past the buffers.
    std::erase_if(lods, [&](const LodRecord& lod) { return !LodFits(lod); });
    if (lods.empty()) lods.push_back({FLT_MAX, 0, vertexCount, 0, primitiveCount});
    loadedIndices = {};
    return true;
}

bool MeshItem::LodFits(const LodRecord& lod) const
{
    const uint64_t perPrimitive = primitiveType == gpu::D3DPT_LINELIST ? 2 : 3;
    const uint64_t end = uint64_t(lod.startIndex) + uint64_t(lod.primitiveCount) * perPrimitive;
    if (uint64_t(lod.baseVertex) + lod.vertexCount > vertexCount || end > indexCount) return false;
    const auto fits = [&](uint32_t index) { return uint64_t(index) + lod.baseVertex < vertexCount; };
    if (dynamicIndices)
        return std::all_of(triangles.begin() + lod.startIndex, triangles.begin() + std::ptrdiff_t(end), fits);
    return std::all_of(loadedIndices.begin() + lod.startIndex, loadedIndices.begin() + std::ptrdiff_t(end), fits);
}

}  // namespace qx4d
