#pragma once
// The constants a mesh's effect reads at draw time, written in the order in which the
// generator gave out the registers: two runs, each starting at register 2, one for the
// vertex shader and one for the pixel shader.
#include "qx4d/content/Material.h"
#include "qx4d/content/ShadingScene.h"
#include "qx4d/core/Matrix.h"

#include <array>
#include <vector>

namespace qx4d {

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

/// Writes both runs to the current device. Returns the vertex register after the vertex
/// run, where a skinned material's array of model matrices begins.
unsigned SetShaderConstants(const Material& material, const ShadingScene& scene, const ShadingCamera& camera,
                            const Matrix3x4& model);

}  // namespace qx4d
