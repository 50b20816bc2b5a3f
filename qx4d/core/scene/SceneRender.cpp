// One frame of a scene, in order: the start of the image filter chain, shadow maps,
// backdrop, fog colour, the meshes through the render queue, particles, lens flares, and
// the filter chain's passes. The caller has begun the device's frame, set the target and
// made a camera active.
#include "qx4d/core/scene/Scene.h"

#include "qx4d/content/MeshItem.h"
#include "qx4d/core/device/ProfileEvent.h"
#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Bucket.h"
#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/LensFlare.h"
#include "qx4d/core/scene/Light.h"
#include "qx4d/core/scene/ObjectInstance.h"
#include "qx4d/core/scene/ParticleSystem.h"
#include "qx4d/core/scene/RenderQueue.h"

#include <cfloat>

namespace qx4d {

namespace {

/// The largest squared distance at which an instance is still drawn: a visibility cut
/// that every finite position passes.
constexpr float kFarthestSquared = FLT_MAX;

/// Alpha 0xFF; each component truncated from x 255 and masked to 8 bits, with no clamp,
/// so that 1.5 wraps.
uint32_t PackColor(const Float3& color)
{
    uint32_t packed = 0xFF000000u;
    for (int c = 0; c < 3; ++c) {
        const double scaled = double(color[size_t(c)]) * 255.0;
        // Beyond what an int holds the value has no meaningful low bits: it wraps to 0.
        const auto value = scaled > -2147483648.0 && scaled < 2147483648.0 ? uint32_t(int32_t(scaled)) : 0u;
        packed |= (value & 0xFF) << (16 - 8 * c);
    }
    return packed;
}

std::string NarrowName(const String& name) { return std::string(name.begin(), name.end()); }

/// A vertex of the backdrop quad: pixel position, rhw, colour, texture coordinates.
struct BackdropVertex {
    float x, y, z, rhw;
    uint32_t color;
    float u, v;
};
static_assert(sizeof(BackdropVertex) == 28);

}  // namespace

ShadingCamera ActiveShadingCamera()
{
    ShadingCamera shading;
    if (const Camera* camera = Camera::Active()) {
        shading.viewProjection = camera->viewProjection;
        shading.position = Translation(camera->matrix);
    }
    return shading;
}

bool Scene::IsQueued(const ObjectInstance& instance, const ShadingCamera& camera) const
{
    if (!instance.IsVisible()) return false;
    const Float3 at = Translation(instance.matrix);
    float d = 0.0f;
    for (int c = 0; c < 3; ++c) d += (at[c] - camera.position[c]) * (at[c] - camera.position[c]);
    return d < kFarthestSquared;
}

void Scene::RenderShadows(gpu::Device& device, Renderer& renderer, const ShadingCamera& camera)
{
    std::shared_ptr<gpu::Surface> frameTarget, frameDepth;
    device.GetRenderTarget(0, &frameTarget);
    device.GetDepthStencilSurface(&frameDepth);
    renderer.SetEffect(shadowEffect);
    for (Light* light : lights) {
        const Texture* map = renderer.GetTexture(light->shadowTarget);
        const DepthStencilSurface* depth = renderer.GetDepthStencil(light->shadowDepth);
        if (!light->castShadows || !map || !map->surface || !depth) continue;
        device.SetRenderTarget(0, map->surface);
        device.SetDepthStencilSurface(depth->surface);
        device.Clear(gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER, 0xFF0000FFu, 1.0f, 0);
        const Matrix4x4 shadowMatrix = light->ShadowMatrix();
        device.SetVertexShaderConstantF(0, shadowMatrix.data(), 4);
        for (ObjectInstance* instance : objectInstances) {
            if (!IsQueued(*instance, camera)) continue;
            instance->EvaluateRecords(time);
            for (const DrawRecord& record : instance->records) {
                const ProfileEvent event(0xFF000000u, "RenderShadowMap(" + NarrowName(instance->name) + ")");
                record.mesh->DrawShadow(0, record.matrices);
            }
        }
    }
    device.SetRenderTarget(0, frameTarget);
    device.SetDepthStencilSurface(frameDepth);
}

void Scene::RenderBackdrop(gpu::Device& device, Renderer& renderer)
{
    const uint32_t clearFlags = gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER;
    if (backdrop.image.IsNull()) {
        device.Clear(clearFlags, PackColor(backdrop.color), 1.0f, 0);
        return;
    }
    gpu::D3DVIEWPORT9 viewport;
    device.GetViewport(&viewport);
    const auto w = float(viewport.Width), h = float(viewport.Height);
    renderer.ClearStream(0);
    renderer.SetVertexDeclaration(backdrop.declaration);
    renderer.SetTexture(0, backdrop.image);
    renderer.SetEffect(backdrop.effect);
    device.Clear(clearFlags, 0, 1.0f, 0);
    // No half-pixel offset.
    const BackdropVertex quad[4] = {
        {0, 0, 0, 1, 0xFFFFFFFFu, 0, 0},
        {w, 0, 0, 1, 0xFFFFFFFFu, 1, 0},
        {w, h, 0, 1, 0xFFFFFFFFu, 1, 1},
        {0, h, 0, 1, 0xFFFFFFFFu, 0, 1},
    };
    device.DrawPrimitiveUP(gpu::D3DPT_TRIANGLEFAN, 2, quad, sizeof(BackdropVertex));
}

void Scene::RenderFogColor(Renderer& renderer) const
{
    if (backdrop.fogType == 0) {
        renderer.fogOn = false;
        return;
    }
    renderer.SetFogColor(PackColor(backdrop.useBackdropColor ? backdrop.color : backdrop.fogColor));
}

void Scene::RenderObjects(const ShadingCamera& camera)
{
    RenderQueue* queue = RenderQueue::Instance();
    if (!queue) return;
    for (ObjectInstance* instance : objectInstances) {
        if (!IsQueued(*instance, camera)) continue;
        instance->EvaluateRecords(time);
        for (const DrawRecord& record : instance->records) queue->Add(record);
    }
    const ProfileEvent objectsEvent(0xFF000000u, "Render Objects");
    {
        const ProfileEvent opaque(0xFF00FF00u, "Render Opaque Objects");
        queue->Flush(queue->opaque, camera);
    }
    const ProfileEvent transparent(0xFFFF0000u, "Render Transparent Objects");
    queue->Flush(queue->transparent, camera);
}

void Scene::RenderTransparentEntities(gpu::Device& device)
{
    const ProfileEvent entitiesEvent(0xFF000000u, "Render Transparent Entities");
    // The particles' stage carries the flares' label too, and is to keep it.
    if (!particleSystems.empty()) {
        if (ParticleBucket* bucket = ParticleBucket::Instance()) {
            const ProfileEvent event(0xFF000000u, "Render LensFlares");
            bucket->Begin();
            for (ParticleSystem* system : particleSystems) system->Render();
            bucket->End();
        }
    }
    if (!lensFlares.empty()) {
        const ProfileEvent event(0xFF000000u, "Render LensFlares");
        for (LensFlare* flare : lensFlares) flare->UpdateVisibility();
        if (LensFlareBucket* bucket = LensFlareBucket::Instance()) {
            bucket->Begin();
            gpu::D3DVIEWPORT9 viewport;
            device.GetViewport(&viewport);
            const auto w = float(viewport.Width), h = float(viewport.Height);
            // Flare vertices are in pixels, the origin at the lower left.
            const float pixelsToClip[16] = {2.0f / w, 0, 0, -1, 0, 2.0f / h, 0, -1, 0, 0, 1, 0, 0, 0, 0, 1};
            device.SetVertexShaderConstantF(0, pixelsToClip, 4);
            for (LensFlare* flare : lensFlares) flare->Render();
            bucket->End();
        }
    }
}

void Scene::Render()
{
    Renderer* renderer = Renderer::Instance();
    gpu::Device* device = CurrentDevice();
    if (!renderer || !device) return;
    const ShadingCamera camera = ActiveShadingCamera();
    const bool filtered = BeginFilterChain(*device);
    if (flags & kSomeLightCastsShadows) RenderShadows(*device, *renderer, camera);
    RenderBackdrop(*device, *renderer);
    RenderFogColor(*renderer);
    RenderObjects(camera);
    RenderTransparentEntities(*device);
    if (filtered) EndFilterChain(*device);
}

}  // namespace qx4d
