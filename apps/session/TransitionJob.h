#pragma once
// The 3D transition transform driven as an editor drives it, over frames of the tools:
// two inputs and an output of one size, Source and AspectRatio put and Setup once, then
// Progress and Execute per frame. Shared by `qxfx transition`, its demo and the frei0r
// transition.
#include "apps/session/Frame.h"
#include "filters/3DTransform.h"

#include <memory>
#include <string>

namespace qx::qxfx {

/// The pack's transition scene, under the scenes alias.
inline constexpr const char* kPackTransitionScene = "Transitions\\Cube.afx";

struct TransitionSettings {
    /// The scene file under the pack's Scenes folder; '/' may stand for '\'.
    std::string scene = kPackTransitionScene;
    std::string dataPath;      // empty: the data path is left as it is
    float aspectRatio = 0.0f;  // 0: the frame's width over height
};

class TransitionJob {
public:
    /// Sets the transform up for frames of `width` x `height`; CommandError when the
    /// frames cannot be had or Setup fails. A scene that does not play is not an error
    /// here: `playsScene` tells, and frames then cut at the middle.
    TransitionJob(const TransitionSettings& settings, int width, int height);
    TransitionJob(const TransitionJob&) = delete;
    TransitionJob& operator=(const TransitionJob&) = delete;

    /// The clip that leaves and the clip that enters, for the next `run`.
    Frame& first() { return first_; }
    Frame& second() { return second_; }
    bool playsScene() const { return transform_->Client() != nullptr; }

    /// The transition's frame at `progress` (0 to 1); CommandError when Execute fails.
    const Frame& run(float progress);
    /// The transition's frame at `progress` between `first` and `second` (of the job's
    /// size), rendered from their own samples without copying them in, into `first`.
    void runInPlace(Frame& first, Frame& second, float progress);

private:
    bool execute(float progress);

    Frame first_;
    Frame second_;
    Frame output_;
    std::shared_ptr<transform::DXSurface> firstSurface_;
    std::shared_ptr<transform::DXSurface> secondSurface_;
    std::shared_ptr<transform::DXSurface> outputSurface_;
    com::ComPtr<CQX3DTransform> transform_;
};

/// Why a transition set up with `settings` plays no scene, in one line for the user.
std::string whyNoScene(const TransitionSettings& settings);

}  // namespace qx::qxfx
