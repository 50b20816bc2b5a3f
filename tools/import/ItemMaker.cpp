// Mesh and bone items of an object file from placed, mirrored geometry.
#include "platform/gpu/Types.h"
#include "platform/os/CodePage.h"
#include "platform/os/WideText.h"
#include "tools/import/ConverterParts.h"

#include <numbers>

namespace qx4d::tools {

namespace {

namespace gpu = qx::gpu;

/// Position, normal, texture coordinates, and for a skinned mesh its weights and bones.
std::vector<gpu::D3DVERTEXELEMENT9> Declaration(bool skinned)
{
    std::vector<gpu::D3DVERTEXELEMENT9> elements = PositionNormalUvDeclaration();
    if (skinned) {
        elements.insert(elements.end() - 1, {
                                                {0, 32, gpu::D3DDECLTYPE_FLOAT4, 0, gpu::D3DDECLUSAGE_BLENDWEIGHT, 0},
                                                {0, 48, gpu::D3DDECLTYPE_UBYTE4, 0, gpu::D3DDECLUSAGE_BLENDINDICES, 0},
                                            });
    }
    return elements;
}

std::vector<uint16_t> ShortIndices(const std::vector<uint32_t>& indices)
{
    return std::vector<uint16_t>(indices.begin(), indices.end());
}

}  // namespace

std::string ItemName(const std::string& utf8)
{
    return qx::os::fromWide(qx::os::CodePage::Ansi, qx::os::fromUtf8(utf8));
}

MeshModel ItemMaker::Surfaced(const Instance& instance)
{
    const SourceMesh& mesh = scene_.meshes[size_t(instance.mesh)];
    const SourceMaterial* material = mesh.material >= 0 ? &scene_.materials[size_t(mesh.material)] : nullptr;
    // A texture needs texture coordinates to be of any use.
    const bool textured = material && material->baseColorImage >= 0 && !mesh.uvs.empty();
    MeshModel model;
    model.surface = SurfaceFor(material, textured);
    if (textured) model.textures.push_back(textures_.NameOf(scene_, material->baseColorImage));
    return model;
}

void ItemMaker::Append(const Instance& instance, MeshModel mesh, size_t part, size_t parts)
{
    ItemModel item;
    item.kind = ItemModel::Kind::Mesh;
    item.name = ItemName(parts > 1 ? instance.name + " " + std::to_string(part + 1) : instance.name);
    item.mesh = std::move(mesh);
    conversion_.object.items.push_back(std::move(item));
}

void ItemMaker::AddStatic(const Instance& instance, MeshGeometry geometry, uint32_t boneCount)
{
    MeshModel model = Surfaced(instance);
    // The triangles of a blended surface are sorted back to front each frame, through
    // 16-bit indices. The skinned mesh must stay one item, the first of the list.
    const bool sorted = (model.surface.renderStates & SurfaceModel::kAlphaBlend) && boneCount == 0;
    model.flags = sorted ? MeshItem::kSortTriangles : 0;
    model.boneCount = boneCount;
    model.declaration = Declaration(boneCount > 0);
    model.stride = StaticVertexStride(boneCount > 0);
    if (!sorted) {
        model.vertices = StaticVertexBytes(geometry);
        model.indices = std::move(geometry.indices);
        Append(instance, std::move(model), 0, 1);
        ++conversion_.meshItems;
        return;
    }
    const std::vector<MeshPart> parts =
        SplitByVertexCount(geometry.indices, geometry.VertexCount(), kMaxShortIndexedVertices);
    for (size_t p = 0; p < parts.size(); ++p) {
        MeshModel piece = model;
        const MeshGeometry gathered = geometry.Gather(parts[p].vertices, parts[p].indices);
        piece.vertices = StaticVertexBytes(gathered);
        piece.indices = gathered.indices;
        Append(instance, std::move(piece), p, parts.size());
        ++conversion_.meshItems;
    }
}

void ItemMaker::AddMdd(const Instance& instance, const MeshGeometry& geometry,
                       const std::vector<std::vector<Float3>>& frames)
{
    MeshModel model = Surfaced(instance);
    model.flags = MeshItem::kMdd;
    model.declaration = Declaration(false);
    model.stride = StaticVertexStride(false);
    const std::vector<MeshPart> parts =
        SplitByVertexCount(geometry.indices, geometry.VertexCount(), kMaxShortIndexedVertices);
    for (size_t p = 0; p < parts.size(); ++p) {
        const MeshPart& part = parts[p];
        MddModel mdd;
        mdd.framesPerSecond = float(kBakedFramesPerSecond);
        mdd.vertexCount = uint32_t(part.vertices.size());
        for (const std::vector<Float3>& frame : frames) {
            std::vector<Float3>& stored = mdd.frames.emplace_back();
            for (const uint32_t v : part.vertices) stored.push_back(frame[v]);
            mdd.timeline.push_back(uint16_t(mdd.timeline.size()));
        }
        mdd.uvSetCount = 1;
        for (const uint32_t v : part.vertices)
            mdd.uvSets[0].push_back(geometry.uvs.empty() ? Float2{} : geometry.uvs[v]);
        mdd.triangles = ShortIndices(part.indices);
        mdd.uvIndices[0] = mdd.triangles;
        // Every corner takes the normals of all the triangles around its vertex: where
        // the model wants an edge, its vertices are apart already.
        mdd.smoothingAngle = std::numbers::pi_v<float>;
        MeshModel piece = model;
        piece.mdd = std::move(mdd);
        Append(instance, std::move(piece), p, parts.size());
        ++conversion_.mddItems;
    }
}

void ItemMaker::AddBones(const SourceSkin& skin)
{
    for (const int joint : skin.joints) {
        ItemModel bone;
        bone.kind = ItemModel::Kind::Bone;
        bone.name = ItemName(scene_.nodes[size_t(joint)].name);
        conversion_.object.items.push_back(std::move(bone));
        ++conversion_.boneItems;
    }
}

void ItemMaker::FinishTextures()
{
    for (const auto& [file, image] : textures_.Files())
        conversion_.images.emplace_back(file, scene_.images[size_t(image)].bytes);
}

}  // namespace qx4d::tools
