// Imported models loaded and drawn by the engine on the device, under an orthographic
// camera at -z that sees 2.4 units across and a distant light shining along +z: front
// faces show lit in their colour, back faces are culled, textures stand upright.
#include "platform/gpu/ImageFile.h"
#include "qx4d/content/MeshItem.h"
#include "qx4d/content/Object.h"
#include "tests/platform/gpu/GpuFixture.h"
#include "tests/qx4d/content/ObjectModels.h"
#include "tests/tools/import/GltfFiles.h"
#include "tests/tools/import/ImportTestSupport.h"
#include "tests/tools/import/SkinnedModels.h"
#include "tools/import/ModelImport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>

namespace qx4d::test {
namespace {

namespace gpu = qx::gpu;

constexpr int kSize = 64;
constexpr uint32_t kBlack = 0xFF000000u;

class ImportRenderTest : public ObjectTest {
protected:
    void SetUp() override
    {
        if (!StartWithObjects(kSize)) GTEST_SKIP() << "no EGL device";
        folder.MakeFolder("Images");
        EXPECT_TRUE(files.Mount(u"IMAGES", folder.Wide("Images")));
        ShaderLight light;
        light.type = 0;
        light.intensity = 1.0f;
        light.direction = {0.0f, 0.0f, 1.0f};
        lit.lights = {light};
        SetCurrentShadingScene(&lit);
        camera.viewProjection = {1 / 1.2f, 0, 0, 0, 0, 1 / 1.2f, 0, 0, 0, 0, 0.1f, 0.5f, 0, 0, 0, 1};
        camera.position = {0, 0, -5};
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

    /// Imports `model` into the mounted folders and loads the object.
    tools::ImportSummary Import(const std::filesystem::path& model)
    {
        tools::ImportOptions options;
        options.input = model;
        options.output = folder.path / "model.qxo";
        options.images = folder.path / "Images";
        const tools::ImportSummary summary = tools::ImportModel(options);
        EXPECT_TRUE(LoadObject(u"model.qxo", object));
        return summary;
    }
    MeshItem& Mesh(size_t index) { return *dynamic_cast<MeshItem*>(object.items.at(index).get()); }
    /// Draws every mesh at `time`, the object placed `down` units lower.
    void DrawAll(float time = 0.0f, float down = 0.0f)
    {
        object.Update(time, {1, 0, 0, 0, 0, 1, 0, -down, 0, 0, 1, 0});
        for (const Object::ItemRecord& record : object.records) {
            MeshItem* mesh = Object::DrawnMesh(record.item);
            if (!mesh) continue;
            mesh->SetTime(time);
            const std::vector<Matrix3x4> matrices =
                mesh->material.bones > 0 ? mesh->bones : std::vector<Matrix3x4>{record.item->matrix};
            mesh->Draw(0, matrices, camera);
        }
    }
    /// Ends the frame, saves it as "import-<name>.png" in the working folder (the test's
    /// build folder under CTest) to be looked at, and reads it back.
    std::vector<uint32_t> Finish(const std::string& name)
    {
        renderer->EndEffect();
        Device().EndScene();
        std::shared_ptr<gpu::Surface> target;
        Device().GetRenderTarget(0, &target);
        const std::filesystem::path png = std::filesystem::current_path() / ("import-" + name + ".png");
        EXPECT_EQ(gpu::D3DXSaveSurfaceToFile(png.string(), gpu::D3DXIFF_PNG, *target), gpu::D3D_OK);
        return gpu::testing::readPixels(Device(), target);
    }
    /// The pixel that sees the world point (x, y).
    static uint32_t At(const std::vector<uint32_t>& pixels, float x, float y)
    {
        const long column = std::lround((x / 1.2f + 1) * kSize / 2 - 0.5f);
        const long row = std::lround((1 - y / 1.2f) * kSize / 2 - 0.5f);
        return pixels[size_t(std::clamp(row, 0L, long(kSize - 1))) * kSize +
                      size_t(std::clamp(column, 0L, long(kSize - 1)))];
    }

    ShadingScene lit;
    ShadingCamera camera;
    Object object;
};

/// A square of half-size 0.4 around (cx, 0) in the plane z = 0 of the model: counter-
/// clockwise seen from +z (its front there, as glTF has it) unless `away`.
void AddSquare(GltfFile& file, float cx, bool away, const std::string& material)
{
    const int positions =
        file.Floats3({{cx - 0.4f, -0.4f, 0}, {cx + 0.4f, -0.4f, 0}, {cx + 0.4f, 0.4f, 0}, {cx - 0.4f, 0.4f, 0}});
    const int normals = file.Floats3(std::vector<std::array<float, 3>>(4, {0, 0, away ? -1.0f : 1.0f}));
    const int indices =
        file.Indices(away ? std::vector<uint16_t>{0, 2, 1, 0, 3, 2} : std::vector<uint16_t>{0, 1, 2, 0, 2, 3});
    file.meshes.push_back(R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positions) + R"(,"NORMAL":)" +
                          std::to_string(normals) + R"(},"indices":)" + std::to_string(indices) + R"(,"material":)" +
                          material + "}]}");
}

TEST_F(ImportRenderTest, FrontFacesOfAGltfModelFaceTheViewerOnItsSide)
{
    // The model's viewer stands at +z; mirrored into the engine, the viewer at -z sees
    // the same side: the square facing +z in the file shows, the one facing -z is culled.
    GltfFile file;
    file.materials = {R"({"pbrMetallicRoughness":{"baseColorFactor":[1,0,0,1]}})"};
    AddSquare(file, -0.5f, false, "0");
    AddSquare(file, 0.5f, true, "0");
    file.nodes = {R"({"children":[1,2]})", R"({"mesh":0})", R"({"mesh":1})"};
    file.WriteGlb(folder.path / "squares.glb");
    Import(folder.path / "squares.glb");
    DrawAll();
    const std::vector<uint32_t> pixels = Finish("squares");
    const uint32_t front = At(pixels, -0.5f, 0.0f);
    EXPECT_GT(int((front >> 16) & 0xFF), 200) << std::hex << front << ": lit red, facing the light";
    EXPECT_EQ(front & 0xFFFF, 0u);
    EXPECT_EQ(At(pixels, 0.5f, 0.0f), kBlack) << "the square that faces away is culled";
}

TEST_F(ImportRenderTest, AnObjTextureStandsUprightOnItsSquare)
{
    // A square facing the viewer, its image's top-left texel red, top-right green,
    // bottom-left blue, bottom-right white; v runs upwards in the file.
    folder.Write("src/check.bmp", Bmp(2, 2, {0xFF0000, 0x00FF00, 0x0000FF, 0xFFFFFF}));
    folder.Write("src/check.mtl", "newmtl check\nKd 1 1 1\nmap_Kd check.bmp\n");
    folder.Write("src/check.obj",
                 "mtllib check.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n"
                 "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\nusemtl check\n"
                 "f 1/1/1 2/2/1 3/3/1 4/4/1\n");
    const tools::ImportSummary summary = Import(folder.path / "src/check.obj");
    ASSERT_EQ(summary.textures.size(), 1u);
    EXPECT_EQ(summary.textures[0], folder.path / "Images/model/check.bmp");
    EXPECT_EQ(Mesh(0).textureCount, 1u);
    EXPECT_FALSE(Mesh(0).textures[0].IsNull());
    DrawAll();
    const std::vector<uint32_t> pixels = Finish("check");
    EXPECT_LE(gpu::testing::colourDistance(At(pixels, -0.5f, 0.5f), 0xFFFF0000u), 2);
    EXPECT_LE(gpu::testing::colourDistance(At(pixels, 0.5f, 0.5f), 0xFF00FF00u), 2);
    EXPECT_LE(gpu::testing::colourDistance(At(pixels, -0.5f, -0.5f), 0xFF0000FFu), 2);
    EXPECT_LE(gpu::testing::colourDistance(At(pixels, 0.5f, -0.5f), 0xFFFFFFFFu), 2);
}

/// Brightness of the red channel: what a white or red surface shows of the light.
int Red(uint32_t pixel) { return int((pixel >> 16) & 0xFF); }

TEST_F(ImportRenderTest, AGltfModelRoundTripsItsVertexCountAndBoundsThroughTheLoader)
{
    // A box from (-1, -2, -3) to (1, 2, 3), placed 10 along z: 8 corners, 12 triangles.
    GltfFile file;
    std::vector<std::array<float, 3>> corners;
    for (int i = 0; i < 8; ++i) corners.push_back({i & 1 ? 1.0f : -1.0f, i & 2 ? 2.0f : -2.0f, i & 4 ? 3.0f : -3.0f});
    const int positions = file.Floats3(corners);
    const int indices = file.Indices(
        {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4, 2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5});
    const std::vector<float> uvs(16, 0.5f);
    const int normals = file.Floats3(corners);  // pointing outwards, like a rounded box
    file.meshes.push_back(R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positions) + R"(,"NORMAL":)" +
                          std::to_string(normals) + R"(,"TEXCOORD_0":)" +
                          std::to_string(file.Data(uvs, GltfFile::kFloat, "VEC2")) + R"(},"indices":)" +
                          std::to_string(indices) + "}]}");
    file.nodes = {R"({"name":"box","mesh":0,"translation":[0,0,10]})"};
    file.WriteGltf(folder.path / "box.gltf");
    Import(folder.path / "box.gltf");

    ASSERT_EQ(object.items.size(), 1u);
    MeshItem& box = Mesh(0);
    EXPECT_EQ(box.name, u"box");
    EXPECT_EQ(box.vertexCount, 8u);
    EXPECT_EQ(box.indexCount, 36u);
    EXPECT_EQ(box.stride, 32u);
    // The vertices as the engine holds them for the device.
    const VertexBuffer* buffer = renderer->GetVertexBuffer(box.vertexBuffer);
    ASSERT_NE(buffer, nullptr);
    std::vector<Float3> held(box.vertexCount);
    for (size_t v = 0; v < held.size(); ++v)
        std::memcpy(held[v].data(), buffer->shadow.data() + (box.baseVertex + v) * box.stride, sizeof(Float3));
    const auto [low, high] = Bounds(held);
    EXPECT_EQ(low, (Float3{-1, -2, -13}));
    EXPECT_EQ(high, (Float3{1, 2, -7}));
}

TEST_F(ImportRenderTest, ASkinnedFigureDrawsAtItsPoseWithItsBonesAtTheIdentity)
{
    GltfFile file;
    AddSkinnedFigure(file, R"(,"rotation":)" + RotationZ(90));
    file.WriteGlb(folder.path / "figure.glb");
    Import(folder.path / "figure.glb");
    ASSERT_EQ(object.items.size(), 3u);
    EXPECT_EQ(Mesh(0).material.bones, 2);
    DrawAll(0.0f, 0.8f);
    // Each bone is the identity, moved only by where the object stands.
    for (const Matrix3x4& bone : Mesh(0).bones) EXPECT_EQ(bone, (Matrix3x4{1, 0, 0, 0, 0, 1, 0, -0.8f, 0, 0, 1, 0}));
    const std::vector<uint32_t> pixels = Finish("figure");
    // The lower square stands upright; the upper one is bent to the left at the knee.
    EXPECT_GT(Red(At(pixels, 0.0f, 0.3f - 0.8f)), 200);
    EXPECT_GT(Red(At(pixels, -0.7f, 1.0f - 0.8f)), 200);
    EXPECT_EQ(At(pixels, 0.3f, 1.7f - 0.8f), kBlack) << "where the upper square would stand unbent";
    EXPECT_EQ(At(pixels, 0.8f, 0.3f - 0.8f), kBlack);
}

TEST_F(ImportRenderTest, BakedFramesPlayInTheEngineAtTheirTimes)
{
    GltfFile file;
    AddSkinnedFigure(file);
    AddKneeBend(file);
    file.WriteGlb(folder.path / "bend.glb");
    const tools::ImportSummary summary = Import(folder.path / "bend.glb");
    EXPECT_EQ(summary.mddItems, 1u);
    EXPECT_EQ(summary.frames, 31u);
    ASSERT_EQ(object.items.size(), 1u);
    MddPlayer& player = Mesh(0).mdd;
    EXPECT_EQ(player.frameCount, 31u);
    // Half a second is frame 15: 45 degrees. The top-left corner turns about the knee.
    const double s = std::sqrt(0.5);
    player.Evaluate(0.5f);
    EXPECT_NEAR(player.blended[4][0], -0.5 * s - s, 1e-4);
    EXPECT_NEAR(player.blended[4][1], 1 - 0.5 * s + s, 1e-4);
    // Between frames the player blends: at 1/60 s, halfway to the first frame's 3 degrees.
    player.Evaluate(1.0f / 60.0f);
    const double halfStep = 1.5 * std::numbers::pi / 180.0;
    EXPECT_NEAR(player.blended[5][0], 0.5 * std::cos(halfStep) - std::sin(halfStep), 1e-3);
    // Where the frames put the surface, judged by the ambient light alone: the player's own
    // normals, the cross product of (corner 2 - corner 0) and (corner 1 - corner 0), point
    // to the back of the engine's clockwise front faces, so the distant light adds nothing.
    lit.globalAmbient = {0.3f, 0.3f, 0.3f};
    DrawAll(1.0f, 0.8f);
    const std::vector<uint32_t> pixels = Finish("bend");
    constexpr uint32_t kAmbient = 0xFF4C4C4Cu;
    EXPECT_EQ(At(pixels, -0.7f, 1.0f - 0.8f), kAmbient) << "the upper square, bent at the end";
    EXPECT_EQ(At(pixels, 0.0f, 0.3f - 0.8f), kAmbient);
    EXPECT_EQ(At(pixels, 0.3f, 1.7f - 0.8f), kBlack);
}

}  // namespace
}  // namespace qx4d::test
