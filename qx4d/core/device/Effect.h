#pragma once
// An effect resource: from a file under EFFECTS: (its name) or from source text (the
// material generator's). Includes are read through EFFECTS: too. A text that does not
// compile leaves the effect without a device object, without a word.
#include "platform/gpu/Effect.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Resource.h"

#include <optional>
#include <string>

namespace qx4d {

class Effect : public Resource {
public:
    bool Restore() override;
    void ReleaseDevice() override { effect.reset(); }

    /// The source text when the effect was made from text (bytes of the ANSI code page).
    std::optional<std::string> source;
    std::shared_ptr<gpu::Effect> effect;
};

/// A file under EFFECTS: as text; nothing when the file manager has no such file.
std::optional<std::string> LoadEffectFile(std::string_view fileName);

}  // namespace qx4d
