// The frei0r filter: host time to progress, its instances against the effect host run
// directly, and the exported entry points as a host loads them.
#include "plugins/frei0r/Frei0rFilter.h"
#include "tests/host/EffectHarness.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace qx::frei0r {
namespace {

TEST(Frei0rProgress, FollowsHostTimeOverTheSpan)
{
    // A span value of 0.00025 is 0.25 s; ffmpeg's 62.5 ms is a quarter of it.
    EXPECT_FLOAT_EQ(progressAt(62.5, true, 0.00025, 0.9), 0.25f);
    // MLT and GStreamer give seconds: 2 s of a 4 s span.
    EXPECT_FLOAT_EQ(progressAt(2.0, false, 0.004, 0.9), 0.5f);
    // Before the start and past the end the progress stays in 0..1.
    EXPECT_FLOAT_EQ(progressAt(-1.0, false, 0.004, 0.9), 0.0f);
    EXPECT_FLOAT_EQ(progressAt(10.0, false, 0.004, 0.9), 1.0f);
    // The unit matters: 2 read as milliseconds is 0.002 s of 4 s.
    EXPECT_FLOAT_EQ(progressAt(2.0, true, 0.004, 0.9), 0.0005f);
}

TEST(Frei0rProgress, ExplicitProgressWithoutSpan)
{
    EXPECT_FLOAT_EQ(progressAt(123.0, false, 0.0, 0.3), 0.3f);
    EXPECT_FLOAT_EQ(progressAt(123.0, false, 0.0, 7.0), 1.0f);
    EXPECT_FLOAT_EQ(progressAt(123.0, false, 0.0, NAN), 0.0f);
    // A NaN span counts as none.
    EXPECT_FLOAT_EQ(progressAt(123.0, false, NAN, 0.6), 0.6f);
}

TEST(Frei0rProgress, SpanInSecondsTakesPrecedenceOverTheDurationValue)
{
    InstanceValues values;
    values.texts.assign(kGenericCount, "");
    values.numbers.assign(kGenericCount, 0.0);
    values.numbers[kDuration] = 0.004;
    EXPECT_DOUBLE_EQ(spanOfValues(values, kGenericPlugin), 4.0);
    values.texts[kSpan] = "2.5";
    EXPECT_DOUBLE_EQ(spanOfValues(values, kGenericPlugin), 2.5);
    // Text that is not seconds within a day falls back on the duration value.
    for (const char* bad : {"10s", "-3", "0", "90000", "ten"}) {
        values.texts[kSpan] = bad;
        EXPECT_DOUBLE_EQ(spanOfValues(values, kGenericPlugin), 4.0) << bad;
    }
    EXPECT_FLOAT_EQ(progressOver(1.25, 2.5, 0.9), 0.5f);
}

TEST(Frei0rProgress, TheClockTellsMillisecondsFromSecondsByTheFrameStep)
{
    // ffmpeg without the flag: 40 ms apart reads as milliseconds from the second frame on.
    HostClock ffmpeg;
    EXPECT_DOUBLE_EQ(ffmpeg.seconds(0.0, false), 0.0);
    EXPECT_DOUBLE_EQ(ffmpeg.seconds(40.0, false), 0.04);
    EXPECT_DOUBLE_EQ(ffmpeg.seconds(5000.0, false), 5.0);
    // MLT: seconds stay seconds, even after a seek far ahead.
    HostClock mlt;
    mlt.seconds(0.0, false);
    EXPECT_DOUBLE_EQ(mlt.seconds(0.04, false), 0.04);
    EXPECT_DOUBLE_EQ(mlt.seconds(300.0, false), 300.0);
    // The flag always means milliseconds.
    HostClock flagged;
    EXPECT_DOUBLE_EQ(flagged.seconds(500.0, true), 0.5);
}

constexpr int kWidth = 48;
constexpr int kHeight = 32;

std::vector<uint32_t> runFilter(Frei0rFilter& filter, double time, const std::vector<uint32_t>& in)
{
    std::vector<uint32_t> out(in.size(), 0x12345678u);
    filter.update(time, in.data(), out.data());
    return out;
}

std::vector<uint32_t> runHost(LONG id, std::u16string_view params, float progress, const std::vector<uint32_t>& in)
{
    test::EffectHarness harness(kWidth, kHeight);
    harness.setInput(in);
    EXPECT_EQ(harness.select(id, params), S_OK);
    EXPECT_EQ(harness.setup(), S_OK);
    EXPECT_EQ(harness.execute(progress), S_OK);
    return harness.output();
}

void setText(Frei0rFilter& filter, int index, const char* text) { filter.setText(index, text); }

TEST(Frei0rFilterInstance, RendersAsTheHostDoes)
{
    const auto in = test::gradientFrame(kWidth, kHeight);
    Frei0rFilter filter(kGenericPlugin, kWidth, kHeight);
    setText(filter, kEffect, "2");
    setText(filter, kParams, "250;250;750;750;");
    filter.setNumber(kProgress, 0.5);
    const auto out = runFilter(filter, 0.0, in);
    EXPECT_NE(out, in);
    EXPECT_EQ(out, runHost(2, u"250;250;750;750;", 0.5f, in));
}

TEST(Frei0rFilterInstance, EmptyParameterTextTakesTheDefaults)
{
    const auto in = test::gradientFrame(kWidth, kHeight);
    Frei0rFilter filter(kGenericPlugin, kWidth, kHeight);
    setText(filter, kEffect, "0");
    filter.setNumber(kProgress, 0.0);
    EXPECT_EQ(runFilter(filter, 0.0, in), runHost(0, u"100;100;900;900;", 0.0f, in));
}

TEST(Frei0rFilterInstance, SpanMakesProgressFollowTime)
{
    const auto in = test::gradientFrame(kWidth, kHeight);
    Frei0rFilter filter(kGenericPlugin, kWidth, kHeight);
    setText(filter, kEffect, "3");
    filter.setNumber(kDuration, 0.002);  // 2 s
    filter.setNumber(kProgress, 1.0);    // ignored while a span is set
    EXPECT_EQ(runFilter(filter, 0.5, in), runHost(3, u"250;250;750;750;", 0.25f, in));
    filter.setNumber(kMilliseconds, 1.0);
    EXPECT_EQ(runFilter(filter, 1500.0, in), runHost(3, u"250;250;750;750;", 0.75f, in));
}

TEST(Frei0rFilterInstance, RefusedSettingsPassFramesThrough)
{
    const auto in = test::gradientFrame(kWidth, kHeight);
    Frei0rFilter filter(kGenericPlugin, kWidth, kHeight);
    filter.setNumber(kProgress, 0.5);
    for (const char* effect : {"16", "abc", "", "0x2", "99999999999"}) {
        setText(filter, kEffect, effect);
        EXPECT_EQ(runFilter(filter, 0.0, in), in) << "effect '" << effect << "'";
    }
    setText(filter, kEffect, "2");
    setText(filter, kParams, "1;2;3;4;5;6;7;8;9;10;11;12;13;14;15;16;17;");
    EXPECT_EQ(runFilter(filter, 0.0, in), in);
    // A good text again brings the effect back.
    setText(filter, kParams, "250;250;750;750;");
    EXPECT_NE(runFilter(filter, 0.0, in), in);
}

TEST(Frei0rFilterInstance, GivesBackWhatWasSet)
{
    Frei0rFilter filter(kGenericPlugin, kWidth, kHeight);
    setText(filter, kSource, "scenes/a.afx");
    filter.setNumber(kProgress, 0.25);
    const char* text = nullptr;
    filter.getValue(kSource, &text);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "scenes/a.afx");
    filter.getValue(kEffect, &text);
    EXPECT_STREQ(text, "0");
    double value = -1.0;
    filter.getValue(kProgress, &value);
    EXPECT_EQ(value, 0.25);
}

TEST(Frei0rRectangleFilter, SidesBecomeTheParameterList)
{
    const auto in = test::gradientFrame(kWidth, kHeight);
    Frei0rFilter filter(kRectanglePlugin, kWidth, kHeight);
    setText(filter, kRectEffect, "2");
    for (const int side : {kLeft, kTop}) filter.setNumber(side, 0.25);
    for (const int side : {kRight, kBottom}) filter.setNumber(side, 0.75);
    filter.setNumber(kRectProgress, 0.5);
    EXPECT_EQ(runFilter(filter, 0.0, in), runHost(2, u"250;250;750;750;", 0.5f, in));
    // Sides are held to the frame.
    filter.setNumber(kLeft, -3.0);
    filter.setNumber(kRight, 7.0);
    EXPECT_EQ(runFilter(filter, 0.0, in), runHost(2, u"0;250;1000;750;", 0.5f, in));
}

TEST(Frei0rRectangleFilter, TwoRectanglesForTheEffectThatReadsTwo)
{
    const auto in = test::gradientFrame(kWidth, kHeight);
    Frei0rFilter filter(kRectanglePlugin, kWidth, kHeight);
    setText(filter, kRectEffect, "6");
    const double sides[] = {0.0, 0.1, 0.4, 0.5, 0.6, 0.5, 1.0, 0.9};
    for (int i = 0; i < 8; ++i) filter.setNumber(kLeft + i, sides[i]);
    filter.setNumber(kRectProgress, 0.3);
    EXPECT_EQ(runFilter(filter, 0.0, in), runHost(6, u"0;100;400;500;600;500;1000;900;", 0.3f, in));
}

TEST(Frei0rRectangleFilter, EffectsWithoutRectanglesPassThrough)
{
    const auto in = test::gradientFrame(kWidth, kHeight);
    Frei0rFilter filter(kRectanglePlugin, kWidth, kHeight);
    filter.setNumber(kRectProgress, 0.5);
    // A fade holds a colour, the puzzle four counts in another category, 16 is no id.
    for (const char* effect : {"7", "12", "16", "x"}) {
        setText(filter, kRectEffect, effect);
        EXPECT_EQ(runFilter(filter, 0.0, in), in) << "effect " << effect;
    }
}

// The module as hosts see it: loaded by path, entry points found by name.
class Frei0rModule : public ::testing::Test {
protected:
    void SetUp() override
    {
        handle_ = dlopen(QX_FREI0R_MODULE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(handle_, nullptr) << dlerror();
        EXPECT_EQ(entry<int()>("f0r_init")(), 1);
    }
    // As a frei0r host does: deinit before unloading, which lets the scene context go
    // while the module is still there (unloading alone leaves it to the process).
    void TearDown() override
    {
        if (!handle_) return;
        entry<void()>("f0r_deinit")();
        dlclose(handle_);
    }
    template <typename F>
    F* entry(const char* name)
    {
        auto* symbol = reinterpret_cast<F*>(dlsym(handle_, name));
        EXPECT_NE(symbol, nullptr) << name;
        return symbol;
    }
    void* handle_ = nullptr;
};

TEST_F(Frei0rModule, DescribesAFilterOnBgraWithItsParameters)
{
    f0r_plugin_info_t info{};
    entry<void(f0r_plugin_info_t*)>("f0r_get_plugin_info")(&info);
    EXPECT_STREQ(info.name, "qxfx");
    EXPECT_EQ(info.plugin_type, F0R_PLUGIN_TYPE_FILTER);
    EXPECT_EQ(info.color_model, F0R_COLOR_MODEL_BGRA8888);
    ASSERT_EQ(info.num_params, 8);
    auto* paramInfo = entry<void(f0r_param_info_t*, int)>("f0r_get_param_info");
    for (int i = 0; i < info.num_params; ++i) {
        f0r_param_info_t param{};
        paramInfo(&param, i);
        ASSERT_NE(param.name, nullptr);
        EXPECT_NE(param.type, F0R_PARAM_POSITION) << param.name;
    }
    // Indexes outside the list leave the record as it was.
    f0r_param_info_t untouched{"x", 99, "y"};
    paramInfo(&untouched, 8);
    paramInfo(&untouched, -1);
    EXPECT_EQ(untouched.type, 99);
    // Only the frei0r entry points are visible, not the library inside.
    EXPECT_EQ(dlsym(handle_, "SysAllocString"), nullptr);
}

TEST_F(Frei0rModule, RefusesUnusableSizesAndNullArguments)
{
    auto* construct = entry<f0r_instance_t(unsigned, unsigned)>("f0r_construct");
    auto* destruct = entry<void(f0r_instance_t)>("f0r_destruct");
    auto* update = entry<void(f0r_instance_t, double, const uint32_t*, uint32_t*)>("f0r_update");
    auto* setParam = entry<void(f0r_instance_t, f0r_param_t, int)>("f0r_set_param_value");
    EXPECT_EQ(construct(0, 10), nullptr);
    EXPECT_EQ(construct(10, 0), nullptr);
    EXPECT_EQ(construct(100000, 10), nullptr);
    f0r_instance_t instance = construct(8, 8);
    ASSERT_NE(instance, nullptr);
    const char* effect = "2";
    setParam(instance, &effect, kEffect);
    setParam(instance, nullptr, kEffect);
    setParam(instance, &effect, 42);
    std::vector<uint32_t> in(64, 0xFF102030u);
    update(instance, 0.0, nullptr, in.data());
    update(nullptr, 0.0, in.data(), in.data());
    std::vector<uint32_t> out(64, 0);
    update(instance, 0.0, in.data(), out.data());
    EXPECT_EQ(out, in);  // a uniform frame looks the same under any pan
    destruct(instance);
}

}  // namespace
}  // namespace qx::frei0r
