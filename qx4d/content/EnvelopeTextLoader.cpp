// An envelope from the token stream of the scene notation:
//   { Envelope
//     <key count>
//     Key <value> <time> <shape> <six parameter tokens>      (once per key)
//     Behaviors <pre> <post>
//     [ { <three tokens> <seven oscillator numbers> <three tokens> ]
// Words in fixed places are skipped whatever they say; a missing number reads as 0.
#include "qx4d/content/Envelope.h"
#include "qx4d/content/HarmonicOscillator.h"
#include "qx4d/core/TextReader.h"

#include <algorithm>
#include <array>

namespace qx4d {

namespace {

// Far beyond any authored curve; only a damaged count comes near it, and it must not make
// the loader allocate without bound.
constexpr int32_t kMaxKeys = 1 << 20;

void SkipWords(TextReader& reader, int count)
{
    for (int i = 0; i < count; ++i) {
        reader.NextToken(true);
    }
}

void ReadFloats(TextReader& reader, float* out, int count)
{
    for (int i = 0; i < count; ++i) {
        out[i] = ReadFloat(reader);
    }
}

// The six tokens after a key's shape: which of them are numbers depends on the shape.
void ReadKeyParams(TextReader& reader, qx4d::Key& key)
{
    switch (key.shape) {
    case qx4d::Key::ShapeTCB:
        ReadFloats(reader, key.params, 3);
        SkipWords(reader, 3);
        break;
    case qx4d::Key::ShapeHermite:
    case qx4d::Key::ShapeNone:
        SkipWords(reader, 3);
        ReadFloats(reader, key.params, 2);
        SkipWords(reader, 1);
        break;
    case qx4d::Key::ShapeBezier:
        ReadFloats(reader, key.params, 4);
        SkipWords(reader, 2);
        break;
    default: SkipWords(reader, 6); break;
    }
}

}  // namespace

bool Envelope::Load(TextReader& reader)
{
    SkipWords(reader, 2);  // "{" and "Envelope"
    keys.resize(size_t(std::clamp(ReadInt(reader), 0, kMaxKeys)));
    for (qx4d::Key& key : keys) {
        SkipWords(reader, 1);  // "Key"
        key.value = ReadFloat(reader);
        key.time = ReadFloat(reader);
        key.shape = uint32_t(ReadInt(reader));
        ReadKeyParams(reader, key);
    }
    SkipWords(reader, 1);  // "Behaviors"
    preBehavior = ReadInt(reader);
    postBehavior = ReadInt(reader);
    // One oscillator block at most; any other word ends the envelope. The three words
    // on either side of its numbers are taken whatever they are.
    if (reader.NextToken(true) && reader == u"{") {
        SkipWords(reader, 3);
        std::array<float, 7> numbers;
        ReadFloats(reader, numbers.data(), int(numbers.size()));
        SkipWords(reader, 3);
        AddModifier(std::make_unique<HarmonicOscillator>(numbers));
    }
    return true;
}

}  // namespace qx4d
