// Every combination of the generator's golden cases, generated over the content pack's
// "common.fxh" and compiled by the effect compiler of the device: the include file
// defines all that the generated text calls, with the register sizes it counts on.
#include "qx4d/content/ShaderWriter.h"

#include "platform/os/WideText.h"
#include "qx4d/core/FileManager.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"
#include "tests/qx4d/content/EngineFixture.h"
#include "tests/qx4d/content/MaterialTestSupport.h"

#include <gtest/gtest.h>

#include <memory>

namespace qx4d::test {
namespace {

struct Case {
    const char* name;
    std::vector<uint32_t> keys;
    uint32_t flags;
    std::vector<std::pair<int, int>> usages;
    int32_t fogType = 0;
    std::vector<MaterialTexture> textures = {};
    bool reflective = false;
    int32_t bones = 0;
};

const std::vector<std::pair<int, int>> kPosNormal = {{kPos, 0}, {kNormal, 0}};

std::vector<Case> Cases()
{
    const std::vector<uint32_t> allTypes = {0x21200, 0x20400, 0x31800, 0x20800, 0x20200, 0x21400};
    std::vector<uint32_t> allTypesPerPixel;
    for (uint32_t key : allTypes) allTypesPerPixel.push_back(key | 0x40000);
    return {
        {"no light, no fog", {}, 3, kPosNormal},
        {"lights per vertex", allTypes, 0x1004B, kPosNormal},
        {"lights per pixel", allTypesPerPixel, 0x10053, kPosNormal},
        {"lights mixed", {0x20200, 0x61400, 0x21400, 0x60200}, 0x1005B, kPosNormal},
        {"lighting in texture coordinates",
         {0x21200, 0x61200},
         0x100DB,
         {{kPos, 0}, {kNormal, 0}, {kTex, 0}, {kTex, 2}}},
        {"linear fog", {}, 0x10023, kPosNormal, 1},
        {"exponential fog", {0x21200}, 0x1006B, kPosNormal, 2},
        {"squared exponential fog", {}, 0x10023, kPosNormal, 3},
        {"bones",
         {0x21200},
         0x1004B,
         {{kPos, 0}, {kNormal, 0}, {gpu::D3DDECLUSAGE_BLENDWEIGHT, 0}, {gpu::D3DDECLUSAGE_BLENDINDICES, 0}},
         0,
         {},
         false,
         4},
        {"tweened streams",
         {0x21200},
         0x1804B,
         {{kPos, 0},
          {kPos, 1},
          {kNormal, 0},
          {kNormal, 1},
          {kTangent, 0},
          {kTangent, 1},
          {kBinormal, 0},
          {kBinormal, 1}}},
        {"added streams", {0x21200}, 0x1004B, {{kPos, 0}, {kPos, 1}, {kNormal, 0}, {kNormal, 1}}},
        {"no inverse transpose, no normalising", {}, 0, {{kPos, 0}, {kNormal, 0}, {kTangent, 0}, {kBinormal, 0}}},
        {"reflective",
         {0x21200},
         0x1004B,
         {{kPos, 0}, {kNormal, 0}, {kTex, 0}},
         0,
         {Texture(kSemanticBaseColor, 0, 0), Texture(kSemanticReflection, 1, 1)},
         true},
        {"normal map",
         {0x61200},
         0x10053,
         {{kPos, 0}, {kNormal, 0}, {kTex, 0}, {kTangent, 0}},
         0,
         {Texture(kSemanticBaseColor, 0, 0), Texture(kSemanticNormal, 1, 0), Texture(kSemanticSpecularity, 2, 0, 0, 1),
          Texture(kSemanticHeight, 0, 0)}},
        {"three base colours and alpha",
         {0x21800},
         0x1004B,
         {{kPos, 0}, {kNormal, 0}, {kTex, 0}, {kTex, 1}},
         0,
         {Texture(kSemanticBaseColor, 0, 0), Texture(kSemanticBaseColor, 1, 1), Texture(kSemanticBaseColor, 2, 0, 1, 3),
          Texture(kSemanticAlpha, 0, 0, 3, 1)}},
    };
}

class ShaderCompileTest : public EngineTest {
protected:
    void SetUp() override
    {
        if (!StartEngine(1)) GTEST_SKIP() << "no EGL device";
    }
};

TEST_F(ShaderCompileTest, EveryCombinationCompiles)
{
    for (const Case& entry : Cases()) {
        Material material;
        material.shaderKeys = entry.keys;
        material.flags = entry.flags;
        material.textures = entry.textures;
        material.reflective = entry.reflective;
        material.bones = entry.bones;
        std::string text;
        ASSERT_TRUE(Generate(material, Declaration(entry.usages), entry.fogType, text));
        ResourceHandle effect = renderer->CreateEffect(text);
        EXPECT_FALSE(effect.IsNull()) << entry.name << "\n" << text;
        renderer->ReleaseEffect(effect);
    }
}

// Texts that name what nothing declares stay without an effect, as the compiler refuses
// them: a key with no light type adds a light that has no global, and with no texture
// coordinate left the lighting outputs get the semantic TEXCOORD-1.
TEST_F(ShaderCompileTest, TextsThatCannotCompileGiveNoEffect)
{
    Material untyped;
    untyped.shaderKeys = {0x21000};
    untyped.flags = 0x1004B;
    std::string text;
    ASSERT_TRUE(Generate(untyped, Declaration(kPosNormal), 0, text));
    EXPECT_TRUE(renderer->CreateEffect(text).IsNull());

    Material crowded;
    crowded.shaderKeys = {0x21200};
    crowded.flags = 0x100CB;
    std::vector<std::pair<int, int>> usages = kPosNormal;
    for (int i = 0; i < 16; ++i) usages.emplace_back(kTex, i);
    ASSERT_TRUE(Generate(crowded, Declaration(usages), 0, text));
    EXPECT_NE(text.find("TEXCOORD-1"), std::string::npos);
    EXPECT_TRUE(renderer->CreateEffect(text).IsNull());
}

// Build makes the effect through the renderer; materials of the same text share it.
TEST_F(ShaderCompileTest, BuildCreatesASharedEffect)
{
    ShadingScene scene;
    scene.fog.fogType = 1;
    const auto declaration = Declaration({{kPos, 0}, {kNormal, 0}, {kTex, 0}});
    Material first;
    first.shaderKeys = {0x21200, 0x21400, 0x31800};
    Material second;
    second.shaderKeys = first.shaderKeys;
    ASSERT_TRUE(first.Build(declaration, scene));
    ASSERT_TRUE(second.Build(declaration, scene));
    EXPECT_EQ(first.effect.Index(), second.effect.Index());
    EXPECT_EQ(renderer->GetEffect(first.effect)->refCount, 2);
}

// The content pack's materials, each on a mesh of positions, normals and the coordinate
// sets its textures read (a reflection reads the generated set after them), under a
// distant, a point and a spot light and in fog: each gives an effect.
TEST_F(ShaderCompileTest, StandardMaterialsBuild)
{
    const char16_t* const names[] = {u"color.mat",
                                     u"texture.mat",
                                     u"color_reflective.mat",
                                     u"texture_reflective.mat",
                                     u"texture_alpha.mat",
                                     u"two_textures_opacity.mat"};
    ShadingScene scene;
    scene.fog.fogType = 1;
    for (const char16_t* name : names) {
        const std::u16string_view file(name);
        std::vector<std::pair<int, int>> usages = kPosNormal;
        if (file.starts_with(u"texture") || file.starts_with(u"two")) usages.emplace_back(kTex, 0);
        if (file.starts_with(u"two")) usages.emplace_back(kTex, 1);
        const auto declaration = Declaration(usages);
        Material material;
        ASSERT_TRUE(material.Load(String(file)));
        material.reflective = file.find(u"reflective") != std::u16string_view::npos;
        material.shaderKeys = {0x21200, 0x21400, 0x31800};
        EXPECT_TRUE(material.Build(declaration, scene)) << qx::os::toUtf8(std::u16string(file));
    }
}

}  // namespace
}  // namespace qx4d::test
