#include "qx4d/core/scene/ParticleSystem.h"

#include "qx4d/content/EmitterElements.h"
#include "qx4d/core/TextReader.h"
#include "qx4d/core/XmlDocument.h"

namespace qx4d {

bool ParticleSystem::ReadOwnKey(const String& key, TextReader& reader, Scene& /*scene*/, bool& /*refuse*/)
{
    if (key != u"FileName") return false;
    reader.ReadValue(fileName);
    LoadEmitters(fileName);
    return true;
}

void ParticleSystem::LoadEmitters(const String& systemFile)
{
    instances.clear();
    descriptions.clear();
    XmlDocument document;
    if (!document.Load(u"EMITTERS:" + systemFile) || !document.GetRoot()) return;
    // The emitters' names are relative to the folder of the system file.
    const size_t slash = systemFile.rfind(u'\\');
    const String folder = slash == String::npos ? String() : systemFile.Left(slash + 1);
    for (const auto& child : document.GetRoot()->children) {
        if (child->name != u"UE2SpriteEmitter" || descriptions.size() >= kMaxEmitters) continue;
        ForEachAttribute(*child, [&](const String& attribute, const String& value) {
            if (!KeyIs(attribute, u"Source")) return;
            if (auto description = UE2SpriteEmitter::Load(folder + value))
                descriptions.push_back(std::move(description));
        });
    }
    for (const auto& description : descriptions) {
        instances.push_back(std::make_unique<UE2EmitterInstance>());
        instances.back()->SetUp(*description, *this);
    }
}

UE2EmitterInstance* ParticleSystem::Emitter(int64_t index) const
{
    return index >= 0 && size_t(index) < instances.size() ? instances[size_t(index)].get() : nullptr;
}

void ParticleSystem::Update(float time, float timeStep)
{
    Entity::Update(time, timeStep);
    if (time < lastTime)
        for (const auto& instance : instances) instance->Restart();
    lastTime = time;
    for (const auto& instance : instances) instance->Update(timeStep);
}

void ParticleSystem::Render()
{
    for (const auto& instance : instances) instance->Render();
}

}  // namespace qx4d
