#pragma once
// A test fixture with the engine as materials need it: the content folders mounted under
// their aliases, a graphics device with a depth buffer, and the renderer.
#include "platform/gpu/Types.h"
#include "qx4d/core/FileManager.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace qx4d::test {

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
