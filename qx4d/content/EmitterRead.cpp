// The elements of an emitter file, one reader each. Every reader takes the attributes of
// its element in file order, so that a key given twice keeps its last value; unknown keys
// are dropped.
#include "qx4d/content/EmitterElements.h"
#include "qx4d/content/UE2SpriteEmitter.h"
#include "qx4d/core/device/Renderer.h"

#include <algorithm>
#include <vector>

namespace qx4d {

namespace {

/// Draw style words, exact.
constexpr const char16_t* kDrawStyleWords[] = {u"Regular",       u"AlphaBlend", u"Modulated", u"Translucent",
                                               u"AlphaModulate", u"Darken",     u"Brighten"};

/// The curve element `name` under `element`, if there is one, into `curve`.
void ReadCurve(const UE2SpriteEmitter& owner, const XmlNode& element, const char16_t* name, Envelope& curve,
               float repeats)
{
    if (const XmlNode* child = FirstChild(element, name)) curve.LoadElement(owner, *child, repeats);
}

/// `count` integers split on ", "; nothing changes when fewer are given.
template <size_t N>
void ParseInts(const String& text, std::array<int32_t*, N> out)
{
    std::vector<String> pieces;
    text.Split(kListSeparators, pieces);
    if (pieces.size() < N) return;
    for (size_t i = 0; i < N; ++i) *out[i] = pieces[i].ToInt();
}

}  // namespace

void UE2SpriteEmitter::ReadGeneral(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"Name"))
            name = value;
        else if (KeyIs(key, u"MaxParticles"))
            maxParticles = std::clamp(value.ToInt(), 0, kMaxParticlesCap);
        else if (KeyIs(key, u"ParticlesPerSecond"))
            particlesPerSecond = value.ToFloat();
        else if (KeyIs(key, u"AutomaticSpawning"))
            automaticSpawning = value.ToBool();
    });
}

void UE2SpriteEmitter::ReadTime(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"LifetimeRange"))
            ParseRange(value, lifetimeRange);
        else if (KeyIs(key, u"SpawnFromOtherEmitterWhenDie"))
            ParseInts<3>(value, {&deathEmitterFirst, &deathEmitterCount, &deathEmitterAmount});
    });
}

void UE2SpriteEmitter::ReadTexture(const XmlNode& element)
{
    bool endGiven = false;
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"Texture")) {
            if (Renderer* renderer = Renderer::Instance()) {
                renderer->ReleaseTexture(texture);
                texture = renderer->LoadTexture(value);
            }
        } else if (KeyIs(key, u"DrawStyle")) {
            // An unknown word leaves the style as it was.
            const auto* word = std::find(std::begin(kDrawStyleWords), std::end(kDrawStyleWords), value);
            if (word != std::end(kDrawStyleWords)) drawStyle = int32_t(word - std::begin(kDrawStyleWords));
        } else if (KeyIs(key, u"USubdivisions")) {
            uSubdivisions = value.ToInt();
        } else if (KeyIs(key, u"VSubdivisions")) {
            vSubdivisions = value.ToInt();
        } else if (KeyIs(key, u"UseRandomSubdivisions")) {
            useRandomSubdivisions = value.ToBool();
        } else if (KeyIs(key, u"SubdivisionStart")) {
            subdivisionStart = value.ToInt();
        } else if (KeyIs(key, u"SubdivisionEnd")) {
            subdivisionEnd = value.ToInt();
            endGiven = true;
        } else if (KeyIs(key, u"UseSubdivisionScale")) {
            // The format writes this key into the first cell: "true" reads as 0, "1" as 1.
            subdivisionStart = value.ToInt();
        } else if (KeyIs(key, u"SubdivisionScaleRepeats")) {
            subdivisionScaleRepeats = value.ToFloat();
        }
    });
    ReadCurve(*this, element, u"SubdivisionScale", subdivisionScale, subdivisionScaleRepeats);
    BuildSubdivisions(endGiven);
}

void UE2SpriteEmitter::ReadMovement(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"Acceleration")) {
            ParseFloat3(value, kBlank, acceleration);
        } else if (KeyIs(key, u"StartVelocityRange")) {
            ParseRange3(value, startVelocityRange);
        } else if (KeyIs(key, u"ClampVelocity")) {
            // Least and most speed; a single number changes only the least.
            std::vector<String> pieces;
            value.Split(kBlank, pieces);
            if (!pieces.empty()) clampVelocityMin = pieces[0].ToFloat();
            if (pieces.size() > 1) clampVelocityMax = pieces[1].ToFloat();
        }
    });
}

void UE2SpriteEmitter::ReadSize(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"UniformSize"))
            uniformSize = value.ToBool();
        else if (KeyIs(key, u"StartSizeRange"))
            ParseRange2(value, startSizeRange);
        else if (KeyIs(key, u"UseSizeScale"))
            useSizeScale = value.ToBool();
    });
    ReadCurve(*this, element, u"SizeScaleX", sizeScaleX, 0.0f);
    ReadCurve(*this, element, u"SizeScaleY", sizeScaleY, 0.0f);
}

void UE2SpriteEmitter::ReadLocation(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"StartLocation"))
            uniformSize = value.ToBool();  // the key of older files, kept as it stands
        else if (KeyIs(key, u"StartSize"))
            ParseRange2(value, startSizeRange);
        else if (KeyIs(key, u"AddLocationEmitter"))
            addLocationEmitter = value.ToInt();
    });
    // Each domain child replaces the one before it.
    for (const auto& child : element.children) {
        Float3 center{}, low{}, high{};
        float inner = 0.0f, outer = 0.0f;
        ForEachAttribute(*child, [&](const String& key, const String& value) {
            if (KeyIs(key, u"Center"))
                ParseFloat3(value, kRangeSeparators, center);
            else if (KeyIs(key, u"Min"))
                ParseFloat3(value, kRangeSeparators, low);
            else if (KeyIs(key, u"Max"))
                ParseFloat3(value, kRangeSeparators, high);
            else if (KeyIs(key, u"InnerRadius"))
                inner = value.ToFloat();
            else if (KeyIs(key, u"OuterRadius"))
                outer = value.ToFloat();
        });
        if (child->name == u"PointDomain")
            domain = std::make_unique<PointDomain>(center);
        else if (child->name == u"BoxDomain")
            domain = std::make_unique<BoxDomain>(low, high);
        else if (child->name == u"SphereDomain")
            domain = std::make_unique<SphereDomain>(center, inner, outer);
    }
}

void UE2SpriteEmitter::ReadColor(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"Opacity"))
            opacity = value.ToFloat();
        else if (KeyIs(key, u"FadeInEndTime"))
            fadeInEndTime = value.ToFloat();
        else if (KeyIs(key, u"FadeOutStartTime"))
            fadeOutStartTime = value.ToFloat();
        else if (KeyIs(key, u"FadeInFactor"))
            ParseFloat4(value, fadeInFactor);
        else if (KeyIs(key, u"FadeOutFactor"))
            ParseFloat4(value, fadeOutFactor);
        else if (KeyIs(key, u"UseColorScale"))
            useColorScale = value.ToBool();
        else if (KeyIs(key, u"ColorScaleRepeats"))
            colorScaleRepeats = value.ToFloat();
        else if (KeyIs(key, u"ColorMultiplierRange"))
            ParseColorRange(value, colorMultiplier);
    });
    const char16_t* const curves[] = {u"ColorScaleR", u"ColorScaleG", u"ColorScaleB", u"ColorScaleA"};
    for (size_t c = 0; c < colorScale.size(); ++c)
        ReadCurve(*this, element, curves[c], colorScale[c], colorScaleRepeats);
}

void UE2SpriteEmitter::ReadCollision(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"DampingFactorRange"))
            ParseRange3(value, dampingFactorRange);
        else if (KeyIs(key, u"ExtentMultiplie"))  // spelled so in the format
            ParseFloat3(value, kBlank, extentMultiplier);
        else if (KeyIs(key, u"MaxCollisions"))
            ParseByteRange(value, maxCollisions);
        else if (KeyIs(key, u"SpawnAmount"))
            spawnAmount = value.ToInt();
        else if (KeyIs(key, u"SpawnedVelocityScaleRange"))
            ParseRange3(value, spawnedVelocityScaleRange);
        else if (KeyIs(key, u"SpawnFromOtherEmitter"))
            spawnFromOtherEmitter = value.ToInt();
        else if (KeyIs(key, u"UseCollision"))
            useCollision = value.ToBool();
        else if (KeyIs(key, u"UseCollisionPlanes"))
            useCollisionPlanes = value.ToBool();
        else if (KeyIs(key, u"UseMaxCollisions"))
            useMaxCollisions = value.ToBool();
        else if (KeyIs(key, u"UseSpawnedVelocityScaleRange"))
            useSpawnedVelocityScaleRange = value.ToBool();
    });
    // Each child is a plane: normal x, y, z and d, in attribute order whatever the names.
    for (const auto& child : element.children) {
        if (collisionPlanes.size() >= kMaxCollisionPlanes) break;
        Plane& plane = collisionPlanes.emplace_back();
        float* const values[] = {&plane.normal[0], &plane.normal[1], &plane.normal[2], &plane.d};
        const size_t count = std::min(child->attributeValues.size(), std::size(values));
        for (size_t i = 0; i < count; ++i) *values[i] = child->attributeValues[i].ToFloat();
    }
}

void UE2SpriteEmitter::ReadRendering(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"AlphaTest"))
            alphaTest = value.ToBool();
        else if (KeyIs(key, u"AlphaRef"))
            alphaRef = uint8_t(value.ToInt() & 0xFF);
        else if (KeyIs(key, u"ZTest"))
            zTest = value.ToBool();
        else if (KeyIs(key, u"ZWrite"))
            zWrite = value.ToBool();
    });
}

void UE2SpriteEmitter::ReadRotation(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"SpinParticles"))
            spinParticles = value.ToBool();
        else if (KeyIs(key, u"StartSpinRange"))
            ParseRange(value, startSpinRange);
        else if (KeyIs(key, u"SpinsPerSecondRange"))
            ParseRange(value, spinsPerSecondRange);
        else if (KeyIs(key, u"SpinCCWorCW"))
            spinCCWorCW = value.ToFloat();
    });
}

void UE2SpriteEmitter::ReadRevolution(const XmlNode& element)
{
    ForEachAttribute(element, [&](const String& key, const String& value) {
        if (KeyIs(key, u"RevolutionCenterOffsetRange"))
            ParseRange3(value, revolutionCenterOffsetRange);
        else if (KeyIs(key, u"RevolutionsPerSecondRange"))
            ParseRange3(value, revolutionsPerSecondRange);
        else if (KeyIs(key, u"UseRevolution"))
            useRevolution = value.ToBool();
    });
}

}  // namespace qx4d
