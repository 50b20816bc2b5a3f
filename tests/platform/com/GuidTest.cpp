#include "platform/com/Guid.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

TEST(Guid, ParsesAndFormatsTheBracedForm)
{
    constexpr GUID id = guid("{9b7db154-a434-461a-ad61-489d9001919b}");
    EXPECT_EQ(id.Data1, 0x9B7DB154u);
    EXPECT_EQ(id.Data2, 0xA434);
    EXPECT_EQ(id.Data3, 0x461A);
    EXPECT_EQ(id.Data4[0], 0xAD);
    EXPECT_EQ(id.Data4[7], 0x9B);
    EXPECT_EQ(formatGuid(id), "{9B7DB154-A434-461A-AD61-489D9001919B}");
    EXPECT_EQ(parseGuid(formatGuid(id)), id);
}

TEST(Guid, RefusesMalformedText)
{
    EXPECT_FALSE(parseGuid("9B7DB154-A434-461A-AD61-489D9001919B"));
    EXPECT_FALSE(parseGuid("{9B7DB154-A434-461A-AD61-489D9001919}"));
    EXPECT_FALSE(parseGuid("{9B7DB154-A434-461A-AD61+489D9001919B}"));
    EXPECT_FALSE(parseGuid("{9B7DB154-A434-461A-AD6G-489D9001919B}"));
    EXPECT_FALSE(parseGuid(""));
}

}  // namespace
}  // namespace qx
