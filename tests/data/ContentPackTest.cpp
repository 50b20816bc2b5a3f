// The default content pack as the build assembles it: every effect file compiles, every
// scene loads with its objects, placeholder pictures, particle systems, flares and
// filters, and the zip of the pack serves the same files through the file manager's
// archive path.
#include "qx4d/core/FileManager.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/LensFlare.h"
#include "qx4d/core/scene/ObjectInstance.h"
#include "qx4d/core/scene/ParticleSystem.h"
#include "qx4d/core/scene/Scene.h"
#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace qx4d::test {
namespace {

namespace fs = std::filesystem;

const fs::path kPack = QX_DATA_DIR;
constexpr const char16_t* kFolders[] = {u"Images", u"Effects", u"Scenes", u"Emitters", u"Objects", u"Materials"};
constexpr const char16_t* kAliases[] = {u"IMAGES", u"EFFECTS", u"SCENES", u"EMITTERS", u"OBJECTS", u"MATERIALS"};

class ContentPackTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        qx::gpu::D3DPRESENT_PARAMETERS parameters;
        parameters.BackBufferWidth = parameters.BackBufferHeight = 8;
        parameters.BackBufferFormat = qx::gpu::D3DFMT_A8R8G8B8;
        parameters.EnableAutoDepthStencil = 1;
        parameters.AutoDepthStencilFormat = qx::gpu::D3DFMT_D24X8;
        if (!device.Create(parameters)) GTEST_SKIP() << "no EGL device";
        renderer = std::make_unique<Renderer>();
    }
    void TearDown() override
    {
        Camera::SetActive(nullptr);
        renderer.reset();
    }
    void MountFolders()
    {
        for (size_t i = 0; i < std::size(kFolders); ++i)
            ASSERT_TRUE(files.Mount(kAliases[i], (kPack / kFolders[i]).u16string()));
    }

    GraphicsDevice device;
    std::unique_ptr<Renderer> renderer;
    FileManager files;
};

TEST_F(ContentPackTest, EveryEffectFileCompiles)
{
    MountFolders();
    int count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(kPack / "Effects")) {
        if (entry.path().extension() != ".fx") continue;
        ++count;
        // Names under the alias, with the engine's backslashes ("Filters\\Sepia.fx").
        String name(fs::relative(entry.path(), kPack / "Effects").u16string());
        name.ReplaceChar(u'/', u'\\');
        ResourceHandle effect = renderer->LoadEffect(name);
        EXPECT_FALSE(effect.IsNull()) << entry.path().filename();
        renderer->ReleaseEffect(effect);
    }
    EXPECT_GE(count, 12) << "five of the engine and seven of the filters";
}

/// Every scene of the pack, with the placeholder pictures its player looks for.
struct PackScene {
    const char16_t* path;
    std::vector<const char16_t*> placeholders;
};

const PackScene kScenes[] = {
    {u"Misc\\Cube.afx", {u"cartes\\sample 1.dds"}},
    {u"Misc\\Plane.afx", {u"cartes\\sample 1.dds"}},
    {u"Effects\\Drapeau.afx", {u"cartes\\sample 1.dds"}},
    {u"Effects\\Battement.afx", {u"cartes\\sample 1.dds"}},
    {u"Particles\\Sparks.afx", {u"cartes\\sample 2.dds"}},
    {u"Particles\\Neige.afx", {u"cartes\\sample 2.dds"}},
    {u"Particles\\Fontaine.afx", {u"cartes\\sample 2.dds"}},
    {u"Effects\\Soleil.afx", {u"cartes\\sample 1.dds"}},
    {u"Effects\\Negatif.afx", {u"cartes\\sample 1.dds"}},
    {u"Effects\\Sepia.afx", {u"cartes\\sample 1.dds"}},
    {u"Effects\\Eclat.afx", {u"cartes\\sample 1.dds"}},
    {u"Effects\\Tourbillon.afx", {u"cartes\\sample 1.dds"}},
    {u"Effects\\Explosion.afx", {u"cartes\\sample 1.dds"}},
    {u"Effects\\Onde.afx", {u"cartes\\sample 1.dds"}},
    {u"Transitions\\Cube.afx", {u"cartes\\sample 3.dds", u"cartes\\sample 4.dds"}},
    {u"Compositions\\Carousel.cpo3d",
     {u"cartes\\carte 1.dds", u"cartes\\carte 2.dds", u"cartes\\carte 3.dds", u"cartes\\carte 4.dds"}},
};

void ExpectSceneLoads(Renderer& renderer, const PackScene& packScene)
{
    Scene scene;
    ASSERT_TRUE(scene.Load(packScene.path));
    EXPECT_FALSE(scene.cameras.empty());
    EXPECT_FALSE(scene.objectInstances.empty());
    EXPECT_GT(scene.endTime, scene.startTime);
    for (const ObjectInstance* instance : scene.objectInstances) EXPECT_FALSE(instance->object->items.empty());
    for (const char16_t* name : packScene.placeholders) {
        ResourceHandle picture = renderer.FindTexture(name);
        EXPECT_FALSE(picture.IsNull()) << std::string(name, name + std::char_traits<char16_t>::length(name));
        renderer.ReleaseTexture(picture);
    }
    // Every emitter a system names is there, with its picture.
    for (const ParticleSystem* system : scene.particleSystems) {
        EXPECT_FALSE(system->instances.empty());
        for (const auto& description : system->descriptions)
            EXPECT_NE(renderer.GetTexture(description->texture), nullptr)
                << std::string(description->name.begin(), description->name.end());
    }
    for (const LensFlare* flare : scene.lensFlares) {
        EXPECT_NE(renderer.GetTexture(flare->glowTexture), nullptr);
        EXPECT_NE(renderer.GetTexture(flare->starTexture), nullptr);
        for (const ResourceHandle& texture : flare->elementTextures)
            EXPECT_TRUE(texture.IsNull() || renderer.GetTexture(texture));
    }
    // Every filter can be made for a frame, the sepia ramp and the bloom's levels included.
    const size_t filters = scene.filters.size();
    scene.SetFrameSize(64, 48);
    EXPECT_EQ(scene.filters.size(), filters);
}

TEST_F(ContentPackTest, EverySceneLoadsWithItsObjectsAndPlaceholders)
{
    MountFolders();
    for (const PackScene& scene : kScenes) {
        SCOPED_TRACE(std::string(scene.path, scene.path + std::char_traits<char16_t>::length(scene.path)));
        ExpectSceneLoads(*renderer, scene);
    }
}

TEST_F(ContentPackTest, TheZipServesTheSamePack)
{
    ASSERT_TRUE(files.Mount(u"PACK", std::u16string(u"" QX_DATA_ZIP)));
    for (size_t i = 0; i < std::size(kFolders); ++i)
        ASSERT_TRUE(files.Mount(kAliases[i], std::u16string(u"PACK:") + kFolders[i]));
    // The transition's two pictures, and a fountain whose emitters come from the zip too.
    for (const PackScene& scene : kScenes) {
        const std::u16string_view path = scene.path;
        if (path == u"Transitions\\Cube.afx" || path == u"Particles\\Fontaine.afx") ExpectSceneLoads(*renderer, scene);
    }
    size_t fromZip = 0;
    const auto zipped = files.Load(u"OBJECTS:flag.qxo", fromZip);
    ASSERT_NE(zipped, nullptr);
    EXPECT_EQ(fromZip, fs::file_size(kPack / "Objects" / "flag.qxo"));
}

}  // namespace
}  // namespace qx4d::test
