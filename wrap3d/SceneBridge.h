#pragma once
// The module-level road to the scene engine: the factory of scene clients and the
// questions about scene files. Until the engine's context can start, no client is made,
// and every scene effect passes its frames through.
#include "platform/com/HResult.h"
#include "wrap3d/Context.h"

#include <memory>
#include <string_view>

namespace qx {

class C4DTransform;

/// The client of effect `id` for frames of `width` by `height`; null when the context is
/// not ready or the id has no client.
std::unique_ptr<C4DTransform> CreateClient(LONG id, LONG width, LONG height);
/// The length in seconds of the scene at `path` under the scenes alias; 1.0 while the
/// context is not ready.
float GetSceneDuration(std::u16string_view path);
/// The number of pictures a composition under the scenes alias has places for: the value
/// of its "Composition" key; 0 when the file can't be opened, -1 without the key.
LONG GetSceneImagesCount(std::u16string_view path);

}  // namespace qx
