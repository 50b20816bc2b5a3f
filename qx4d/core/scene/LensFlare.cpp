// Reading a lens flare's block and loading what its options ask for: the default chain of
// reflections, their textures by shape, the glow, ring, streak and star textures, and the
// occlusion effect.
#include "qx4d/core/scene/LensFlare.h"

#include "qx4d/content/ReadFloatOrEnvelope.h"
#include "qx4d/core/TextReader.h"
#include "qx4d/core/device/Renderer.h"

#include <algorithm>

namespace qx4d {

namespace {

/// The chain of reflections of a flare that asks for them and defines none.
constexpr ReflectionElement kDefaultReflections[] = {
    {1.52f, 0.4f, 0.01f, 0.01f, 0.01f, 5},     {1.5f, 0.92f, 0.04f, 0.02f, 0.0f, 5},
    {1.3f, 0.11f, 0.08f, 0.08f, 0.08f, 7},     {0.505f, 0.055f, 0.01f, 0.03f, 0.06f, 5},
    {0.45f, 0.16f, 0.0f, 0.01f, 0.05f, 5},     {0.41f, 0.085f, 0.01f, 0.04f, 0.06f, 5},
    {0.2f, 0.055f, 0.16f, 0.08f, 0.0f, 5},     {0.01f, 0.03f, 0.6f, 0.6f, 0.6f, 4},
    {-0.27f, 0.045f, 0.5f, 0.7f, 0.8f, 4},     {-0.415f, 0.11f, 0.11f, 0.07f, 0.0f, 5},
    {-0.455f, 0.19f, 0.13f, 0.08f, 0.01f, 6},  {-0.475f, 0.055f, 0.09f, 0.06f, 0.0f, 5},
    {-0.655f, 0.085f, 0.04f, 0.12f, 0.11f, 5}, {-0.675f, 0.13f, 0.04f, 0.04f, 0.4f, 4},
    {-1.005f, 0.27f, 0.09f, 0.12f, 0.0f, 7},   {-1.31f, 0.53f, 0.06f, 0.04f, 0.0f, 8},
};

/// The star filters 1 to 10.
constexpr const char16_t* kStarTextures[] = {
    u"LensFlare\\star_2.dds",  u"LensFlare\\star_2_2.dds",   u"LensFlare\\star_4.dds", u"LensFlare\\star_4_4.dds",
    u"LensFlare\\star_6.dds",  u"LensFlare\\star_6_6.dds",   u"LensFlare\\star_8.dds", u"LensFlare\\star_8_8.dds",
    u"LensFlare\\star_10.dds", u"LensFlare\\star_10_10.dds",
};

const qx::gpu::D3DVERTEXELEMENT9 kPointDeclaration[] = {
    {0, 0, qx::gpu::D3DDECLTYPE_FLOAT3, 0, qx::gpu::D3DDECLUSAGE_POSITION, 0},
    qx::gpu::D3DDECL_END,
};

/// The texture of that name in place of what `handle` held.
void Replace(ResourceHandle& handle, const char16_t* name)
{
    if (Renderer* renderer = Renderer::Instance()) {
        renderer->ReleaseTexture(handle);
        handle = renderer->LoadTexture(name);
    }
}

}  // namespace

LensFlare::LensFlare() { elementRects.fill({0.0f, 0.0f, 1.0f, 1.0f}); }

LensFlare::~LensFlare()
{
    Renderer* renderer = Renderer::Instance();
    if (!renderer) return;
    for (ResourceHandle* texture : {&glowTexture, &ringTexture, &streakTexture, &anamorphicTexture, &starTexture})
        renderer->ReleaseTexture(*texture);
    for (ResourceHandle& texture : elementTextures) renderer->ReleaseTexture(texture);
    renderer->ReleaseEffect(occlusionEffect);
    renderer->ReleaseVertexDeclaration(pointDeclaration);
}

bool LensFlare::Read(TextReader& reader, Scene& scene)
{
    const bool read = Entity::Read(reader, scene);
    CompleteBlock();
    return read;
}

bool LensFlare::ReadOwnKey(const String& key, TextReader& reader, Scene& /*scene*/, bool& /*refuse*/)
{
    const auto readColor = [&](Float3& color) {
        for (float& component : color) component = ReadFloat(reader);
    };
    struct Channel {
        std::u16string_view key;
        float* field;
    };
    const Channel channels[] = {
        {u"LightColorR", &lightColor[0]},
        {u"LightColorG", &lightColor[1]},
        {u"LightColorB", &lightColor[2]},
        {u"FlareIntensity", &flareIntensity},
        {u"FlareNominalDistance", &nominalDistance},
        {u"FlareDissolve", &dissolve},
        {u"FlareRingColorR", &ringColor[0]},
        {u"FlareRingColorG", &ringColor[1]},
        {u"FlareRingColorB", &ringColor[2]},
        {u"FlareRingSize", &ringSize},
        {u"FlareDistortFactor", &distortFactor},
        {u"FlareRotationAngle", &rotationAngle},
        {u"FlareRandStreakInt", &randomStreakIntensity},
    };
    for (const Channel& channel : channels) {
        if (key == channel.key) {
            ReadFloatOrEnvelope(reader, *channel.field, envelopes);
            return true;
        }
    }
    if (key == u"LightColor") {
        readColor(lightColor);
    } else if (key == u"LensFlareFade") {
        lensFlareFade = reader.NextToken(true) ? reader.ToUInt() : 0u;
    } else if (key == u"LensFlareOptions") {
        options = uint32_t(ReadInt(reader));
    } else if (key == u"FlareRingColor") {
        readColor(ringColor);
    } else if (key == u"FlareStarFilter") {
        SetStarTexture(ReadInt(reader));
    } else if (key == u"PolygonalElementShape") {
        polygonalElementShape = ReadInt(reader);
    } else if (key == u"ReflectionElements") {
        reflectionElements.reserve(size_t(std::clamp<int32_t>(ReadInt(reader), 0, kMaxReflectionElements)));
    } else if (key == u"ElementDefinition") {
        ReadElement(reader);
    } else {
        return false;
    }
    return true;
}

void LensFlare::ReadElement(TextReader& reader)
{
    ReflectionElement element;
    element.shape = uint32_t(ReadInt(reader));
    for (float* field : {&element.position, &element.size, &element.r, &element.g, &element.b})
        *field = ReadFloat(reader);
    if (reflectionElements.size() < kMaxReflectionElements) reflectionElements.push_back(element);
}

void LensFlare::SetStarTexture(int32_t filter)
{
    Renderer* renderer = Renderer::Instance();
    if (!renderer) return;
    renderer->ReleaseTexture(starTexture);
    if (filter >= 1 && filter <= int32_t(std::size(kStarTextures)))
        starTexture = renderer->LoadTexture(kStarTextures[filter - 1]);
}

void LensFlare::CompleteBlock()
{
    if (!(options & kKeepDistortion)) distortFactor = 1.0f;
    if ((options & kReflections) && reflectionElements.empty())
        reflectionElements.assign(std::begin(kDefaultReflections), std::end(kDefaultReflections));
    LoadElementTextures();
    LoadOptionTextures();
    Renderer* renderer = Renderer::Instance();
    if (renderer && (lensFlareFade & kOcclusionTest) && (lensFlareFade & kOcclusionByQuery) &&
        occlusionEffect.IsNull()) {
        occlusionEffect = renderer->LoadEffect(u"OcclusionQuery.fx");
        pointDeclaration = renderer->CreateVertexDeclaration(kPointDeclaration, uint32_t(std::size(kPointDeclaration)));
    }
}

void LensFlare::LoadElementTextures()
{
    // Without a polygon shape the polygonal elements are drawn round.
    if (polygonalElementShape == 0)
        for (ReflectionElement& element : reflectionElements)
            if (element.shape >= 4 && element.shape <= 7) element.shape -= 4;
    const auto any = [&](auto test) { return std::any_of(reflectionElements.begin(), reflectionElements.end(), test); };
    if (any([](const ReflectionElement& e) { return e.shape >= 4 && e.shape <= 7; })) {
        const char16_t* polygon = u"LensFlare\\circular.dds";
        switch (polygonalElementShape) {
        case 5: polygon = u"LensFlare\\5sided.dds"; break;
        case 6: polygon = u"LensFlare\\6sided.dds"; break;
        case 7: polygon = u"LensFlare\\7sided.dds"; break;
        case 8: polygon = u"LensFlare\\8sided.dds"; break;
        default: break;
        }
        Replace(elementTextures[1], polygon);
    }
    if (any([](const ReflectionElement& e) { return e.shape < 4; }) && elementTextures[0].IsNull())
        Replace(elementTextures[0], u"LensFlare\\circular.dds");
    if (any([](const ReflectionElement& e) { return e.shape >= 8; }))
        Replace(elementTextures[2], u"LensFlare\\rainbowring.dds");
}

void LensFlare::LoadOptionTextures()
{
    if (options & kRandomStreak) Replace(streakTexture, u"LensFlare\\randstreak.dds");
    if (options & kGlow)
        Replace(glowTexture, (options & kWhiteGlow) ? u"LensFlare\\glow.dds" : u"LensFlare\\redglow.dds");
    if (options & kAnamorphicStreak) Replace(anamorphicTexture, u"LensFlare\\anamorphic.dds");
    if (options & kRing) Replace(ringTexture, u"LensFlare\\ring2.dds");
}

}  // namespace qx4d
