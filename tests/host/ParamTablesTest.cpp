// The catalogue and the parameter tables against the facts of the system: the rows of the
// effect table, every default list and every range that the dialogs give. Each effect's
// facts live in its descriptor; these tables are the second, independent statement of them.
#include "host/DynamicEffect.h"
#include "wrap3d/SceneEffects.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace qx {
namespace {

enum class Routine { None, Frame, Image, VideoEffect };

struct CatalogueRow {
    LONG id;
    LONG nameStringId;
    Routine routine;
    LONG hasDialog;
    LONG category;
};

// In table order: the index is the position.
const CatalogueRow kCatalogue[] = {
    {0, 101, Routine::Frame, 1, 0},   {1, 102, Routine::Frame, 1, 0},          {2, 103, Routine::Frame, 1, 0},
    {3, 104, Routine::Frame, 1, 0},   {4, 105, Routine::Frame, 1, 0},          {5, 106, Routine::Frame, 1, 0},
    {6, 107, Routine::Frame, 1, 0},   {7, 108, Routine::Frame, 1, 0},          {8, 109, Routine::Frame, 1, 0},
    {9, 110, Routine::Image, 1, 1},   {2000, 114, Routine::VideoEffect, 0, 1}, {10, 111, Routine::Image, 0, 1},
    {11, 112, Routine::Image, 0, 1},  {13, 125, Routine::Image, 0, 1},         {14, 126, Routine::Image, 0, 1},
    {12, 113, Routine::Frame, 0, 1},  {2001, 118, Routine::VideoEffect, 1, 1}, {15, 0, Routine::Frame, 0, 1},
    {5002, 115, Routine::None, 1, 1}, {5000, 116, Routine::None, 1, 1},        {5003, 0, Routine::None, 0, 2},
    {5004, 0, Routine::None, 0, 1},   {5005, 0, Routine::None, 0, 3},          {15000, 0, Routine::None, 0, 4},
    {10000, 0, Routine::Image, 0, 1},
};

Routine routineOf(const EffectDescriptor& effect)
{
    const int kinds =
        int(effect.frameRoutine != nullptr) + int(effect.imageRoutine != nullptr) + int(effect.videoEffect != nullptr);
    if (kinds > 1) ADD_FAILURE() << "effect " << effect.id << " has more than one kind of routine";
    if (effect.frameRoutine) return Routine::Frame;
    if (effect.imageRoutine) return Routine::Image;
    return effect.videoEffect ? Routine::VideoEffect : Routine::None;
}

TEST(CatalogueTable, EveryRowHoldsItsFacts)
{
    ASSERT_EQ(std::size(kCatalogue), EffectTable.size());
    for (size_t index = 0; index < EffectTable.size(); ++index) {
        const EffectDescriptor& effect = EffectTable[index];
        const CatalogueRow& row = kCatalogue[index];
        EXPECT_EQ(effect.id, row.id) << "index " << index;
        EXPECT_EQ(effect.nameStringId, row.nameStringId) << "id " << row.id;
        EXPECT_EQ(routineOf(effect), row.routine) << "id " << row.id;
        EXPECT_EQ(effect.hasDialog, row.hasDialog) << "id " << row.id;
        EXPECT_EQ(effect.category, row.category) << "id " << row.id;
        EXPECT_EQ(findEffect(row.id), &effect) << "id " << row.id;
    }
}

TEST(CatalogueTable, ObjectsAreMadeOnlyWhereTheIdRangeSendsFrames)
{
    for (const EffectDescriptor& effect : EffectTable) {
        const bool videoRange = effect.id >= effect_id::kVideoEffectFirst && effect.id < effect_id::kVideoEffectEnd;
        const bool sceneRange = effect.id >= effect_id::kSceneFirst && effect.id < effect_id::kSceneEnd;
        EXPECT_EQ(effect.videoEffect != nullptr, videoRange) << "id " << effect.id;
        if (sceneRange || videoRange || effect.id == effect_id::kVectorAnimation) {
            EXPECT_FALSE(effect.frameRoutine || effect.imageRoutine)
                << "id " << effect.id << " never reaches a routine";
        }
    }
}

struct Slot {
    LONG minimum;
    LONG maximum;
    ParamKind kind;
};

struct EffectParams {
    LONG id;
    std::string defaults;     // the default text, "%ld;" per value
    std::vector<Slot> slots;  // every slot the effect reads
};

constexpr LONG kLongMax = std::numeric_limits<LONG>::max();
constexpr Slot kSide{0, 1000, ParamKind::RectangleSide};
constexpr Slot kColour{0, 0xFFFFFF, ParamKind::Color};
constexpr Slot kPercent{0, 100, ParamKind::Percentage};
constexpr Slot kTurn{-3600, 3600, ParamKind::Integer};

const std::vector<EffectParams> kParams = {
    {0, "100;100;900;900;", {kSide, kSide, kSide, kSide}},
    {1, "100;100;900;900;", {kSide, kSide, kSide, kSide}},
    {2, "250;250;750;750;", {kSide, kSide, kSide, kSide}},
    {3, "250;250;750;750;", {kSide, kSide, kSide, kSide}},
    {4, "250;250;750;750;", {kSide, kSide, kSide, kSide}},
    {5, "250;250;750;750;", {kSide, kSide, kSide, kSide}},
    {6, "0;0;500;500;500;500;1000;1000;", {kSide, kSide, kSide, kSide, kSide, kSide, kSide, kSide}},
    {7, "0;", {kColour}},
    {8, "0;", {kColour}},
    {9,
     "20;5;10;30;30;50;20;0;2;",
     {kPercent,
      {1, 20, ParamKind::Integer},
      {0, 50, ParamKind::Integer},
      kPercent,
      kPercent,
      {0, 100, ParamKind::Integer},
      {2, 64, ParamKind::Integer},
      kPercent,
      {0, 20, ParamKind::Integer}}},
    {2000, "", {}},
    {10, "", {}},
    {11, "", {}},
    {13, "", {}},
    {14, "", {}},
    {12,
     "4;3;12;0;",
     {{1, 256, ParamKind::Integer}, {1, 256, ParamKind::Integer}, {1, kLongMax, ParamKind::Integer}, kColour}},
    {2001, "1;", {{1, 10, ParamKind::Integer}}},
    // The colour key reads a colour and a tolerance, -1 in either meaning no key, but its
    // default list is empty: the editor gives both.
    {15, "", {{-1, 0xFFFFFF, ParamKind::Color}, {-1, 255, ParamKind::Integer}}},
    {5002,
     "0;0;0;360;0;0;0;0;0;0;-400;-200;",
     {kTurn,
      kTurn,
      kTurn,
      kTurn,
      kTurn,
      kTurn,
      {-1000, 1000, ParamKind::Integer},
      {-1000, 1000, ParamKind::Integer},
      {-800, 800, ParamKind::Integer},
      {-800, 800, ParamKind::Integer},
      {-2500, 0, ParamKind::Integer},
      {-2500, 0, ParamKind::Integer}}},
    {5000, "0;360;0;360;0;360;10;", {kTurn, kTurn, kTurn, kTurn, kTurn, kTurn, {0, 40, ParamKind::Integer}}},
    {5003, "", {}},
    {5004, "", {}},
    {5005, "", {}},
    {15000, "", {}},
    {10000, "", {}},
};

std::string defaultText(const EffectDescriptor& effect)
{
    std::string text;
    const ParamList defaults = effect.defaultsListed ? defaultList(effect.params) : ParamList{};
    for (LONG i = 0; i < defaults.count; ++i) text += std::to_string(defaults.values[size_t(i)]) + ";";
    return text;
}

TEST(ParamTables, AgreeWithEveryDefaultListAndRange)
{
    ASSERT_EQ(kParams.size(), EffectTable.size()) << "every row of the catalogue has its line here";
    const auto host = CQXDynamicEffect::Create();
    for (const EffectParams& expected : kParams) {
        const EffectDescriptor* effect = findEffect(expected.id);
        ASSERT_NE(effect, nullptr) << "id " << expected.id;
        EXPECT_EQ(defaultText(*effect), expected.defaults) << "id " << expected.id;
        ASSERT_EQ(effect->params.size(), expected.slots.size()) << "id " << expected.id;
        std::set<std::string> names;
        for (size_t slot = 0; slot < expected.slots.size(); ++slot) {
            const ParamDescriptor& param = effect->params[slot];
            const Slot& want = expected.slots[slot];
            const auto where = "id " + std::to_string(expected.id) + " slot " + std::to_string(slot);
            EXPECT_EQ(param.slot, int(slot)) << where;
            EXPECT_EQ(param.minimum, want.minimum) << where;
            EXPECT_EQ(param.maximum, want.maximum) << where;
            EXPECT_EQ(param.kind, want.kind) << where;
            EXPECT_TRUE(names.insert(param.name).second) << where << " repeats the name " << param.name;
            EXPECT_NE(std::string(param.meaning), "") << where;
        }

        // The host reports the same list, save for the scene effects, whose clients do
        // not start without a scene context.
        if (expected.id >= effect_id::kSceneFirst && expected.id < effect_id::kSceneEnd) continue;
        LONG index = -1;
        ASSERT_EQ(host->GetIndexFromID(expected.id, &index), S_OK);
        LONG values[kMaxParams] = {};
        LONG count = -1;
        ASSERT_EQ(host->GetEffectDefaults(index, values, &count), S_OK);
        std::string reported;
        for (LONG i = 0; i < count; ++i) reported += std::to_string(values[i]) + ";";
        EXPECT_EQ(reported, expected.defaults) << "id " << expected.id;
    }
}

TEST(ParamTables, DefaultsLieInTheirRanges)
{
    for (const EffectDescriptor& effect : EffectTable) {
        for (const ParamDescriptor& param : effect.params) {
            EXPECT_LE(param.minimum, param.defaultValue) << "id " << effect.id << " " << param.name;
            EXPECT_LE(param.defaultValue, param.maximum) << "id " << effect.id << " " << param.name;
        }
    }
}

TEST(SceneClientTables, WriteTheirDefaultsAsGetDefaultsDoes)
{
    LONG values[kMaxParams];
    std::fill(std::begin(values), std::end(values), -7);
    LONG count = 0;
    WriteDefaults(kMove3DParams, values, &count);
    ASSERT_EQ(count, 12);
    EXPECT_EQ(values[Move3DParam::kVerticalRotationEnd], 360);
    EXPECT_EQ(values[Move3DParam::kDepthStart], -400);
    EXPECT_EQ(values[12], -7);  // nothing beyond the list
    WriteDefaults(kCubeParams, values, &count);
    EXPECT_EQ(count, 7);
    EXPECT_EQ(values[CubeParam::kDepth], 10);
}

}  // namespace
}  // namespace qx
