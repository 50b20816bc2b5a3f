#include "wrap3d/4DRotate.h"

#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/ObjectInstance.h"
#include "wrap3d/Base3D.h"
#include "wrap3d/SceneEffects.h"

#include <numbers>

namespace qx {

namespace {

/// Degrees to radians: the float pi/180 multiplied in double, rounded to float.
float Radians(double degrees) { return float(degrees * double(float(std::numbers::pi / 180.0))); }

}  // namespace

LONG C4DObjectMotion::InitMotion(const char16_t* sceneFile, const qx4d::Float3& scale)
{
    if (!InitPlayer(std::make_unique<wrap3d::Effect3D>(), sceneFile)) return 0;
    qx4d::Scene& scene = player->scene;
    // A scene without an object to move or a camera to see it has nothing to play.
    if (scene.objectInstances.empty() || scene.cameras.empty()) return 0;
    entity = scene.objectInstances.front();
    entity->scale = scale;
    qx4d::Camera& camera = *scene.cameras.front();
    camera.position = {0.0f, 0.0f, 0.0f};
    camera.verticalFOV = Radians(45.0);
    camera.zNear = 0.1f;
    camera.zFar = 50.0f;
    return 1;
}

float C4DObjectMotion::Interpolate(int start) const
{
    const double from = params[size_t(start)], to = params[size_t(start) + 1];
    return float(from + (to - from) * double(progress));
}

void C4DObjectMotion::TurnAndRender(float a, float b, float c)
{
    entity->rotation = {Radians(b), Radians(a), Radians(c)};
    player->SetImage(0, frame, 0);
    player->Render(progress, Step(), frame);
}

LONG C4DRotate::Init() { return InitMotion(u"Misc\\Plane.afx", {2.0f, 1.5f, 1.0f}); }

void C4DRotate::GetDefaults(LONG* Params, LONG* nParams) { WriteDefaults(kMove3DParams, Params, nParams); }

void C4DRotate::Draw()
{
    if (!player || !entity) return;
    // Rotations A, B, C, then the position X, Y, Z.
    constexpr int kStarts[6] = {Move3DParam::kHorizontalRotationStart, Move3DParam::kVerticalRotationStart,
                                Move3DParam::kZRotationStart,          Move3DParam::kHorizontalPositionStart,
                                Move3DParam::kVerticalPositionStart,   Move3DParam::kDepthStart};
    for (size_t i = 0; i < 6; ++i) current[i] = Interpolate(kStarts[i]);
    // Positions come in hundredths of a scene unit.
    for (size_t i = 3; i < 6; ++i) current[i] = float(double(current[i]) / 100.0);
    entity->position = {current[3], current[4], -current[5]};
    TurnAndRender(current[0], current[1], current[2]);
}

LONG C4DCube::Init() { return InitMotion(u"Misc\\Cube.afx", {2.0f, 2.0f, 2.0f}); }

void C4DCube::GetDefaults(LONG* Params, LONG* nParams) { WriteDefaults(kCubeParams, Params, nParams); }

void C4DCube::Draw()
{
    if (!player || !entity) return;
    constexpr int kStarts[3] = {CubeParam::kRotationXStart, CubeParam::kRotationYStart, CubeParam::kRotationZStart};
    for (size_t i = 0; i < 3; ++i) current[i] = Interpolate(kStarts[i]);
    // The cube goes away for the first half of the effect and comes back for the second.
    const double t = progress < 0.5f ? double(progress) : 1.0 - double(progress);
    current[3] = float(-3.0 - 2.0 * t * double(params[CubeParam::kDepth]));
    entity->position = {0.0f, 0.0f, -current[3]};
    TurnAndRender(current[0], current[1], current[2]);
}

}  // namespace qx
