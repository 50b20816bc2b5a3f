// Reading a scene file: the statements in file order, then the links between entities,
// their dependency order and the scene-wide resources that the statements asked for.
#include "qx4d/core/scene/Scene.h"

#include "qx4d/content/ReadFloatOrEnvelope.h"
#include "qx4d/core/TextReader.h"
#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/LensFlare.h"
#include "qx4d/core/scene/Light.h"
#include "qx4d/core/scene/ObjectInstance.h"
#include "qx4d/core/scene/ParticleSystem.h"

#include <unordered_set>

namespace qx4d {

namespace {

namespace gpu = qx::gpu;

const gpu::D3DVERTEXELEMENT9 kBackdropDeclaration[] = {
    {0, 0, gpu::D3DDECLTYPE_FLOAT4, 0, gpu::D3DDECLUSAGE_POSITIONT, 0},
    {0, 16, gpu::D3DDECLTYPE_D3DCOLOR, 0, gpu::D3DDECLUSAGE_COLOR, 0},
    {0, 20, gpu::D3DDECLTYPE_FLOAT2, 0, gpu::D3DDECLUSAGE_TEXCOORD, 0},
    gpu::D3DDECL_END,
};

void ReadColor(TextReader& reader, Float3& color)
{
    for (float& component : color) component = ReadFloat(reader);
}

/// The first entity in file order whose `ID` is `id`; null for -1 or no match.
Entity* FindById(const std::vector<std::unique_ptr<Entity>>& entities, int32_t id)
{
    if (id == -1) return nullptr;
    for (const auto& entity : entities)
        if (entity->id == id) return entity.get();
    return nullptr;
}

/// Puts entities in dependency order: parent, then target, then the entity itself. A
/// link that would close a cycle (an entity its own parent, two entities each other's
/// target) is cut, so that the order holds for every link that remains.
class DependencyOrder {
public:
    explicit DependencyOrder(size_t count) { ordered.reserve(count); }

    void Insert(Entity* entity)
    {
        if (!entity || placed.contains(entity)) return;
        visiting.insert(entity);
        Follow(entity->parent);
        Follow(entity->target);
        visiting.erase(entity);
        placed.insert(entity);
        ordered.push_back(entity);
    }

    std::vector<Entity*> ordered;

private:
    void Follow(Entity*& link)
    {
        if (link && visiting.contains(link)) link = nullptr;
        Insert(link);
    }

    std::unordered_set<const Entity*> placed;
    std::unordered_set<const Entity*> visiting;
};

}  // namespace

bool Scene::Load(const String& name)
{
    MakeCurrent();
    backdrop.Reset();
    Clear();
    TextReader reader;
    if (!reader.Open(u"SCENES:" + name)) return false;
    Read(reader);
    return true;
}

void Scene::Read(TextReader& reader)
{
    String key;
    while (reader.NextToken(key, true)) {
        Dispatch(key, reader);
        reader.SkipLine();
        // Meshes build their effects for the lights and fog read so far.
        RefreshShading();
    }
    ResolveLinks();
    SortEntities();
    if ((flags & kSomeLightCastsShadows) && shadowEffect.IsNull())
        if (Renderer* renderer = Renderer::Instance()) shadowEffect = renderer->LoadEffect(u"ShadowMap.fx");
    SetUpFilterChain();
}

template <typename T>
void Scene::ReadEntity(TextReader& reader)
{
    auto entity = std::make_unique<T>();
    if (entity->Read(reader, *this)) AddEntity(std::move(entity));
}

void Scene::Dispatch(const String& key, TextReader& reader)
{
    if (key == u"Camera") {
        ReadEntity<GCCamera>(reader);
    } else if (key == u"NullObject") {
        ReadEntity<Entity>(reader);
    } else if (key == u"ParticleSystem") {
        ReadEntity<ParticleSystem>(reader);
    } else if (key == u"Object" || key == u"StaticObject") {
        ReadEntity<ObjectInstance>(reader);
    } else if (key == u"LensFlare") {
        ReadEntity<LensFlare>(reader);
    } else if (key == u"Light") {
        ReadEntity<Light>(reader);
    } else if (key == u"Fog") {
        ReadFog(reader);
    } else if (key == u"ImageFilter") {
        ReadImageFilter(reader);
    } else if (key == u"StartTime") {
        startTime = ReadFloat(reader);
    } else if (key == u"EndTime") {
        endTime = ReadFloat(reader);
    } else if (key == u"BackdropColor") {
        ReadColor(reader, backdrop.color);
    } else if (key == u"BackgroundImage") {
        String image;
        reader.ReadValue(image);
        SetBackgroundImage(image);
    } else if (key == u"GlobalAmbient") {
        ReadColor(reader, globalAmbient);
    }
}

void Scene::ReadFog(TextReader& reader)
{
    // The word alone turns fog on. The block is read token by token with no line skipped,
    // so anything unknown, the "{" included, costs just that token.
    backdrop.fogType = 1;
    String key;
    while (reader.NextToken(key, true) && key != u"}") {
        if (key == u"Color")
            ReadColor(reader, backdrop.fogColor);
        else if (key == u"MinDistance")
            ReadFloatOrEnvelope(reader, backdrop.minDistance, envelopes);
        else if (key == u"MaxDistance")
            ReadFloatOrEnvelope(reader, backdrop.maxDistance, envelopes);
        else if (key == u"MinAmount")
            ReadFloatOrEnvelope(reader, backdrop.minAmount, envelopes);
        else if (key == u"MaxAmount")
            ReadFloatOrEnvelope(reader, backdrop.maxAmount, envelopes);
        else if (key == u"FogType")
            backdrop.fogType = ReadInt(reader);
        else if (key == u"UseBackdropColor")
            backdrop.useBackdropColor = ReadBool(reader);
    }
}

void Scene::ReadImageFilter(TextReader& reader)
{
    String name;
    if (!reader.NextToken(name, true)) return;
    if (std::unique_ptr<Filter> filter = MakeFilter(name)) {
        filter->Load(reader);
        filters.push_back(std::move(filter));
    }
}

void Scene::SetBackgroundImage(const String& name)
{
    Renderer* renderer = Renderer::Instance();
    if (!renderer) return;
    renderer->ReleaseTexture(backdrop.image);
    backdrop.image = renderer->LoadTexture(name);
    if (backdrop.declaration.IsNull()) {
        backdrop.declaration =
            renderer->CreateVertexDeclaration(kBackdropDeclaration, uint32_t(std::size(kBackdropDeclaration)));
        renderer->ReleaseEffect(backdrop.effect);
        backdrop.effect = renderer->LoadEffect(u"background.fx");
    }
}

void Scene::ResolveLinks()
{
    for (const auto& entity : entities) {
        entity->parent = FindById(entities, entity->parentId);
        entity->target = FindById(entities, entity->targetId);
    }
}

void Scene::SortEntities()
{
    DependencyOrder order(entities.size());
    for (const auto& entity : entities) order.Insert(entity.get());
    // Every entity of the list stands in the order once: ownership moves over to it. The
    // list keeps its capacity, so taking the entities back allocates nothing.
    for (auto& entity : entities) static_cast<void>(entity.release());
    entities.clear();
    for (Entity* entity : order.ordered) entities.emplace_back(entity);
}

float GetDuration(const String& name)
{
    TextReader reader;
    if (!reader.Open(u"SCENES:" + name)) return 0.0f;
    return ScanDuration(reader);
}

float ScanDuration(TextReader& reader)
{
    float start = -1000.0f, end = -1000.0f;
    String key;
    while (reader.NextToken(key, true)) {
        if (key == u"StartTime" || key == u"EndTime") {
            float& value = key == u"StartTime" ? start : end;
            const float other = key == u"StartTime" ? end : start;
            value = ReadFloat(reader);
            if (other > -999.0f) return end - start;
        }
        reader.SkipLine();
    }
    return -1.0f;
}

}  // namespace qx4d
