// Textures from files in memory (DDS with DXT5, cube maps, mip levels; PNG through stb)
// and surfaces saved to files.
#include "platform/gpu/DdsFile.h"
#include "platform/gpu/ImageFile.h"
#include "tests/platform/gpu/GpuFixture.h"

#include <stb_image.h>
#include <stb_image_write.h>

#include <filesystem>

namespace qx::gpu::testing {
namespace {

// One DXT5 block: alpha 255 everywhere; colour 0 pure red (RGB565 0xF800) on row 0,
// colour 1 pure blue (0x001F) on rows 1 to 3.
std::vector<uint8_t> redOverBlueBlock()
{
    return {255,  0,    0,    0,    0, 0, 0, 0,  // alpha 0, alpha 1, 48 bits of index 0
            0x00, 0xF8, 0x1F, 0x00,              // colour 0, colour 1, little-endian
            0x00, 0x55, 0x55, 0x55};             // 2-bit indices, row 0 first
}

const D3DVERTEXELEMENT9 kTexturedDeclaration[] = {
    {0, 0, D3DDECLTYPE_FLOAT4, 0, D3DDECLUSAGE_POSITIONT, 0},
    {0, 16, D3DDECLTYPE_FLOAT2, 0, D3DDECLUSAGE_TEXCOORD, 0},
    D3DDECL_END,
};

const char* const kSampleEffect = R"(
sampler s0 : register(s0);
float4 ps_main(float2 uv : TEXCOORD0) : COLOR0 { return tex2D(s0, uv); }
technique t { pass p { PixelShader = compile ps_2_0 ps_main(); } }
)";

class TextureFileTest : public GpuTest {
protected:
    // Draws the texture over a whole target of its size with point sampling.
    std::vector<uint32_t> drawTexture(const std::shared_ptr<Texture>& texture, UINT width, UINT height)
    {
        const auto target = makeTarget(width, height);
        std::shared_ptr<VertexDeclaration> declaration;
        device->CreateVertexDeclaration(kTexturedDeclaration, &declaration);
        device->SetVertexDeclaration(declaration);
        device->SetTexture(0, texture);
        const auto effect = makeEffect(device, kSampleEffect);
        effect->Begin(nullptr, 0);
        effect->BeginPass(0);
        const auto w = float(width), h = float(height);
        const float quad[] = {0, 0, 0, 1, 0, 0, w, 0, 0, 1, 1, 0, w, h, 0, 1, 1, 1, 0, h, 0, 1, 0, 1};
        device->DrawPrimitiveUP(D3DPT_TRIANGLEFAN, 2, quad, 24);
        effect->EndPass();
        effect->End();
        return readPixels(*device, target);
    }
};

TEST_F(TextureFileTest, Dxt5TextureLoadsWithItsInformationAndOrientation)
{
    const auto file = writeDds(D3DFMT_DXT5, 4, 4, 1, false, {redOverBlueBlock()});
    D3DXIMAGE_INFO info;
    ASSERT_EQ(D3DXGetImageInfoFromFileInMemory(file.data(), UINT(file.size()), &info), D3D_OK);
    EXPECT_EQ(info.Format, D3DFMT_DXT5);
    EXPECT_EQ(info.ResourceType, D3DRTYPE_TEXTURE);
    EXPECT_EQ(info.ImageFileFormat, D3DXIFF_DDS);
    EXPECT_EQ(info.MipLevels, 1u);
    std::shared_ptr<Texture> texture;
    ASSERT_EQ(D3DXCreateTextureFromFileInMemoryEx(*device, file.data(), UINT(file.size()), info.MipLevels, 0,
                                                  D3DPOOL_MANAGED, nullptr, &texture),
              D3D_OK);
    const auto pixels = drawTexture(texture, 4, 4);
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(pixels[size_t(x)], 0xFFFF0000u) << x;
        EXPECT_EQ(pixels[size_t(12 + x)], 0xFF0000FFu) << x;
    }
}

TEST_F(TextureFileTest, MipLevelsOfTheFileAreKept)
{
    // 8 x 4 A8R8G8B8: level 0 grey 0x40, level 1 (4 x 2) grey 0x80, level 2 (2 x 1) 0xC0,
    // level 3 (1 x 1) white.
    std::vector<std::vector<uint8_t>> levels;
    for (UINT level = 0, w = 8, h = 4; level < 4; ++level, w = std::max(1u, w / 2), h = std::max(1u, h / 2))
        levels.emplace_back(size_t(w) * h * 4, uint8_t(0x40 * (level + 1) - (level == 3 ? 1 : 0)));
    const auto file = writeDds(D3DFMT_A8R8G8B8, 8, 4, 4, false, levels);
    D3DXIMAGE_INFO info;
    std::shared_ptr<Texture> texture;
    ASSERT_EQ(D3DXCreateTextureFromFileInMemoryEx(*device, file.data(), UINT(file.size()), 4, 0, D3DPOOL_MANAGED, &info,
                                                  &texture),
              D3D_OK);
    EXPECT_EQ(info.MipLevels, 4u);
    ASSERT_EQ(texture->GetLevelCount(), 4u);
    D3DLOCKED_RECT locked;
    ASSERT_EQ(texture->LockRect(2, &locked, D3DLOCK_READONLY), D3D_OK);
    EXPECT_EQ(locked.Pitch, 8);
    EXPECT_EQ(static_cast<uint8_t*>(locked.pBits)[5], 0xC0);
    texture->UnlockRect(2);
}

TEST_F(TextureFileTest, CubeMapLoadsSixFaces)
{
    std::vector<std::vector<uint8_t>> faces;
    for (uint8_t face = 0; face < 6; ++face)
        faces.push_back({face, uint8_t(face * 2), uint8_t(face * 3), 0xFF, face, face, face, 0xFF, face, face, face,
                         0xFF, face, face, face, 0xFF});
    const auto file = writeDds(D3DFMT_A8R8G8B8, 2, 2, 1, true, faces);
    D3DXIMAGE_INFO info;
    ASSERT_EQ(D3DXGetImageInfoFromFileInMemory(file.data(), UINT(file.size()), &info), D3D_OK);
    EXPECT_EQ(info.ResourceType, D3DRTYPE_CUBETEXTURE);
    std::shared_ptr<Texture> texture;
    EXPECT_NE(D3DXCreateTextureFromFileInMemoryEx(*device, file.data(), UINT(file.size()), 1, 0, D3DPOOL_MANAGED,
                                                  nullptr, &texture),
              D3D_OK);  // a cube map is not a 2D texture
    ASSERT_EQ(D3DXCreateCubeTextureFromFileInMemoryEx(*device, file.data(), UINT(file.size()), 1, 0, D3DPOOL_MANAGED,
                                                      nullptr, &texture),
              D3D_OK);
    EXPECT_EQ(texture->GetType(), D3DRTYPE_CUBETEXTURE);
    for (UINT face = 0; face < 6; ++face) {
        std::vector<uint8_t> bytes;
        ASSERT_TRUE(texture->download(face, 0, bytes));
        EXPECT_EQ(bytes[0], face);
        EXPECT_EQ(bytes[2], face * 3);
    }
}

TEST_F(TextureFileTest, DamagedDdsFilesAreRefused)
{
    auto file = writeDds(D3DFMT_DXT5, 8, 8, 2, false, {std::vector<uint8_t>(64), std::vector<uint8_t>(16)});
    D3DXIMAGE_INFO info;
    const auto infoOf = [&](const std::vector<uint8_t>& bytes) {
        return D3DXGetImageInfoFromFileInMemory(bytes.data(), UINT(bytes.size()), &info);
    };
    EXPECT_EQ(infoOf(file), D3D_OK);
    auto cut = file;
    cut.pop_back();  // last level one byte short
    EXPECT_NE(infoOf(cut), D3D_OK);
    auto badFourCC = file;
    badFourCC[84] = 'Q';  // pixel format's four-character code
    EXPECT_NE(infoOf(badFourCC), D3D_OK);
    auto hugeMips = file;
    hugeMips[28] = 40;  // mip count beyond the chain
    EXPECT_NE(infoOf(hugeMips), D3D_OK);
    EXPECT_NE(infoOf({'D', 'D', 'S', ' '}), D3D_OK);
}

void appendBytes(void* context, void* data, int size)
{
    auto* out = static_cast<std::vector<uint8_t>*>(context);
    out->insert(out->end(), static_cast<uint8_t*>(data), static_cast<uint8_t*>(data) + size);
}

TEST_F(TextureFileTest, PngLoadsTopRowFirstInDirect3DByteOrder)
{
    const uint8_t rgba[] = {255, 0, 0,   255, 0,   255, 0,   128,  // red, half-transparent green
                            0,   0, 255, 255, 255, 255, 255, 255};
    std::vector<uint8_t> png;
    ASSERT_NE(stbi_write_png_to_func(appendBytes, &png, 2, 2, 4, rgba, 8), 0);
    D3DXIMAGE_INFO info;
    std::shared_ptr<Texture> texture;
    ASSERT_EQ(D3DXCreateTextureFromFileInMemoryEx(*device, png.data(), UINT(png.size()), 1, 0, D3DPOOL_MANAGED, &info,
                                                  &texture),
              D3D_OK);
    EXPECT_EQ(info.ImageFileFormat, D3DXIFF_PNG);
    EXPECT_EQ(info.Format, D3DFMT_A8R8G8B8);
    D3DLOCKED_RECT locked;
    ASSERT_EQ(texture->LockRect(0, &locked, D3DLOCK_READONLY), D3D_OK);
    const auto* words = static_cast<const uint32_t*>(locked.pBits);
    EXPECT_EQ(words[0], 0xFFFF0000u);
    EXPECT_EQ(words[1], 0x8000FF00u);
    EXPECT_EQ(words[2], 0xFF0000FFu);
    texture->UnlockRect(0);
}

TEST_F(TextureFileTest, SavedRenderTargetReadsBackAsTheSamePicture)
{
    const auto target = makeTarget(4, 2);
    device->Clear(D3DCLEAR_TARGET, 0xFF102030u, 1.0f, 0);
    device->SetViewport(D3DVIEWPORT9{0, 0, 4, 1, 0.0f, 1.0f});
    device->Clear(D3DCLEAR_TARGET, 0xFFFFFFFFu, 1.0f, 0);  // white top row
    const auto path = (std::filesystem::temp_directory_path() / "qx_gpu_save_test.png").string();
    ASSERT_EQ(D3DXSaveSurfaceToFile(path, D3DXIFF_PNG, *target), D3D_OK);
    int width = 0, height = 0, channels = 0;
    stbi_uc* pixels = stbi_load(path.c_str(), &width, &height, &channels, 4);
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(width, 4);
    EXPECT_EQ(height, 2);
    EXPECT_EQ(pixels[0], 0xFF);          // top row white
    EXPECT_EQ(pixels[4 * 4 + 0], 0x10);  // then R 0x10
    EXPECT_EQ(pixels[4 * 4 + 2], 0x30);  // and B 0x30
    stbi_image_free(pixels);
    std::filesystem::remove(path);
    EXPECT_NE(D3DXSaveSurfaceToFile("/nonexistent-folder/x.png", D3DXIFF_PNG, *target), D3D_OK);
}

}  // namespace
}  // namespace qx::gpu::testing
