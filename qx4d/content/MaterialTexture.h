#pragma once
// One texture of a material: which role it plays in the effect text, which sampler and
// texture coordinate set it reads, and which components of the texel count.
#include <cstdint>

namespace qx4d {

/// Semantic codes of a material texture, the numbers the generator tests.
enum TextureSemantic : uint8_t {
    kSemanticNone = 0,
    kSemanticBaseColor = 3,
    kSemanticHeight = 4,
    kSemanticAlpha = 6,
    kSemanticSpecularity = 7,
    kSemanticReflection = 8,
    kSemanticNormal = 10,
};

struct MaterialTexture {
    uint8_t semanticName = 0;
    uint8_t semanticIndex = 0;
    uint8_t samplerSlot = 0;
    uint8_t texCoordSlot = 0;
    uint8_t startComponent = 0;
    uint8_t componentCount = 0;
};

}  // namespace qx4d
