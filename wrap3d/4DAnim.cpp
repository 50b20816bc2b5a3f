#include "wrap3d/4DAnim.h"

#include "wrap3d/Base3D.h"

namespace qx {

C4DAnim::~C4DAnim()
{
    if (listening)
        if (C4DContext* context = C4DContext::Instance()) context->RemoveResetListener(this);
}

LONG C4DAnim::Init()
{
    if (C4DContext* context = C4DContext::Instance()) {
        context->AddResetListener(this);
        listening = true;
    }
    return InitPlayer(std::make_unique<wrap3d::Compo3D>(), path);
}

LONG C4DAnim::GetImageCount() const { return player ? LONG(player->images.size()) : 0; }

bool C4DAnim::SetImage(LONG index, const uint32_t* pixels)
{
    return player && index >= 0 && player->SetImage(size_t(index), pixels, 0);
}

void C4DAnim::Draw()
{
    if (player) player->Render(progress, Step(), frame);
}

}  // namespace qx
