#pragma once
// A particle system of the scene: an entity that names its emitter file. The emitters
// it runs are described and simulated by the particle engine.
#include "qx4d/core/scene/Entity.h"

namespace qx4d {

class ParticleSystem : public Entity {
public:
    int32_t GetType() const override { return kParticleSystem; }

    /// The emitter file, under "EMITTERS:".
    String fileName;

protected:
    bool ReadOwnKey(const String& key, TextReader& reader, Scene& scene, bool& refuse) override;
};

}  // namespace qx4d
