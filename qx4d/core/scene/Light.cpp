#include "qx4d/core/scene/Light.h"

#include "qx4d/content/ReadFloatOrEnvelope.h"
#include "qx4d/core/TextReader.h"
#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Scene.h"

namespace qx4d {

Light::~Light() { ReleaseShadowSurfaces(); }

Matrix4x4 Light::ShadowMatrix() const
{
    return Multiply(Perspective(std::bit_cast<float>(0x3F8192C0u), 1.0f, 1.0f, 10.0f), Inverse(matrix));
}

void Light::CreateShadowSurfaces()
{
    Renderer* renderer = Renderer::Instance();
    if (!renderer) return;
    ReleaseShadowSurfaces();
    shadowTarget = renderer->CreateRenderTexture(kShadowMapSize, kShadowMapSize, qx::gpu::D3DFMT_R32F);
    shadowDepth = renderer->CreateDepthStencil(kShadowMapSize, kShadowMapSize, qx::gpu::D3DFMT_D24X8);
}

void Light::ReleaseShadowSurfaces()
{
    if (Renderer* renderer = Renderer::Instance()) {
        renderer->ReleaseTexture(shadowTarget);
        renderer->ReleaseDepthStencil(shadowDepth);
    }
}

bool Light::ReadOwnKey(const String& key, TextReader& reader, Scene& scene, bool& /*refuse*/)
{
    if (key == u"Type") {
        type = reader.NextToken(true) ? reader.ToInt() : 0;
    } else if (key == u"Color") {
        for (float& component : color) component = ReadFloat(reader);
    } else if (key == u"Intensity") {
        ReadFloatOrEnvelope(reader, intensity, envelopes);
    } else if (key == u"EdgeAngle") {
        ReadFloatOrEnvelope(reader, edgeAngle, envelopes);
    } else if (key == u"ConeAngle") {
        ReadFloatOrEnvelope(reader, coneAngle, envelopes);
    } else if (key == u"CastShadows") {
        // Whatever the value, the scene is marked and the surfaces are made: "CastShadows
        // 0" still loads the shadow effect; only this light stays out of the shadow pass.
        castShadows = reader.NextToken(true) && reader.ToBool();
        scene.flags |= Scene::kSomeLightCastsShadows;
        CreateShadowSurfaces();
    } else {
        return false;
    }
    return true;
}

}  // namespace qx4d
