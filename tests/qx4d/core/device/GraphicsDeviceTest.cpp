// The graphics device: the engine-wide instance, its frame protocol and screenshots.
#include "tests/qx4d/core/device/DeviceFixture.h"

#include <stb_image.h>

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

}  // namespace
}  // namespace qx4d::testing
