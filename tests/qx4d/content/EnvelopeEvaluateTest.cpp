// Curves checked against tests/qx4d/content/envelope_reference.py, which computes them
// from the written rules with its own code.
#include "qx4d/content/Envelope.h"
#include "qx4d/content/HarmonicOscillator.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace qx4d {
namespace {

struct KeyData {
    float value;
    float time;
    uint32_t shape;
    std::array<float, 6> params;
};

void AddKeys(Envelope& envelope, const std::vector<KeyData>& keyData)
{
    for (const KeyData& data : keyData) {
        Key& key = envelope.AddKey(data.value, data.time, data.shape);
        std::copy(data.params.begin(), data.params.end(), key.params);
    }
}

float At(Envelope& envelope, float t)
{
    float value = std::numeric_limits<float>::quiet_NaN();
    envelope.Evaluate(t, &value);
    return value;
}

// The results are floats rounded from the same double expressions; allow one or two units
// in the last place for the order in which a compiler may group the products.
void ExpectCurve(Envelope& envelope, const std::vector<float>& times, const std::vector<float>& expected)
{
    ASSERT_EQ(times.size(), expected.size());
    for (size_t i = 0; i < times.size(); ++i) {
        EXPECT_NEAR(At(envelope, times[i]), expected[i], std::fabs(expected[i]) * 3e-7f + 1e-6f) << "t = " << times[i];
    }
}

constexpr uint32_t kTCB = Key::ShapeTCB, kHermite = Key::ShapeHermite, kLinear = Key::ShapeLinear,
                   kStepped = Key::ShapeStepped, kBezier = Key::ShapeBezier;

TEST(EnvelopeCurve, TensionContinuityBias)
{
    Envelope envelope;
    AddKeys(envelope, {{0, 0, kTCB, {}},
                       {10, 1, kTCB, {0.5f, 0, 0}},
                       {4, 3, kTCB, {0, -0.5f, 0.3f}},
                       {8, 4, kTCB, {-0.2f, 0.4f, -0.6f}}});
    ExpectCurve(envelope, {0.25f, 0.5f, 1.5f, 2.0f, 2.75f, 3.5f},
                {2.9375f, 6.16666651f, 9.57187462f, 8.02499962f, 4.93320322f, 5.86850023f});
}

TEST(EnvelopeCurve, HermiteTangentsScaledByTheNeighbouringSpan)
{
    Envelope envelope;
    AddKeys(envelope, {{0, 0, kHermite, {1, 2}}, {5, 2, kHermite, {3, -1}}, {2, 5, kHermite, {0.5f, 0.5f}}});
    ExpectCurve(envelope, {0.5f, 1.0f, 3.0f, 4.5f}, {1.00625002f, 2.5999999f, 4.09629631f, 2.1504631f});
}

TEST(EnvelopeCurve, LinearAndStepped)
{
    Envelope linear;
    AddKeys(linear, {{1, 0, kLinear, {}}, {3, 2, kLinear, {}}, {-1, 4, kLinear, {}}});
    ExpectCurve(linear, {0.5f, 1.0f, 3.0f, 3.9f}, {1.5f, 2.0f, 1.0f, -0.800000191f});

    // A stepped segment holds the value of the key that begins it; at a key's own time
    // the segment that ends there is the one taken.
    Envelope stepped;
    AddKeys(stepped, {{2, 0, kStepped, {}}, {7, 1, kStepped, {}}, {3, 2, kStepped, {}}});
    ExpectCurve(stepped, {0.5f, 1.0f, 1.5f, 2.0f}, {2, 2, 7, 3});
}

TEST(EnvelopeCurve, SegmentsWithoutCurveLeaveOnlyTheModifiers)
{
    Envelope envelope;
    AddKeys(envelope, {{5, 0, kLinear, {}}, {9, 1, Key::ShapeNone, {}}, {1, 2, 17, {}}});
    auto oscillator = std::make_unique<HarmonicOscillator>();
    oscillator->offset = 0.5f;
    oscillator->end = 10.0f;
    envelope.AddModifier(std::move(oscillator));
    ExpectCurve(envelope, {0.5f, 1.5f}, {0.5f, 0.5f});
}

TEST(EnvelopeCurve, BezierHandles)
{
    Envelope envelope;
    AddKeys(envelope, {{0, 0, kBezier, {-0.3f, 0, 0.5f, 2}},
                       {10, 2, kBezier, {-0.5f, -1, 0.4f, 0}},
                       {4, 3, kBezier, {-0.25f, 3, 0, 0}}});
    ExpectCurve(envelope, {0.1f, 0.7f, 1.3f, 1.9f, 2.5f},
                {0.433746636f, 3.66101718f, 7.03479338f, 9.74299526f, 8.48171234f});
}

TEST(EnvelopeCurve, BezierAfterAnotherShapeTakesAThirdOfTheSpan)
{
    Envelope envelope;
    AddKeys(envelope, {{0, 0, kTCB, {0, 3, 0}}, {6, 3, kBezier, {-1, 0.5f}}});
    ExpectCurve(envelope, {0.4f, 1.5f, 2.6f}, {0.614914477f, 3.5625f, 5.90497828f});
}

TEST(EnvelopeCurve, HermiteSegmentsUseBezierHandlesAsTangents)
{
    Envelope envelope;
    AddKeys(envelope, {{1, 0, kBezier, {0, 0, 0.5f, 1.5f}}, {3, 2, kTCB, {}}, {2, 3, kBezier, {0.5f, 0.25f}}});
    ExpectCurve(envelope, {0.5f, 1.5f, 2.5f}, {2.125f, 2.875f, 2.80712533f});
}

TEST(EnvelopeCurve, BezierThatCannotReachTheTimeStillEnds)
{
    // Handles far outside the segment: the time cubic never comes near t. The search is
    // capped instead of running for ever; the value must just be a number.
    Envelope envelope;
    AddKeys(envelope, {{0, 0, kBezier, {0, 0, 50, 0}}, {1, 1, kBezier, {-50, 0}}});
    const float value = At(envelope, 0.5f);
    EXPECT_TRUE(std::isfinite(value));
}

class EnvelopeBehavior : public testing::TestWithParam<int> {};

// Keys at 1, 3 and 4 with values 2, 6 and 4; the same code before and after.
TEST_P(EnvelopeBehavior, BeforeAndAfterTheKeys)
{
    static const std::vector<float> times = {-2.5f, 0.0f, 1.0f, 4.0f, 5.5f, 7.25f, 9.0f};
    static const std::vector<std::vector<float>> expected = {
        {0, 0, 0, 0, 0, 0, 0},                         // reset, 0 at the end keys too
        {2, 2, 2, 4, 4, 4, 4},                         // constant
        {5.25833321f, 6, 2, 2, 5, 2.5f, 6},            // repeat
        {5.25833321f, 4, 2, 4, 5, 2.5f, 6},            // oscillate
        {1.25833333f, 4, 2, 4, 7, 6.5f, 10},           // offset repeat
        {-5, 0, 2, 4, 1.9000001f, -0.549999952f, -3},  // linear
    };
    Envelope envelope;
    AddKeys(envelope, {{2, 1, kTCB, {}}, {6, 3, kLinear, {}}, {4, 4, kTCB, {0.3f, 0, 0}}});
    envelope.SetPreBehavior(GetParam());
    envelope.SetPostBehavior(GetParam());
    ExpectCurve(envelope, times, expected[size_t(GetParam())]);
}

INSTANTIATE_TEST_SUITE_P(AllCodes, EnvelopeBehavior, testing::Range(0, 6));

TEST(EnvelopeBehaviorEdges, OffsetRepeatOneSpanPastTheLastKeyAddsTheDifferenceOnce)
{
    Envelope envelope;
    AddKeys(envelope, {{1, 0, kLinear, {}}, {4, 2, kLinear, {}}});
    envelope.SetPostBehavior(Envelope::BehaviorOffsetRepeat);
    EXPECT_FLOAT_EQ(At(envelope, 4.0f), 4.0f + 3.0f);
    EXPECT_FLOAT_EQ(At(envelope, 5.0f), 1.0f + 1.5f + 2 * 3.0f);
}

TEST(EnvelopeBehaviorEdges, LinearAfterALinearLastKeyFollowsTheLastSegment)
{
    // With no key after it, the incoming tangent of a linear key is the value step.
    Envelope envelope;
    AddKeys(envelope, {{0, 0, kLinear, {}}, {1, 1, kLinear, {}}, {5, 3, kLinear, {}}});
    envelope.SetPostBehavior(Envelope::BehaviorLinear);
    EXPECT_FLOAT_EQ(At(envelope, 4.0f), 5.0f + 1.0f * 4.0f / 2.0f);
}

TEST(EnvelopeBehaviorEdges, UnknownCodesFallThroughToTheEndSegment)
{
    Envelope envelope;
    AddKeys(envelope, {{0, 0, kLinear, {}}, {10, 1, kLinear, {}}});
    envelope.SetPreBehavior(9);
    envelope.SetPostBehavior(-3);
    EXPECT_FLOAT_EQ(At(envelope, 5.0f), 10.0f);    // the time is clamped to the last key
    EXPECT_FLOAT_EQ(At(envelope, -1.0f), -10.0f);  // the first segment, extended
}

TEST(EnvelopeKeys, FewerThanTwoKeysIgnoreTheBehaviours)
{
    Envelope none;
    EXPECT_EQ(At(none, 3.0f), 0.0f);
    Envelope one;
    one.AddKey(7.5f, 2.0f);
    one.SetPreBehavior(Envelope::BehaviorReset);
    one.SetPostBehavior(Envelope::BehaviorLinear);
    for (float t : {-10.0f, 2.0f, 100.0f}) {
        EXPECT_EQ(At(one, t), 7.5f);
    }
}

TEST(EnvelopeKeys, UpdateWritesTheTargetOrTheEnvelopesOwnStorage)
{
    float field = -1.0f;
    Envelope bound(&field);
    bound.AddKey(3.0f, 0.0f, kLinear);
    bound.AddKey(5.0f, 2.0f, kLinear);
    bound.Update(1.0f);
    EXPECT_EQ(field, 4.0f);

    Envelope own;
    ASSERT_NE(own.GetTarget(), nullptr);
    own.AddKey(9.0f, 0.0f);
    own.Update(0.0f);
    EXPECT_EQ(*own.GetTarget(), 9.0f);
}

TEST(EnvelopeKeys, FallingTimesGiveTheSameCurveAsRisingTimes)
{
    // The search starts from the last segment only when that lies before t.
    Envelope envelope;
    AddKeys(envelope, {{0, 0, kLinear, {}}, {1, 1, kLinear, {}}, {5, 2, kLinear, {}}, {6, 3, kLinear, {}}});
    const std::vector<float> times = {0.5f, 1.5f, 2.5f, 2.9f, 1.2f, 0.1f, 2.2f};
    const std::vector<float> expected = {0.5f, 3.0f, 5.5f, 5.9f, 1.8f, 0.1f, 5.2f};
    ExpectCurve(envelope, times, expected);
}

TEST(EnvelopeKeys, NewModifiersGoToTheFront)
{
    Envelope envelope;
    auto first = std::make_unique<HarmonicOscillator>();
    const HarmonicOscillator* firstPointer = first.get();
    envelope.AddModifier(std::move(first));
    envelope.AddModifier(std::make_unique<HarmonicOscillator>());
    ASSERT_EQ(envelope.ModifierCount(), 2u);
    EXPECT_EQ(&envelope.ModifierAt(1), firstPointer);
}

TEST(HarmonicOscillatorWave, DampingBothWays)
{
    // frequency, amplitude, phase, damping, offset, start, end
    const std::array<float, 7> damped = {0.5f, 2.0f, 0.25f, 0.5f, 1.0f, 1.0f, 9.0f};
    const HarmonicOscillator positive(damped);
    const std::vector<float> times = {0.5f, 1.0f, 2.3f, 5.0f, 9.0f, 9.5f};
    const std::vector<float> expected = {0, 1.49480796f, -0.184432626f, 1.12370217f, 1.03092563f, 0};
    for (size_t i = 0; i < times.size(); ++i) {
        EXPECT_NEAR(positive.Apply(times[i]), expected[i], 1e-6f) << "t = " << times[i];
    }

    const HarmonicOscillator negative(std::array<float, 7>{2.0f, 1.5f, 0.0f, -0.5f, 0.0f, 0.0f, 4.0f});
    EXPECT_NEAR(negative.Apply(0.3f), -1.33637416f, 1e-6f);
    EXPECT_NEAR(negative.Apply(1.1f), 6.55486393f, 4e-6f);
    EXPECT_NEAR(negative.Apply(4.0f), 0.000537125568f, 1e-6f);
    EXPECT_EQ(negative.Apply(4.01f), 0.0f);

    const HarmonicOscillator undamped(std::array<float, 7>{1.0f, 3.0f, 1.0f, 0.0f, -1.0f, 2.0f, 3.0f});
    EXPECT_EQ(undamped.Apply(1.99f), 0.0f);
    EXPECT_NEAR(undamped.Apply(2.0f), 1.52441287f, 1e-6f);  // offset + 3 sin(1)
    EXPECT_NEAR(undamped.Apply(2.2f), 1.32166004f, 1e-6f);
}

TEST(HarmonicOscillatorWave, HalfDampingQuartersTheWaveAfterTwoPeriods)
{
    HarmonicOscillator oscillator;
    oscillator.frequency = 1.0f;
    oscillator.amplitude = 4.0f;
    oscillator.phase = 1.5707964f;  // a crest at every whole period
    oscillator.damping = 0.5f;
    oscillator.end = 10.0f;
    EXPECT_NEAR(oscillator.Apply(2.0f), 1.0f, 1e-5f);
}

TEST(HarmonicOscillatorWave, ModifiersAddToTheCurve)
{
    Envelope envelope;
    AddKeys(envelope, {{0, 0, kLinear, {}}, {4, 2, kLinear, {}}});
    // Added last, evaluated first.
    envelope.AddModifier(
        std::make_unique<HarmonicOscillator>(std::array<float, 7>{2.0f, 1.5f, 0.0f, -0.5f, 0.0f, 0.0f, 4.0f}));
    envelope.AddModifier(
        std::make_unique<HarmonicOscillator>(std::array<float, 7>{0.5f, 2.0f, 0.25f, 0.5f, 1.0f, 1.0f, 9.0f}));
    ExpectCurve(envelope, {0.5f, 1.5f, 3.0f}, {1.00000048f, 5.62951612f, 5.24750471f});
}

}  // namespace
}  // namespace qx4d
