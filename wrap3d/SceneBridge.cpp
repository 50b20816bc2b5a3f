#include "wrap3d/SceneBridge.h"

#include "wrap3d/4DTransform.h"

namespace qx {

// The scene context needs the graphics device and the scene engine; until they are part
// of the build the context never becomes ready, which is the state the callers already
// handle: no clients, frames passed through, scene durations of one second.

LONG EnsureContext() { return 0; }

bool IsContextReady() { return false; }

std::unique_ptr<C4DTransform> CreateClient(LONG, LONG, LONG) { return nullptr; }

float GetSceneDuration(std::u16string_view)
{
    const C4DTransform probe;  // making a client is what starts the context
    return 1.0f;
}

}  // namespace qx
