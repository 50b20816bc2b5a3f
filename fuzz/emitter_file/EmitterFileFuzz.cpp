// Emitter files from arbitrary bytes: the description is read, and three emitters of it
// (so that indexes of other emitters, deaths, collisions and locations find their
// targets) run a few steps of their simulation, one of them with a step no clock gives.
#include "qx4d/content/UE2SpriteEmitter.h"
#include "qx4d/core/XmlDocument.h"
#include "qx4d/core/scene/ParticleSystem.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qx4d;
    auto bytes = std::make_unique<uint8_t[]>(size > 0 ? size : 1);
    if (size > 0) std::memcpy(bytes.get(), data, size);
    XmlDocument document;
    document.Parse(std::move(bytes), int64_t(size));
    ParticleSystem system;
    for (int i = 0; i < 3; ++i) {
        system.descriptions.push_back(UE2SpriteEmitter::Read(document.GetRoot()));
        system.instances.push_back(std::make_unique<UE2EmitterInstance>());
        system.instances.back()->SetUp(*system.descriptions.back(), system);
    }
    float time = 0.0f;
    for (const float step : {0.04f, 0.5f, std::numeric_limits<float>::quiet_NaN(), 0.04f}) {
        time += 0.04f;
        system.Update(time, step);
        for (const auto& instance : system.instances) instance->RandomPosition();
    }
    return 0;
}
