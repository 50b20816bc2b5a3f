#pragma once
// The previews of the 3D move's dialog, rendered by a scene client of the effect for the
// picture's size, made at the first preview and kept while the dialog lives.
#include "effects/dialogs/DialogRequest.h"

#include <memory>

namespace qx {

class C4DTransform;

class ScenePreview final : public dialogs::PreviewRenderer {
public:
    ScenePreview(LONG effectId, int32_t width, int32_t height);
    ~ScenePreview() override;

    bool render(std::span<const LONG> values, float progress, std::span<uint32_t> frame) override;

private:
    LONG effectId_;
    int32_t width_;
    int32_t height_;
    bool tried_ = false;
    std::unique_ptr<C4DTransform> client_;
};

}  // namespace qx
