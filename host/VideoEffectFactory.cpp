#include "host/VideoEffectFactory.h"

#include "effects/VideoAgging.h"
#include "effects/VideoRipple.h"
#include "host/EffectCatalog.h"

namespace qx {

bool CreateVideoEffect(LONG width, LONG height, std::unique_ptr<CVideoEffect>& slot, LONG id)
{
    switch (id) {
    case effect_id::kOldFilm2:
        slot = std::make_unique<CVideoAgging>(width, height);
        return true;
    case effect_id::kWaterDrops:
        slot = std::make_unique<CVideoRipple>(width, height);
        return true;
    default:
        return false;
    }
}

}  // namespace qx
