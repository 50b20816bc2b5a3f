// A material's life: read from its .mat file, built into an effect for the scene's
// lights, applied at each draw.
#include "qx4d/content/Material.h"

#include "qx4d/content/ShaderKeys.h"
#include "qx4d/content/ShaderWriter.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"

#include <cmath>

namespace qx4d {

Material::~Material() { ReleaseEffect(); }

void Material::ReleaseEffect()
{
    if (Renderer* renderer = Renderer::Instance()) renderer->ReleaseEffect(effect);
}

bool Material::Build(std::span<const qx::gpu::D3DVERTEXELEMENT9> declaration, const ShadingScene& scene)
{
    for (const uint32_t key : shaderKeys)
        flags |= ((key & kKeyPerPixel) ? kMaterialPixelLighting : kMaterialVertexLighting) | kMaterialLit;
    if (FogActive(scene.fog.fogType)) flags |= kMaterialFog;
    if ((flags & (kMaterialLit | kMaterialFog)) || reflective) flags |= kMaterialEyePosition;
    flags |= kMaterialAlwaysSet;

    std::string text;
    Renderer* renderer = Renderer::Instance();
    if (!renderer || !Generate(*this, declaration, scene.fog.fogType, text)) return false;
    ReleaseEffect();
    effect = renderer->CreateEffect(text);
    return !effect.IsNull();
}

void Material::Apply(int /*pass*/, const ShadingScene& scene)
{
    if (Renderer* renderer = Renderer::Instance()) renderer->SetEffect(effect);
    SetPixelConstants(scene);
}

void Material::SetPixelConstants(const ShadingScene& scene) const
{
    qx::gpu::Device* device = CurrentDevice();
    if (!device) return;
    const float alphaReflective[4] = {1.0f - Transparency, Reflective, ColorTextureLayer1Opacity, 0.0f};
    device->SetPixelShaderConstantF(0, alphaReflective, 1);
    const ShadingFog& fog = scene.fog;
    const float fogColor[4] = {fog.color[0], fog.color[1], fog.color[2], 0.0f};
    device->SetPixelShaderConstantF(1, fogColor, 1);
    if (!FogActive(fog.fogType)) return;
    // Linear fog as a factor of the distance, d * x + y: no fog (the full difference of
    // the amounts) at the near distance, all fog at the far one. The other modes use a
    // fixed density.
    float fogConstant[4] = {0.35f, 0.0f, 0.0f, 0.0f};
    if (fog.fogType == 1) {
        const double x = -(double(fog.maxAmount) - fog.minAmount) / (double(fog.maxDistance) - fog.minDistance);
        fogConstant[0] = float(x);
        fogConstant[1] = float(-x * fog.maxDistance);
    }
    device->SetVertexShaderConstantF(1, fogConstant, 1);
}

}  // namespace qx4d
