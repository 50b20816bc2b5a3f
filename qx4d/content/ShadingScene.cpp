#include "qx4d/content/ShadingScene.h"

namespace qx4d {

namespace {

const ShadingScene* current = nullptr;

}  // namespace

const ShadingScene& CurrentShadingScene()
{
    static const ShadingScene kEmpty;
    return current ? *current : kEmpty;
}

void SetCurrentShadingScene(const ShadingScene* scene) { current = scene; }

}  // namespace qx4d
