#pragma once
// The constants a mesh's effect reads at draw time, written in the order in which the
// generator gave out the registers: two runs, each starting at register 2, one for the
// vertex shader and one for the pixel shader.
#include "qx4d/content/Material.h"
#include "qx4d/content/ShadingScene.h"
#include "qx4d/core/Matrix.h"

#include <array>
#include <span>
#include <vector>

namespace qx4d {

struct ShaderConstantRuns {
    static constexpr unsigned kFirstRegister = 2;
    /// Four floats a register.
    std::vector<float> vertex;
    std::vector<float> pixel;
};

/// The two runs for `material` drawn with the world matrix `model`. Keys beyond the
/// scene's lights get rows of zeros, so the registers after them stay in place. A skinned
/// material takes its `bones` model matrices from `boneMatrices` instead, the identity
/// standing in for any that are missing.
ShaderConstantRuns ComputeShaderConstants(const Material& material, const ShadingScene& scene,
                                          const ShadingCamera& camera, const Matrix3x4& model,
                                          std::span<const Matrix3x4> boneMatrices = {});

/// Writes both runs to the current device.
void SetShaderConstants(const Material& material, const ShadingScene& scene, const ShadingCamera& camera,
                        const Matrix3x4& model, std::span<const Matrix3x4> boneMatrices = {});

}  // namespace qx4d
