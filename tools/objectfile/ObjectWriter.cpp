// The object file format written from its model: an outer chunk, one object chunk with
// the item count and the item chunks, each with its common part and, for meshes, the
// mesh sub-chunks in the order the loader expects (declaration before geometry, geometry
// before the surface that builds the material for it).
#include "qx4d/content/ChunkWriter.h"
#include "tools/objectfile/ObjectModel.h"

#include <cstring>

namespace qx4d::tools {

namespace {

namespace gpu = qx::gpu;

const char* ItemId(ItemModel::Kind kind)
{
    switch (kind) {
    case ItemModel::Kind::Mesh: return "MESH";
    case ItemModel::Kind::Bone: return "BONE";
    case ItemModel::Kind::Clone: return "MECL";
    default: return "NULL";
    }
}

void WriteFloats(ChunkWriter& out, std::initializer_list<float> values)
{
    for (const float value : values) out.F32(value);
}

void WriteFloat3(ChunkWriter& out, const Float3& v) { WriteFloats(out, {v[0], v[1], v[2]}); }

/// A float as IEEE half precision, rounded to nearest.
uint16_t FloatToHalf(float value)
{
    uint32_t bits;
    std::memcpy(&bits, &value, 4);
    const uint32_t sign = (bits >> 16) & 0x8000;
    const int exponent = int((bits >> 23) & 0xFF) - 127 + 15;
    uint32_t mantissa = bits & 0x7FFFFF;
    if (exponent <= 0) return uint16_t(sign);  // too small: zero
    if (exponent >= 31) return uint16_t(sign | 0x7C00);
    mantissa += 0x1000;  // round to nearest
    if (mantissa & 0x800000) return uint16_t(sign | ((exponent + 1) << 10));
    return uint16_t(sign | (exponent << 10) | (mantissa >> 13));
}

void WriteValue(ChunkWriter& out, bool half, float value)
{
    if (half)
        out.U16(FloatToHalf(value));
    else
        out.F32(value);
}

}  // namespace

void WriteMdd(ChunkWriter& out, const MddModel& mdd)
{
    out.U32(mdd.halfFloats ? 1 : 0).F32(mdd.framesPerSecond);
    out.U32(uint32_t(mdd.frames.size())).U32(mdd.vertexCount);
    for (const auto& frame : mdd.frames)
        for (const Float3& p : frame)
            for (const float c : p) WriteValue(out, mdd.halfFloats, c);
    out.U32(uint32_t(mdd.timeline.size()));
    for (const uint16_t frame : mdd.timeline) out.U16(frame);
    out.U32(mdd.uvSetCount);
    for (uint32_t set = 0; set < mdd.uvSetCount && set < 2; ++set) {
        out.U32(uint32_t(mdd.uvSets[set].size()));
        for (const auto& uv : mdd.uvSets[set]) {
            WriteValue(out, mdd.halfFloats, uv[0]);
            WriteValue(out, mdd.halfFloats, uv[1]);
        }
    }
    out.U32(uint32_t(mdd.triangles.size()));
    for (const uint16_t index : mdd.triangles) out.U16(index);
    for (uint32_t set = 0; set < mdd.uvSetCount && set < 2; ++set)
        for (const uint16_t index : mdd.uvIndices[set]) out.U16(index);
    out.F32(mdd.smoothingAngle);
}

namespace {

void WriteGeometry(ChunkWriter& out, const MeshModel& mesh)
{
    out.Open("MISC").U32(mesh.flags);
    if (mesh.mdd) {
        WriteMdd(out, *mesh.mdd);
    } else {
        out.U32(mesh.VertexCount()).U32(mesh.stride).Raw(mesh.vertices.data(), mesh.vertices.size());
    }
    if (mesh.flags & (MeshItem::kSortTriangles | MeshItem::kDynamicIndices)) {
        out.U32(uint32_t(mesh.indices.size())).U32(2);
        for (const uint32_t index : mesh.indices) out.U16(uint16_t(index));
    } else if (!mesh.mdd) {
        // Two-byte indices whenever they fit.
        const bool wide = mesh.VertexCount() > 0x10000;
        out.U32(uint32_t(mesh.indices.size())).U32(wide ? 4 : 2);
        for (const uint32_t index : mesh.indices) wide ? out.U32(index) : out.U16(uint16_t(index));
    }
    out.Close();
}

void WriteEnvelope(ChunkWriter& out, const EnvelopeModel& envelope)
{
    out.Open("ENVL");
    out.Open("NAME").Text(envelope.name).Close();
    out.Open("PRE ").U16(envelope.preBehavior).Close();
    out.Open("POST").U16(envelope.postBehavior).Close();
    for (const EnvelopeKeyModel& key : envelope.keys) {
        out.Open("KEY ").F32(key.value).F32(key.time).U16(key.shape);
        for (const float param : key.params) out.F32(param);
        out.Close();
    }
    out.Close();
}

void WriteSurface(ChunkWriter& out, const SurfaceModel& surface)
{
    out.Open("SURF");
    out.Open("COLR");
    WriteFloat3(out, surface.color);
    out.Close();
    out.Open("LUMI").F32(surface.luminosity).Close();
    out.Open("DIFF").F32(surface.diffuse).Close();
    out.Open("SPEC").F32(surface.specular).Close();
    out.Open("GLOS").F32(surface.glossiness).Close();
    out.Open("REFL").F32(surface.reflective).Close();
    out.Open("TRAN").F32(surface.transparency).Close();
    out.Open("FX  ").Text(surface.materialFile).Close();
    out.Open("RDST").U32(surface.renderStates);
    if (surface.renderStates & SurfaceModel::kAlphaBlend) out.U16(surface.srcBlend).U16(surface.destBlend);
    out.Close();
    for (const EnvelopeModel& envelope : surface.envelopes) WriteEnvelope(out, envelope);
    out.Close();
}

void WriteMesh(ChunkWriter& out, const MeshModel& mesh)
{
    out.Open("PRIM").U16(mesh.primitiveType).Close();
    out.Open("DECL").U32(uint32_t(mesh.declaration.size()));
    out.Raw(mesh.declaration.data(), mesh.declaration.size() * sizeof(gpu::D3DVERTEXELEMENT9)).Close();
    if (mesh.boneCount > 0) out.Open("BONE").U32(mesh.boneCount).Close();
    WriteGeometry(out, mesh);
    if (!mesh.lods.empty()) {
        out.Open("LODS").U32(uint32_t(mesh.lods.size()));
        for (const LodRecord& lod : mesh.lods)
            out.F32(lod.maxDistance)
                .U32(lod.baseVertex)
                .U32(lod.vertexCount)
                .U32(lod.startIndex)
                .U32(lod.primitiveCount);
        out.Close();
    }
    if (mesh.boundingBox) {
        out.Open("BBOX");
        for (const float value : *mesh.boundingBox) out.F32(value);
        out.Close();
    }
    if (!mesh.textures.empty()) {
        out.Open("CLIP");
        for (const std::string& texture : mesh.textures) out.Open("STIL").Text(texture).Close();
        out.Close();
    }
    WriteSurface(out, mesh.surface);
}

}  // namespace

std::vector<uint8_t> WriteObject(const ObjectModel& model)
{
    ChunkWriter out;
    out.Open("FORM").Open("QXOB").U32(uint32_t(model.items.size()));
    for (const ItemModel& item : model.items) {
        out.Open(ItemId(item.kind));
        if (item.kind == ItemModel::Kind::Clone) out.U32(item.cloneSource);
        out.Text(item.name).U32(item.parent < 0 ? 0xFFFFFFFFu : uint32_t(item.parent));
        WriteFloat3(out, item.position);
        WriteFloat3(out, item.rotation);
        WriteFloat3(out, item.scale);
        if (item.kind == ItemModel::Kind::Mesh) WriteMesh(out, item.mesh);
        out.Close();
    }
    out.Close().Close();
    return std::move(out.bytes);
}

std::vector<gpu::D3DVERTEXELEMENT9> PositionNormalUvDeclaration()
{
    return {
        {0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITION, 0},
        {0, 12, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_NORMAL, 0},
        {0, 24, gpu::D3DDECLTYPE_FLOAT2, 0, gpu::D3DDECLUSAGE_TEXCOORD, 0},
        gpu::D3DDECL_END,
    };
}

}  // namespace qx4d::tools
