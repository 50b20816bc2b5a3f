#pragma once
// Everything one scene file describes: the entities in dependency order, the object files
// they show, fog, backdrop, global ambient light, the image filters and the time span.
// One scene is current at a time; materials read its lights and fog through it.
#include "qx4d/content/Filter.h"
#include "qx4d/content/Object.h"
#include "qx4d/content/ShadingScene.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/ResourceHandle.h"
#include "qx4d/core/scene/Entity.h"

#include <array>
#include <memory>
#include <vector>

namespace qx4d {

class Camera;
class Renderer;
class LensFlare;
class Light;
class ObjectInstance;
class ParticleSystem;

/// What stands behind the objects: a colour or an image, and the fog.
struct Backdrop {
    Float3 color{};
    ResourceHandle image;
    ResourceHandle secondTexture;
    ResourceHandle declaration;
    ResourceHandle effect;
    /// 0 no fog; `Fog` sets 1; 1 linear, 2 exponential, 3 squared exponential.
    int32_t fogType = 0;
    float minDistance = 0.0f;
    float maxDistance = 1.0f;
    float minAmount = 0.0f;
    float maxAmount = 1.0f;
    Float3 fogColor{0.51f, 0.51f, 0.55f};  // the bits 0x3F028F5C, 0x3F028F5C, 0x3F0CCCCD
    bool useBackdropColor = true;

    /// Gives the four handles back and sets every field to its default.
    void Reset();
    void ReleaseHandles();
};

class Scene {
public:
    /// `flags` bit: some light casts shadows.
    static constexpr uint32_t kSomeLightCastsShadows = 0x1;

    Scene() = default;
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// Reads "SCENES:" + `name`; false when the file can't be opened, leaving the scene
    /// empty with its defaults.
    bool Load(const String& name);
    /// The statements of an opened scene text, then the links and the scene-wide
    /// resources: the steps of `Load` after the file is open.
    void Read(TextReader& reader);
    /// Destroys the entities, then the object files (an instance holds on to its object),
    /// the envelopes and filters; the span goes back to 0 and the backdrop's handles are
    /// given back.
    void Clear();
    /// Stores the time, evaluates the scene's envelopes, updates the entities in their
    /// order, then the filters, and refreshes what materials read of the scene.
    void Update(float time, float timeStep);
    /// Draws the frame into the current target with the active camera: shadow maps,
    /// backdrop, fog colour, the meshes through the render queue, particles and flares,
    /// the whole drawn through the image filters when the scene has any.
    void Render();
    /// The size of the frame's render target, which the filter chain is made for: the
    /// player hands it in, as no window tells it. A new size makes the chain anew; until
    /// a size is known the filters stand idle.
    void SetFrameSize(int32_t width, int32_t height);
    /// Makes this scene the current one; returns the one before it.
    Scene* MakeCurrent();
    static Scene* Current() { return current; }
    /// The object file of that name, loaded on first use; null when it can't be loaded.
    Object* FindObject(const String& name);

    /// Takes a read entity: appends it to `entities` and to the list of its kind.
    void AddEntity(std::unique_ptr<Entity> entity);
    /// What materials read of this scene: its lights as they stand, fog, ambient light.
    const ShadingScene& Shading() const { return shading; }
    /// Rebuilds `Shading()` from the lights, the backdrop's fog and the ambient light.
    void RefreshShading();

    float time = 0.0f;
    float timeStep = 0.0f;
    std::vector<std::unique_ptr<Envelope>> envelopes;
    float startTime = 0.0f;
    float endTime = 0.0f;
    uint32_t flags = 0;
    ResourceHandle shadowEffect;
    std::vector<std::unique_ptr<Entity>> entities;
    std::vector<std::unique_ptr<Object>> objects;
    std::vector<ParticleSystem*> particleSystems;
    std::vector<LensFlare*> lensFlares;
    std::vector<Camera*> cameras;
    std::vector<Entity*> nullObjects;
    std::vector<ObjectInstance*> objectInstances;
    std::vector<Light*> lights;
    std::vector<std::unique_ptr<Filter>> filters;
    /// The filter chain's two ping-pong targets and its depth surface, and the surfaces in
    /// force before the frame, kept while it is drawn.
    std::array<ResourceHandle, 2> filterTargets;
    ResourceHandle filterDepth;
    std::shared_ptr<gpu::Surface> savedTarget;
    std::shared_ptr<gpu::Surface> savedDepth;
    Float3 globalAmbient{};
    Backdrop backdrop;

private:
    void Dispatch(const String& key, TextReader& reader);
    template <typename T>
    void ReadEntity(TextReader& reader);
    void ReadFog(TextReader& reader);
    void ReadImageFilter(TextReader& reader);
    void SetBackgroundImage(const String& name);
    void ResolveLinks();
    void SortEntities();
    bool IsQueued(const ObjectInstance& instance, const ShadingCamera& camera) const;
    void RenderShadows(gpu::Device& device, Renderer& renderer, const ShadingCamera& camera);
    void RenderBackdrop(gpu::Device& device, Renderer& renderer);
    void RenderFogColor(Renderer& renderer) const;
    void RenderObjects(const ShadingCamera& camera);
    void RenderTransparentEntities(gpu::Device& device);
    /// Makes the chain's targets for the frame's size and hands each filter its source;
    /// a filter whose resources can't be made is dropped.
    void SetUpFilterChain();
    void ReleaseFilterChain();
    /// Draws the frame into the chain's first target; false when there is no chain.
    bool BeginFilterChain(gpu::Device& device);
    /// Runs the filters, the last one into the target of the frame.
    void EndFilterChain(gpu::Device& device);

    ShadingScene shading;
    int32_t frameWidth = 0;
    int32_t frameHeight = 0;
    static inline Scene* current = nullptr;
};

/// What shaders read of the active camera: its view-projection and its place; the
/// identity at the origin when no camera is active.
ShadingCamera ActiveShadingCamera();

/// The scene's span, EndTime − StartTime, read from "SCENES:" + `name` as soon as both keys
/// have been seen; 0 when the file can't be opened, -1 when either key is missing.
float GetDuration(const String& name);
/// The same scan over an opened scene text.
float ScanDuration(TextReader& reader);

}  // namespace qx4d
