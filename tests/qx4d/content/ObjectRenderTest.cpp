// Object files drawn through their meshes on the device under an orthographic camera that
// sees 2.4 units across: expected pixels follow from where each item, bone and MDD frame
// puts the geometry.
#include "qx4d/content/MeshItem.h"
#include "qx4d/content/Object.h"
#include "tests/platform/gpu/GpuFixture.h"
#include "tests/qx4d/content/ObjectModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace qx4d::test {
namespace {

namespace gpu = qx::gpu;
using tools::ItemModel;
using tools::ObjectModel;

constexpr int kSize = 48;
constexpr uint32_t kBlack = 0xFF000000u;

class ObjectRenderTest : public ObjectTest {
protected:
    void SetUp() override
    {
        if (!StartWithObjects(kSize)) GTEST_SKIP() << "no EGL device";
        // One light that adds nothing: the surfaces show their luminous colour alone.
        ShaderLight dark;
        dark.intensity = 0.0f;
        lit.lights = {dark};
        SetCurrentShadingScene(&lit);
        camera = OrthographicCamera();
        Device().BeginScene();
        Device().Clear(gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER, kBlack, 1.0f, 0);
    }
    void TearDown() override
    {
        SetCurrentShadingScene(nullptr);
        object = Object();
        ObjectTest::TearDown();
    }
    gpu::Device& Device() { return *graphics->GetDevice(); }

    Object& Load(const ObjectModel& model)
    {
        Save("thing.qxo", model);
        EXPECT_TRUE(LoadObject(u"thing.qxo", object));
        return object;
    }
    /// Updates the object and draws every mesh item and clone with its own matrices.
    void DrawAll(const Matrix3x4& placement = kIdentity3x4)
    {
        object.Update(0.0f, placement);
        for (const Object::ItemRecord& record : object.records) {
            MeshItem* mesh = Object::DrawnMesh(record.item);
            if (!mesh) continue;
            const std::vector<Matrix3x4> matrices =
                mesh->material.bones > 0 ? mesh->bones : std::vector<Matrix3x4>{record.item->matrix};
            mesh->Draw(0, matrices, camera);
        }
    }
    static uint32_t At(const std::vector<uint32_t>& pixels, float x, float y)
    {
        return OrthographicAt(pixels, kSize, x, y);
    }

    ShadingScene lit;
    ShadingCamera camera;
    Object object;
};

TEST_F(ObjectRenderTest, MeshesAndClonesDrawWhereTheirItemsStand)
{
    ObjectModel model;
    model.items.push_back(MeshItemModel("red", Square(0.25f, {1, 0, 0})));
    ItemModel clone;
    clone.kind = ItemModel::Kind::Clone;
    clone.parent = 0;
    clone.position = {0.6f, 0, 0};
    model.items.push_back(clone);
    Load(model);
    DrawAll({1, 0, 0, -0.3f, 0, 1, 0, 0.4f, 0, 0, 1, 0});  // the whole object placed at (-0.3, 0.4)
    const std::vector<uint32_t> pixels = FinishFrame();
    EXPECT_EQ(At(pixels, -0.3f, 0.4f), 0xFFFF0000u);
    EXPECT_EQ(At(pixels, 0.3f, 0.4f), 0xFFFF0000u) << "the clone, 0.6 to the right of its parent";
    EXPECT_EQ(At(pixels, 0.0f, 0.4f), kBlack);
    EXPECT_EQ(At(pixels, -0.3f, -0.4f), kBlack);
}

/// A square whose left corners follow bone 0 and right corners bone 1.
tools::MeshModel SkinnedSquare()
{
    struct SkinVertex {
        float x, y, z, nx, ny, nz;
        float weights[4];
        uint8_t bones[4];
    };
    const SkinVertex vertices[] = {
        {-0.3f, 0.3f, 0, 0, 0, -1, {1, 0, 0, 0}, {0, 0, 0, 0}},
        {0.3f, 0.3f, 0, 0, 0, -1, {1, 0, 0, 0}, {1, 0, 0, 0}},
        {0.3f, -0.3f, 0, 0, 0, -1, {1, 0, 0, 0}, {1, 0, 0, 0}},
        {-0.3f, -0.3f, 0, 0, 0, -1, {1, 0, 0, 0}, {0, 0, 0, 0}},
    };
    tools::MeshModel mesh = Square(0.3f, {0, 1, 0});
    mesh.declaration = {
        {0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITION, 0},
        {0, 12, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_NORMAL, 0},
        {0, 24, gpu::D3DDECLTYPE_FLOAT4, 0, gpu::D3DDECLUSAGE_BLENDWEIGHT, 0},
        {0, 40, gpu::D3DDECLTYPE_UBYTE4, 0, gpu::D3DDECLUSAGE_BLENDINDICES, 0},
        gpu::D3DDECL_END,
    };
    mesh.stride = sizeof(SkinVertex);
    mesh.vertices.assign(reinterpret_cast<const uint8_t*>(vertices),
                         reinterpret_cast<const uint8_t*>(vertices) + sizeof vertices);
    mesh.boneCount = 2;
    return mesh;
}

TEST_F(ObjectRenderTest, BonesMoveTheVerticesTheyWeigh)
{
    ObjectModel model;
    model.items.push_back(MeshItemModel("skin", SkinnedSquare()));
    ItemModel still;
    still.kind = ItemModel::Kind::Bone;
    model.items.push_back(still);
    ItemModel raised = still;
    raised.position = {0, 0.6f, 0};  // lifts the right edge by 0.6
    model.items.push_back(raised);
    Load(model);
    ASSERT_EQ(object.items.size(), 3u);
    ASSERT_NE(object.items[0], nullptr);
    EXPECT_EQ(static_cast<MeshItem*>(object.items[0].get())->material.bones, 2);
    DrawAll();
    const std::vector<uint32_t> pixels = FinishFrame();
    // The left edge runs from -0.3 to 0.3, the right edge from 0.3 to 0.9.
    EXPECT_EQ(At(pixels, -0.25f, -0.2f), 0xFF00FF00u);
    EXPECT_EQ(At(pixels, 0.25f, 0.8f), 0xFF00FF00u);
    EXPECT_EQ(At(pixels, 0.25f, -0.25f), kBlack);
    EXPECT_EQ(At(pixels, -0.25f, 0.8f), kBlack);
}

TEST_F(ObjectRenderTest, MddFramesBlendBetweenTheirPlaces)
{
    tools::MddModel mdd;
    mdd.vertexCount = 4;
    const auto squareAt = [](float cx) {
        return std::vector<Float3>{
            {cx - 0.2f, 0.2f, 0}, {cx + 0.2f, 0.2f, 0}, {cx + 0.2f, -0.2f, 0}, {cx - 0.2f, -0.2f, 0}};
    };
    mdd.frames = {squareAt(-0.8f), squareAt(0.8f)};
    mdd.framesPerSecond = 1.0f;
    mdd.timeline = {0, 1};
    mdd.triangles = {0, 1, 2, 0, 2, 3};
    mdd.uvSetCount = 1;
    mdd.uvSets[0] = {{0, 0}};
    mdd.uvIndices[0] = {0, 0, 0, 0, 0, 0};
    mdd.smoothingAngle = 0.0f;
    tools::MeshModel mesh = Square(0.2f, {0, 0, 1});
    mesh.flags = MeshItem::kMdd;
    mesh.mdd = mdd;
    mesh.vertices.clear();
    mesh.indices.clear();
    ObjectModel model;
    model.items.push_back(MeshItemModel("moving", mesh));
    Load(model);
    MeshItem& moving = *static_cast<MeshItem*>(object.items.at(0).get());
    EXPECT_EQ(moving.vertexCount, 6u);
    moving.SetTime(0.5f);  // halfway along the timeline
    DrawAll();
    const std::vector<uint32_t> pixels = FinishFrame();
    EXPECT_EQ(At(pixels, 0.0f, 0.0f), 0xFF0000FFu);
    EXPECT_EQ(At(pixels, -0.8f, 0.0f), kBlack);
    EXPECT_EQ(At(pixels, 0.8f, 0.0f), kBlack);
}

// A morph of two position and normal streams: the second holds the offsets that the
// shader adds to the first, here half a unit to the right.
TEST_F(ObjectRenderTest, MorphsAddTheirSecondPositionStream)
{
    struct MorphVertex {
        float x, y, z, dx, dy, dz, nx, ny, nz, dnx, dny, dnz;
    };
    const MorphVertex vertices[] = {{-0.2f, 0.2f, 0, 0.5f, 0, 0, 0, 0, -1, 0, 0, 0},
                                    {0.2f, 0.2f, 0, 0.5f, 0, 0, 0, 0, -1, 0, 0, 0},
                                    {0.2f, -0.2f, 0, 0.5f, 0, 0, 0, 0, -1, 0, 0, 0},
                                    {-0.2f, -0.2f, 0, 0.5f, 0, 0, 0, 0, -1, 0, 0, 0}};
    tools::MeshModel mesh = Square(0.2f, {1, 1, 0});
    mesh.declaration = {
        {0, 0, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITION, 0},
        {0, 12, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_POSITION, 1},
        {0, 24, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_NORMAL, 0},
        {0, 36, gpu::D3DDECLTYPE_FLOAT3, 0, gpu::D3DDECLUSAGE_NORMAL, 1},
        gpu::D3DDECL_END,
    };
    mesh.stride = sizeof(MorphVertex);
    mesh.vertices.assign(reinterpret_cast<const uint8_t*>(vertices),
                         reinterpret_cast<const uint8_t*>(vertices) + sizeof vertices);
    ObjectModel model;
    model.items.push_back(MeshItemModel("morph", mesh));
    Load(model);
    DrawAll();
    const std::vector<uint32_t> pixels = FinishFrame();
    EXPECT_EQ(At(pixels, 0.5f, 0.0f), 0xFFFFFF00u);
    EXPECT_EQ(At(pixels, 0.0f, 0.0f), kBlack);
}

TEST_F(ObjectRenderTest, TransparentTrianglesAreWrittenFarthestFirst)
{
    // Two squares, the near one first in the file, the far one 1 unit behind it.
    tools::MeshModel mesh = Square(0.3f, {1, 1, 1});
    AppendVertices(mesh, {{-0.3f, 0.3f, 1, 0, 0, -1, 0, 0},
                          {0.3f, 0.3f, 1, 0, 0, -1, 1, 0},
                          {0.3f, -0.3f, 1, 0, 0, -1, 1, 1},
                          {-0.3f, -0.3f, 1, 0, 0, -1, 0, 1}});
    mesh.indices = {0, 1, 2, 0, 2, 3, 4, 5, 6, 4, 6, 7};
    mesh.flags = MeshItem::kSortTriangles;
    mesh.surface.transparency = 0.5f;
    mesh.surface.renderStates = tools::SurfaceModel::kAlphaBlend;
    ObjectModel model;
    model.items.push_back(MeshItemModel("glass", mesh));
    Load(model);
    MeshItem& glass = *static_cast<MeshItem*>(object.items.at(0).get());

    // The two triangles of a square lie at the same distance from the eye on the axis: the
    // sort keeps them in file order, and farthest-first writes the later one first.
    DrawAll();
    EXPECT_EQ(glass.WrittenTriangles(), (std::vector<uint16_t>{4, 6, 7, 4, 5, 6, 0, 2, 3, 0, 1, 2}));
    camera.position = {0, 0, 5};  // seen from behind, the squares change places
    DrawAll();
    EXPECT_EQ(glass.WrittenTriangles(), (std::vector<uint16_t>{0, 2, 3, 0, 1, 2, 4, 6, 7, 4, 5, 6}));
    const std::vector<uint32_t> pixels = FinishFrame();
    // Two draws of two coats of half-transparent white over black: 1 - 0.5^4 of white.
    EXPECT_NEAR(int(At(pixels, 0, 0) & 0xFF), 239, 3);
}

}  // namespace
}  // namespace qx4d::test
