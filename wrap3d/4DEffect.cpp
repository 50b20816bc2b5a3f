#include "wrap3d/4DEffect.h"

#include "wrap3d/Base3D.h"

namespace qx {

LONG C4DEffect::Init() { return InitPlayer(std::make_unique<wrap3d::Effect3D>(), path); }

void C4DEffect::Draw()
{
    if (!player) return;
    player->SetImage(0, frame, 0);
    player->Render(progress, Step(), frame);
}

LONG C4DParticles::Init() { return InitPlayer(std::make_unique<wrap3d::ParticleSystem3D>(), path); }

void C4DParticles::Draw()
{
    if (!player) return;
    player->SetImage(0, frame, 0);
    player->Render(progress * duration, Step(), frame);
}

LONG C4DTransition::Init() { return InitPlayer(std::make_unique<wrap3d::Transition3D>(), path); }

void C4DTransition::Draw()
{
    if (!player) return;
    player->SetImage(0, firstImage, 0);
    player->SetImage(1, secondImage, 0);
    player->Render(progress, Step(), frame);
}

}  // namespace qx
