// World matrices of entities checked against matrices and points worked out by hand: the
// order position, rotation, scale, pivot, the parent, and the aim at a target, in a
// left-handed world with Y up where heading turns +Z towards +X.
#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/Entity.h"
#include "qx4d/core/scene/Light.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>

namespace qx4d {
namespace {

constexpr float kHalfPi = 1.5707964f;

void ExpectPoint(const Float3& actual, const Float3& expected)
{
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(actual[c], expected[c], 1e-5f) << "component " << c;
}

/// The direction an entity faces: its local +Z in the world.
Float3 Forward(const Entity& entity) { return {entity.matrix[2], entity.matrix[6], entity.matrix[10]}; }

TEST(EntityTransformTest, PivotIsScaledAndTurnedWithTheEntity)
{
    Entity entity;
    entity.position = {1, 2, 3};
    entity.rotation = {kHalfPi, 0, 0};
    entity.scale = {2, 1, 1};
    entity.pivot = {1, 0, 0};
    entity.UpdateTransform();
    // The pivot itself lands on the position.
    ExpectPoint(TransformPoint(entity.matrix, {1, 0, 0}), {1, 2, 3});
    // One unit further along x: scaled to 2, then turned by the heading from +x to -z.
    ExpectPoint(TransformPoint(entity.matrix, {2, 0, 0}), {1, 2, 1});
    ExpectPoint(TransformPoint(entity.matrix, {1, 1, 0}), {1, 3, 3});
}

TEST(EntityTransformTest, PitchAndBankTurnTheirAxes)
{
    Entity entity;
    entity.rotation = {0, kHalfPi, 0};  // pitch down: forward +z turns to -y
    entity.UpdateTransform();
    ExpectPoint(Forward(entity), {0, -1, 0});
    entity.rotation = {0, 0, kHalfPi};  // bank: up +y turns to -x
    entity.UpdateTransform();
    ExpectPoint(TransformPoint(entity.matrix, {0, 1, 0}), {-1, 0, 0});
}

TEST(EntityTransformTest, ParentMatrixComesFirst)
{
    Entity parent, child;
    parent.position = {5, 0, 0};
    parent.rotation = {kHalfPi, 0, 0};
    parent.scale = {1, 2, 1};
    child.parent = &parent;
    child.position = {0, 1, 1};
    parent.UpdateTransform();
    child.UpdateTransform();
    // The child's position in the parent's space: y doubled, z turned onto +x.
    ExpectPoint(Translation(child.matrix), {6, 2, 0});
    const Matrix3x4 inverse = Inverse(child.matrix);
    ExpectPoint(TransformPoint(inverse, {6, 2, 0}), {0, 0, 0});
}

TEST(EntityTransformTest, ZeroScaleBecomesAPositiveTinyScale)
{
    Entity entity;
    entity.scale = {0, -0.000001f, -2};
    entity.UpdateTransform();
    EXPECT_EQ(entity.scale[0], 1e-5f);
    EXPECT_EQ(entity.scale[1], 1e-5f) << "the sign is lost with the size";
    EXPECT_EQ(entity.scale[2], -2.0f);
}

/// An entity at the origin aiming H and P at a null at `at`, after the target's update.
Float3 AimAt(const Float3& at, Float3* rotation = nullptr)
{
    Entity target, aimer;
    target.position = at;
    target.UpdateTransform();
    aimer.target = &target;
    aimer.controllers = 9;  // as TargetID sets it
    aimer.rotation = {0.3f, 0.2f, 0.0f};
    aimer.UpdateTransform();
    if (rotation) *rotation = aimer.rotation;
    return Forward(aimer);
}

TEST(EntityTransformTest, AimTurnsHeadingAndPitchTowardsTheTarget)
{
    Float3 rotation;
    AimAt({3, 0, 0}, &rotation);
    EXPECT_NEAR(rotation[0], kHalfPi, 1e-6f) << "straight to +x";
    AimAt({-3, 0, 0}, &rotation);
    EXPECT_NEAR(rotation[0], -kHalfPi, 1e-6f);
    ExpectPoint(AimAt({0, 1, 1}, &rotation), {0, 0.70710677f, 0.70710677f});
    EXPECT_NEAR(rotation[1], -0.7853982f, 1e-6f) << "looking up is a negative pitch";
    ExpectPoint(AimAt({2, -2, -1}), {2.0f / 3, -2.0f / 3, -1.0f / 3});

    // Straight up: no heading can be told, and the pitch is exactly -pi/2.
    AimAt({0, 5, 0}, &rotation);
    EXPECT_EQ(rotation[0], 0.0f);
    EXPECT_EQ(rotation[1], std::bit_cast<float>(0xBFC90FDBu));
    AimAt({0, -5, 0}, &rotation);
    EXPECT_EQ(rotation[1], std::bit_cast<float>(0x3FC90FDBu));
    // At the target's own place, the cleared angles stand: facing +z.
    ExpectPoint(AimAt({0, 0, 0}, &rotation), {0, 0, 1});
    EXPECT_EQ(rotation, (Float3{0, 0, 0}));
}

TEST(EntityTransformTest, AimIsTakenInTheParentsSpace)
{
    Entity parent, target, aimer;
    parent.position = {5, 0, 0};
    parent.rotation = {kHalfPi, 0, 0};
    target.position = {6, 0, 0};
    aimer.parent = &parent;
    aimer.target = &target;
    aimer.controllers = 9;
    parent.UpdateTransform();
    target.UpdateTransform();
    aimer.UpdateTransform();
    // The target lies along the parent's own +z: no heading of the child's own.
    EXPECT_NEAR(aimer.rotation[0], 0.0f, 1e-6f);
    ExpectPoint(Forward(aimer), {1, 0, 0});
}

TEST(EntityTransformTest, ControllersOtherThanAimChangeNothing)
{
    Entity target, entity;
    target.position = {3, 0, 0};
    target.UpdateTransform();
    entity.target = &target;
    entity.controllers = 2 | (1 << 3);  // H holds, P aims
    entity.rotation = {0.25f, 0.5f, 0.0f};
    entity.UpdateTransform();
    EXPECT_EQ(entity.rotation[0], 0.25f);
    EXPECT_EQ(entity.rotation[1], 0.0f);
    Entity alone;
    alone.controllers = 9;  // aim, with no target
    alone.rotation = {0.25f, 0.5f, 0.0f};
    alone.UpdateTransform();
    EXPECT_EQ(alone.rotation, (Float3{0.25f, 0.5f, 0.0f}));
}

TEST(EntityTransformTest, CameraViewIsTheInverseAndProjectionIsPerspective)
{
    Camera camera;
    camera.position = {0, 0, -10};
    camera.verticalFOV = kHalfPi;
    camera.aspect = 2.0f;
    camera.zNear = 1.0f;
    camera.zFar = 101.0f;
    camera.UpdateTransform();
    ExpectPoint(TransformPoint(camera.view, {0, 0, 0}), {0, 0, 10});
    EXPECT_FLOAT_EQ(camera.projection[0], 0.5f);  // 1 / tan(45 degrees) / aspect
    EXPECT_FLOAT_EQ(camera.projection[5], 1.0f);
    EXPECT_FLOAT_EQ(camera.projection[10], 1.01f);
    EXPECT_FLOAT_EQ(camera.projection[11], -1.01f);
    EXPECT_EQ(camera.projection[14], 1.0f);
    // The far plane maps to depth 1: (z * 1.01 - 1.01) / z at z = 101.
    const Matrix4x4& m = camera.viewProjection;
    const float z = m[8] * 0 + m[9] * 0 + m[10] * 91 + m[11], w = m[14] * 91 + m[15];
    EXPECT_FLOAT_EQ(z / w, 1.0f);

    Camera fresh;
    EXPECT_EQ(fresh.aspect, std::bit_cast<float>(0x3FAAAAABu));
    EXPECT_EQ(fresh.verticalFOV, std::bit_cast<float>(0x3F1B13ABu));
}

TEST(EntityTransformTest, RigidTransformTurnsTheYAxisOver)
{
    Camera camera;
    camera.position = {1, 2, 3};
    camera.scale = {5, 5, 5};  // not used by the rigid form
    camera.UpdateTransformRigid();
    ExpectPoint(TransformPoint(camera.matrix, {0, 1, 0}), {1, 1, 3});
    ExpectPoint(TransformPoint(camera.matrix, {1, 0, 0}), {2, 2, 3});
}

TEST(EntityTransformTest, ActiveCameraFollowsTheLastMadeActiveAndClearsOnDestruction)
{
    Camera* before = Camera::Active();
    {
        Camera first, second;
        first.MakeActive();
        EXPECT_EQ(second.MakeActive(), &first);
        EXPECT_EQ(Camera::Active(), &second);
    }
    EXPECT_EQ(Camera::Active(), nullptr);
    Camera::SetActive(before);
}

TEST(EntityTransformTest, LightShadowMatrixIsAFixedFrustumFromTheLight)
{
    Light light;
    light.position = {0, 0, -2};
    light.UpdateTransform();
    const Matrix4x4 m = light.ShadowMatrix();
    const float c = 1.0f / std::tan(std::bit_cast<float>(0x3F8192C0u) * 0.5f);
    EXPECT_FLOAT_EQ(m[0], c);
    EXPECT_FLOAT_EQ(m[5], c);
    // A point 10 units in front of the light sits on the far plane.
    const float z = m[10] * 8 + m[11], w = m[14] * 8 + m[15];
    EXPECT_FLOAT_EQ(z / w, 1.0f);
}

}  // namespace
}  // namespace qx4d
