#pragma once
// A light of the scene: distant, point or spot, shining along its local +Z, with the
// shadow map it may cast.
#include "qx4d/core/device/ResourceHandle.h"
#include "qx4d/core/scene/Entity.h"

#include <bit>

namespace qx4d {

class Light : public Entity {
public:
    /// The size of a light's shadow map.
    static constexpr uint32_t kShadowMapSize = 512;

    /// Gives the shadow surfaces back.
    ~Light() override;

    int32_t GetType() const override { return kLight; }
    /// The light's view and projection for the shadow pass: a fixed frustum of 58 degrees,
    /// aspect 1, depth 1 to 10, for every light (the cone angle has no part in it).
    Matrix4x4 ShadowMatrix() const;

    float coneAngle = std::bit_cast<float>(0x3F060A92u);  // 30 degrees in radians
    float edgeAngle = std::bit_cast<float>(0x3DB2B8C2u);  // 5 degrees in radians
    Float3 color{1.0f, 1.0f, 1.0f};
    float intensity = 0.5f;
    /// Handed on as the w of the light's colour constant.
    float range = 1.0f;
    /// 0 distant, 1 point, 2 spot.
    int32_t type = 0;
    bool castShadows = false;
    ResourceHandle shadowDepth;
    ResourceHandle shadowTarget;

protected:
    bool ReadOwnKey(const String& key, TextReader& reader, Scene& scene, bool& refuse) override;

private:
    void CreateShadowSurfaces();
    void ReleaseShadowSurfaces();
};

}  // namespace qx4d
