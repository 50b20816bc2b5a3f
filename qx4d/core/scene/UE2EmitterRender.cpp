// The particles of an emitter as quads facing the camera, written into the particle
// bucket: draw states by the description's style, then for each particle its colour, its
// texture cell and its size over its life, and its four corners.
#include "qx4d/content/UE2SpriteEmitter.h"
#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Camera.h"
#include "qx4d/core/scene/Scene.h"
#include "qx4d/core/scene/UE2EmitterInstance.h"

#include <algorithm>
#include <cmath>

namespace qx4d {

namespace {

struct BlendStates {
    uint32_t enable;
    uint32_t source;
    uint32_t destination;
};

/// By draw style: Regular, AlphaBlend, Modulated, Translucent, AlphaModulate, Darken,
/// Brighten.
constexpr BlendStates kStyleBlends[] = {
    {0, gpu::D3DBLEND_ONE, gpu::D3DBLEND_ZERO},        {1, gpu::D3DBLEND_SRCALPHA, gpu::D3DBLEND_INVSRCALPHA},
    {1, gpu::D3DBLEND_ZERO, gpu::D3DBLEND_SRCCOLOR},   {1, gpu::D3DBLEND_SRCCOLOR, gpu::D3DBLEND_ONE},
    {1, gpu::D3DBLEND_INVSRCALPHA, gpu::D3DBLEND_ONE}, {1, gpu::D3DBLEND_ZERO, gpu::D3DBLEND_INVSRCCOLOR},
    {1, gpu::D3DBLEND_ONE, gpu::D3DBLEND_ONE},
};

/// The index of the cell a curve gives: truncated, and held within what an index can
/// address before the table bounds it.
int64_t CellIndex(float value)
{
    if (!(value > 0.0f)) return 0;
    return int64_t(std::min(value, 1e9f));
}

/// A channel rounded to the nearest and held to 0 to 255; a value that is no number (a
/// particle not yet aged, whose life is no number either) is 0.
uint32_t ToChannel(double value)
{
    if (!(value > 0.0)) return 0;
    return uint32_t(std::min(std::nearbyint(value), 255.0));
}

}  // namespace

void UE2EmitterInstance::BindDrawSlots()
{
    const UE2SpriteEmitter& d = *description;
    const bool fadeIn = d.fadeInEndTime > 0.0f, fadeOut = d.fadeOutStartTime < 1.0f;
    using Slot = void (UE2EmitterInstance::*)();
    static constexpr Slot kColors[8] = {
        &UE2EmitterInstance::ColorOverLife<false, false, false>, &UE2EmitterInstance::ColorOverLife<false, false, true>,
        &UE2EmitterInstance::ColorOverLife<false, true, false>,  &UE2EmitterInstance::ColorOverLife<false, true, true>,
        &UE2EmitterInstance::ColorOverLife<true, false, false>,  &UE2EmitterInstance::ColorOverLife<true, false, true>,
        &UE2EmitterInstance::ColorOverLife<true, true, false>,   &UE2EmitterInstance::ColorOverLife<true, true, true>,
    };
    setColor = kColors[(d.useColorScale ? 4 : 0) | (fadeIn ? 2 : 0) | (fadeOut ? 1 : 0)];
    static constexpr Slot kSizes[4] = {
        &UE2EmitterInstance::SizeOverLife<false, false>, &UE2EmitterInstance::SizeOverLife<false, true>,
        &UE2EmitterInstance::SizeOverLife<true, false>, &UE2EmitterInstance::SizeOverLife<true, true>};
    setSize = kSizes[(d.uniformSize ? 2 : 0) | (d.useSizeScale ? 1 : 0)];
    if (d.subdivisionStart == d.subdivisionEnd)
        setSubdivision = &UE2EmitterInstance::KeepSubdivision;
    else
        setSubdivision = d.useRandomSubdivisions ? &UE2EmitterInstance::RandomCell : &UE2EmitterInstance::CellOverLife;
    writeQuad = d.spinParticles ? &UE2EmitterInstance::SpinningQuad : &UE2EmitterInstance::PlainQuad;
}

void UE2EmitterInstance::SetBlendStates() const
{
    const UE2SpriteEmitter& d = *description;
    gpu::Device* device = CurrentDevice();
    Renderer* renderer = Renderer::Instance();
    if (!device || !renderer) return;
    device->SetRenderState(gpu::D3DRS_ALPHAFUNC, gpu::D3DCMP_GREATER);
    device->SetRenderState(gpu::D3DRS_ALPHATESTENABLE, d.alphaTest);
    device->SetRenderState(gpu::D3DRS_ALPHAREF, d.alphaRef);
    device->SetRenderState(gpu::D3DRS_ZENABLE, d.zTest);
    device->SetRenderState(gpu::D3DRS_ZWRITEENABLE, d.zWrite);
    // A style the file can't name keeps the blending in force.
    if (d.drawStyle < 0 || size_t(d.drawStyle) >= std::size(kStyleBlends)) return;
    const BlendStates& blend = kStyleBlends[d.drawStyle];
    device->SetRenderState(gpu::D3DRS_ALPHABLENDENABLE, blend.enable);
    renderer->SetSrcBlend(blend.source);
    renderer->SetDestBlend(blend.destination);
}

const uint32_t* UE2EmitterInstance::DrawOrder(const Matrix3x4& cameraMatrix)
{
    if (description->drawStyle != UE2SpriteEmitter::AlphaBlend) return nullptr;
    // Far first: the key is the negated depth along the camera's view axis.
    const Float3 axis{cameraMatrix[2], cameraMatrix[6], cameraMatrix[10]};
    depthKeys.resize(size_t(liveCount));
    for (int32_t i = 0; i < liveCount; ++i) {
        const Float3& p = particles[size_t(i)].position;
        depthKeys[size_t(i)] = -(p[0] * axis[0] + p[1] * axis[1] + p[2] * axis[2]);
    }
    depthSort.Sort(depthKeys.data(), uint32_t(liveCount));
    return depthSort.GetRanks();
}

void UE2EmitterInstance::Render()
{
    ParticleBucket* bucket = ParticleBucket::Instance();
    gpu::Device* device = CurrentDevice();
    if (liveCount == 0 || !bucket || !device) return;
    const UE2SpriteEmitter& d = *description;
    SetBlendStates();
    const Camera* camera = Camera::Active();
    const Matrix3x4 cameraMatrix = camera ? camera->matrix : kIdentity3x4;
    device->SetVertexShaderConstantF(0, ActiveShadingCamera().viewProjection.data(), 4);
    bucket->SetTexture(d.texture);
    right = {cameraMatrix[0], cameraMatrix[4], cameraMatrix[8]};
    up = {cameraMatrix[1], cameraMatrix[5], cameraMatrix[9]};
    if (d.subdivisionStart == d.subdivisionEnd) SetCorners(d.subdivisionStart);
    const uint32_t* order = DrawOrder(cameraMatrix);
    for (int32_t k = 0; k < liveCount; ++k) {
        current = &particles[order ? order[k] : size_t(k)];
        lifeFraction = current->age / current->lifetime;
        (this->*setColor)();
        (this->*setSubdivision)();
        (this->*setSize)();
        for (ParticleVertex& vertex : quad) {
            vertex.x = current->position[0];
            vertex.y = current->position[1];
            vertex.z = current->position[2];
        }
        (this->*writeQuad)();
        if (!bucket->HasRoom(quad.size())) bucket->Flush();
        bucket->cursor = std::copy(quad.begin(), quad.end(), bucket->cursor);
    }
    bucket->Flush();
}

void UE2EmitterInstance::SetCorners(int64_t cell)
{
    const auto& corners = description->SubdivisionAt(cell).corners;
    for (size_t i = 0; i < quad.size(); ++i) {
        quad[i].u = corners[i * 2];
        quad[i].v = corners[i * 2 + 1];
    }
}

void UE2EmitterInstance::RandomCell() { SetCorners(current->subdivision); }

void UE2EmitterInstance::CellOverLife()
{
    float cell = 0.0f;
    description->subdivisionScale.Evaluate(lifeFraction, &cell);
    SetCorners(CellIndex(cell));
}

template <bool Scale, bool FadeIn, bool FadeOut>
void UE2EmitterInstance::ColorOverLife()
{
    UE2SpriteEmitter& d = *description;
    const uint32_t color = current->color;
    double channels[4] = {double((color >> 16) & 0xFF), double((color >> 8) & 0xFF), double(color & 0xFF),
                          double(color >> 24)};
    if constexpr (Scale) {
        for (size_t c = 0; c < 4; ++c) {
            float scale = 0.0f;
            d.colorScale[c].Evaluate(lifeFraction, &scale);
            channels[c] *= scale;
        }
    }
    // With both fades one applies: the fade-in while it lasts, the fade-out after it.
    if (FadeIn && lifeFraction < d.fadeInEndTime) {
        const double g = 1.0 - double(lifeFraction) / d.fadeInEndTime;
        for (size_t c = 0; c < 4; ++c) channels[c] -= channels[c] * d.fadeInFactor[c] * g;
    } else if (FadeOut && lifeFraction > d.fadeOutStartTime) {
        const double g = (double(lifeFraction) - d.fadeOutStartTime) / (1.0 - d.fadeOutStartTime);
        for (size_t c = 0; c < 4; ++c) channels[c] -= channels[c] * d.fadeOutFactor[c] * g;
    }
    // Rounded to the nearest; a curve above 1 saturates rather than wrapping.
    const uint32_t packed = ToChannel(channels[3]) << 24 | ToChannel(channels[0]) << 16 | ToChannel(channels[1]) << 8 |
                            ToChannel(channels[2]);
    for (ParticleVertex& vertex : quad) vertex.color = packed;
}

template <bool Uniform, bool Scale>
void UE2EmitterInstance::SizeOverLife()
{
    UE2SpriteEmitter& d = *description;
    float scaleX = 1.0f, scaleY = 1.0f;
    if constexpr (Scale) d.sizeScaleX.Evaluate(lifeFraction, &scaleX);
    if constexpr (Scale && !Uniform) d.sizeScaleY.Evaluate(lifeFraction, &scaleY);
    sizeX = current->size[0] * scaleX;
    sizeY = Uniform ? sizeX : current->size[1] * scaleY;
}

void UE2EmitterInstance::PlainQuad()
{
    Float3 a, b;
    for (size_t axis = 0; axis < 3; ++axis) {
        a[axis] = right[axis] * sizeX;
        b[axis] = up[axis] * sizeY;
    }
    // Top left, top right, bottom right, bottom left.
    const float signs[4][2] = {{-1, 1}, {1, 1}, {1, -1}, {-1, -1}};
    for (size_t i = 0; i < quad.size(); ++i) {
        quad[i].x += signs[i][0] * a[0] + signs[i][1] * b[0];
        quad[i].y += signs[i][0] * a[1] + signs[i][1] * b[1];
        quad[i].z += signs[i][0] * a[2] + signs[i][1] * b[2];
    }
}

void UE2EmitterInstance::SpinningQuad()
{
    const float s = std::sin(current->spin), c = std::cos(current->spin);
    const Float3 straightRight = right, straightUp = up;
    for (size_t axis = 0; axis < 3; ++axis) {
        right[axis] = straightRight[axis] * c - straightUp[axis] * s;
        up[axis] = straightRight[axis] * s + straightUp[axis] * c;
    }
    PlainQuad();
    right = straightRight;
    up = straightUp;
}

}  // namespace qx4d
