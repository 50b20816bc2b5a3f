// Writes the seed corpus of the object-file target with the project's object writer:
// static meshes with levels, a skinned mesh with bones, an MDD mesh in half floats, a
// sorted transparent mesh with surface envelopes, and a clone.
//   fuzz_object_file_seeds <corpus folder>
#include "tools/objectfile/ObjectModel.h"

#include <cstring>
#include <fstream>
#include <string>

namespace {

using namespace qx4d::tools;

MeshModel Quad()
{
    const float vertices[] = {-1, 1,  0, 0, 0, -1, 0, 0, 1,  1,  0, 0, 0, -1, 1, 0,
                              1,  -1, 0, 0, 0, -1, 1, 1, -1, -1, 0, 0, 0, -1, 0, 1};
    MeshModel mesh;
    mesh.declaration = PositionNormalUvDeclaration();
    mesh.stride = 32;
    mesh.vertices.resize(sizeof vertices);
    std::memcpy(mesh.vertices.data(), vertices, sizeof vertices);
    mesh.indices = {0, 1, 2, 0, 2, 3};
    mesh.textures = {"cartes/sample 1.dds"};
    return mesh;
}

ItemModel Item(ItemModel::Kind kind, int32_t parent = -1)
{
    ItemModel item;
    item.kind = kind;
    item.name = "item";
    item.parent = parent;
    item.position = {0.5f, 1, -2};
    item.rotation = {0.3f, 0.2f, 0.1f};
    if (kind == ItemModel::Kind::Mesh) item.mesh = Quad();
    return item;
}

void Save(const std::string& folder, const std::string& name, const ObjectModel& model)
{
    const std::vector<uint8_t> bytes = WriteObject(model);
    std::ofstream(folder + "/" + name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) return 2;
    const std::string folder = argv[1];

    ObjectModel lods;
    lods.items.push_back(Item(ItemModel::Kind::Null));
    lods.items.push_back(Item(ItemModel::Kind::Mesh, 0));
    lods.items.back().mesh.lods = {{10.0f, 0, 4, 0, 2}, {1e30f, 0, 3, 0, 1}};
    lods.items.back().mesh.boundingBox = std::array<float, 4>{0, 0, 0, 1.5f};
    lods.items.push_back(Item(ItemModel::Kind::Clone, 1));
    lods.items.back().cloneSource = 1;
    Save(folder, "lods_and_clone", lods);

    ObjectModel skinned;
    skinned.items.push_back(Item(ItemModel::Kind::Mesh));
    skinned.items.back().mesh.boneCount = 2;
    skinned.items.push_back(Item(ItemModel::Kind::Bone));
    skinned.items.push_back(Item(ItemModel::Kind::Bone, 1));
    Save(folder, "bones", skinned);

    ObjectModel sorted;
    sorted.items.push_back(Item(ItemModel::Kind::Mesh));
    MeshModel& glass = sorted.items.back().mesh;
    glass.flags = 0x2;
    glass.surface.materialFile = "lit_colored_refl.mat";
    glass.surface.renderStates = SurfaceModel::kAlphaBlend | SurfaceModel::kDepth;
    glass.surface.envelopes.push_back({"Transparency", 1, 2, {{0, 0}, {1, 1, 0, {}}}});
    Save(folder, "sorted_envelope", sorted);

    ObjectModel deforming;
    deforming.items.push_back(Item(ItemModel::Kind::Mesh));
    MeshModel& mesh = deforming.items.back().mesh;
    mesh.flags = 0x4;
    mesh.vertices.clear();
    mesh.indices.clear();
    MddModel mdd;
    mdd.halfFloats = true;
    mdd.vertexCount = 4;
    mdd.frames = {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 0, 1}, {1, 0, 1}, {1, 1, 0}, {0, 1, 0}}};
    mdd.timeline = {0, 1, 0};
    mdd.triangles = {0, 1, 2, 0, 2, 3};
    mdd.uvSetCount = 2;
    mdd.uvSets[0] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    mdd.uvSets[1] = mdd.uvSets[0];
    mdd.uvIndices[0] = mdd.triangles;
    mdd.uvIndices[1] = mdd.triangles;
    mesh.mdd = mdd;
    Save(folder, "mdd_half", deforming);
    return 0;
}
