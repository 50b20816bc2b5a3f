#include "apps/session/TransitionJob.h"

#include "host/DynamicEffect.h"
#include "platform/os/WideText.h"
#include "wrap3d/Context.h"
#include "wrap3d/DataPath.h"

#include <algorithm>

namespace qx::qxfx {

namespace {

// Scene paths are logical paths of the pack, whose separator is the backslash.
std::u16string logicalPath(const std::string& path)
{
    std::u16string text = os::fromUtf8(path);
    std::replace(text.begin(), text.end(), u'/', u'\\');
    return text;
}

// As an editor does, through the effect host, before the first client starts the scene
// context (which mounts the content found there once and for all).
void setDataPath(const std::string& dataPath)
{
    if (dataPath.empty()) return;
    const std::u16string path = os::fromUtf8(dataPath);
    if (path.size() >= kMaxDataPath) {
        throw CommandError("data path longer than " + std::to_string(kMaxDataPath - 1) + " characters");
    }
    const Bstr text(path);
    CQXDynamicEffect::Create()->SetGlobalDataPath(text.get());
}

}  // namespace

TransitionJob::TransitionJob(const TransitionSettings& settings, int width, int height)
    : first_(makeFrame(width, height)), second_(makeFrame(width, height)), output_(makeFrame(width, height)),
      firstSurface_(transform::DXSurface::wrap(first_.samples, width, height)),
      secondSurface_(transform::DXSurface::wrap(second_.samples, width, height)),
      outputSurface_(transform::DXSurface::wrap(output_.samples, width, height)), transform_(CQX3DTransform::Create())
{
    if (!firstSurface_ || !secondSurface_ || !outputSurface_) throw CommandError("out of memory");
    setDataPath(settings.dataPath);
    const Bstr scene(logicalPath(settings.scene));
    transform_->put_Source(scene.get());
    transform_->put_AspectRatio(settings.aspectRatio);
    const std::shared_ptr<transform::DXSurface> inputs[] = {firstSurface_, secondSurface_};
    if (FAILED(transform_->Setup(inputs, outputSurface_, 0))) throw CommandError("the transition cannot be set up");
}

const Frame& TransitionJob::run(float progress)
{
    if (FAILED(transform_->put_Progress(std::clamp(progress, 0.0f, 1.0f))) ||
        FAILED(transform_->Execute(nullptr, nullptr, nullptr))) {
        throw CommandError("the transition failed on a frame");
    }
    return output_;
}

std::string whyNoScene(const TransitionSettings& settings)
{
    if (!IsContextReady()) return "the scene engine cannot start here (no EGL device)";
    return "scene '" + settings.scene + "' cannot be loaded from the Scenes folder of " +
           (settings.dataPath.empty() ? std::string("the data path") : "'" + settings.dataPath + "'");
}

}  // namespace qx::qxfx
