// Draw-time constants: the camera, the eye, the ambient term, the lights' rows and the
// model matrix with its inverse transpose.
#include "qx4d/content/ShaderConstants.h"

#include "qx4d/content/ShaderKeys.h"
#include "qx4d/core/device/GraphicsDevice.h"

#include <cmath>

namespace qx4d {

namespace {

void PushRow(std::vector<float>& run, double x, double y, double z, double w)
{
    run.insert(run.end(), {float(x), float(y), float(z), float(w)});
}

void PushRow(std::vector<float>& run, const Float3& v, double w) { PushRow(run, v[0], v[1], v[2], w); }

/// The rows of one light, by the kind its key asks for (not by the light's own type, so
/// that the rows always fit the global the generator declared).
void PushLightRows(std::vector<float>& run, uint32_t key, const ShaderLight& light, const Material& material)
{
    const KeyLightKind kind = LightKindOf(key);
    if (kind == KeyLightKind::None) return;
    if (kind == KeyLightKind::Distant) {
        PushRow(run, light.direction, 0.0);
    } else if (kind == KeyLightKind::Point) {
        PushRow(run, light.position, 0.0);
    } else {
        PushRow(run, light.position, std::cos(double(light.coneAngle) - light.edgeAngle));
        PushRow(run, light.direction, std::cos(double(light.coneAngle)));
    }
    const double diffuse = double(material.Diffuse) * light.intensity;
    PushRow(run, diffuse * material.Color[0] * light.color[0], diffuse * material.Color[1] * light.color[1],
            diffuse * material.Color[2] * light.color[2], light.range);
    if (key & kKeySpecular) {
        const double specular = double(material.Specular) * light.intensity;
        PushRow(run, specular * light.color[0], specular * light.color[1], specular * light.color[2],
                material.Glossiness);
    }
}

void PushLights(std::vector<float>& run, const Material& material, const ShadingScene& scene, bool perPixel)
{
    static const ShaderLight kDark = [] {
        ShaderLight dark;
        dark.color = {0.0f, 0.0f, 0.0f};
        dark.intensity = 0.0f;
        return dark;
    }();
    for (size_t i = 0; i < material.shaderKeys.size(); ++i) {
        const uint32_t key = material.shaderKeys[i];
        if (bool(key & kKeyPerPixel) == perPixel)
            PushLightRows(run, key, i < scene.lights.size() ? scene.lights[i] : kDark, material);
    }
}

/// The three rows of the normal matrix: the inverse of the model's 3x3 part, transposed.
/// With the registers read as rows, mul(normal, g_ModelIT) gives the world normal.
void PushNormalMatrix(std::vector<float>& run, const Matrix3x4& m)
{
    auto at = [&](int row, int column) { return double(m[size_t(row * 4 + column)]); };
    // Cofactors of the 3x3 part; the inverse transpose is the cofactor matrix over the
    // determinant. A singular matrix gives infinities, never a fault.
    double cofactor[3][3];
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            const int r1 = (r + 1) % 3, r2 = (r + 2) % 3, c1 = (c + 1) % 3, c2 = (c + 2) % 3;
            cofactor[r][c] = at(r1, c1) * at(r2, c2) - at(r1, c2) * at(r2, c1);
        }
    }
    const double determinant = at(0, 0) * cofactor[0][0] + at(0, 1) * cofactor[0][1] + at(0, 2) * cofactor[0][2];
    for (const auto& row : cofactor)
        PushRow(run, row[0] / determinant, row[1] / determinant, row[2] / determinant, 0.0);
}

}  // namespace

ShaderConstantRuns ComputeShaderConstants(const Material& material, const ShadingScene& scene,
                                          const ShadingCamera& camera, const Matrix3x4& model)
{
    ShaderConstantRuns runs;
    std::vector<float>& vertex = runs.vertex;
    // Each register holds one row of a matrix for column vectors: mul(v, M) in the
    // shader then gives M applied to v.
    vertex.insert(vertex.end(), camera.viewProjection.begin(), camera.viewProjection.end());
    const bool eye = material.flags & kMaterialEyePosition;
    if (eye) PushRow(vertex, camera.position, 0.0);
    double ambient[3];
    for (size_t c = 0; c < 3; ++c) {
        ambient[c] = double(scene.globalAmbient[c]) * material.Diffuse * material.Color[c] +
                     double(material.Luminosity) * material.Color[c];
    }
    PushRow(vertex, ambient[0], ambient[1], ambient[2], 1.0 - double(material.Transparency));
    PushLights(vertex, material, scene, false);
    if (material.bones == 0) {
        vertex.insert(vertex.end(), model.begin(), model.end());
        if (material.flags & kMaterialModelIT) PushNormalMatrix(vertex, model);
    }
    if (eye) PushRow(runs.pixel, camera.position, 0.0);
    PushLights(runs.pixel, material, scene, true);
    return runs;
}

unsigned SetShaderConstants(const Material& material, const ShadingScene& scene, const ShadingCamera& camera,
                            const Matrix3x4& model)
{
    qx::gpu::Device* device = CurrentDevice();
    if (!device) return ShaderConstantRuns::kFirstRegister;
    const ShaderConstantRuns runs = ComputeShaderConstants(material, scene, camera, model);
    if (!runs.vertex.empty())
        device->SetVertexShaderConstantF(ShaderConstantRuns::kFirstRegister, runs.vertex.data(),
                                         unsigned(runs.vertex.size() / 4));
    if (!runs.pixel.empty())
        device->SetPixelShaderConstantF(ShaderConstantRuns::kFirstRegister, runs.pixel.data(),
                                        unsigned(runs.pixel.size() / 4));
    return ShaderConstantRuns::kFirstRegister + unsigned(runs.vertex.size() / 4);
}

}  // namespace qx4d
