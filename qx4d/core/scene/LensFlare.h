#pragma once
// A lens flare of the scene: the camera's reaction to a light at the entity's place. A
// glow, a ring, streaks, a star filter and a chain of reflection elements along the line
// from the light through the frame's centre, all built in pixels and written into the
// lens-flare bucket. How brightly it shows depends on whether the light is in front of
// the camera, on its distance, and on how much of it the frame hides: by an occlusion
// query against the frame's depth, or by how much of a small square around it lies in the
// viewport.
#include "platform/gpu/Query.h"
#include "qx4d/core/device/ResourceHandle.h"
#include "qx4d/core/scene/Entity.h"

#include <array>
#include <memory>
#include <vector>

namespace qx4d {

class LensFlareBucket;

/// One reflection of the lens: its place along the line from the light (1) through the
/// frame's centre (0) and beyond (negative), its size as a fraction of the viewport's
/// width, its colour and the shape that picks its texture.
struct ReflectionElement {
    float position = 0.0f;
    float size = 0.0f;
    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;
    uint32_t shape = 0;
};

class LensFlare : public Entity {
public:
    /// `options` bits.
    enum Option : uint32_t {
        kGlow = 0x1,
        kRing = 0x2,
        kRandomStreak = 0x8,
        kReflections = 0x10,
        kWhiteGlow = 0x20,
        kKeepDistortion = 0x40,
        kAnamorphicStreak = 0x80,
    };
    /// `lensFlareFade` bits.
    enum Fade : uint32_t {
        kFadeWithDistance = 0x2,
        kOcclusionTest = 0x4,
        kOcclusionByQuery = 0x8,
    };
    /// More reflection elements than this in one block are not read.
    static constexpr size_t kMaxReflectionElements = 256;
    /// The atlas rectangles of the element textures go by shape, 0 to 7.
    static constexpr size_t kShapeRects = 8;

    LensFlare();
    ~LensFlare() override;

    int32_t GetType() const override { return kLensFlare; }
    /// The block, then what follows from it: the default reflections, the element shapes
    /// and every texture the options ask for.
    bool Read(TextReader& reader, Scene& scene) override;
    /// How much of the flare shows (`visibility`) and where (`screenX`, `screenY`), with
    /// the active camera and the current viewport: the occlusion step of the frame, run
    /// once the scene's objects are drawn.
    void UpdateVisibility();
    /// The flare's quads, in pixels from the lower left, into the lens-flare bucket.
    void Render();

    ResourceHandle glowTexture;
    ResourceHandle ringTexture;
    ResourceHandle streakTexture;
    ResourceHandle anamorphicTexture;
    ResourceHandle starTexture;
    /// The reflections' textures by pass: shapes below 4, shapes 4 to 7, shapes from 8.
    std::array<ResourceHandle, 3> elementTextures;
    // The defaults of a block that gives no key: a white light at full strength, no
    // options, no fade.
    Float3 lightColor{1.0f, 1.0f, 1.0f};
    float flareIntensity = 1.0f;
    uint32_t lensFlareFade = 0;
    float nominalDistance = 1.0f;
    float dissolve = 0.0f;
    uint32_t options = 0;
    Float3 ringColor{1.0f, 1.0f, 1.0f};
    float ringSize = 0.3f;
    float distortFactor = 1.0f;
    float rotationAngle = 0.0f;
    float randomStreakIntensity = 1.0f;
    int32_t polygonalElementShape = 0;
    std::vector<ReflectionElement> reflectionElements;
    /// (u0, v0, u1, v1) by shape; the whole texture unless an atlas says otherwise.
    std::array<std::array<float, 4>, kShapeRects> elementRects;
    float screenX = 0.0f;
    float screenY = 0.0f;
    float visibility = 0.0f;

protected:
    bool ReadOwnKey(const String& key, TextReader& reader, Scene& scene, bool& refuse) override;

private:
    void ReadElement(TextReader& reader);
    void SetStarTexture(int32_t filter);
    /// The steps after the block.
    void CompleteBlock();
    void LoadElementTextures();
    void LoadOptionTextures();
    /// The share of the 81 pixels of a 9-pixel point at the light that pass the frame's
    /// depth, counted by an occlusion query.
    double QueriedShare(const Float3& light, const std::array<float, 16>& viewProjection);
    /// The share of an 18 by 18 square around the flare's centre that lies in the viewport.
    double ViewportShare(const qx::gpu::D3DVIEWPORT9& viewport) const;
    void RenderReflections(LensFlareBucket& bucket, float width, float fade) const;

    ResourceHandle occlusionEffect;
    ResourceHandle pointDeclaration;
    std::shared_ptr<qx::gpu::Query> occlusionQuery;
};

}  // namespace qx4d
