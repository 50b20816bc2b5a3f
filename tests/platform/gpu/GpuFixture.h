#pragma once
// A device on whatever OpenGL the machine has (llvmpipe in CI), targets and read-back.
#include "platform/gpu/Device.h"
#include "platform/gpu/Effect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace qx::gpu::testing {

inline std::shared_ptr<Device> makeDevice()
{
    D3DPRESENT_PARAMETERS parameters;
    parameters.BackBufferWidth = 1;
    parameters.BackBufferHeight = 1;
    parameters.BackBufferFormat = D3DFMT_A8R8G8B8;
    parameters.EnableAutoDepthStencil = 1;
    parameters.AutoDepthStencilFormat = D3DFMT_D24X8;
    return Device::create(parameters);
}

/// Pixels of a target as 0xAARRGGBB words, row 0 first.
inline std::vector<uint32_t> readPixels(Device& device, const std::shared_ptr<Surface>& target)
{
    const D3DSURFACE_DESC desc = target->desc();
    std::shared_ptr<Surface> memory;
    EXPECT_EQ(device.CreateOffscreenPlainSurface(desc.Width, desc.Height, desc.Format, D3DPOOL_SYSTEMMEM, &memory),
              D3D_OK);
    EXPECT_EQ(device.GetRenderTargetData(target, memory), D3D_OK);
    D3DLOCKED_RECT locked;
    EXPECT_EQ(memory->LockRect(&locked, D3DLOCK_READONLY), D3D_OK);
    std::vector<uint32_t> pixels(size_t(desc.Width) * desc.Height);
    for (UINT row = 0; row < desc.Height; ++row)
        std::memcpy(&pixels[size_t(row) * desc.Width], static_cast<uint8_t*>(locked.pBits) + row * size_t(locked.Pitch),
                    desc.Width * 4);
    memory->UnlockRect();
    return pixels;
}

/// A quad of the effect tests: clip-space positions and texture coordinates.
struct QuadVertex {
    float x, y, z, u, v;
};

inline constexpr D3DVERTEXELEMENT9 kQuadDeclaration[] = {
    {0, 0, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 0},
    {0, 12, D3DDECLTYPE_FLOAT2, 0, D3DDECLUSAGE_TEXCOORD, 0},
    D3DDECL_END,
};

/// Clip space, y up: the top left corner takes (u, v) = (0, 0), as in Direct3D.
inline constexpr QuadVertex kFullScreenQuad[] = {
    {-1, 1, 0.5f, 0, 0}, {1, 1, 0.5f, 1, 0}, {1, -1, 0.5f, 1, 1}, {-1, -1, 0.5f, 0, 1}};

inline std::shared_ptr<Effect> makeEffect(const std::shared_ptr<Device>& device, const std::string& text)
{
    std::shared_ptr<Effect> effect;
    EXPECT_EQ(D3DXCreateEffect(device, text, nullptr, &effect), D3D_OK);
    return effect;
}

/// Channel distance of two colours, the largest of the four.
inline int colourDistance(uint32_t a, uint32_t b)
{
    int largest = 0;
    for (int shift = 0; shift < 32; shift += 8)
        largest = std::max(largest, std::abs(int((a >> shift) & 0xFF) - int((b >> shift) & 0xFF)));
    return largest;
}

class GpuTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        device = makeDevice();
        ASSERT_NE(device, nullptr) << "no OpenGL 4.5 core context";
    }
    std::shared_ptr<Surface> makeTarget(UINT width, UINT height)
    {
        std::shared_ptr<Surface> target;
        EXPECT_EQ(device->CreateRenderTarget(width, height, D3DFMT_A8R8G8B8, &target), D3D_OK);
        EXPECT_EQ(device->SetRenderTarget(0, target), D3D_OK);
        return target;
    }
    std::shared_ptr<Device> device;
};

}  // namespace qx::gpu::testing
