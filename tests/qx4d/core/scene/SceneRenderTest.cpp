// A scene's frame on the device: the backdrop, the order in which the render queue draws
// its records, instances that dissolve, and the buckets' batches. Squares facing the camera
// without a depth test show by their colour which was drawn last.
#include "qx4d/content/MeshItem.h"
#include "qx4d/content/Object.h"
#include "qx4d/core/scene/Bucket.h"
#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/RenderQueue.h"
#include "qx4d/core/scene/Scene.h"
#include "tests/platform/gpu/GpuFixture.h"
#include "tests/qx4d/content/ObjectModels.h"

#include <gtest/gtest.h>

namespace qx4d::test {
namespace {

namespace gpu = qx::gpu;
constexpr unsigned kSize = 16;

class SceneRenderTest : public ObjectTest {
protected:
    void SetUp() override
    {
        if (!StartWithObjects(kSize)) GTEST_SKIP() << "no EGL device";
        folder.MakeFolder("Scenes");
        ASSERT_TRUE(files.Mount(u"SCENES", folder.Wide("Scenes")));
        ShaderLight dark;
        dark.intensity = 0.0f;
        lit.lights = {dark};
        SetCurrentShadingScene(&lit);
        camera.viewProjection = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0.1f, 0.5f, 0, 0, 0, 1};
    }
    void TearDown() override
    {
        SetCurrentShadingScene(nullptr);
        Camera::SetActive(nullptr);
        objects.clear();
        ObjectTest::TearDown();
    }
    gpu::Device& Device() { return *graphics->GetDevice(); }

    /// A full-frame square of `color` that blends (drawn with the transparent records) or
    /// not, with no depth test, so that the last one drawn shows.
    MeshItem& Square(Float3 color, bool blends)
    {
        tools::MeshModel mesh = test::Square(2.0f, color);
        mesh.surface.renderStates = blends ? tools::SurfaceModel::kAlphaBlend : 0;
        mesh.surface.srcBlend = 2;   // one
        mesh.surface.destBlend = 1;  // zero: the square replaces what was there
        tools::ObjectModel model;
        model.items.push_back(MeshItemModel("square", mesh));
        const std::string name = "square" + std::to_string(objects.size()) + ".qxo";
        Save(name, model);
        objects.push_back(std::make_unique<Object>());
        EXPECT_TRUE(LoadObject(String(std::u16string(name.begin(), name.end())), *objects.back()));
        return *static_cast<MeshItem*>(objects.back()->items.at(0).get());
    }
    DrawRecord Record(MeshItem& mesh, float z)
    {
        return {&mesh, objects.back().get(), {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, z}}};
    }

    /// Draws the two records through the queue and gives the colour of the middle.
    uint32_t Flush(const DrawRecord& first, const DrawRecord& second)
    {
        Device().BeginScene();
        Device().Clear(gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER, 0xFF000000u, 1.0f, 0);
        queue.Add(first);
        queue.Add(second);
        queue.Flush(queue.opaque, camera);
        queue.Flush(queue.transparent, camera);
        renderer->EndEffect();
        Device().EndScene();
        std::shared_ptr<gpu::Surface> target;
        Device().GetRenderTarget(0, &target);
        return qx::gpu::testing::readPixels(Device(), target)[kSize * kSize / 2 + kSize / 2];
    }

    ShadingScene lit;
    ShadingCamera camera;
    RenderQueue queue;
    std::vector<std::unique_ptr<Object>> objects;
};

TEST_F(SceneRenderTest, OpaqueRecordsAtOneDistanceKeepTheirOrderTransparentOnesTurnIt)
{
    MeshItem& red = Square({1, 0, 0}, false);
    const DrawRecord redRecord = Record(red, 0);
    MeshItem& green = Square({0, 1, 0}, false);
    EXPECT_EQ(Flush(redRecord, Record(green, 0)), 0xFF00FF00u) << "queued second, drawn last";
    MeshItem& blue = Square({0, 0, 1}, true);
    const DrawRecord blueRecord = Record(blue, 0);
    MeshItem& white = Square({1, 1, 1}, true);
    EXPECT_EQ(Flush(blueRecord, Record(white, 0)), 0xFF0000FFu) << "transparent ties come reversed";
    EXPECT_TRUE(queue.opaque.records.empty());
    EXPECT_TRUE(queue.transparent.records.empty());
}

TEST_F(SceneRenderTest, OpaqueNearFirstTransparentFarFirst)
{
    camera.position = {0, 0, -5};
    MeshItem& nearRed = Square({1, 0, 0}, false);
    const DrawRecord near = Record(nearRed, 0);
    MeshItem& farGreen = Square({0, 1, 0}, false);
    EXPECT_EQ(Flush(Record(farGreen, 0.5f), near), 0xFF00FF00u) << "the far one drawn after the near one";
    MeshItem& nearBlue = Square({0, 0, 1}, true);
    const DrawRecord nearGlass = Record(nearBlue, 0);
    MeshItem& farWhite = Square({1, 1, 1}, true);
    EXPECT_EQ(Flush(nearGlass, Record(farWhite, 0.5f)), 0xFF0000FFu) << "the near one drawn last";
    EXPECT_NE(RenderQueue::Key(nearGlass) >> 63, RenderQueue::Key(near) >> 63);
}

TEST_F(SceneRenderTest, BucketsDrawTheirStagedQuadsOnlyWhenThereAreAny)
{
    files.Mount(u"EFFECTS", std::u16string(u"" QX_SOURCE_DIR "/data/Effects"));
    ParticleBucket bucket;
    ASSERT_TRUE(bucket.Create(8));
    EXPECT_EQ(bucket.end - bucket.begin, 8) << "a staging array of vertices, not quads";
    bucket.Begin();
    bucket.Flush();  // nothing staged: nothing drawn, nothing placed
    EXPECT_EQ(renderer->GetVertexBuffer(bucket.vertexBuffer)->writePosition, 0u);
    ASSERT_TRUE(bucket.HasRoom(4));
    for (int i = 0; i < 4; ++i) *bucket.cursor++ = ParticleVertex{float(i & 1), float(i >> 1), 0, 0, 0, 0xFFFFFFFFu};
    bucket.End();
    EXPECT_EQ(bucket.cursor, bucket.begin);
    EXPECT_EQ(renderer->GetVertexBuffer(bucket.vertexBuffer)->writePosition, 4u * sizeof(ParticleVertex));
}

/// Renders `text` as the scene with its camera and gives the middle and a corner.
std::pair<uint32_t, uint32_t> RenderScene(TempFolder& folder, gpu::Device& device, const std::string& text)
{
    folder.Write("Scenes/test.afx", text);
    Scene scene;
    EXPECT_TRUE(scene.Load(u"test.afx"));
    device.BeginScene();
    scene.Update(0.0f, 0.0f);
    scene.Render();
    Renderer::Instance()->EndEffect();
    device.EndScene();
    std::shared_ptr<gpu::Surface> target;
    device.GetRenderTarget(0, &target);
    const auto pixels = qx::gpu::testing::readPixels(device, target);
    return {pixels[kSize * kSize / 2 + kSize / 2], pixels[0]};
}

TEST_F(SceneRenderTest, BackdropWrapsItsColourAndDissolveHidesTheWholeInstance)
{
    tools::ObjectModel model;
    model.items.push_back(MeshItemModel("square", test::Square(0.5f, {1, 1, 1})));
    Save("square.qxo", model);
    const std::string cameraBlock = "Camera\n{\n  Position 0 0 -3\n}\n";
    // 1.5 x 255 wraps to 126 in the packing; the square stands in the middle.
    auto [middle, corner] = RenderScene(
        folder, Device(), "BackdropColor 1.5 0.5 0\n" + cameraBlock + "Object\n{\n  FileName square.qxo\n}\n");
    EXPECT_EQ(corner, 0xFF7E7F00u);
    EXPECT_EQ(middle, 0xFFFFFFFFu);
    std::tie(middle, corner) = RenderScene(
        folder, Device(),
        "BackdropColor 0 0 1\n" + cameraBlock +
            "Object\n{\n  FileName square.qxo\n  Dissolve { Envelope 1 Key 0.5 0 3 0 0 0 0 0 0 Behaviors 1 1 }\n}\n");
    EXPECT_EQ(middle, 0xFF0000FFu) << "a dissolve of 0.5 hides the object wholly";
}

}  // namespace
}  // namespace qx4d::test
