#include "host/DynamicEffect.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

class Params : public ::testing::Test {
protected:
    com::ComPtr<CQXDynamicEffect> effect = CQXDynamicEffect::Create();

    HRESULT put(std::u16string_view text)
    {
        Bstr value(text);
        return effect->put_Params(value.get());
    }
    std::u16string get()
    {
        Bstr value;
        EXPECT_EQ(effect->get_Params(value.out()), S_OK);
        return std::u16string(value.view());
    }
};

TEST_F(Params, TextRoundTripsAndDropsWhatFollowsTheLastSemicolon)
{
    EXPECT_EQ(put(u"1;2;3;"), S_OK);
    EXPECT_EQ(get(), u"1;2;3;");
    EXPECT_EQ(put(u"1;2;3"), S_OK);
    EXPECT_EQ(get(), u"1;2;");
    EXPECT_EQ(put(u""), S_OK);
    EXPECT_EQ(get(), u"");
}

TEST_F(Params, FieldsReadTheirLeadingDigits)
{
    EXPECT_EQ(put(u";;"), S_OK);
    EXPECT_EQ(get(), u"0;0;");
    EXPECT_EQ(put(u"-5;12abc; 7;x;"), S_OK);
    EXPECT_EQ(get(), u"-5;12;7;0;");
    EXPECT_EQ(put(u"99999999999;"), S_OK);
    EXPECT_EQ(get(), u"2147483647;");
}

TEST_F(Params, SixteenValuesAreTakenAndSeventeenRefused)
{
    std::u16string sixteen;
    for (int i = 1; i <= 16; ++i) sixteen += std::u16string(1, char16_t(u'0' + i % 10)) + u";";
    EXPECT_EQ(put(sixteen), S_OK);
    EXPECT_EQ(get(), sixteen);
    EXPECT_EQ(put(sixteen + u"7;"), E_INVALIDARG);
    EXPECT_EQ(get(), sixteen);  // the old list stays
    EXPECT_EQ(put(std::u16string(40, u';')), E_INVALIDARG);
}

TEST_F(Params, NullTextIsTheEmptyList)
{
    put(u"4;");
    EXPECT_EQ(effect->put_Params(nullptr), S_OK);
    EXPECT_EQ(get(), u"");
}

struct DefaultsCase {
    LONG index;
    std::vector<LONG> values;
};

class Defaults : public Params, public ::testing::WithParamInterface<DefaultsCase> {};

TEST_P(Defaults, ByTableIndex)
{
    std::array<LONG, 16> values{};
    values.fill(-7);
    LONG count = -1;
    EXPECT_EQ(effect->GetEffectDefaults(GetParam().index, values.data(), &count), S_OK);
    ASSERT_EQ(count, LONG(GetParam().values.size()));
    for (size_t i = 0; i < GetParam().values.size(); ++i) EXPECT_EQ(values[i], GetParam().values[i]) << i;
}

INSTANTIATE_TEST_SUITE_P(EveryKind, Defaults,
                         ::testing::Values(DefaultsCase{0, {100, 100, 900, 900}}, DefaultsCase{3, {250, 250, 750, 750}},
                                           DefaultsCase{6, {0, 0, 500, 500, 500, 500, 1000, 1000}},
                                           DefaultsCase{8, {0}}, DefaultsCase{9, {20, 5, 10, 30, 30, 50, 20, 0, 2}},
                                           DefaultsCase{15, {4, 3, 12, 0}},  // id 12, the puzzle
                                           DefaultsCase{16, {1}},            // id 2001
                                           DefaultsCase{10, {}},             // id 2000
                                           DefaultsCase{11, {}}, DefaultsCase{17, {}},
                                           DefaultsCase{19, {}},  // id 5000, no scene context
                                           DefaultsCase{23, {}},  // id 15000
                                           DefaultsCase{24, {}}),
                         [](const auto& testInfo) { return "Index" + std::to_string(testInfo.param.index); });

TEST_F(Params, DefaultsRefuseBadIndexesAndLeaveTheObjectsListAlone)
{
    put(u"1;2;");
    std::array<LONG, 16> values{};
    LONG count = 0;
    EXPECT_EQ(effect->GetEffectDefaults(25, values.data(), &count), E_INVALIDARG);
    EXPECT_EQ(effect->GetEffectDefaults(-1, values.data(), &count), E_INVALIDARG);
    effect->GetEffectDefaults(0, values.data(), &count);
    EXPECT_EQ(get(), u"1;2;");
}

}  // namespace
}  // namespace qx
