#pragma once
// A particle system of the scene: an entity that names its system file under "EMITTERS:",
// which lists the emitter files it runs. It owns their descriptions and one running
// instance for each, which it updates after its own transform and draws into the
// particle bucket.
#include "qx4d/content/UE2SpriteEmitter.h"
#include "qx4d/core/scene/Entity.h"
#include "qx4d/core/scene/UE2EmitterInstance.h"

#include <memory>
#include <vector>

namespace qx4d {

class ParticleSystem : public Entity {
public:
    /// More emitters than this in one system file are not read.
    static constexpr size_t kMaxEmitters = 32;

    int32_t GetType() const override { return kParticleSystem; }
    /// The entity's update, then each emitter by `timeStep`. A time earlier than the last
    /// one restarts the system: the scene is being played again from an earlier point.
    void Update(float time, float timeStep) override;
    /// Each emitter writes its particles into the particle bucket.
    void Render();

    /// The running emitter of that index in the system file's list; null outside it.
    UE2EmitterInstance* Emitter(int64_t index) const;
    /// Loads the system file "EMITTERS:" + `systemFile` and the emitters it lists, each taken
    /// relative to the system file's folder. An emitter file that can't be read is left
    /// out.
    void LoadEmitters(const String& systemFile);

    /// The system file, under "EMITTERS:".
    String fileName;
    std::vector<std::unique_ptr<UE2SpriteEmitter>> descriptions;
    std::vector<std::unique_ptr<UE2EmitterInstance>> instances;

protected:
    bool ReadOwnKey(const String& key, TextReader& reader, Scene& scene, bool& refuse) override;

private:
    float lastTime = 0.0f;
};

}  // namespace qx4d
