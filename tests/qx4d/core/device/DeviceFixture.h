#pragma once
// An engine set-up for device tests: the file manager over a scratch folder (IMAGES and
// EFFECTS), the graphics device and the renderer.
#include "platform/gpu/DdsFile.h"
#include "qx4d/core/FileManager.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

namespace qx4d::testing {

class EngineTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        folder =
            std::filesystem::temp_directory_path() / ("qx4d_device_" + std::to_string(::getpid()) + "_" +
                                                      ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder / "Images");
        std::filesystem::create_directories(folder / "Effects");
        files = std::make_unique<FileManager>();
        ASSERT_TRUE(files->Mount(u"IMAGES", (folder / "Images").u16string()));
        ASSERT_TRUE(files->Mount(u"EFFECTS", (folder / "Effects").u16string()));
        gpu::D3DPRESENT_PARAMETERS parameters;
        parameters.BackBufferWidth = parameters.BackBufferHeight = 1;
        parameters.BackBufferFormat = gpu::D3DFMT_A8R8G8B8;
        parameters.EnableAutoDepthStencil = 1;
        parameters.AutoDepthStencilFormat = gpu::D3DFMT_D24X8;
        graphics = std::make_unique<GraphicsDevice>();
        ASSERT_TRUE(graphics->Create(parameters));
        renderer = std::make_unique<Renderer>();
    }
    void TearDown() override
    {
        renderer.reset();
        graphics.reset();
        files.reset();
        std::filesystem::remove_all(folder);
    }
    void WriteFile(const std::string& relative, const std::string& bytes)
    {
        std::ofstream(folder / relative, std::ios::binary) << bytes;
    }
    /// A 2 x 2 A8R8G8B8 DDS file whose four pixels are `pixel`.
    void WriteDds(const std::string& relative, uint32_t pixel)
    {
        std::vector<uint8_t> image(16);
        for (size_t i = 0; i < 4; ++i) std::memcpy(image.data() + i * 4, &pixel, 4);
        const auto file = gpu::writeDds(gpu::D3DFMT_A8R8G8B8, 2, 2, 1, false, {image});
        WriteFile(relative, std::string(file.begin(), file.end()));
    }
    gpu::Device& Device() { return *graphics->GetDevice(); }

    std::filesystem::path folder;
    std::unique_ptr<FileManager> files;
    std::unique_ptr<GraphicsDevice> graphics;
    std::unique_ptr<Renderer> renderer;
};

}  // namespace qx4d::testing
