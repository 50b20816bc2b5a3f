// An emitter file as a whole: its elements in their order, the table of texture cells and
// the curves that the file leaves to their defaults.
#include "qx4d/content/UE2SpriteEmitter.h"

#include "qx4d/content/EmitterElements.h"
#include "qx4d/core/XmlDocument.h"
#include "qx4d/core/device/Renderer.h"

#include <algorithm>

namespace qx4d {

// One cell, the whole texture, until the "Texture" element is read.
UE2SpriteEmitter::UE2SpriteEmitter()
    : subdivisions{Subdivision{{0, 0, 1, 0, 1, 1, 0, 1}}}, domain(std::make_unique<PointDomain>())
{}

UE2SpriteEmitter::~UE2SpriteEmitter()
{
    if (Renderer* renderer = Renderer::Instance()) renderer->ReleaseTexture(texture);
}

std::unique_ptr<UE2SpriteEmitter> UE2SpriteEmitter::Load(const String& path)
{
    XmlDocument document;
    if (!document.Load(u"EMITTERS:" + path)) return nullptr;
    return Read(document.GetRoot());
}

std::unique_ptr<UE2SpriteEmitter> UE2SpriteEmitter::Read(const XmlNode* root)
{
    auto record = std::make_unique<UE2SpriteEmitter>();
    // A missing element reads as an empty one: the steps after an element run all the same.
    const XmlNode empty;
    const auto element = [&](const char16_t* elementName) -> const XmlNode& {
        const XmlNode* found = root ? FirstChild(*root, elementName) : nullptr;
        return found ? *found : empty;
    };
    record->ReadGeneral(element(u"General"));
    record->ReadTime(element(u"Time"));
    record->ReadTexture(element(u"Texture"));
    record->ReadMovement(element(u"Movement"));
    record->ReadSize(element(u"Size"));
    record->ReadLocation(element(u"Location"));
    record->ReadColor(element(u"Color"));
    record->ReadCollision(element(u"Collision"));
    record->ReadRendering(element(u"Rendering"));
    record->ReadRotation(element(u"Rotation"));
    record->ReadRevolution(element(u"Revolution"));
    record->CompleteCurves();
    return record;
}

const UE2SpriteEmitter::Subdivision& UE2SpriteEmitter::SubdivisionAt(int64_t index) const
{
    return subdivisions[size_t(std::clamp<int64_t>(index, 0, int64_t(subdivisions.size()) - 1))];
}

void UE2SpriteEmitter::BuildSubdivisions(bool endGiven)
{
    uSubdivisions = std::clamp(uSubdivisions, 1, kMaxSubdivisionsPerAxis);
    vSubdivisions = std::clamp(vSubdivisions, 1, kMaxSubdivisionsPerAxis);
    const int32_t count = uSubdivisions * vSubdivisions;
    if (!endGiven) subdivisionEnd = count - 1;
    const double du = 1.0 / uSubdivisions, dv = 1.0 / vSubdivisions;
    subdivisions.assign(size_t(count), Subdivision{});
    for (int32_t r = 0; r < vSubdivisions; ++r) {
        for (int32_t c = 0; c < uSubdivisions; ++c) {
            const auto u0 = float(c * du), u1 = float((c + 1) * du), v0 = float(r * dv), v1 = float((r + 1) * dv);
            subdivisions[size_t(r * uSubdivisions + c)].corners = {u0, v0, u1, v0, u1, v1, u0, v1};
        }
    }
    if (subdivisionScale.KeyCount() > 0) return;
    // One stepped key a cell, valued from 0 (not from the first cell) and spread over the
    // life. A range wider than the table adds no cell that could be shown.
    const int64_t n = std::min<int64_t>(int64_t(subdivisionEnd) - subdivisionStart + 1, count);
    for (int64_t i = 0; i < n; ++i) subdivisionScale.AddKey(float(i), float(double(i) / double(n)), Key::ShapeStepped);
}

void UE2SpriteEmitter::CompleteCurves()
{
    for (Envelope* curve : {&sizeScaleX, &sizeScaleY, &colorScale[0], &colorScale[1], &colorScale[2], &colorScale[3]})
        if (curve->KeyCount() == 0) curve->AddKey(0.0f, 0.0f);
}

}  // namespace qx4d
