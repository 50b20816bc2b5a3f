#pragma once
// A test fixture with the engine as materials need it: the content folders mounted under
// their aliases, a graphics device with a depth buffer, and the renderer.
#include "platform/gpu/Types.h"
#include "qx4d/content/ShadingScene.h"
#include "qx4d/core/FileManager.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"
#include "tests/platform/gpu/GpuFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

namespace qx4d::test {

/// An orthographic view 2.4 units across, depth 0.1 a unit from z = -5: mul(v, M) of
/// the shaders gives M applied to v.
inline ShadingCamera OrthographicCamera()
{
    ShadingCamera camera;
    camera.viewProjection = {1 / 1.2f, 0, 0, 0, 0, 1 / 1.2f, 0, 0, 0, 0, 0.1f, 0.5f, 0, 0, 0, 1};
    camera.position = {0, 0, -5};
    return camera;
}

/// The pixel of a square target of `size` that samples the world point (x, y) of the
/// orthographic view, or the nearest one. Direct3D samples pixel i at 2i / size - 1 in
/// clip space, half a pixel off the centre that OpenGL would take.
inline uint32_t OrthographicAt(const std::vector<uint32_t>& pixels, int size, float x, float y)
{
    const long column = std::lround((x / 1.2f + 1) * float(size) / 2),
               row = std::lround((1 - y / 1.2f) * float(size) / 2);
    return pixels[size_t(std::clamp(row, 0L, long(size - 1))) * size_t(size) +
                  size_t(std::clamp(column, 0L, long(size - 1)))];
}

class EngineTest : public ::testing::Test {
protected:
    /// Mounts data/Effects and data/Materials and starts a device of `size` by `size`;
    /// false when no EGL device can be made.
    bool StartEngine(unsigned size)
    {
        EXPECT_TRUE(files.Mount(u"EFFECTS", std::u16string(u"" QX_SOURCE_DIR "/data/Effects")));
        EXPECT_TRUE(files.Mount(u"MATERIALS", std::u16string(u"" QX_SOURCE_DIR "/data/Materials")));
        qx::gpu::D3DPRESENT_PARAMETERS parameters;
        parameters.BackBufferWidth = parameters.BackBufferHeight = size;
        parameters.BackBufferFormat = qx::gpu::D3DFMT_A8R8G8B8;
        parameters.EnableAutoDepthStencil = 1;
        parameters.AutoDepthStencilFormat = qx::gpu::D3DFMT_D24X8;
        graphics = std::make_unique<GraphicsDevice>();
        if (!graphics->Create(parameters)) return false;
        renderer = std::make_unique<Renderer>();
        return true;
    }
    /// Ends the effect and the scene and reads the target back, 0xAARRGGBB, row 0 first.
    std::vector<uint32_t> FinishFrame()
    {
        renderer->EndEffect();
        graphics->GetDevice()->EndScene();
        std::shared_ptr<qx::gpu::Surface> target;
        graphics->GetDevice()->GetRenderTarget(0, &target);
        return qx::gpu::testing::readPixels(*graphics->GetDevice(), target);
    }
    void TearDown() override
    {
        renderer.reset();
        graphics.reset();
    }

    FileManager files;
    std::unique_ptr<GraphicsDevice> graphics;
    std::unique_ptr<Renderer> renderer;
};

}  // namespace qx4d::test
