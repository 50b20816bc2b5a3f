#include "platform/os/CRuntime.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qx::os {
namespace {

TEST(CRuntimeIntegers, ReadTheLeadingDigitsOrZero)
{
    EXPECT_EQ(_wtol(u"12abc"), 12);
    EXPECT_EQ(_wtol(u"  -5;"), -5);
    EXPECT_EQ(_wtol(u"+7"), 7);
    EXPECT_EQ(_wtol(u""), 0);
    EXPECT_EQ(_wtol(u"abc"), 0);
    EXPECT_EQ(_wtol(u"- 5"), 0);
    EXPECT_EQ(_wtol(u"0x1F"), 0);
    EXPECT_EQ(_wtoi(u"\t\n42"), 42);
}

TEST(CRuntimeIntegers, ClampAtTheEndsOfTheRange)
{
    EXPECT_EQ(_wtol(u"2147483647"), 2147483647);
    EXPECT_EQ(_wtol(u"2147483648"), 2147483647);
    EXPECT_EQ(_wtol(u"-2147483648"), -2147483647 - 1);
    EXPECT_EQ(_wtol(u"-99999999999999999999"), -2147483647 - 1);
}

TEST(CRuntimeUnsigned, NegatesModuloAndSaturates)
{
    size_t consumed = 99;
    EXPECT_EQ(wcstoul(u" 4294967295x", &consumed), 4294967295u);
    EXPECT_EQ(consumed, 11u);
    EXPECT_EQ(wcstoul(u"4294967296"), 4294967295u);
    EXPECT_EQ(wcstoul(u"-1"), 4294967295u);
    EXPECT_EQ(wcstoul(u"x", &consumed), 0u);
    EXPECT_EQ(consumed, 0u);
}

TEST(CRuntimeFloat, ReadsTheLongestDecimalPrefix)
{
    EXPECT_DOUBLE_EQ(_wtof(u"1.5"), 1.5);
    EXPECT_DOUBLE_EQ(_wtof(u" -.25x"), -0.25);
    EXPECT_DOUBLE_EQ(_wtof(u"3."), 3.0);
    EXPECT_DOUBLE_EQ(_wtof(u"2e3"), 2000.0);
    EXPECT_DOUBLE_EQ(_wtof(u"2e"), 2.0);
    EXPECT_DOUBLE_EQ(_wtof(u"2e+"), 2.0);
    EXPECT_DOUBLE_EQ(_wtof(u"1.5E-1"), 0.15);
    EXPECT_DOUBLE_EQ(_wtof(u"."), 0.0);
    EXPECT_DOUBLE_EQ(_wtof(u"inf"), 0.0);
    EXPECT_DOUBLE_EQ(_wtof(u"0x10"), 0.0);
    EXPECT_TRUE(std::isinf(_wtof(u"1e999")));
}

TEST(CRuntimeRandom, FollowsTheWindowsGenerator)
{
    srand(1);
    EXPECT_EQ(rand(), 41);
    EXPECT_EQ(rand(), 18467);
    EXPECT_EQ(rand(), 6334);
    srand(1);
    EXPECT_EQ(rand(), 41);
    srand(12345);
    for (int i = 0; i < 1000; ++i) {
        const int value = rand();
        ASSERT_GE(value, 0);
        ASSERT_LE(value, kRandMax);
    }
}

}  // namespace
}  // namespace qx::os
