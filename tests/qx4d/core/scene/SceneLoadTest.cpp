// Scene texts read into the scene model: entity keys and envelopes, fog, the backdrop,
// filters, links and their order, durations, and texts that link to nothing or in circles.
#include "qx4d/content/Object.h"
#include "qx4d/core/FileManager.h"
#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/Light.h"
#include "qx4d/core/scene/ObjectInstance.h"
#include "qx4d/core/scene/ParticleSystem.h"
#include "qx4d/core/scene/Scene.h"
#include "tests/qx4d/core/TestFiles.h"
#include "tools/objectfile/ObjectModel.h"

#include <gtest/gtest.h>

#include <string>

namespace qx4d::test {
namespace {

class SceneLoadTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        folder.MakeFolder("Scenes");
        folder.MakeFolder("Objects");
        ASSERT_TRUE(files.Mount(u"SCENES", folder.Wide("Scenes")));
        ASSERT_TRUE(files.Mount(u"OBJECTS", folder.Wide("Objects")));
    }
    void TearDown() override { Camera::SetActive(nullptr); }

    /// Writes `text` as "SCENES:test.afx" and loads it.
    bool Load(const std::string& text)
    {
        folder.Write("Scenes/test.afx", text);
        return scene.Load(u"test.afx");
    }
    Entity* Named(std::u16string_view name)
    {
        for (const auto& entity : scene.entities)
            if (entity->name == name) return entity.get();
        return nullptr;
    }
    size_t IndexOf(std::u16string_view name)
    {
        for (size_t i = 0; i < scene.entities.size(); ++i)
            if (scene.entities[i]->name == name) return i;
        return scene.entities.size();
    }

    TempFolder folder;
    FileManager files;
    Scene scene;
};

/// An entity block as scene files write it: the keyword, "{" and each key on a line.
std::string Block(const std::string& name, const std::string& keys, const std::string& keyword = "NullObject")
{
    return keyword + "\n{\n  Name " + name + "\n" + keys + "\n}\n";
}

TEST_F(SceneLoadTest, EntitiesTakeTheirKeysAndJoinTheirLists)
{
    ASSERT_TRUE(Load(R"(// a scene of every kind
StartTime 2
EndTime 7.5
BackdropColor 0.1 0.2 0.3
GlobalAmbient 0.25 0.5 0.75
Camera
{
  Name "Main camera"
  ID 1
  Position 0 1 -10
  VerticalFOV 0.5
  ZFar 900
}
Camera
{
  Name second
  ID 2
}
Light {
  Name sun
  ID 3
  Type 2
  Color 1 0.5 0.25
  Intensity 0.8
  ConeAngle 0.7
  CastShadows 0
}
NullObject
{
  Name pivot
  Rotation 0.1 0.2 0.3
  Scale 2 2 2
  Pivot 1 0 0
  HController 3
  PController 2
  BController 1
  Unknown 1 2 3
}
ParticleSystem
{
  Name sparks
  FileName "sparks.xml"
}
LensFlare {
  Name glare
}
)"));
    EXPECT_EQ(scene.startTime, 2.0f);
    EXPECT_EQ(scene.endTime, 7.5f);
    EXPECT_EQ(scene.backdrop.color, (Float3{0.1f, 0.2f, 0.3f}));
    EXPECT_EQ(scene.globalAmbient, (Float3{0.25f, 0.5f, 0.75f}));
    ASSERT_EQ(scene.entities.size(), 6u);
    EXPECT_EQ(scene.cameras.size(), 2u);
    EXPECT_EQ(scene.lights.size(), 1u);
    EXPECT_EQ(scene.nullObjects.size(), 1u);
    EXPECT_EQ(scene.particleSystems.size(), 1u);
    EXPECT_EQ(scene.lensFlares.size(), 1u);

    auto* camera = dynamic_cast<Camera*>(Named(u"Main camera"));
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->id, 1);
    EXPECT_EQ(camera->position, (Float3{0, 1, -10}));
    EXPECT_EQ(camera->verticalFOV, 0.5f);
    EXPECT_EQ(camera->zFar, 900.0f);
    EXPECT_EQ(Camera::Active(), Named(u"second")) << "the last camera read is active";

    const Light& sun = *scene.lights[0];
    EXPECT_EQ(sun.type, 2);
    EXPECT_EQ(sun.color, (Float3{1, 0.5f, 0.25f}));
    EXPECT_EQ(sun.intensity, 0.8f);
    EXPECT_EQ(sun.coneAngle, 0.7f);
    EXPECT_FALSE(sun.castShadows);
    EXPECT_TRUE(scene.flags & Scene::kSomeLightCastsShadows) << "CastShadows 0 still marks the scene";

    const Entity& pivot = *scene.nullObjects[0];
    EXPECT_EQ(pivot.rotation, (Float3{0.1f, 0.2f, 0.3f}));
    EXPECT_EQ(pivot.pivot, (Float3{1, 0, 0}));
    EXPECT_EQ(pivot.controllers, 3u | 2u << 3 | 1u << 6);
    EXPECT_EQ(pivot.parentId, -1);
    EXPECT_EQ(scene.particleSystems[0]->fileName, u"sparks.xml");
}

TEST_F(SceneLoadTest, ChannelEnvelopesDriveTheirFieldsOnUpdate)
{
    ASSERT_TRUE(Load(R"(NullObject
{
  Name mover
  PositionX { Envelope 2 Key 0 0 3 0 0 0 0 0 0 Key 10 2 3 0 0 0 0 0 0 Behaviors 1 1 }
  ScaleY { Envelope 1 Key 3 0 3 0 0 0 0 0 0 Behaviors 1 1 }
}
Camera
{
  ZNear { Envelope 2 Key 1 0 3 0 0 0 0 0 0 Key 2 1 3 0 0 0 0 0 0 Behaviors 1 1 }
}
)"));
    Entity& mover = *Named(u"mover");
    EXPECT_EQ(mover.envelopes.size(), 2u);
    scene.Update(1.0f, 0.5f);
    EXPECT_FLOAT_EQ(mover.position[0], 5.0f);
    EXPECT_FLOAT_EQ(mover.scale[1], 3.0f);
    EXPECT_FLOAT_EQ(mover.matrix[3], 5.0f);
    EXPECT_FLOAT_EQ(scene.cameras[0]->zNear, 2.0f);
    EXPECT_EQ(scene.time, 1.0f);
    EXPECT_EQ(scene.timeStep, 0.5f);
}

TEST_F(SceneLoadTest, AChannelKeyTakesOnlyABlock)
{
    // A number is no literal form of a channel: the envelope reader takes the tokens as its
    // own, and the field keeps its value.
    ASSERT_TRUE(Load(Block("turned", "RotationH 5") + Block("next", "")));
    Entity* turned = Named(u"turned");
    ASSERT_NE(turned, nullptr);
    scene.Update(0.0f, 0.0f);
    EXPECT_NE(turned->rotation[0], 5.0f);
}

TEST_F(SceneLoadTest, TargetIdAimsAndControllerKeysChangeItInOrder)
{
    ASSERT_TRUE(Load(R"(NullObject
{
  Name a
  HController 2
  TargetID 5
}
NullObject
{
  Name b
  TargetID 5
  HController 2
}
NullObject
{
  Name c
  HController 9
}
)"));
    EXPECT_EQ(Named(u"a")->controllers, 9u) << "TargetID sets the whole word";
    EXPECT_EQ(Named(u"b")->controllers, 2u | 1u << 3);
    EXPECT_EQ(Named(u"c")->PController(), 1u) << "an out-of-range value spills into P";
}

TEST_F(SceneLoadTest, FogBlockIsReadTokenByToken)
{
    ASSERT_TRUE(Load(R"(BackdropColor 0.5 0.5 0.5
Fog {
  Color 1 0 0 MinDistance 5 MaxDistance { Envelope 1 Key 80 0 3 0 0 0 0 0 0 Behaviors 1 1 }
  MinAmount 0.2 FogType 2 UseBackdropColor false
}
StartTime 1
)"));
    const Backdrop& fog = scene.backdrop;
    EXPECT_EQ(fog.fogType, 2);
    EXPECT_EQ(fog.fogColor, (Float3{1, 0, 0}));
    EXPECT_EQ(fog.minDistance, 5.0f);
    EXPECT_EQ(fog.minAmount, 0.2f);
    EXPECT_FALSE(fog.useBackdropColor);
    EXPECT_EQ(scene.envelopes.size(), 1u);
    scene.Update(0.0f, 0.0f);
    EXPECT_EQ(fog.maxDistance, 80.0f);
    EXPECT_EQ(scene.Shading().fog.color, (Float3{1, 0, 0}));
    EXPECT_EQ(scene.startTime, 1.0f);

    ASSERT_TRUE(Load("Fog { FogType 0 }\n"));
    EXPECT_EQ(scene.backdrop.fogType, 0) << "a block may turn fog off again";
    // The word alone turns fog on, and eats what follows up to a "}".
    ASSERT_TRUE(Load("Fog\nStartTime 4\nEndTime 9\n} EndTime 6\n"));
    EXPECT_EQ(scene.backdrop.fogType, 1);
    EXPECT_EQ(scene.startTime, 0.0f);
    EXPECT_EQ(scene.endTime, 0.0f) << "the rest of the line of the } is skipped";
    EXPECT_EQ(scene.Shading().fog.color, (Float3{0, 0, 0})) << "the backdrop colour by default";
}

TEST_F(SceneLoadTest, ImageFiltersInFileOrderWithTheirKeys)
{
    ASSERT_TRUE(Load(R"(ImageFilter Negative
ImageFilter Unknown
ImageFilter Twirl
{
  Center 0.25
  Angle 1.5
  Radius { Envelope 1 Key 0.75 0 3 0 0 0 0 0 0 Behaviors 1 1 }
}
ImageFilter Wave {}
ImageFilter Sepia
)"));
    ASSERT_EQ(scene.filters.size(), 4u);
    EXPECT_EQ(std::u16string_view(scene.filters[0]->EffectFile()), u"Filters\\Negative.fx");
    const auto* twirl = dynamic_cast<const Twirl*>(scene.filters[1].get());
    ASSERT_NE(twirl, nullptr);
    EXPECT_EQ(twirl->centerX, 0.25f);
    EXPECT_EQ(twirl->centerY, 0.0f) << "a missing second number of Center gives 0";
    EXPECT_EQ(twirl->angle, 1.5f);
    scene.Update(0.0f, 0.0f);
    EXPECT_EQ(twirl->radius, 0.75f);
    const auto* wave = dynamic_cast<const Wave*>(scene.filters[2].get());
    ASSERT_NE(wave, nullptr);
    EXPECT_EQ(wave->centerX, 0.5f);
    EXPECT_EQ(std::u16string_view(scene.filters[3]->EffectFile()), u"Filters\\Sepia.fx");
}

TEST_F(SceneLoadTest, LinksResolveToTheFirstIdAndParentsComeFirst)
{
    ASSERT_TRUE(Load(Block("child", "ID 1\nParentID 2\nTargetID 3") + Block("aimed", "ID 3") + Block("parent", "ID 2") +
                     Block("twin", "ID 2") + Block("lost", "ID 4\nParentID 77")));
    Entity& child = *Named(u"child");
    EXPECT_EQ(child.parent, Named(u"parent")) << "the first of two entities with an ID wins";
    EXPECT_EQ(child.target, Named(u"aimed"));
    EXPECT_EQ(Named(u"lost")->parent, nullptr);
    EXPECT_LT(IndexOf(u"parent"), IndexOf(u"child"));
    EXPECT_LT(IndexOf(u"aimed"), IndexOf(u"child"));
    EXPECT_EQ(scene.entities.size(), 5u);
}

TEST_F(SceneLoadTest, CyclesOfLinksAreCutNotFollowedForever)
{
    // Without IDs every entity is 0, so "ParentID 0" meets the first: itself included.
    ASSERT_TRUE(Load(Block("first", "ParentID 0") + Block("a", "ID 5\nParentID 6") + Block("b", "ID 6\nParentID 7") +
                     Block("c", "ID 7\nParentID 5\nTargetID 6")));
    ASSERT_EQ(scene.entities.size(), 4u);
    EXPECT_EQ(Named(u"first")->parent, nullptr);
    int links = 0;
    for (const auto& entity : scene.entities) {
        for (Entity* link : {entity->parent, entity->target}) {
            if (!link) continue;
            ++links;
            EXPECT_LT(IndexOf(link->name), IndexOf(entity->name)) << "every remaining link points back";
        }
    }
    // a -> b -> c -> a: c is reached last, with a and b still open, so both of c's links,
    // to its parent a and its target b, would close a circle.
    EXPECT_EQ(links, 2);
    EXPECT_EQ(Named(u"c")->parent, nullptr);
    EXPECT_EQ(Named(u"c")->target, nullptr);
    scene.Update(1.0f, 1.0f);
}

TEST_F(SceneLoadTest, ObjectsAreSharedAndMissingOnesDropTheirInstance)
{
    tools::ObjectModel model;
    model.items.resize(1);
    const std::vector<uint8_t> bytes = tools::WriteObject(model);
    folder.Write("Objects/box.qxo", std::string(bytes.begin(), bytes.end()));
    ASSERT_TRUE(
        Load(Block("one", "FileName box.qxo\nDissolve { Envelope 1 Key 0.5 0 3 0 0 0 0 0 0 Behaviors 1 1 }", "Object") +
             Block("two", "FileName \"box.qxo\"\nPosition 1 2 3", "StaticObject") +
             Block("gone", "FileName missing.qxo", "Object") + Block("after", "")));
    EXPECT_EQ(scene.objectInstances.size(), 2u);
    EXPECT_EQ(scene.objects.size(), 1u);
    EXPECT_EQ(scene.objectInstances[0]->object, scene.objectInstances[1]->object);
    EXPECT_EQ(Named(u"gone"), nullptr);
    EXPECT_NE(Named(u"after"), nullptr);
    scene.Update(0.0f, 0.25f);
    EXPECT_FALSE(scene.objectInstances[0]->IsVisible());
    EXPECT_TRUE(scene.objectInstances[1]->IsVisible());
    EXPECT_EQ(scene.objectInstances[1]->time, 0.25f);
    EXPECT_EQ(scene.FindObject(u"box.qxo"), scene.objectInstances[0]->object);
    EXPECT_EQ(scene.FindObject(u"missing.qxo"), nullptr);
}

TEST_F(SceneLoadTest, LoadStartsOverAndAMissingFileLeavesAnEmptyScene)
{
    ASSERT_TRUE(Load(Block("view", "", "Camera") + "StartTime 3\nBackdropColor 1 1 1\nFog\n"));
    EXPECT_EQ(Scene::Current(), &scene);
    EXPECT_FALSE(scene.Load(u"nothing.afx"));
    EXPECT_TRUE(scene.entities.empty());
    EXPECT_TRUE(scene.cameras.empty());
    EXPECT_EQ(scene.startTime, 0.0f);
    EXPECT_EQ(scene.backdrop.color, (Float3{0, 0, 0}));
    EXPECT_EQ(scene.backdrop.fogType, 0);
}

TEST_F(SceneLoadTest, DurationIsKnownAsSoonAsBothKeysAreSeen)
{
    folder.Write("Scenes/reversed.afx", "EndTime 5\nStartTime 2\nthis is no scene at all {{{\n");
    folder.Write("Scenes/open.afx", "StartTime 2\nCamera\n{\n}\n");
    folder.Write("Scenes/inside.afx", "Camera {\n  EndTime 4\n}\nStartTime 1\n");
    EXPECT_EQ(GetDuration(u"reversed.afx"), 3.0f);
    EXPECT_EQ(GetDuration(u"open.afx"), -1.0f);
    EXPECT_EQ(GetDuration(u"inside.afx"), 3.0f) << "the scan knows no blocks";
    EXPECT_EQ(GetDuration(u"nothing.afx"), 0.0f);
}

TEST_F(SceneLoadTest, CurrentSceneIsClearedWithIt)
{
    Scene* before = scene.MakeCurrent();
    {
        Scene other;
        EXPECT_EQ(other.MakeCurrent(), &scene);
        EXPECT_EQ(Scene::Current(), &other);
    }
    EXPECT_EQ(Scene::Current(), nullptr);
    EXPECT_EQ(&CurrentShadingScene(), &CurrentShadingScene()) << "an empty shading scene stands in";
    EXPECT_TRUE(CurrentShadingScene().lights.empty());
    static_cast<void>(before);
}

}  // namespace
}  // namespace qx4d::test
