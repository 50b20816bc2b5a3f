#pragma once
// Frames of whole scenes on the device, for the tests of particles, flares and filters:
// the engine with its render queue and buckets, folders for scenes, emitters and pictures, and a scene
// text played for a few steps and drawn into the back buffer, read back top-down.
#include "platform/gpu/DdsFile.h"
#include "qx4d/core/scene/Bucket.h"
#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/LensFlare.h"
#include "qx4d/core/scene/ParticleSystem.h"
#include "qx4d/core/scene/RenderQueue.h"
#include "qx4d/core/scene/Scene.h"
#include "tests/platform/gpu/GpuFixture.h"
#include "tests/qx4d/content/ObjectModels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace qx4d::test {

class FrameTest : public ObjectTest {
protected:
    static constexpr int kSize = 64;

    void SetUp() override
    {
        if (!StartWithObjects(kSize)) GTEST_SKIP() << "no EGL device";
        for (const char* alias : {"SCENES", "EMITTERS", "IMAGES"}) {
            folder.MakeFolder(alias);
            ASSERT_TRUE(files.Mount(std::u16string(alias, alias + std::strlen(alias)), folder.Wide(alias)));
        }
        particles = std::make_unique<ParticleBucket>();
        flares = std::make_unique<LensFlareBucket>();
        ASSERT_TRUE(particles->Create(1000));
        ASSERT_TRUE(flares->Create(1000));
    }
    void TearDown() override
    {
        scene.reset();
        Camera::SetActive(nullptr);
        particles.reset();
        flares.reset();
        ObjectTest::TearDown();
    }

    /// A picture of `width` by `height` pixels (0xAARRGGBB, row 0 on top) as a DDS file
    /// under "IMAGES:".
    void Picture(const std::string& name, uint32_t width, uint32_t height, const std::vector<uint32_t>& pixels)
    {
        std::vector<uint8_t> level(pixels.size() * 4);
        std::memcpy(level.data(), pixels.data(), level.size());
        const std::vector<uint8_t> file = qx::gpu::writeDds(qx::gpu::D3DFMT_A8R8G8B8, width, height, 1, false, {level});
        folder.Write("IMAGES/" + name, std::string(file.begin(), file.end()));
    }
    void White(const std::string& name) { Picture(name, 2, 2, std::vector<uint32_t>(4, 0xFFFFFFFFu)); }

    /// Loads `text` as a scene, hands it the frame's size and plays `steps` steps of `dt`.
    Scene& Load(const std::string& text, int steps = 1, float dt = 1.0f)
    {
        folder.Write("SCENES/test.afx", text);
        scene = std::make_unique<Scene>();
        EXPECT_TRUE(scene->Load(u"test.afx"));
        scene->SetFrameSize(kSize, kSize);
        if (!scene->cameras.empty()) scene->cameras.front()->MakeActive();
        for (int step = 1; step <= steps; ++step) scene->Update(float(step) * dt, dt);
        return *scene;
    }
    /// The scene's frame, top-down.
    std::vector<uint32_t> Draw()
    {
        qx::gpu::Device& device = *graphics->GetDevice();
        device.BeginScene();
        scene->MakeCurrent();
        scene->Render();
        renderer->EndEffect();
        device.EndScene();
        std::shared_ptr<qx::gpu::Surface> target;
        device.GetRenderTarget(0, &target);
        return qx::gpu::testing::readPixels(device, target);
    }
    /// `text` loaded, played and drawn.
    std::vector<uint32_t> Frame(const std::string& text, int steps = 1, float dt = 1.0f)
    {
        Load(text, steps, dt);
        return Draw();
    }

    static uint32_t At(const std::vector<uint32_t>& frame, int x, int y) { return frame[size_t(y * kSize + x)]; }
    static int Red(uint32_t pixel) { return int((pixel >> 16) & 0xFF); }
    static int Green(uint32_t pixel) { return int((pixel >> 8) & 0xFF); }
    static int Blue(uint32_t pixel) { return int(pixel & 0xFF); }

    RenderQueue queue;
    std::unique_ptr<ParticleBucket> particles;
    std::unique_ptr<LensFlareBucket> flares;
    std::unique_ptr<Scene> scene;
};

}  // namespace qx4d::test
