// The graphics device: the engine-wide instance, its frame protocol and screenshots.
#include "tests/qx4d/core/device/DeviceFixture.h"

#include <stb_image.h>

#include <thread>

namespace qx4d::testing {
namespace {

using GraphicsDeviceTest = EngineTest;

TEST_F(GraphicsDeviceTest, CreateMakesTheEngineWideDeviceAndDestroyClearsIt)
{
    EXPECT_EQ(GraphicsDevice::Current(), graphics.get());
    EXPECT_EQ(graphics->GetCaps().PixelShaderVersion & 0xFFFF, 0x0300u);
    graphics->Destroy();
    EXPECT_EQ(graphics->GetDevice(), nullptr);
    EXPECT_FALSE(graphics->BeginFrame());
    graphics.reset();
    EXPECT_EQ(GraphicsDevice::Current(), nullptr);
}

TEST_F(GraphicsDeviceTest, EndFrameSavesTheScreenshotOnceAndClearsThePath)
{
    const ResourceHandle target = renderer->CreateRenderTarget(6, 4);
    ASSERT_TRUE(graphics->BeginFrame());
    Device().SetRenderTarget(0, renderer->GetRenderTarget(target)->surface);
    Device().Clear(gpu::D3DCLEAR_TARGET, 0xFF204080u, 1.0f, 0);
    const std::filesystem::path shot = folder / "shot.png";
    graphics->SetScreenshot(shot.u16string(), gpu::D3DXIFF_PNG);
    graphics->EndFrame(false);
    int width = 0, height = 0, channels = 0;
    stbi_uc* pixels = stbi_load(shot.c_str(), &width, &height, &channels, 4);
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(width, 6);
    EXPECT_EQ(height, 4);
    EXPECT_EQ(pixels[0], 0x20);
    EXPECT_EQ(pixels[2], 0x80);
    stbi_image_free(pixels);
    std::filesystem::remove(shot);
    graphics->EndFrame(false);
    EXPECT_FALSE(std::filesystem::exists(shot));
}

TEST_F(GraphicsDeviceTest, FramesRunOnOtherThreadsThanTheDevicesMaking)
{
    // As with the engine's worker: the device is made on one thread, frames come from
    // others, one at a time.
    graphics.reset();
    graphics = std::make_unique<GraphicsDevice>();
    gpu::D3DPRESENT_PARAMETERS parameters;
    parameters.BackBufferWidth = parameters.BackBufferHeight = 1;
    std::thread([&] { ASSERT_TRUE(graphics->Create(parameters)); }).join();
    for (uint32_t colour : {0xFF0000FFu, 0xFF00FF00u}) {
        std::vector<uint8_t> pixels;
        std::thread([&] {
            std::shared_ptr<gpu::Surface> target;
            ASSERT_TRUE(graphics->BeginFrame());
            Device().CreateRenderTarget(2, 2, gpu::D3DFMT_A8R8G8B8, &target);
            Device().SetRenderTarget(0, target);
            Device().Clear(gpu::D3DCLEAR_TARGET, colour, 1.0f, 0);
            target->texture()->download(0, 0, pixels);
            graphics->EndFrame(false);
        }).join();
        ASSERT_EQ(pixels.size(), 16u);
        uint32_t first = 0;
        std::memcpy(&first, pixels.data(), 4);
        EXPECT_EQ(first, colour);
    }
}

}  // namespace
}  // namespace qx4d::testing
