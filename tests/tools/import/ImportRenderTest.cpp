// Imported models loaded and drawn by the engine on the device, under an orthographic
// camera at -z that sees 2.4 units across and a distant light shining along +z: front
// faces show lit in their colour, back faces are culled, textures stand upright.
#include "platform/gpu/ImageFile.h"
#include "qx4d/content/MeshItem.h"
#include "qx4d/content/Object.h"
#include "tests/platform/gpu/GpuFixture.h"
#include "tests/qx4d/content/ObjectModels.h"
#include "tests/tools/import/GltfFiles.h"
#include "tools/import/ModelImport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qx4d::test {
namespace {

namespace gpu = qx::gpu;

constexpr int kSize = 64;
constexpr uint32_t kBlack = 0xFF000000u;

class ImportRenderTest : public ObjectTest {
protected:
    void SetUp() override
    {
        if (!StartWithObjects(kSize))
            GTEST_SKIP() << "no EGL device";
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
    void DrawAll(float time = 0.0f)
    {
        object.Update(time);
        for (const Object::ItemRecord& record : object.records) {
            MeshItem* mesh = Object::DrawnMesh(record.item);
            if (!mesh)
                continue;
            mesh->SetTime(time);
            const std::vector<Matrix3x4> matrices =
                mesh->material.bones > 0 ? mesh->bones : std::vector<Matrix3x4>{record.item->matrix};
            mesh->Draw(0, matrices, camera);
        }
    }
    /// Ends the frame, saves it as `name` in the test's output folder and reads it back.
    std::vector<uint32_t> Finish(const std::string& name)
    {
        renderer->EndEffect();
        Device().EndScene();
        std::shared_ptr<gpu::Surface> target;
        Device().GetRenderTarget(0, &target);
        const std::filesystem::path png = std::filesystem::temp_directory_path() / ("qx-import-" + name + ".png");
        EXPECT_EQ(gpu::D3DXSaveSurfaceToFile(png.string(), gpu::D3DXIFF_PNG, *target), gpu::D3D_OK);
        return gpu::testing::readPixels(Device(), target);
    }
    /// The pixel that sees the world point (x, y).
    static uint32_t At(const std::vector<uint32_t>& pixels, float x, float y)
    {
        const long column = std::lround((x / 1.2f + 1) * kSize / 2 - 0.5f);
        const long row = std::lround((1 - y / 1.2f) * kSize / 2 - 0.5f);
        return pixels[size_t(std::clamp(row, 0L, long(kSize - 1))) * kSize + size_t(std::clamp(column, 0L, long(kSize - 1)))];
    }

    ShadingScene lit;
    ShadingCamera camera;
    Object object;
};

/// A square of half-size 0.4 around (cx, 0) in the plane z = 0 of the model: counter-
/// clockwise seen from +z (its front there, as glTF has it) unless `away`.
void AddSquare(GltfFile& file, float cx, bool away, const std::string& material)
{
    const int positions = file.Floats3({{cx - 0.4f, -0.4f, 0}, {cx + 0.4f, -0.4f, 0}, {cx + 0.4f, 0.4f, 0}, {cx - 0.4f, 0.4f, 0}});
    const int normals = file.Floats3(std::vector<std::array<float, 3>>(4, {0, 0, away ? -1.0f : 1.0f}));
    const int indices = file.Indices(away ? std::vector<uint16_t>{0, 2, 1, 0, 3, 2} : std::vector<uint16_t>{0, 1, 2, 0, 2, 3});
    file.meshes.push_back(R"({"primitives":[{"attributes":{"POSITION":)" + std::to_string(positions) + R"(,"NORMAL":)"
                          + std::to_string(normals) + R"(},"indices":)" + std::to_string(indices) + R"(,"material":)"
                          + material + "}]}");
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

}  // namespace
}  // namespace qx4d::test
