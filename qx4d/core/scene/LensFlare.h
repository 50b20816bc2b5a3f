#pragma once
// A lens flare of the scene: an entity whose place is the light source of the flare.
#include "qx4d/core/scene/Entity.h"

namespace qx4d {

class LensFlare : public Entity {
public:
    int32_t GetType() const override { return kLensFlare; }
};

}  // namespace qx4d
