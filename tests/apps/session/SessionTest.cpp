// EffectSession, the driver that qxfx and the frei0r filter share: it selects and sets up
// the effect as an editor does and renders frames the way the host renders them.
#include "apps/session/EffectSession.h"
#include "platform/os/WideText.h"
#include "tests/host/EffectHarness.h"
#include "tests/host/ProcessorEffects.h"

#include <gtest/gtest.h>

#include <cstring>

namespace qx::qxfx {
namespace {

TEST(EffectDefaults, ComeFromTheCatalogueById)
{
    EXPECT_EQ(defaultParamsText(0), "100;100;900;900;");
    EXPECT_EQ(defaultParamsText(6), "0;0;500;500;500;500;1000;1000;");
    EXPECT_EQ(defaultParamsText(2001), "1;");
    EXPECT_EQ(defaultParamsText(10), "");
    // 16 is a table index, not an id.
    EXPECT_EQ(defaultParamsText(16), std::nullopt);
}

std::string refusal(const EffectSettings& settings, int width = 8, int height = 8)
{
    try {
        EffectSession session(settings, width, height);
    } catch (const CommandError& error) {
        return error.what();
    }
    return "";
}

TEST(EffectSessionSetup, RefusalsNameTheProblem)
{
    EffectSettings unknown;
    unknown.effectId = 16;
    EXPECT_NE(refusal(unknown).find("unknown effect id 16"), std::string::npos);

    EffectSettings tooMany;
    tooMany.params = "1;2;3;4;5;6;7;8;9;10;11;12;13;14;15;16;17;";
    EXPECT_NE(refusal(tooMany).find("refused"), std::string::npos);

    EffectSettings longSource;
    longSource.source = std::string(260, 's');
    EXPECT_NE(refusal(longSource).find("source path longer than 259"), std::string::npos);
    longSource.source = std::string(259, 's');
    EXPECT_EQ(refusal(longSource), "");

    EXPECT_NE(refusal(EffectSettings{}, 0, 8).find("out of range"), std::string::npos);

    // The external filter with its defaults names a filter class that nothing registered.
    EffectSettings external;
    external.effectId = 10000;
    EXPECT_NE(refusal(external).find("(0x80040154, class not registered)"), std::string::npos) << refusal(external);
}

TEST(EffectSessionFrames, RenderAsTheHostDoes)
{
    constexpr int kWidth = 40;
    constexpr int kHeight = 24;
    const auto in = test::gradientFrame(kWidth, kHeight);
    EffectSettings settings;
    settings.effectId = 3;  // pan from right to left, with its default rectangle
    EffectSession session(settings, kWidth, kHeight);
    std::memcpy(session.input().samples.data(), in.data(), in.size() * sizeof(uint32_t));
    for (const float progress : {0.0f, 0.4f, 1.0f}) {
        session.process(progress);
        test::EffectHarness harness(kWidth, kHeight);
        harness.setInput(in);
        ASSERT_EQ(harness.select(3, u"250;250;750;750;"), S_OK);
        ASSERT_EQ(harness.setup(), S_OK);
        ASSERT_EQ(harness.execute(progress), S_OK);
        EXPECT_EQ(session.output().samples, harness.output()) << "progress " << progress;
    }
    // Progress outside 0..1 is held to it rather than refused by the host.
    session.process(1.5f);
    const auto atEnd = session.output().samples;
    session.process(1.0f);
    EXPECT_EQ(session.output().samples, atEnd);
}

TEST(EffectSessionFrames, InPlaceFramesAreTheCopiedOnes)
{
    // Frames rendered in their own buffers (the surfaces put over each frame's samples,
    // the output changing places with them, or one buffer as both) against frames
    // copied in and out. An effect
    // with state or random draws gives another frame at each Execute; only those that
    // repeat themselves at one progress can be compared this way.
    constexpr int kWidth = 61;
    constexpr int kHeight = 40;
    const auto gradient = test::gradientFrame(kWidth, kHeight);
    int compared = 0;
    for (const EffectDescriptor& effect : EffectTable) {
        if (!test::computedOnTheProcessor(effect)) continue;
        EffectSettings settings;
        settings.effectId = effect.id;
        settings.params = os::toUtf8(test::workingParams(effect));
        EffectSession session(settings, kWidth, kHeight);
        std::copy(gradient.begin(), gradient.end(), session.input().samples.begin());
        bool repeats = true;
        for (const float progress : {0.0f, 0.5f, 1.0f}) {
            session.process(progress);
            const std::vector<uint32_t> copied = session.output().samples;
            session.process(progress);
            repeats = session.output().samples == copied;
            if (!repeats) break;
            Frame frame{kWidth, kHeight, gradient};
            const bool changed = session.processInPlace(frame, progress);
            EXPECT_EQ(frame.samples, copied) << "effect " << effect.id << ", progress " << progress;
            EXPECT_EQ(changed, copied != gradient) << "effect " << effect.id;
            // A host that hands one buffer as both input and output, as some frei0r hosts do.
            std::vector<uint32_t> shared = gradient;
            session.processBetween(shared, shared, progress);
            EXPECT_EQ(shared, copied) << "effect " << effect.id << ", one buffer, progress " << progress;
        }
        compared += repeats;
    }
    // The pans, zooms, fades and colour effects at least.
    EXPECT_GE(compared, 12);

    EffectSession session(EffectSettings{}, kWidth, kHeight);
    Frame wrongSize = makeFrame(kWidth, kHeight + 1);
    EXPECT_THROW(session.processInPlace(wrongSize, 0.0f), CommandError);
}

}  // namespace
}  // namespace qx::qxfx
