// A lens flare in the frame: how much of its light shows, and its quads in pixels from
// the lower left of the viewport, written into the lens-flare bucket a texture at a time.
#include "qx4d/core/device/ProfileEvent.h"
#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Bucket.h"
#include "qx4d/core/scene/LensFlare.h"
#include "qx4d/core/scene/Scene.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <thread>

namespace qx4d {

namespace {

/// The side of the occlusion point, as the state POINTSIZE holds it: 9.0.
constexpr uint32_t kPointSize = 0x41100000u;
/// The pixels of that point.
constexpr double kPointPixels = 81.0;
/// Half the side of the square of the viewport test, and its area.
constexpr double kHalfSquare = 9.0;
constexpr double kSquarePixels = 324.0;
/// Normalised coordinates beyond this are as good as infinitely off the frame.
constexpr double kFarOff = 1e6;
/// How long the frame waits for an occlusion count before it takes the light as hidden.
constexpr auto kQueryPatience = std::chrono::seconds(2);

/// A quad centred at (`x`, `y`) with half-sizes `hx` across and `hy` up, its corners turned
/// by `angle` (radians) around the centre.
struct FlareQuad {
    float x, y, hx, hy;
    Float3 color;
    std::array<float, 4> uv{0.0f, 0.0f, 1.0f, 1.0f};
    float angle = 0.0f;
};

/// Writes `quad` with `texture`, flushing first when the texture changes or the staging
/// array has no room for four more vertices.
void Add(LensFlareBucket& bucket, const ResourceHandle& texture, const FlareQuad& quad)
{
    if (!texture.SameAs(bucket.texture)) {
        bucket.Flush();
        bucket.SetTexture(texture);
    }
    if (!bucket.HasRoom(4)) bucket.Flush();
    // Left top, right top, right bottom, left bottom; y grows upwards.
    const float corners[4][2] = {{-quad.hx, quad.hy}, {quad.hx, quad.hy}, {quad.hx, -quad.hy}, {-quad.hx, -quad.hy}};
    const float uvs[4][2] = {
        {quad.uv[0], quad.uv[1]}, {quad.uv[2], quad.uv[1]}, {quad.uv[2], quad.uv[3]}, {quad.uv[0], quad.uv[3]}};
    const double c = std::cos(quad.angle), s = std::sin(quad.angle);
    for (int i = 0; i < 4; ++i) {
        const double dx = corners[i][0], dy = corners[i][1];
        *bucket.cursor++ = LensFlareVertex{float(quad.x + dx * c - dy * s),
                                           float(quad.y + dx * s + dy * c),
                                           1.0f,
                                           uvs[i][0],
                                           uvs[i][1],
                                           quad.color[0],
                                           quad.color[1],
                                           quad.color[2]};
    }
}

Float3 Scaled(const Float3& color, double factor)
{
    return {float(color[0] * factor), float(color[1] * factor), float(color[2] * factor)};
}

Float3 Product(const Float3& a, const Float3& b) { return {a[0] * b[0], a[1] * b[1], a[2] * b[2]}; }

}  // namespace

void LensFlare::UpdateVisibility()
{
    visibility = 0.0f;
    double intensity = flareIntensity;
    gpu::Device* device = CurrentDevice();
    if (!(intensity > 0.0) || !device) return;
    const ShadingCamera camera = ActiveShadingCamera();
    const Float3 light = Translation(matrix);
    const auto& m = camera.viewProjection;
    double clip[4];
    for (int r = 0; r < 4; ++r)
        clip[r] = double(m[r * 4]) * light[0] + double(m[r * 4 + 1]) * light[1] + double(m[r * 4 + 2]) * light[2] +
                  m[r * 4 + 3];
    const double nz = clip[2] / clip[3];
    // Behind the camera, or beyond its far plane.
    if (!(nz >= 0.0 && nz <= 1.0)) return;
    // A light all but in the camera's plane lands far off the frame: held where a float
    // still holds it.
    const double nx = std::clamp(clip[0] / clip[3], -kFarOff, kFarOff),
                 ny = std::clamp(clip[1] / clip[3], -kFarOff, kFarOff);
    gpu::D3DVIEWPORT9 viewport;
    device->GetViewport(&viewport);
    screenX = float(viewport.X + viewport.Width * (nx * 0.5 + 0.5));
    screenY = float(viewport.Y + viewport.Height * (ny * 0.5 + 0.5));
    if (lensFlareFade & kFadeWithDistance) {
        const double distance = std::hypot(double(light[0]) - camera.position[0], double(light[1]) - camera.position[1],
                                           double(light[2]) - camera.position[2]);
        double t = nominalDistance / distance;
        if (t >= 0.0) t = std::min(t, 1.0);
        intensity *= t;
        if (!(intensity > 0.0)) return;
    }
    if (lensFlareFade & kOcclusionTest)
        intensity *=
            (lensFlareFade & kOcclusionByQuery) ? QueriedShare(light, camera.viewProjection) : ViewportShare(viewport);
    visibility = float(intensity);
}

double LensFlare::QueriedShare(const Float3& light, const std::array<float, 16>& viewProjection)
{
    gpu::Device* device = CurrentDevice();
    Renderer* renderer = Renderer::Instance();
    if (!occlusionQuery && device) device->CreateQuery(gpu::D3DQUERYTYPE_OCCLUSION, &occlusionQuery);
    if (!occlusionQuery || !renderer) return 0.0;
    const ProfileEvent event(0xFF000000u, "LensFlare Occlusion");
    renderer->ClearStream(0);
    renderer->SetVertexDeclaration(pointDeclaration);
    renderer->SetEffect(occlusionEffect);
    device->SetVertexShaderConstantF(0, viewProjection.data(), 4);
    device->SetRenderState(gpu::D3DRS_POINTSIZE, kPointSize);
    occlusionQuery->Issue(gpu::D3DISSUE_BEGIN);
    device->DrawPrimitiveUP(gpu::D3DPT_POINTLIST, 1, light.data(), sizeof(Float3));
    occlusionQuery->Issue(gpu::D3DISSUE_END);
    // The frame waits for the count; a query that never answers (a device gone bad) counts
    // as a hidden light rather than a frame that never ends.
    uint32_t count = 0;
    const auto deadline = std::chrono::steady_clock::now() + kQueryPatience;
    qx::HRESULT state = qx::S_FALSE;
    while ((state = occlusionQuery->GetData(&count, sizeof(count), gpu::D3DGETDATA_FLUSH)) == qx::S_FALSE &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    if (state != qx::S_OK) return 0.0;
    return std::min(count / kPointPixels, 1.0);
}

double LensFlare::ViewportShare(const gpu::D3DVIEWPORT9& viewport) const
{
    const double cx = std::floor(double(screenX) + 0.5), cy = std::floor(double(screenY) + 0.5);
    const double left = std::max(cx - kHalfSquare, double(viewport.X));
    const double right = std::min(cx + kHalfSquare, double(viewport.X) + viewport.Width);
    const double bottom = std::max(cy - kHalfSquare, double(viewport.Y));
    const double top = std::min(cy + kHalfSquare, double(viewport.Y) + viewport.Height);
    if (!(right > left && top > bottom)) return 0.0;
    return (right - left) * (top - bottom) / kSquarePixels;
}

void LensFlare::Render()
{
    LensFlareBucket* bucket = LensFlareBucket::Instance();
    gpu::Device* device = CurrentDevice();
    if (!(visibility > 0.0f) || !bucket || !device) return;
    gpu::D3DVIEWPORT9 viewport;
    device->GetViewport(&viewport);
    const auto w = float(viewport.Width);
    const float cx = screenX, cy = screenY, fade = 1.0f - dissolve, v = visibility;
    if (options & kGlow) {
        const float hy = w * v * 0.5f * 1.5873016f;
        Add(*bucket, glowTexture, {cx, cy, hy * distortFactor, hy, Scaled(lightColor, fade)});
    }
    if (options & kRing) {
        const float hy = w * ringSize * 0.5f;
        Add(*bucket, ringTexture, {cx, cy, hy * distortFactor, hy, Scaled(Product(ringColor, lightColor), v * fade)});
    }
    if (options & kAnamorphicStreak) {
        const float hy = w * v * 0.5f * 1.8867925f * 0.125f;
        Add(*bucket, anamorphicTexture, {cx, cy, hy * distortFactor * 8.0f, hy, Scaled(lightColor, v * fade)});
    }
    if (options & kRandomStreak) {
        const float hy = w * v * 0.5f * 1.5873016f;
        Add(*bucket, streakTexture,
            {cx, cy, hy * distortFactor, hy, Scaled(lightColor, double(v) * randomStreakIntensity * fade)});
    }
    if (!starTexture.IsNull()) {
        const float half = w * v * 0.5f * 1.4084507f;
        Add(*bucket, starTexture,
            {cx, cy, half, half, Scaled(lightColor, fade), {0.0f, 0.0f, 1.0f, 1.0f}, -rotationAngle});
    }
    if (options & kReflections) RenderReflections(*bucket, w, fade);
}

void LensFlare::RenderReflections(LensFlareBucket& bucket, float width, float fade) const
{
    gpu::D3DVIEWPORT9 viewport;
    CurrentDevice()->GetViewport(&viewport);
    const double mx = viewport.X + viewport.Width * 0.5, my = viewport.Y + viewport.Height * 0.5;
    const double dx = screenX - mx, dy = screenY - my;
    // One pass a texture: shapes below 4, shapes 4 to 7 (from their rectangles), shapes
    // from 8 (the whole ring texture).
    for (size_t pass = 0; pass < elementTextures.size(); ++pass) {
        if (elementTextures[pass].IsNull()) continue;
        for (const ReflectionElement& element : reflectionElements) {
            const size_t elementPass = element.shape < 4 ? 0 : element.shape < 8 ? 1 : 2;
            if (elementPass != pass) continue;
            const float hy = width * element.size * 0.5f;
            FlareQuad quad{float(mx + dx * element.position), float(my + dy * element.position), hy * distortFactor, hy,
                           Scaled({element.r, element.g, element.b}, double(visibility) * fade)};
            if (pass < 2) quad.uv = elementRects[element.shape];
            Add(bucket, elementTextures[pass], quad);
        }
    }
}

}  // namespace qx4d
