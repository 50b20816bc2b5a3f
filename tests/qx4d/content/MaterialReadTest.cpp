// Reading .mat files: defaults that stand, the words that map, the keys that are taken
// and dropped, the textures; the flag rules of Build; the key each light gives; and the
// six standard materials of the content pack.
#include "qx4d/content/Material.h"
#include "qx4d/content/ShaderKeys.h"

#include "qx4d/core/FileManager.h"
#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

namespace qx4d::test {
namespace {

class MaterialReadTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        folder.Write("Materials/.keep", "");
        ASSERT_TRUE(files.Mount(u"MATERIALS", (folder.path / "Materials").u16string()));
    }
    /// Loads a material from a file holding `xml`.
    void LoadXml(Material& material, const std::string& xml)
    {
        folder.Write("Materials/test.mat", xml);
        ASSERT_TRUE(material.Load(u"test.mat"));
    }
    static void ExpectDefaults(const Material& material)
    {
        EXPECT_TRUE(material.textures.empty());
        EXPECT_EQ(material.flags, 0u);
        EXPECT_TRUE(material.name.empty());
        EXPECT_TRUE(material.vsProfile.empty());
        EXPECT_TRUE(material.psProfile.empty());
        EXPECT_TRUE(material.alphaBlendEnable);
        EXPECT_TRUE(material.depthEnable);
        EXPECT_TRUE(material.depthWriteEnable);
        EXPECT_TRUE(material.fogEnable);
        EXPECT_EQ(material.alphaRef, 0);
        EXPECT_EQ(material.srcBlend, 5);
        EXPECT_EQ(material.destBlend, 6);
        EXPECT_EQ(material.cullMode, 3);
        EXPECT_FALSE(material.reflective);
        EXPECT_EQ(material.Glossiness, 40.0f);
        EXPECT_EQ(material.Diffuse, 1.0f);
        EXPECT_EQ(material.ColorTextureLayer1Opacity, 1.0f);
    }

    TempFolder folder;
    FileManager files;
};

TEST_F(MaterialReadTest, MissingOrBrokenFilesLeaveTheMaterialAsItIs)
{
    Material material;
    EXPECT_FALSE(material.Load(u"absent.mat"));
    ExpectDefaults(material);
    material.srcBlend = 9;
    folder.Write("Materials/broken.mat", "<Surface SrcBlend=\"One\"></Texture>");
    EXPECT_FALSE(material.Load(u"broken.mat"));
    EXPECT_EQ(material.srcBlend, 9);
}

TEST_F(MaterialReadTest, NoSurfaceElementKeepsEveryDefault)
{
    Material material;
    LoadXml(material, R"(<Material><surface Name="lower case" CullMode="None"/>
<Texture SemanticName="BaseColor" ComponentCount="3"/></Material>)");
    ExpectDefaults(material);
}

TEST_F(MaterialReadTest, SurfaceAttributes)
{
    Material material;
    LoadXml(material, R"(<Material><Pass><Surface Name="shiny" VSProfile="vs_2_0" PSProfile="ps_2_0" AlphaRef="200"
 SrcBlend="One" DestBlend="InvDestColor" CullMode="None" Unknown="7"/></Pass></Material>)");
    EXPECT_EQ(material.name, u"shiny");
    EXPECT_EQ(material.vsProfile, u"vs_2_0");
    EXPECT_EQ(material.psProfile, u"ps_2_0");
    EXPECT_EQ(material.alphaRef, 200);
    EXPECT_EQ(material.srcBlend, 2);
    EXPECT_EQ(material.destBlend, 10);
    EXPECT_EQ(material.cullMode, 1);
}

// Every word of the blend and cull tables, each on its own.
TEST_F(MaterialReadTest, BlendAndCullWords)
{
    const char* const blends[] = {"Zero",        "One",       "SrcColor",     "InvSrcColor", "SrcAlpha",
                                  "InvSrcAlpha", "DestAlpha", "InvDestAlpha", "DestColor",   "InvDestColor"};
    for (int code = 1; code <= 10; ++code) {
        Material material;
        LoadXml(material,
                std::string("<Surface SrcBlend=\"") + blends[code - 1] + "\" DestBlend=\"" + blends[code - 1] + "\"/>");
        EXPECT_EQ(material.srcBlend, code) << blends[code - 1];
        EXPECT_EQ(material.destBlend, code) << blends[code - 1];
    }
    const char* const culls[] = {"None", "Front", "Back"};
    for (int code = 1; code <= 3; ++code) {
        Material material;
        material.cullMode = 0;
        LoadXml(material, std::string("<Surface CullMode=\"") + culls[code - 1] + "\"/>");
        EXPECT_EQ(material.cullMode, code);
    }
}

TEST_F(MaterialReadTest, UnknownWordsKeepTheField)
{
    Material material;
    material.srcBlend = 9;
    material.destBlend = 7;
    material.cullMode = 2;
    LoadXml(material, R"(<Surface SrcBlend="srcalpha" DestBlend="" CullMode="Both"/>)");
    EXPECT_EQ(material.srcBlend, 9);
    EXPECT_EQ(material.destBlend, 7);
    EXPECT_EQ(material.cullMode, 2);
}

// Blending, alpha test, depth and fog come from the object file, never from the .mat.
TEST_F(MaterialReadTest, RenderStatesInTheFileAreIgnored)
{
    Material material;
    LoadXml(material, R"(<Surface AlphaBlendEnable="false" AlphaTestEnable="true" DepthEnable="false"
 DepthWriteEnable="false" FogEnable="false"/>)");
    ExpectDefaults(material);
}

TEST_F(MaterialReadTest, OnlyTheFirstSurfaceCounts)
{
    Material material;
    LoadXml(material, R"(<Material><Surface Name="first"><Texture SemanticName="Alpha"/></Surface>
<Surface Name="second" CullMode="None"><Texture SemanticName="Normal"/></Surface></Material>)");
    EXPECT_EQ(material.name, u"first");
    EXPECT_EQ(material.cullMode, 3);
    ASSERT_EQ(material.textures.size(), 1u);
    EXPECT_EQ(material.textures[0].semanticName, kSemanticAlpha);
}

// A file that stops early still gives the surface it holds, wherever the reading
// stopped.
TEST_F(MaterialReadTest, FileThatStopsEarly)
{
    Material material;
    LoadXml(
        material,
        R"(<Material><Surface Name="cut" CullMode="Front"><Texture SemanticName="Alpha"/></Surface><Extra><Deeper>)");
    EXPECT_EQ(material.name, u"cut");
    EXPECT_EQ(material.cullMode, 2);
    EXPECT_EQ(material.textures.size(), 1u);
}

TEST_F(MaterialReadTest, NumbersAreBytesAndAlphaRefWraps)
{
    Material material;
    LoadXml(material, R"(<Surface AlphaRef="300"><Texture SamplerSlot="257" TexCoordSlot="-1" StartComponent="2x"
 ComponentCount="three"/></Surface>)");
    EXPECT_EQ(material.alphaRef, 44);  // 300 - 256
    ASSERT_EQ(material.textures.size(), 1u);
    EXPECT_EQ(material.textures[0].samplerSlot, 1);
    EXPECT_EQ(material.textures[0].texCoordSlot, 255);
    EXPECT_EQ(material.textures[0].startComponent, 2);  // the numeric prefix counts
    EXPECT_EQ(material.textures[0].componentCount, 0);
}

TEST_F(MaterialReadTest, TexturesInDocumentOrder)
{
    Material material;
    LoadXml(material, R"(<Surface>
  <Texture SemanticName="BaseColor" SemanticIndex="1" SamplerSlot="2" TexCoordSlot="3" StartComponent="1" ComponentCount="3" Opacity="0.5"/>
  <Texture SemanticName="Normal"/>
  <Texture SemanticName="Height"/>
  <Texture SemanticName="Alpha"/>
  <Texture SemanticName="Specularity"/>
  <Texture SemanticName="Reflection"/>
  <Texture SemanticName="Glow" SamplerSlot="5"/>
  <Sampler SemanticName="Alpha"/>
</Surface>)");
    ASSERT_EQ(material.textures.size(), 7u);
    const MaterialTexture& first = material.textures[0];
    EXPECT_EQ(first.semanticName, 3);
    EXPECT_EQ(first.semanticIndex, 1);
    EXPECT_EQ(first.samplerSlot, 2);
    EXPECT_EQ(first.texCoordSlot, 3);
    EXPECT_EQ(first.startComponent, 1);
    EXPECT_EQ(first.componentCount, 3);
    const uint8_t semantics[] = {10, 4, 6, 7, 8, 0};
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(material.textures[i + 1].semanticName, semantics[i]) << i;
    EXPECT_EQ(material.textures[6].samplerSlot, 5);
    EXPECT_EQ(material.ColorTextureLayer1Opacity, 1.0f);  // Opacity is dropped
}

// Without a renderer no effect is made, but the flags are set all the same.
TEST(MaterialBuildTest, FlagsFromKeysFogAndReflection)
{
    const auto flagsAfterBuild = [](std::vector<uint32_t> keys, int32_t fogType, bool fogEnable, bool reflective) {
        Material material;
        material.shaderKeys = std::move(keys);
        material.fogEnable = fogEnable;
        material.reflective = reflective;
        ShadingScene scene;
        scene.fog.fogType = fogType;
        EXPECT_FALSE(material.Build({}, scene));
        EXPECT_TRUE(material.effect.IsNull());
        return material.flags;
    };
    EXPECT_EQ(flagsAfterBuild({}, 0, true, false), 3u);
    EXPECT_EQ(flagsAfterBuild({}, 1, false, false), 3u);
    EXPECT_EQ(flagsAfterBuild({}, 2, true, false), 0x10023u);
    EXPECT_EQ(flagsAfterBuild({}, 0, true, true), 0x10003u);
    EXPECT_EQ(flagsAfterBuild({0x21200}, 0, true, false), 0x1004Bu);
    EXPECT_EQ(flagsAfterBuild({0x61200}, 0, true, false), 0x10053u);
    EXPECT_EQ(flagsAfterBuild({0x21000, 0x60000}, 3, true, false), 0x1007Bu);
}

TEST(ShaderKeyTest, KeyForEachLightType)
{
    EXPECT_EQ(ShaderKeyForLight(kLightDistant, 0.1f), 0x21200u);
    EXPECT_EQ(ShaderKeyForLight(kLightPoint, 0.1f), 0x21400u);
    EXPECT_EQ(ShaderKeyForLight(kLightSpot, 0.0872665f), 0x31800u);
    EXPECT_EQ(ShaderKeyForLight(kLightSpot, 1e-5f), 0x21800u);  // not above the threshold
    EXPECT_EQ(ShaderKeyForLight(kLightSpot, 0.0f), 0x21800u);
    EXPECT_EQ(ShaderKeyForLight(3, 0.1f), 0x21000u);
    EXPECT_EQ(ShaderKeyForLight(-1, 0.1f), 0x21000u);
}

// The content pack's materials: each reads, and the textures give the roles their names
// promise.
TEST(StandardMaterialsTest, SixMaterialsOfThePack)
{
    FileManager files;
    ASSERT_TRUE(files.Mount(u"MATERIALS", std::u16string(u"" QX_SOURCE_DIR "/data/Materials")));
    struct Expected {
        const char16_t* file;
        std::vector<uint8_t> semantics;
    };
    const Expected expected[] = {
        {u"color.mat", {}},
        {u"texture.mat", {kSemanticBaseColor}},
        {u"color_reflective.mat", {kSemanticReflection}},
        {u"texture_reflective.mat", {kSemanticBaseColor, kSemanticReflection}},
        {u"texture_alpha.mat", {kSemanticBaseColor, kSemanticAlpha}},
        {u"two_textures_opacity.mat", {kSemanticBaseColor, kSemanticBaseColor}},
    };
    for (const Expected& entry : expected) {
        Material material;
        ASSERT_TRUE(material.Load(entry.file));
        EXPECT_FALSE(material.name.empty());
        std::vector<uint8_t> semantics;
        for (const MaterialTexture& texture : material.textures) semantics.push_back(texture.semanticName);
        EXPECT_EQ(semantics, entry.semantics);
        EXPECT_EQ(material.srcBlend, 5);
        EXPECT_EQ(material.destBlend, 6);
        EXPECT_EQ(material.cullMode, 3);
    }
}

}  // namespace
}  // namespace qx4d::test
