// The device: creation, clears and read-back, resources, locks and the lost-device protocol.
#include "tests/platform/gpu/GpuFixture.h"

#include <iostream>

namespace qx::gpu::testing {
namespace {

// Prints which OpenGL implementation the run used, so that CI logs tell llvmpipe from a GPU.
class RendererReport : public ::testing::Environment {
    void SetUp() override
    {
        const auto device = makeDevice();
        std::cout << "GL_RENDERER: " << (device ? device->rendererName() : "(no device)") << std::endl;
    }
};
const auto* const kReport = ::testing::AddGlobalTestEnvironment(new RendererReport);

TEST_F(GpuTest, ClearFillsTheTargetAndReadsBackInDirect3DByteOrder)
{
    const auto target = makeTarget(64, 32);
    ASSERT_EQ(device->Clear(D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, 0xFF336699u, 1.0f, 0), D3D_OK);
    const auto pixels = readPixels(*device, target);
    ASSERT_EQ(pixels.size(), 64u * 32u);
    for (uint32_t pixel : pixels) ASSERT_EQ(pixel, 0xFF336699u);
    // Bytes B, G, R, A in memory.
    const auto* bytes = reinterpret_cast<const uint8_t*>(pixels.data());
    EXPECT_EQ(bytes[0], 0x99);
    EXPECT_EQ(bytes[2], 0x33);
}

TEST_F(GpuTest, ClearKeepsToTheViewport)
{
    const auto target = makeTarget(8, 8);
    device->Clear(D3DCLEAR_TARGET, 0xFF000000u, 1.0f, 0);
    device->SetViewport(D3DVIEWPORT9{2, 1, 3, 2, 0.0f, 1.0f});
    device->Clear(D3DCLEAR_TARGET, 0xFFFFFFFFu, 1.0f, 0);
    const auto pixels = readPixels(*device, target);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) {
            const bool inside = x >= 2 && x < 5 && y >= 1 && y < 3;
            EXPECT_EQ(pixels[size_t(y * 8 + x)], inside ? 0xFFFFFFFFu : 0xFF000000u) << x << "," << y;
        }
    }
}

TEST_F(GpuTest, SettingATargetSetsTheViewportToItsSize)
{
    makeTarget(40, 30);
    D3DVIEWPORT9 viewport;
    ASSERT_EQ(device->GetViewport(&viewport), D3D_OK);
    EXPECT_EQ(viewport.Width, 40u);
    EXPECT_EQ(viewport.Height, 30u);
}

TEST_F(GpuTest, TextureLockWritesRowsThatReadBackTopDown)
{
    std::shared_ptr<Texture> texture;
    ASSERT_EQ(device->CreateTexture(3, 2, 1, D3DUSAGE_DYNAMIC, D3DFMT_A8R8G8B8, D3DPOOL_DEFAULT, &texture), D3D_OK);
    D3DLOCKED_RECT locked;
    ASSERT_EQ(texture->LockRect(0, &locked, D3DLOCK_DISCARD), D3D_OK);
    EXPECT_EQ(locked.Pitch, 12);
    auto* words = static_cast<uint32_t*>(locked.pBits);
    for (uint32_t i = 0; i < 6; ++i) words[i] = 0xFF000000u | i;
    ASSERT_EQ(texture->UnlockRect(0), D3D_OK);
    ASSERT_EQ(texture->LockRect(0, &locked, D3DLOCK_READONLY), D3D_OK);
    words = static_cast<uint32_t*>(locked.pBits);
    EXPECT_EQ(words[0], 0xFF000000u);
    EXPECT_EQ(words[5], 0xFF000005u);
    EXPECT_EQ(texture->UnlockRect(0), D3D_OK);
    EXPECT_EQ(texture->UnlockRect(0), D3DERR_INVALIDCALL);
}

TEST_F(GpuTest, BadResourceRequestsAreRefused)
{
    std::shared_ptr<Texture> texture;
    EXPECT_NE(device->CreateTexture(0, 4, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &texture), D3D_OK);
    EXPECT_NE(device->CreateTexture(4, 4, 1, 0, 12345, D3DPOOL_MANAGED, &texture), D3D_OK);
    EXPECT_NE(device->CreateTexture(4, 4, 4, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &texture), D3D_OK);
    EXPECT_EQ(texture, nullptr);
    std::shared_ptr<IndexBuffer> indices;
    EXPECT_NE(device->CreateIndexBuffer(64, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &indices), D3D_OK);
    const D3DVERTEXELEMENT9 unterminated[80] = {};
    std::shared_ptr<VertexDeclaration> declaration;
    EXPECT_NE(device->CreateVertexDeclaration(unterminated, &declaration), D3D_OK);
    EXPECT_NE(device->SetVertexShaderConstantF(250, std::vector<float>(40).data(), 10), D3D_OK);
}

TEST_F(GpuTest, BufferLocksClampToTheBufferAndOnlyOneAtATime)
{
    std::shared_ptr<VertexBuffer> buffer;
    ASSERT_EQ(device->CreateVertexBuffer(64, D3DUSAGE_DYNAMIC | D3DUSAGE_WRITEONLY, D3DPOOL_DEFAULT, &buffer), D3D_OK);
    void* data = nullptr;
    EXPECT_EQ(buffer->Lock(65, 4, &data, 0), D3DERR_INVALIDCALL);
    ASSERT_EQ(buffer->Lock(48, 0, &data, D3DLOCK_NOOVERWRITE), D3D_OK);
    std::memset(data, 0xAB, 16);  // size 0: the rest of the buffer, 16 bytes
    EXPECT_EQ(buffer->Lock(0, 4, &data, 0), D3DERR_INVALIDCALL);
    EXPECT_EQ(buffer->Unlock(), D3D_OK);
    EXPECT_EQ(buffer->Unlock(), D3DERR_INVALIDCALL);
}

TEST_F(GpuTest, LostDeviceDrawsNothingAndResetsOnlyWithoutDefaultPoolResources)
{
    std::shared_ptr<Surface> backBuffer;
    ASSERT_EQ(device->GetRenderTarget(0, &backBuffer), D3D_OK);
    auto target = makeTarget(4, 4);
    device->Clear(D3DCLEAR_TARGET, 0xFF0000FFu, 1.0f, 0);
    std::shared_ptr<Texture> managed;
    ASSERT_EQ(device->CreateTexture(4, 4, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &managed), D3D_OK);

    device->SimulateDeviceLoss(false);
    EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICELOST);
    EXPECT_EQ(device->BeginScene(), D3DERR_DEVICELOST);
    EXPECT_EQ(device->Clear(D3DCLEAR_TARGET, 0xFFFF0000u, 1.0f, 0), D3D_OK);  // taken, not done
    D3DPRESENT_PARAMETERS parameters;
    parameters.BackBufferWidth = parameters.BackBufferHeight = 1;
    EXPECT_EQ(device->Reset(parameters), D3DERR_DEVICELOST);

    device->SimulateDeviceLoss(true);
    EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICENOTRESET);
    EXPECT_EQ(device->Reset(parameters), D3DERR_INVALIDCALL);  // the target of the default pool lives
    ASSERT_EQ(device->SetRenderTarget(0, backBuffer), D3D_OK);
    target.reset();
    EXPECT_EQ(device->Reset(parameters), D3D_OK);  // the managed texture does not count
    EXPECT_EQ(device->TestCooperativeLevel(), D3D_OK);
    EXPECT_EQ(device->BeginScene(), D3D_OK);
}

}  // namespace
}  // namespace qx::gpu::testing
