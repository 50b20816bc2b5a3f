#include "wrap3d/4DRotate.h"

#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/ObjectInstance.h"
#include "wrap3d/Base3D.h"

#include <algorithm>
#include <numbers>

namespace qx {

namespace {

/// Degrees to radians: the float pi/180 multiplied in double, rounded to float.
float Radians(double degrees) { return float(degrees * double(float(std::numbers::pi / 180.0))); }

void WriteDefaults(const LONG* defaults, LONG count, LONG* Params, LONG* nParams)
{
    if (Params)
        std::copy_n(defaults, count, Params);
    if (nParams)
        *nParams = count;
}

}  // namespace

LONG C4DObjectMotion::InitMotion(const char16_t* sceneFile, const qx4d::Float3& scale)
{
    if (!InitPlayer(std::make_unique<wrap3d::Effect3D>(), sceneFile))
        return 0;
    qx4d::Scene& scene = player->scene;
    // A scene without an object to move or a camera to see it has nothing to play.
    if (scene.objectInstances.empty() || scene.cameras.empty())
        return 0;
    entity = scene.objectInstances.front();
    entity->scale = scale;
    qx4d::Camera& camera = *scene.cameras.front();
    camera.position = {0.0f, 0.0f, 0.0f};
    camera.verticalFOV = Radians(45.0);
    camera.zNear = 0.1f;
    camera.zFar = 50.0f;
    return 1;
}

float C4DObjectMotion::Interpolate(size_t pair) const
{
    const double start = params[pair * 2], end = params[pair * 2 + 1];
    return float(start + (end - start) * double(progress));
}

void C4DObjectMotion::TurnAndRender(float a, float b, float c)
{
    entity->rotation = {Radians(b), Radians(a), Radians(c)};
    player->SetImage(0, frame, 0);
    player->Render(progress, Step(), frame);
}

LONG C4DRotate::Init() { return InitMotion(u"Misc\\Plane.afx", {2.0f, 1.5f, 1.0f}); }

void C4DRotate::GetDefaults(LONG* Params, LONG* nParams)
{
    static constexpr LONG kDefaults[kParamCount] = {0, 0, 0, 360, 0, 0, 0, 0, 0, 0, -400, -200};
    WriteDefaults(kDefaults, kParamCount, Params, nParams);
}

void C4DRotate::Draw()
{
    if (!player || !entity)
        return;
    for (size_t i = 0; i < 6; ++i)
        current[i] = Interpolate(i);
    // Positions come in hundredths of a scene unit.
    for (size_t i = 3; i < 6; ++i)
        current[i] = float(double(current[i]) / 100.0);
    entity->position = {current[3], current[4], -current[5]};
    TurnAndRender(current[0], current[1], current[2]);
}

LONG C4DCube::Init() { return InitMotion(u"Misc\\Cube.afx", {2.0f, 2.0f, 2.0f}); }

void C4DCube::GetDefaults(LONG* Params, LONG* nParams)
{
    static constexpr LONG kDefaults[kParamCount] = {0, 360, 0, 360, 0, 360, 10};
    WriteDefaults(kDefaults, kParamCount, Params, nParams);
}

void C4DCube::Draw()
{
    if (!player || !entity)
        return;
    for (size_t i = 0; i < 3; ++i)
        current[i] = Interpolate(i);
    // The cube goes away for the first half of the effect and comes back for the second.
    const double t = progress < 0.5f ? double(progress) : 1.0 - double(progress);
    current[3] = float(-3.0 - 2.0 * t * double(params[6]));
    entity->position = {0.0f, 0.0f, -current[3]};
    TurnAndRender(current[0], current[1], current[2]);
}

}  // namespace qx
