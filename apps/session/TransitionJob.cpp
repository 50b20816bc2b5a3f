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
    if (!execute(progress)) throw CommandError("the transition failed on a frame");
    return output_;
}

void TransitionJob::runInPlace(Frame& first, Frame& second, float progress)
{
    if (first.samples.size() != output_.samples.size() || second.samples.size() != output_.samples.size())
        throw CommandError("a frame of another size than the transition's");
    // The transform holds its surfaces from Setup on, as an editor's do; the frames'
    // samples are put under them, and the job's own frames go back afterwards.
    firstSurface_->rewrap(first.samples);
    secondSurface_->rewrap(second.samples);
    const bool executed = execute(progress);
    firstSurface_->rewrap(first_.samples);
    secondSurface_->rewrap(second_.samples);
    if (!executed) throw CommandError("the transition failed on a frame");
    std::swap(first.samples, output_.samples);
    outputSurface_->rewrap(output_.samples);
}

bool TransitionJob::execute(float progress)
{
    return SUCCEEDED(transform_->put_Progress(std::clamp(progress, 0.0f, 1.0f))) &&
           SUCCEEDED(transform_->Execute(nullptr, nullptr, nullptr));
}

std::string whyNoScene(const TransitionSettings& settings)
{
    if (!IsContextReady()) return "the scene engine cannot start here (no EGL device)";
    return "scene '" + settings.scene + "' cannot be loaded from the Scenes folder of " +
           (settings.dataPath.empty() ? std::string("the data path") : "'" + settings.dataPath + "'");
}

}  // namespace qx::qxfx
