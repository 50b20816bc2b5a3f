#pragma once
// The constants a mesh's effect reads at draw time, written in the order in which the
// generator gave out the registers: two runs, each starting at register 2, one for the
// vertex shader and one for the pixel shader.
#include "qx4d/content/Material.h"
#include "qx4d/content/ShadingScene.h"

#include <array>
#include <vector>

namespace qx4d {

/// A 3x4 world matrix for column vectors: three rows of four, translation in column 3.
using Matrix3x4 = std::array<float, 12>;

struct ShaderConstantRuns {
    static constexpr unsigned kFirstRegister = 2;
    /// Four floats a register.
    std::vector<float> vertex;
    std::vector<float> pixel;
};

/// The two runs for `material` drawn with the world matrix `model`. Keys beyond the
/// scene's lights get rows of zeros, so the registers after them stay in place.
ShaderConstantRuns ComputeShaderConstants(const Material& material, const ShadingScene& scene,
                                          const ShadingCamera& camera, const Matrix3x4& model);

/// Writes both runs to the current device.
void SetShaderConstants(const Material& material, const ShadingScene& scene, const ShadingCamera& camera,
                        const Matrix3x4& model);

}  // namespace qx4d
