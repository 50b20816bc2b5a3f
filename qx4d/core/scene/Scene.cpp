// The life of a scene once read: clearing, updating, the current scene, the object files
// it shares between instances, and what materials read of it.
#include "qx4d/core/scene/Scene.h"

#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/LensFlare.h"
#include "qx4d/core/scene/Light.h"
#include "qx4d/core/scene/ObjectInstance.h"
#include "qx4d/core/scene/ParticleSystem.h"

#include <cmath>

namespace qx4d {

void Backdrop::ReleaseHandles()
{
    if (Renderer* renderer = Renderer::Instance()) {
        renderer->ReleaseTexture(image);
        renderer->ReleaseTexture(secondTexture);
        renderer->ReleaseVertexDeclaration(declaration);
        renderer->ReleaseEffect(effect);
    }
}

void Backdrop::Reset()
{
    ReleaseHandles();
    *this = Backdrop();
}

Scene::~Scene()
{
    Clear();
    if (current == this) {
        current = nullptr;
        SetCurrentShadingScene(nullptr);
    }
    if (Renderer* renderer = Renderer::Instance()) renderer->ReleaseEffect(shadowEffect);
    backdrop.ReleaseHandles();
}

void Scene::Clear()
{
    entities.clear();
    objects.clear();
    envelopes.clear();
    particleSystems.clear();
    lensFlares.clear();
    cameras.clear();
    nullObjects.clear();
    objectInstances.clear();
    lights.clear();
    filters.clear();
    ReleaseFilterChain();
    startTime = 0.0f;
    endTime = 0.0f;
    backdrop.ReleaseHandles();
    RefreshShading();
}

Scene* Scene::MakeCurrent()
{
    Scene* before = current;
    current = this;
    SetCurrentShadingScene(&shading);
    return before;
}

void Scene::Update(float newTime, float newTimeStep)
{
    time = newTime;
    timeStep = newTimeStep;
    for (const auto& envelope : envelopes) envelope->Update(time);
    for (const auto& entity : entities) entity->Update(time, timeStep);
    for (const auto& filter : filters) filter->Update(time, timeStep);
    RefreshShading();
}

Object* Scene::FindObject(const String& name)
{
    for (size_t i = objects.size(); i-- > 0;)
        if (objects[i]->name == name) return objects[i].get();
    auto object = std::make_unique<Object>();
    if (!LoadObject(name, *object)) return nullptr;
    objects.push_back(std::move(object));
    return objects.back().get();
}

void Scene::AddEntity(std::unique_ptr<Entity> entity)
{
    Entity* added = entity.get();
    entities.push_back(std::move(entity));
    switch (added->GetType()) {
    case Entity::kCamera: cameras.push_back(static_cast<Camera*>(added)); break;
    case Entity::kLight: lights.push_back(static_cast<Light*>(added)); break;
    case Entity::kObjectInstance: objectInstances.push_back(static_cast<ObjectInstance*>(added)); break;
    case Entity::kParticleSystem: particleSystems.push_back(static_cast<ParticleSystem*>(added)); break;
    case Entity::kLensFlare: lensFlares.push_back(static_cast<LensFlare*>(added)); break;
    default: nullObjects.push_back(added); break;
    }
}

void Scene::RefreshShading()
{
    shading.lights.clear();
    for (const Light* light : lights) {
        ShaderLight& out = shading.lights.emplace_back();
        out.type = light->type;
        out.coneAngle = light->coneAngle;
        out.edgeAngle = light->edgeAngle;
        out.color = light->color;
        out.intensity = light->intensity;
        out.range = light->range;
        out.position = Translation(light->matrix);
        // The light shines along its local +Z: the third column of its matrix.
        const Float3 axis{light->matrix[2], light->matrix[6], light->matrix[10]};
        const float length = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
        if (length > 0.0f) out.direction = {axis[0] / length, axis[1] / length, axis[2] / length};
    }
    shading.fog = {backdrop.fogType,     backdrop.minDistance,
                   backdrop.maxDistance, backdrop.minAmount,
                   backdrop.maxAmount,   backdrop.useBackdropColor ? backdrop.color : backdrop.fogColor};
    shading.globalAmbient = globalAmbient;
}

}  // namespace qx4d
