#pragma once
// Base of the frame effects that keep state from frame to frame. The effect host makes one
// on Setup through the video-effect factory, copies the parameter list into it, calls
// Start, and hands it each frame through ProcessFrame.
#include "effects/ParamTable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace qx {

class CVideoEffect {
public:
    CVideoEffect(LONG frameWidth, LONG frameHeight)
        // The count saturates for sizes no frame has, which the effects then refuse.
        : pixelCount(LONG(std::clamp<int64_t>(int64_t(frameWidth) * frameHeight, 0, INT32_MAX))), height(frameHeight),
          width(frameWidth)
    {}
    virtual ~CVideoEffect() = default;
    CVideoEffect(const CVideoEffect&) = delete;
    CVideoEffect& operator=(const CVideoEffect&) = delete;

    /// Prepares the state for the first frame: 0 on success, -1 when it cannot.
    virtual LONG Start() = 0;
    virtual LONG Stop() = 0;
    /// Computes one output frame from one input frame, both `width * height` BGRA samples.
    virtual LONG ProcessFrame(const uint32_t* src, uint32_t* dst, float progress) = 0;

    /// The copy of the host's parameter list taken at Setup.
    void SetParams(std::span<const LONG> values)
    {
        params.fill(0);
        paramCount = LONG(std::min<size_t>(values.size(), size_t(kMaxParams)));
        std::copy_n(values.begin(), paramCount, params.begin());
    }

protected:
    LONG pixelCount;
    LONG height;
    LONG width;
    std::array<LONG, kMaxParams> params{};
    LONG paramCount = 0;
};

}  // namespace qx
