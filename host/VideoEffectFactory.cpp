#include "host/VideoEffectFactory.h"

namespace qx {

bool CreateVideoEffect(LONG, LONG, std::unique_ptr<CVideoEffect>&, LONG)
{
    // Old film 2 and the water drops join here when their classes are part of the build.
    return false;
}

}  // namespace qx
