#include "host/ScenePreview.h"

#include "wrap3d/4DTransform.h"
#include "wrap3d/SceneBridge.h"

namespace qx {

ScenePreview::ScenePreview(LONG effectId, int32_t width, int32_t height)
    : effectId_(effectId), width_(width), height_(height)
{}

ScenePreview::~ScenePreview() = default;

bool ScenePreview::render(std::span<const LONG> values, float progress, std::span<uint32_t> frame)
{
    if (frame.size() != size_t(width_) * size_t(height_)) return false;
    if (!tried_) {
        tried_ = true;
        client_ = CreateClient(effectId_, width_, height_);
        if (client_) {
            // The picture's own shape: the preview shows the frame as the effect will.
            client_->SetAspectRatio(float(double(width_) / double(height_)));
            if (client_->Init() == 0) client_.reset();
        }
    }
    if (!client_) return false;
    client_->SetParams(values.data(), LONG(values.size()));
    client_->ProcessFrame(frame.data(), progress);
    return true;
}

}  // namespace qx
