#pragma once
// The module-level road to the scene engine: the process-wide context and the factory of
// scene clients. Until the engine's context can start, no client is made, and every
// scene effect passes its frames through.
#include "platform/com/HResult.h"

#include <memory>
#include <string_view>

namespace qx {

class C4DTransform;

/// Starts the process-wide scene context if it does not run; 1 when it exists or started.
LONG EnsureContext();
/// True when the context exists and its renderer is there.
bool IsContextReady();
/// The client of effect `id` for frames of `width` by `height`; null when the context is
/// not ready or the id has no client.
std::unique_ptr<C4DTransform> CreateClient(LONG id, LONG width, LONG height);
/// The length in seconds of the scene at `path` under the scenes alias; 1.0 while the
/// context is not ready.
float GetSceneDuration(std::u16string_view path);

}  // namespace qx
