#pragma once
// A function of time over keys that drives one float: a position channel, the opacity of
// a surface, a particle's size over its life. Keys stand in file order (the data must
// come with ascending times); behaviours say what happens before the first key and after
// the last; modifiers add their values on top. The arithmetic of `Evaluate` defines the
// curve, odd places included, so that the same key data always gives the same curve.
#include "qx4d/content/Controller.h"
#include "qx4d/content/Key.h"
#include "qx4d/core/String.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace qx4d {

class Chunk;
class XmlNode;

class Envelope : public Controller {
public:
    /// What happens at and before the first key, at and after the last.
    enum Behavior : int32_t {
        BehaviorReset = 0,
        BehaviorConstant = 1,
        BehaviorRepeat = 2,
        BehaviorOscillate = 3,
        BehaviorOffsetRepeat = 4,
        BehaviorLinear = 5,
    };

    /// An additive term of the envelope; the base adds nothing.
    class Modifier {
    public:
        virtual ~Modifier() = default;
        virtual float Apply(float t) const;
    };

    /// A null `target` binds the envelope to its own storage.
    explicit Envelope(float* boundTarget = nullptr);
    ~Envelope() override;

    /// Appends a zeroed key and returns it for filling in. The reference holds until the
    /// next key is added.
    qx4d::Key& AddKey(float value, float time);
    qx4d::Key& AddKey(float value, float time, uint32_t shape);
    /// Puts `modifier` at the front of the list; the envelope owns it.
    void AddModifier(std::unique_ptr<Modifier> modifier);

    size_t KeyCount() const { return keys.size(); }
    const qx4d::Key& Key(size_t index) const { return keys[index]; }
    const qx4d::Key& FirstKey() const { return keys.front(); }
    const qx4d::Key& LastKey() const { return keys.back(); }
    size_t ModifierCount() const { return modifiers.size(); }
    const Modifier& ModifierAt(size_t index) const { return *modifiers[index]; }

    int32_t GetPreBehavior() const { return preBehavior; }
    int32_t GetPostBehavior() const { return postBehavior; }
    void SetPreBehavior(int32_t behavior) { preBehavior = behavior; }
    void SetPostBehavior(int32_t behavior) { postBehavior = behavior; }
    const String& GetName() const { return name; }

    /// The token stream of the scene notation, from the "{" of the block on. Never fails.
    bool Load(TextReader& reader) override;
    /// The sub-chunks of an envelope chunk of an object file.
    void LoadChunks(Chunk& chunk);
    /// A curve element of an emitter file. A non-zero `subdivisionScaleRepeats` (that field
    /// of the emitter description, whichever curve is read) makes the curve repeat, with its
    /// key times squeezed by 1 / (`repeats` + 1).
    void LoadElement(float subdivisionScaleRepeats, const XmlNode& element, float repeats);
    /// Works with any emitter description record that has the `subdivisionScaleRepeats` field.
    template <typename Description>
    void LoadElement(const Description& description, const XmlNode& element, float repeats)
    {
        LoadElement(float(description.subdivisionScaleRepeats), element, repeats);
    }

    void Evaluate(float t, float* out) override;

private:
    float ModifierSum(float t) const;
    bool ApplyBehavior(int32_t behavior, bool beforeKeys, float& t, float& result) const;
    double LinearExtrapolation(bool beforeKeys, float t) const;
    float WrapTime(float t, float& cycle) const;
    size_t FindSegment(float t);
    double Segment(size_t a, size_t b, float t) const;
    float OutTangent(size_t a, size_t b) const;
    float InTangent(size_t a, size_t b) const;
    float Bezier(size_t a, size_t b, float t) const;

    float storage = 0.0f;
    String name;
    int32_t currentKey = 0;
    std::vector<qx4d::Key> keys;
    int32_t preBehavior = BehaviorConstant;
    int32_t postBehavior = BehaviorConstant;
    std::vector<std::unique_ptr<Modifier>> modifiers;
};

}  // namespace qx4d
