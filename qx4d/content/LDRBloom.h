#pragma once
// The bloom of bright areas: the picture's bright parts are taken out, brought down four
// times to half the size each, blurred at every level, and the four blurred levels are
// added back to the picture. The effect file's passes: 0 adds the levels to the picture,
// 1 brings a level down, 2 blurs along the offsets of constants 0 to 4, 3 keeps the bright
// parts.
#include "platform/gpu/Effect.h"
#include "qx4d/content/Filter.h"

#include <array>

namespace qx4d {

class LDRBloom : public Filter {
public:
    /// The levels below the picture: half, a quarter, an eighth and a sixteenth of its size.
    static constexpr int kLevels = 4;

    ~LDRBloom() override { ReleaseLevels(); }

    /// The filter's effect, the vertex block of the six quads (the picture and its levels)
    /// and the targets of every level. A side below 16 pixels leaves the smallest level
    /// without pixels, and the target can't be made: false.
    bool Create(int32_t newWidth, int32_t newHeight) override;
    void Render() override;
    const char16_t* EffectFile() const override { return u"Filters\\LDRBloom.fx"; }

    /// The bright parts at full size.
    ResourceHandle bright;
    /// Index k holds level k (1 to 4); index 0 stays empty.
    std::array<ResourceHandle, kLevels + 1> down;
    std::array<ResourceHandle, kLevels + 1> blur;
    /// The blur's first step, along x, before the second along y into `blur`.
    std::array<ResourceHandle, kLevels + 1> across;
    ResourceHandle vertexBlock;
    uint32_t firstVertex = 0;

protected:
    void Release() override;

private:
    void ReleaseLevels();
    bool MakeQuads();
    /// Draws quad `quad` with `input` in sampler 0 into the level 0 surface of `output`.
    void Pass(const ResourceHandle& input, const ResourceHandle& output, int quad) const;
    void Blur(int level, gpu::Effect& passes) const;
};

}  // namespace qx4d
