// An envelope from the sub-chunks of an envelope chunk of an object file.
#include "qx4d/content/Chunk.h"
#include "qx4d/content/Envelope.h"
#include "qx4d/content/HarmonicOscillator.h"

#include <array>

namespace qx4d {

namespace {

// How many parameters a key chunk holds after its shape.
size_t KeyParamCount(uint32_t shape)
{
    switch (shape) {
    case qx4d::Key::ShapeTCB: return 3;
    case qx4d::Key::ShapeHermite:
    case qx4d::Key::ShapeNone: return 2;
    case qx4d::Key::ShapeBezier: return 4;
    default: return 0;
    }
}

// The only modifier server that object files carry.
constexpr char16_t kOscillatorServer[] = u"LW_Oscillator";

}  // namespace

void Envelope::LoadChunks(Chunk& chunk)
{
    Chunk sub;
    while (chunk.NextChunk(sub)) {
        switch (sub.id) {
        case ChunkId("NAME"): name = sub.ReadString(); break;
        case ChunkId("PRE "): preBehavior = sub.ReadU16(); break;
        case ChunkId("POST"): postBehavior = sub.ReadU16(); break;
        case ChunkId("KEY "): {
            const float value = sub.ReadF32();
            const float time = sub.ReadF32();
            qx4d::Key& key = AddKey(value, time, sub.ReadU16());
            for (size_t i = 0; i < KeyParamCount(key.shape); ++i) {
                key.params[i] = sub.ReadF32();
            }
            break;
        }
        case ChunkId("CHAN"):
            if (sub.ReadString() == kOscillatorServer) {
                std::array<float, 7> numbers;
                for (float& number : numbers) {
                    number = sub.ReadF32();
                }
                AddModifier(std::make_unique<HarmonicOscillator>(numbers));
            }
            break;
        default: break;  // unknown ids are skipped
        }
    }
}

}  // namespace qx4d
