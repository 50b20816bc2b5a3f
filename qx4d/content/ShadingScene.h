#pragma once
// What material and shader code read of the current scene, its lights and the active
// camera. The scene and entity code fills these records before meshes are built and
// drawn; materials only read them.
#include "qx4d/core/Matrix.h"

#include <array>
#include <cstdint>
#include <vector>

namespace qx4d {

/// The values of one `Light` that reach the shader constants.
struct ShaderLight {
    int32_t type = 0;              // 0 distant, 1 point, 2 spot
    float coneAngle = 0.5235988f;  // 30 degrees, radians
    float edgeAngle = 0.0872665f;  // 5 degrees: the soft edge inside the cone
    Float3 color{1.0f, 1.0f, 1.0f};
    float intensity = 0.5f;
    /// The light's range field: the distance within which a point or spot light is at full
    /// strength (the w of its colour row).
    float range = 1.0f;
    Float3 position{};
    /// Unit vector along which the light shines (the light's local +Z in the world).
    Float3 direction{0.0f, 0.0f, 1.0f};
};

/// The fog fields of the scene's backdrop, with the colour that fog blends toward already
/// chosen (the backdrop colour or the fog block's colour).
struct ShadingFog {
    int32_t fogType = 0;  // 0 no fog; 1 linear, 2 exponential, 3 squared exponential
    float minDistance = 0.0f;
    float maxDistance = 1.0f;
    float minAmount = 0.0f;
    float maxAmount = 1.0f;
    Float3 color{0.51f, 0.51f, 0.55f};
};

struct ShadingScene {
    ShadingFog fog;
    Float3 globalAmbient{};
    /// In the scene's order: the order of a material's shader keys.
    std::vector<ShaderLight> lights;
};

/// The active camera: its view-projection for column vectors (row-major, 16 floats) and
/// its position in the world.
struct ShadingCamera {
    std::array<float, 16> viewProjection{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    Float3 position{};
};

/// What materials read of the current scene: the scene that becomes current hands in its
/// record, and the last one handed in stays until another (or null) is. With none, an
/// empty scene: no lights, no fog.
const ShadingScene& CurrentShadingScene();
void SetCurrentShadingScene(const ShadingScene* scene);

}  // namespace qx4d
