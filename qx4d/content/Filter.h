#pragma once
// The image filters a scene may name: full-screen passes over the picture of the frame,
// run in the order of the scene file. This holds what a scene text says of each filter;
// the filters' targets and passes come with the filter chain of the frame.
#include "qx4d/content/Envelope.h"
#include "qx4d/core/String.h"

#include <array>
#include <memory>
#include <vector>

namespace qx4d {

class TextReader;

class Filter {
public:
    Filter() = default;
    virtual ~Filter() = default;
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

    /// Reads the block behind the filter's name, up to "}" (or a "{}" token). The filters
    /// without keys read nothing.
    virtual void Load(TextReader& /*reader*/) {}
    /// Evaluates the filter's envelopes at `time`.
    void Update(float time, float timeStep);

    /// The effect file under "EFFECTS:".
    virtual const char16_t* EffectFile() const = 0;

    int32_t width = 0;
    int32_t height = 0;
    std::vector<std::unique_ptr<Envelope>> envelopes;
};

class Negative : public Filter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\Negative.fx"; }
};

class Sepia : public Filter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\Sepia.fx"; }
};

class LDRBloom : public Filter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\LDRBloom.fx"; }
};

class ColorTransform : public Filter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\ColorTransform.fx"; }

    /// Four rows of four; the identity is written before each draw.
    std::array<float, 16> colorMatrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
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
};

class Twirl : public DistortFilter {
public:
    const char16_t* EffectFile() const override { return u"Filters\\DistortFilters.fx"; }

    float angle = 0.0f;

protected:
    bool LoadKey(const String& key, TextReader& reader) override;
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
