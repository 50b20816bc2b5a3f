#include "host/VideoEffectFactory.h"

#include "host/EffectCatalog.h"

namespace qx {

bool CreateVideoEffect(LONG width, LONG height, std::unique_ptr<CVideoEffect>& slot, LONG id)
{
    const EffectDescriptor* effect = findEffect(id);
    if (!effect || !effect->videoEffect) return false;
    slot = effect->videoEffect(width, height);
    return true;
}

}  // namespace qx
