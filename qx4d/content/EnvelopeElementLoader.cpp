// An envelope from a curve element of an emitter file:
//   <Curve PreBehavior="" PostBehavior="">
//     <Key Time="0" Value="1" Shape="Linear" Params="0, 0, 0, 0, 0, 0"/>
//   </Curve>
// Attribute names match without regard to case; shape words match exactly.
#include "qx4d/content/Envelope.h"
#include "qx4d/core/XmlNode.h"

#include <algorithm>
#include <optional>

namespace qx4d {

namespace {

bool NameIs(const String& name, const char16_t* wanted) { return name.EqualsNoCase(wanted) == 0; }

// The shape of a word of the notation; an unknown word leaves the shape as it was.
std::optional<uint32_t> ShapeFromWord(const String& word)
{
    struct ShapeWord {
        const char16_t* word;
        uint32_t shape;
    };
    static constexpr ShapeWord kWords[] = {{u"TCB", qx4d::Key::ShapeTCB},
                                           {u"Hermite", qx4d::Key::ShapeHermite},
                                           {u"Linear", qx4d::Key::ShapeLinear},
                                           {u"Stepped", qx4d::Key::ShapeStepped},
                                           {u"Bezier", qx4d::Key::ShapeBezier}};
    for (const ShapeWord& entry : kWords) {
        if (word == entry.word) {
            return entry.shape;
        }
    }
    return std::nullopt;
}

// Six numbers separated by any run of commas and blanks. Numbers beyond six are ignored;
// missing ones leave their parameters at 0.
void ReadParams(const String& text, qx4d::Key& key)
{
    std::vector<String> pieces;
    text.Split(u", ", pieces);
    const size_t count = std::min<size_t>(pieces.size(), std::size(key.params));
    for (size_t i = 0; i < count; ++i) {
        key.params[i] = pieces[i].ToFloat();
    }
}

}  // namespace

void Envelope::LoadElement(float subdivisionScaleRepeats, const XmlNode& element, float repeats)
{
    // The mere presence of a behaviour attribute sets it to constant; its value is not read.
    for (const String& attribute : element.attributeNames) {
        if (NameIs(attribute, u"PreBehavior")) {
            preBehavior = BehaviorConstant;
        } else if (NameIs(attribute, u"PostBehavior")) {
            postBehavior = BehaviorConstant;
        }
    }
    float timeScale = 1.0f;
    if (subdivisionScaleRepeats != 0.0f) {
        postBehavior = BehaviorRepeat;
        timeScale = float(1.0 / (double(repeats) + 1.0));
    }
    for (const auto& child : element.children) {
        // "Time" makes the key and the attributes after it fill it in. Attributes before
        // any "Time" of their element have no key to go to and are dropped.
        std::optional<size_t> keyIndex;
        const size_t attributeCount = std::min(child->attributeNames.size(), child->attributeValues.size());
        for (size_t i = 0; i < attributeCount; ++i) {
            const String& attribute = child->attributeNames[i];
            const String& value = child->attributeValues[i];
            if (NameIs(attribute, u"Time")) {
                AddKey(0.0f, float(double(value.ToFloat()) * timeScale));
                keyIndex = keys.size() - 1;
            } else if (!keyIndex) {
                continue;
            } else if (NameIs(attribute, u"Value")) {
                keys[*keyIndex].value = value.ToFloat();
            } else if (NameIs(attribute, u"Shape")) {
                keys[*keyIndex].shape = ShapeFromWord(value).value_or(keys[*keyIndex].shape);
            } else if (NameIs(attribute, u"Params")) {
                ReadParams(value, keys[*keyIndex]);
            }
        }
    }
}

}  // namespace qx4d
