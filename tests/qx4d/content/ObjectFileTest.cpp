// Object files written by the project's writer and read back: the item list and its
// hierarchy, the mesh's buffers, levels and surface, and files whose data lies.
#include "qx4d/content/ChunkWriter.h"
#include "qx4d/content/MeshItem.h"
#include "qx4d/content/Object.h"
#include "qx4d/content/ShaderKeys.h"
#include "tests/qx4d/content/ObjectModels.h"

#include <gtest/gtest.h>

#include <cfloat>

namespace qx4d::test {
namespace {

using tools::ItemModel;
using tools::ObjectModel;

class ObjectFileTest : public ObjectTest {
protected:
    void SetUp() override
    {
        if (!StartWithObjects(16)) GTEST_SKIP() << "no EGL device";
    }
    /// Writes `model` and loads it.
    Object& Load(const ObjectModel& model)
    {
        Save("thing.qxo", model);
        EXPECT_TRUE(LoadObject(u"thing.qxo", object));
        return object;
    }
    MeshItem* Mesh(size_t index) { return dynamic_cast<MeshItem*>(object.items.at(index).get()); }

    Object object;
};

TEST_F(ObjectFileTest, ItemsKeepTheirKindNameAndPlaceInTheHierarchy)
{
    ObjectModel model;
    model.items.push_back(MeshItemModel("body", Square(1, {1, 0, 0})));
    ItemModel arm;
    arm.kind = ItemModel::Kind::Bone;
    arm.name = "arm";
    arm.parent = 0;
    arm.position = {1, 2, 3};
    arm.rotation = {0.5f, 0, 0};
    arm.scale = {2, 2, 2};
    model.items.push_back(arm);
    ItemModel copy;
    copy.kind = ItemModel::Kind::Clone;
    copy.name = "copy";
    copy.cloneSource = 0;
    model.items.push_back(copy);
    ItemModel pivot;
    pivot.name = "pivot";
    pivot.parent = 1;
    model.items.push_back(pivot);
    Load(model);

    ASSERT_EQ(object.items.size(), 4u);
    EXPECT_EQ(object.items[0]->GetType(), Item::kMesh);
    EXPECT_EQ(object.items[1]->GetType(), Item::kBone);
    EXPECT_EQ(object.items[2]->GetType(), Item::kMeshClone);
    EXPECT_EQ(object.items[3]->GetType(), Item::kNull);
    EXPECT_EQ(object.items[1]->name, u"arm");
    EXPECT_EQ(object.records[1].parent, 0);
    EXPECT_EQ(object.records[3].parent, 1);
    EXPECT_EQ(object.records[1].position, (Float3{1, 2, 3}));
    EXPECT_EQ(object.records[1].scale, (Float3{2, 2, 2}));
    // A bone deforms the first item; a clone draws the mesh it names.
    EXPECT_EQ(static_cast<BoneItem*>(object.items[1].get())->mesh, Mesh(0));
    EXPECT_EQ(Object::DrawnMesh(object.items[2].get()), Mesh(0));
}

TEST_F(ObjectFileTest, EmptyListsUnknownItemsAndMissingFiles)
{
    ObjectModel none;
    Load(none);
    EXPECT_TRUE(object.items.empty());

    // An unknown id makes no item, but its common part is read and its slot kept.
    ChunkWriter file;
    file.Open("FORM").Open("OBJ ").U32(2);
    file.Open("WHAT").Text("odd").U32(0xFFFFFFFF).F32(7).F32(8).F32(9);
    for (int i = 0; i < 6; ++i) file.F32(1);
    file.Close();
    file.Open("NULL").Text("after").U32(0).F32(0).F32(0).F32(0).F32(0).F32(0).F32(0).F32(1).F32(1).F32(1).Close();
    file.Close().Close();
    SaveBytes("odd.qxo", file.bytes);
    Object odd;
    ASSERT_TRUE(LoadObject(u"odd.qxo", odd));
    ASSERT_EQ(odd.records.size(), 2u);
    EXPECT_EQ(odd.items[0], nullptr);
    EXPECT_EQ(odd.records[0].position, (Float3{7, 8, 9}));
    EXPECT_EQ(odd.records[1].parent, 0);

    Object missing;
    EXPECT_FALSE(LoadObject(u"nowhere.qxo", missing));
    SaveBytes("header-only.qxo", {'F', 'O', 'R', 'M', 0, 0, 0, 0});
    EXPECT_FALSE(LoadObject(u"header-only.qxo", missing));
}

TEST_F(ObjectFileTest, StaticMeshesShareThePoolAndGiveItBack)
{
    ObjectModel model;
    model.items.push_back(MeshItemModel("a", Square(1, {1, 0, 0})));
    model.items.push_back(MeshItemModel("b", Square(1, {0, 1, 0})));
    Load(model);
    const MeshItem& a = *Mesh(0);
    const MeshItem& b = *Mesh(1);
    EXPECT_TRUE(a.vertexBuffer.SameAs(b.vertexBuffer));
    EXPECT_EQ(b.baseVertex, a.baseVertex + 4);
    EXPECT_EQ(b.startIndex, a.startIndex + 6);
    EXPECT_EQ(a.primitiveCount, 2u);
    ASSERT_EQ(a.lods.size(), 1u);
    EXPECT_EQ(a.lods[0].maxDistance, FLT_MAX);
    EXPECT_EQ(a.lods[0].vertexCount, 4u);
    EXPECT_EQ(a.lods[0].primitiveCount, 2u);

    const ResourceHandle pool = a.vertexBuffer;
    object.items.clear();
    EXPECT_EQ(renderer->GetVertexBuffer(pool), nullptr) << "the emptied pool buffer is destroyed";
}

TEST_F(ObjectFileTest, LinesCountTwoIndicesAPrimitive)
{
    tools::MeshModel lines = Square(1, {1, 1, 1});
    lines.primitiveType = 2;
    lines.indices = {0, 1, 1, 2, 2, 3, 3, 0};
    ObjectModel model;
    model.items.push_back(MeshItemModel("outline", lines));
    Load(model);
    EXPECT_EQ(Mesh(0)->primitiveCount, 4u);
}

TEST_F(ObjectFileTest, SurfaceMaterialNamesStatesAndEnvelopes)
{
    tools::MeshModel mesh = Square(1, {0.25f, 0.5f, 0.75f});
    mesh.surface.materialFile = "lit_textured.mat";
    mesh.surface.renderStates = tools::SurfaceModel::kAlphaBlend | tools::SurfaceModel::kFogOff;
    mesh.surface.srcBlend = 2;
    mesh.surface.destBlend = 2;
    mesh.surface.envelopes.push_back({"Transparency", 1, 1, {{0.0f, 0.0f}, {1.0f, 2.0f}}});
    mesh.surface.envelopes.push_back({"Nothing.Known", 1, 1, {{5.0f, 0.0f}}});
    tools::MeshModel reflective = Square(1, {1, 1, 1});
    reflective.surface.materialFile = "lit_colored_refl.mat";
    ObjectModel model;
    model.items.push_back(MeshItemModel("glass", mesh));
    model.items.push_back(MeshItemModel("chrome", reflective));
    Load(model);

    Material& glass = Mesh(0)->material;
    // "lit_textured.mat" is served by texture.mat, with its base colour texture, and
    // never by the reflective one.
    EXPECT_EQ(glass.name, u"texture");
    EXPECT_FALSE(glass.reflective);
    EXPECT_TRUE(Mesh(1)->material.reflective);
    EXPECT_EQ(glass.Color, (Float3{0.25f, 0.5f, 0.75f}));
    EXPECT_TRUE(glass.alphaBlendEnable);
    EXPECT_EQ(glass.srcBlend, 2);
    EXPECT_FALSE(glass.depthEnable);
    EXPECT_FALSE(glass.depthWriteEnable);
    EXPECT_FALSE(glass.fogEnable);
    EXPECT_TRUE(glass.flags & kMaterialMeshLit);
    EXPECT_FALSE(glass.effect.IsNull());

    object.Update(1.0f);
    EXPECT_FLOAT_EQ(glass.Transparency, 0.5f);
    EXPECT_EQ(glass.Color, (Float3{0.25f, 0.5f, 0.75f})) << "an unknown channel writes to itself";
}

TEST_F(ObjectFileTest, EachLightOfTheSceneAddsItsKey)
{
    ShadingScene lit;
    ShaderLight distant, point, softSpot, hardSpot;
    point.type = 1;
    softSpot.type = 2;
    hardSpot.type = 2;
    hardSpot.edgeAngle = 0.0f;
    lit.lights = {distant, point, softSpot, hardSpot};
    SetCurrentShadingScene(&lit);
    ObjectModel model;
    model.items.push_back(MeshItemModel("lit", Square(1, {1, 1, 1})));
    Load(model);
    SetCurrentShadingScene(nullptr);
    EXPECT_EQ(Mesh(0)->material.shaderKeys, (std::vector<uint32_t>{0x21200, 0x21400, 0x31800, 0x21800}));
}

TEST_F(ObjectFileTest, UpdateGivesWorldMatricesAndBoneMatrices)
{
    tools::MeshModel skinned = Square(1, {1, 1, 1});
    skinned.boneCount = 2;
    ObjectModel model;
    model.items.push_back(MeshItemModel("skin", skinned));
    ItemModel root;
    root.kind = ItemModel::Kind::Bone;
    root.position = {0, 1, 0};
    model.items.push_back(root);
    ItemModel tip = root;
    tip.parent = 1;
    tip.position = {2, 0, 0};
    tip.rotation = {1.5707964f, 0, 0};  // a quarter turn of heading
    model.items.push_back(tip);
    Load(model);

    const Matrix3x4 placement{1, 0, 0, 10, 0, 1, 0, 20, 0, 0, 1, 30};
    object.Update(0.0f, placement);
    const MeshItem& mesh = *Mesh(0);
    EXPECT_EQ(mesh.boneCursor, 2);
    ASSERT_EQ(mesh.bones.size(), 2u);
    EXPECT_EQ(Translation(mesh.bones[0]), (Float3{10, 21, 30}));
    EXPECT_EQ(Translation(mesh.bones[1]), (Float3{12, 21, 30}));
    // Heading turns +z towards +x: the tip's local x axis now points along -z.
    EXPECT_NEAR(mesh.bones[1][8], -1.0f, 1e-6f);
    EXPECT_NEAR(mesh.bones[1][0], 0.0f, 1e-6f);

    object.Update(0.0f, placement);
    EXPECT_EQ(mesh.boneCursor, 2) << "the cursor starts again at the mesh each update";
}

TEST_F(ObjectFileTest, DataThatLiesDropsTheMeshOrTheLink)
{
    tools::MeshModel badIndex = Square(1, {1, 1, 1});
    badIndex.indices[4] = 4;  // one past the four vertices
    tools::MeshModel badLod = Square(1, {1, 1, 1});
    badLod.lods = {{100.0f, 0, 4, 0, 2}, {FLT_MAX, 2, 4, 0, 2}};  // the second runs past the vertices
    tools::MeshModel badLayout = Square(1, {1, 1, 1});
    badLayout.declaration[2].Offset = 28;  // a UV pair that ends past the 32-byte vertex
    ObjectModel model;
    model.items.push_back(MeshItemModel("index", badIndex));
    model.items.push_back(MeshItemModel("lod", badLod));
    model.items.push_back(MeshItemModel("layout", badLayout));
    ItemModel clone;
    clone.kind = ItemModel::Kind::Clone;
    clone.cloneSource = 7;
    model.items.push_back(clone);
    ItemModel forward;
    forward.parent = 9;
    model.items.push_back(forward);
    Load(model);

    ASSERT_EQ(object.items.size(), 5u);
    EXPECT_EQ(object.items[0], nullptr);
    ASSERT_NE(Mesh(1), nullptr);
    ASSERT_EQ(Mesh(1)->lods.size(), 1u);
    EXPECT_EQ(Mesh(1)->lods[0].maxDistance, 100.0f);
    EXPECT_EQ(object.items[2], nullptr);
    EXPECT_EQ(object.items[3], nullptr) << "a clone of an item that isn't there";
    EXPECT_EQ(object.records[4].parent, -1);
}

TEST_F(ObjectFileTest, CountsBeyondTheFileStopAtItsEnd)
{
    ObjectModel model;
    model.items.push_back(MeshItemModel("whole", Square(1, {1, 1, 1})));
    std::vector<uint8_t> bytes = tools::WriteObject(model);
    // The item count promises three items; the vertex count of the mesh, thousands.
    bytes[16] = 3;
    const std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + 200);
    SaveBytes("short.qxo", cut);
    Object cutShort;
    ASSERT_TRUE(LoadObject(u"short.qxo", cutShort));
    EXPECT_EQ(cutShort.records.size(), 1u);
    EXPECT_EQ(cutShort.items[0], nullptr);
}

}  // namespace
}  // namespace qx4d::test
