#pragma once
// The image filters a scene may name: full-screen passes over the picture of the frame,
// run in the order of the scene file. Each filter reads the frame's picture as a texture
// and draws a new picture into its target through the pixel shader of its effect file;
// the scene's filter chain hands each one its source and target.
#include "qx4d/content/Envelope.h"
#include "qx4d/core/String.h"
#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/ResourceHandle.h"

#include <array>
#include <memory>
#include <vector>

namespace qx4d {

class Renderer;
class TextReader;

class Filter {
public:
    Filter() = default;
    /// Gives the effect and the declaration back.
    virtual ~Filter();
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

    /// Sets the size of the target, loads the effect and makes the vertex declaration
    /// (anew when called again); false when one of them can't be made, a missing effect
    /// file among them.
    virtual bool Create(int32_t newWidth, int32_t newHeight);
    /// Draws `source` through the effect into `target`: one quad over the whole target.
    virtual void Render();
    /// Reads the block behind the filter's name, up to "}" (or a "{}" token). The filters
    /// without keys read nothing.
    virtual void Load(TextReader& /*reader*/) {}
    /// Evaluates the filter's envelopes at `time`.
    void Update(float time, float timeStep);

    /// The effect file under "EFFECTS:".
    virtual const char16_t* EffectFile() const = 0;

    int32_t width = 0;
    int32_t height = 0;
    ResourceHandle effect;
    ResourceHandle declaration;
    /// The surface the filter draws into.
    std::shared_ptr<gpu::Surface> target;
    /// The picture it reads.
    ResourceHandle source;
    std::vector<std::unique_ptr<Envelope>> envelopes;

protected:
    /// Binds the textures a filter reads beyond its source, from sampler 1 on.
    virtual void BindExtraTextures(Renderer& /*renderer*/) {}
    /// Sets the pixel shader constants of the filter's own values.
    virtual void SetConstants(gpu::Device& /*device*/) {}
    /// Gives back what `Create` made.
    virtual void Release();
    /// Clears the target and draws the quad over it, `width` by `height` pixels.
    void DrawQuad(gpu::Device& device) const;
};

class Negative : public Filter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\Negative.fx"; }
};

/// The luminance of the picture looked up in the tone ramp "sepia.tga", in sampler 1.
class Sepia : public Filter {
public:
    ~Sepia() override { ReleaseToneRamp(); }
    bool Create(int32_t newWidth, int32_t newHeight) override;
    const char16_t* EffectFile() const override { return u"Filters\\Sepia.fx"; }

    ResourceHandle toneRamp;

protected:
    void BindExtraTextures(Renderer& renderer) override;
    void Release() override;

private:
    void ReleaseToneRamp();
};

class ColorTransform : public Filter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\ColorTransform.fx"; }

    /// Four rows of four; the identity is written before each draw.
    std::array<float, 16> colorMatrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

protected:
    /// The identity, then its rows into constants 0 to 3: the filter as it stands changes
    /// nothing unless its effect file does.
    void SetConstants(gpu::Device& device) override;
};

/// The filters that move where the picture is read, around a centre and out to a radius.
class DistortFilter : public Filter {
public:
    void Load(TextReader& reader) override;

    float centerX = 0.5f;
    float centerY = 0.5f;
    float radius = 0.5f;

protected:
    /// Keys beyond the centre and the radius; true for a key it took.
    virtual bool LoadKey(const String& /*key*/, TextReader& /*reader*/) { return false; }
    /// The values in field order into constant 0: centre x, centre y, radius and, for the
    /// twirl, the angle.
    void SetConstants(gpu::Device& device) override;
    virtual float Angle() const { return 0.0f; }
};

class Twirl : public DistortFilter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\DistortFilters.fx"; }

    float angle = 0.0f;

protected:
    bool LoadKey(const String& key, TextReader& reader) override;
    float Angle() const override { return angle; }
};

class Explode : public DistortFilter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\Explode.fx"; }
};

class Wave : public DistortFilter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\Wave.fx"; }
};

/// The filter of that name, with its defaults; null for a name no filter has.
std::unique_ptr<Filter> MakeFilter(const String& name);

}  // namespace qx4d
