#include "qx4d/content/Chunk.h"
#include "qx4d/content/Envelope.h"
#include "qx4d/content/HarmonicOscillator.h"
#include "qx4d/content/ReadFloatOrEnvelope.h"
#include "qx4d/core/TextReader.h"
#include "qx4d/core/XmlDocument.h"

#include "tests/qx4d/content/ChunkBytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string_view>

namespace qx4d {
namespace {

using test::ChunkBytes;

void SetText(TextReader& reader, std::string_view text)
{
    auto bytes = std::make_unique<uint8_t[]>(text.size());
    std::memcpy(bytes.get(), text.data(), text.size());
    ASSERT_TRUE(reader.SetBuffer(std::move(bytes), text.size()));
}

void ExpectParams(const Key& key, std::array<float, 6> expected)
{
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(key.params[i], expected[i]) << "params[" << i << "]";
    }
}

const HarmonicOscillator& OscillatorAt(const Envelope& envelope, size_t index)
{
    return dynamic_cast<const HarmonicOscillator&>(envelope.ModifierAt(index));
}

// frequency, amplitude, phase, damping, offset, start, end
void ExpectOscillator(const HarmonicOscillator& oscillator, std::array<float, 7> notationOrder)
{
    EXPECT_EQ(oscillator.frequency, notationOrder[0]);
    EXPECT_EQ(oscillator.amplitude, notationOrder[1]);
    EXPECT_EQ(oscillator.phase, notationOrder[2]);
    EXPECT_EQ(oscillator.damping, notationOrder[3]);
    EXPECT_EQ(oscillator.offset, notationOrder[4]);
    EXPECT_EQ(oscillator.start, notationOrder[5]);
    EXPECT_EQ(oscillator.end, notationOrder[6]);
}

TEST(EnvelopeTokenLoader, KeysTakeTheirParametersByShape)
{
    TextReader reader;
    SetText(reader,
            "{ Envelope\n"
            "  5\n"
            "  Key 1.5 0 0 0.1 0.2 0.3 7 7 7\n"
            "  Key 2 1 1 7 7 7 0.4 0.5 7\n"
            "  Key 2.5 1.5 2 7 7 7 0.45 0.55 7\n"
            "  Key 3 2 5 0.6 0.7 0.8 0.9 7 7\n"
            "  Key 4 3 3 7 7 7 7 7 7\n"
            "  Behaviors 2 4\n"
            "}\n"
            "Next");
    Envelope envelope;
    EXPECT_TRUE(envelope.Load(reader));
    ASSERT_EQ(envelope.KeyCount(), 5u);
    EXPECT_EQ(envelope.Key(0).value, 1.5f);
    EXPECT_EQ(envelope.Key(0).time, 0.0f);
    ExpectParams(envelope.Key(0), {0.1f, 0.2f, 0.3f, 0, 0, 0});
    EXPECT_EQ(envelope.Key(1).shape, 1u);
    ExpectParams(envelope.Key(1), {0.4f, 0.5f, 0, 0, 0, 0});
    ExpectParams(envelope.Key(2), {0.45f, 0.55f, 0, 0, 0, 0});
    ExpectParams(envelope.Key(3), {0.6f, 0.7f, 0.8f, 0.9f, 0, 0});
    EXPECT_EQ(envelope.Key(4).value, 4.0f);
    EXPECT_EQ(envelope.Key(4).time, 3.0f);
    EXPECT_EQ(envelope.Key(4).shape, 3u);
    ExpectParams(envelope.Key(4), {0, 0, 0, 0, 0, 0});
    EXPECT_EQ(envelope.GetPreBehavior(), 2);
    EXPECT_EQ(envelope.GetPostBehavior(), 4);
    EXPECT_EQ(envelope.ModifierCount(), 0u);
    // The closing brace was the word that ended the envelope.
    ASSERT_TRUE(reader.NextToken(true));
    EXPECT_EQ(reader, u"Next");
}

TEST(EnvelopeTokenLoader, OneOscillatorBlockWithAnyWordsAroundItsNumbers)
{
    TextReader reader;
    SetText(reader,
            "{ Envelope 1 Key 5 0 4 a b c d e f\n"
            "Behaviors 1 1\n"
            "{ Oscillator LW_Oscillator ( 0.5 2 0.25 0.5 1 1 9 ) } }\n"
            "{ x y z 1 2 3 4 5 6 7 a b c\n");
    Envelope envelope;
    envelope.Load(reader);
    ASSERT_EQ(envelope.ModifierCount(), 1u);
    ExpectOscillator(OscillatorAt(envelope, 0), {0.5f, 2.0f, 0.25f, 0.5f, 1.0f, 1.0f, 9.0f});
    ASSERT_TRUE(reader.NextToken(true));
    EXPECT_EQ(reader, u"{");  // a second block is not read
}

TEST(EnvelopeTokenLoader, MissingTokensReadAsZero)
{
    TextReader reader;
    SetText(reader, "{ Envelope 2 Key 5");
    Envelope envelope;
    EXPECT_TRUE(envelope.Load(reader));
    ASSERT_EQ(envelope.KeyCount(), 2u);
    EXPECT_EQ(envelope.Key(0).value, 5.0f);
    EXPECT_EQ(envelope.Key(1).value, 0.0f);
    EXPECT_EQ(envelope.GetPreBehavior(), 0);
    EXPECT_EQ(envelope.GetPostBehavior(), 0);
    EXPECT_EQ(envelope.ModifierCount(), 0u);
}

TEST(EnvelopeTokenLoader, DamagedKeyCountsStayBounded)
{
    TextReader negative;
    SetText(negative, "{ Envelope -3 Behaviors 1 1 }");
    Envelope none;
    none.Load(negative);
    EXPECT_EQ(none.KeyCount(), 0u);

    TextReader huge;
    SetText(huge, "{ Envelope 2147483647 Key 1 0 0 0 0 0 0 0 0");
    Envelope capped;
    capped.Load(huge);
    EXPECT_GT(capped.KeyCount(), 1u);
    EXPECT_LE(capped.KeyCount(), size_t(1) << 20);
    float value = -1.0f;
    capped.Evaluate(0.5f, &value);  // every key past the text is zero
    EXPECT_EQ(value, 0.0f);
}

TEST(ReadFloatOrEnvelopeValue, PlainNumberEnvelopeOrNothing)
{
    std::vector<std::unique_ptr<Envelope>> envelopes;

    TextReader number;
    SetText(number, "  2.75 rest");
    float field = 1.0f;
    ReadFloatOrEnvelope(number, field, envelopes);
    EXPECT_EQ(field, 2.75f);
    EXPECT_TRUE(envelopes.empty());

    TextReader empty;
    SetText(empty, " \n ");
    ReadFloatOrEnvelope(empty, field, envelopes);
    EXPECT_EQ(field, 2.75f);
    EXPECT_TRUE(envelopes.empty());

    TextReader block;
    SetText(block, "{ Envelope 2 Key 0 0 3 0 0 0 0 0 0 Key 8 2 3 0 0 0 0 0 0 Behaviors 1 1 }");
    ReadFloatOrEnvelope(block, field, envelopes);
    EXPECT_EQ(field, 2.75f);  // reading the block writes nothing yet
    ASSERT_EQ(envelopes.size(), 1u);
    envelopes[0]->Update(0.5f);
    EXPECT_EQ(field, 2.0f);
}

TEST(EnvelopeChunkLoader, AllSubChunks)
{
    ChunkBytes data;
    data.Open("NAME").Text("Color.R").Close();
    data.Open("PRE ").U16(3).Close();
    data.Open("POST").U16(5).Close();
    data.Open("KEY ").F32(1).F32(0).U16(0).F32(0.1f).F32(0.2f).F32(0.3f).Close();
    data.Open("KEY ").F32(2).F32(1).U16(1).F32(0.4f).F32(0.5f).Close();
    data.Open("XTRA").U32(99).Close();
    data.Open("KEY ").F32(3).F32(2).U16(5).F32(0.6f).F32(0.7f).F32(0.8f).F32(0.9f).Close();
    data.Open("KEY ").F32(4).F32(3).U16(4).Close();
    data.Open("CHAN").Text("LW_Oscillator").F32(0.5f).F32(2).F32(0.25f).F32(0.5f).F32(1).F32(1).F32(9).Close();
    data.Open("CHAN").Text("LW_Noise").F32(1).F32(1).F32(1).F32(1).F32(1).F32(1).F32(1).Close();
    Chunk chunk(ChunkId("ENVL"), data.bytes.data(), data.bytes.size());

    Envelope envelope;
    envelope.LoadChunks(chunk);
    EXPECT_EQ(envelope.GetName(), u"Color.R");
    EXPECT_EQ(envelope.GetPreBehavior(), 3);
    EXPECT_EQ(envelope.GetPostBehavior(), 5);
    ASSERT_EQ(envelope.KeyCount(), 4u);
    ExpectParams(envelope.Key(0), {0.1f, 0.2f, 0.3f, 0, 0, 0});
    ExpectParams(envelope.Key(1), {0.4f, 0.5f, 0, 0, 0, 0});
    EXPECT_EQ(envelope.Key(2).value, 3.0f);
    EXPECT_EQ(envelope.Key(2).time, 2.0f);
    ExpectParams(envelope.Key(2), {0.6f, 0.7f, 0.8f, 0.9f, 0, 0});
    EXPECT_EQ(envelope.Key(3).shape, 4u);
    ASSERT_EQ(envelope.ModifierCount(), 1u);
    ExpectOscillator(OscillatorAt(envelope, 0), {0.5f, 2.0f, 0.25f, 0.5f, 1.0f, 1.0f, 9.0f});
}

TEST(EnvelopeChunkLoader, CutShortKeysReadZeros)
{
    ChunkBytes data;
    data.Open("KEY ").F32(6).F32(2).Close();      // no shape, no parameters
    data.Open("KEY ").F32(7).Raw("\x00\x00", 2);  // the body ends inside the time
    data.Close();
    Chunk chunk(0, data.bytes.data(), data.bytes.size());
    Envelope envelope;
    envelope.LoadChunks(chunk);
    ASSERT_EQ(envelope.KeyCount(), 2u);
    EXPECT_EQ(envelope.Key(0).value, 6.0f);
    EXPECT_EQ(envelope.Key(0).shape, 0u);
    ExpectParams(envelope.Key(0), {0, 0, 0, 0, 0, 0});
    EXPECT_EQ(envelope.Key(1).value, 7.0f);
    EXPECT_EQ(envelope.Key(1).time, 0.0f);
}

std::unique_ptr<XmlNode> Element(const char16_t* name, std::vector<std::pair<String, String>> attributes)
{
    auto node = std::make_unique<XmlNode>();
    node->name = name;
    for (auto& [attribute, value] : attributes) {
        node->attributeNames.push_back(attribute);
        node->attributeValues.push_back(value);
    }
    return node;
}

struct NoRepeats {
    float subdivisionScaleRepeats = 0.0f;
};
struct Repeating {
    float subdivisionScaleRepeats = 2.0f;
};

TEST(EnvelopeElementLoader, KeysFromChildAttributes)
{
    auto curve = Element(u"Size", {{u"preBEHAVIOR", u"0"}});
    curve->children.push_back(Element(
        u"Key", {{u"Time", u"0.5"}, {u"Value", u"2"}, {u"Shape", u"Bezier"}, {u"Params", u"1, 2,3 ,, 4  5,6"}}));
    curve->children.push_back(Element(u"Key", {{u"TIME", u"1.5"}, {u"value", u"4"}, {u"Shape", u"Linear"}}));
    curve->children.push_back(Element(u"Key", {{u"Time", u"2"}, {u"Shape", u"linear"}, {u"Params", u"9 9"}}));
    // Attributes before the key's "Time" have no key to go to.
    curve->children.push_back(Element(u"Key", {{u"Value", u"8"}, {u"Time", u"3"}, {u"Shape", u"Stepped"}}));
    curve->children.push_back(Element(u"Key", {{u"Shape", u"TCB"}}));

    Envelope envelope;
    envelope.SetPreBehavior(Envelope::BehaviorLinear);
    envelope.SetPostBehavior(Envelope::BehaviorLinear);
    envelope.LoadElement(NoRepeats{}, *curve, 0.0f);
    EXPECT_EQ(envelope.GetPreBehavior(), Envelope::BehaviorConstant);  // present, value unread
    EXPECT_EQ(envelope.GetPostBehavior(), Envelope::BehaviorLinear);
    ASSERT_EQ(envelope.KeyCount(), 4u);
    EXPECT_EQ(envelope.Key(0).time, 0.5f);
    EXPECT_EQ(envelope.Key(0).value, 2.0f);
    EXPECT_EQ(envelope.Key(0).shape, uint32_t(Key::ShapeBezier));
    ExpectParams(envelope.Key(0), {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(envelope.Key(1).value, 4.0f);
    EXPECT_EQ(envelope.Key(1).shape, uint32_t(Key::ShapeLinear));
    EXPECT_EQ(envelope.Key(2).shape, uint32_t(Key::ShapeTCB));  // shape words are case-sensitive
    ExpectParams(envelope.Key(2), {9, 9, 0, 0, 0, 0});
    EXPECT_EQ(envelope.Key(3).value, 0.0f);
    EXPECT_EQ(envelope.Key(3).shape, uint32_t(Key::ShapeStepped));
}

TEST(EnvelopeElementLoader, RepeatingCurvesSqueezeTheirTimesIntoOneCycle)
{
    auto curve = Element(u"SubdivisionScale", {});
    curve->children.push_back(Element(u"Key", {{u"Time", u"0"}, {u"Value", u"0"}, {u"Shape", u"Linear"}}));
    curve->children.push_back(Element(u"Key", {{u"Time", u"1"}, {u"Value", u"6"}, {u"Shape", u"Linear"}}));
    Envelope envelope;
    envelope.LoadElement(Repeating{}, *curve, 3.0f);
    EXPECT_EQ(envelope.GetPostBehavior(), Envelope::BehaviorRepeat);
    EXPECT_EQ(envelope.Key(1).time, 0.25f);
    float value = 0.0f;
    envelope.Evaluate(0.375f, &value);  // half way through the second cycle
    EXPECT_FLOAT_EQ(value, 3.0f);
}

TEST(EnvelopeElementLoader, FromAnXmlDocument)
{
    const std::string_view text =
        "<Emitter><Size PostBehavior=\"whatever\">"
        "<Key Time=\"0\" Value=\"1\" Shape=\"Stepped\"/><Key Time=\"2\" Value=\"3\" Shape=\"Linear\"/>"
        "</Size></Emitter>";
    auto bytes = std::make_unique<uint8_t[]>(text.size());
    std::memcpy(bytes.get(), text.data(), text.size());
    XmlDocument document;
    ASSERT_TRUE(document.Parse(std::move(bytes), int64_t(text.size())));
    ASSERT_NE(document.GetRoot(), nullptr);
    ASSERT_EQ(document.GetRoot()->children.size(), 1u);
    Envelope envelope;
    envelope.SetPostBehavior(Envelope::BehaviorReset);
    envelope.LoadElement(NoRepeats{}, *document.GetRoot()->children[0], 0.0f);
    ASSERT_EQ(envelope.KeyCount(), 2u);
    EXPECT_EQ(envelope.GetPostBehavior(), Envelope::BehaviorConstant);
    float value = 0.0f;
    envelope.Evaluate(1.0f, &value);
    EXPECT_EQ(value, 2.0f);
}

}  // namespace
}  // namespace qx4d
