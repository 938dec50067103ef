#include "CScpiParserTable.h"
#include "CScpiParserTableGroups.h"
#include "ScpiTableCheck.h"
#include "ScpiTableMacros.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <vector>

namespace
{

using namespace ZoVelkor;
using testing::ElementsAre;
using testing::IsEmpty;
using Records = std::vector<CMD_SET_RECORD>;

CScpiParserTableGroups Analyse(Records& records, bool withCount = true)
{
    CScpiParserTable table;
    table.SetParserTable(records.data(),
                         withCount ? static_cast<long>(records.size()) : CScpiParserTable::kUnknownCount);
    CScpiParserTableGroups groups;
    table.AnalyseGroups(groups);
    return groups;
}

const Records kTable = {
    /*  0 */ HDR("RST", 1, DEF, 0, 1, 0, CCMD),
    /*  1 */ HDR("undef", DEF, DEF, 0, 0, 0, 0),
    /*  2 */ HDR("A", DEF, DEF, 4, 2, 0, 0),
    /*  3 */ HDR("B", DEF, DEF, 4, 0, 0, 0),
    /*  4 */ HDR("C", 1, 1, 0, 1, 5, NSUFF),
    /*  5 */ PAR("p", MNEM, 9, 2, 7, 6, 0),
    /*  6 */ PAR("q", MNEM, 0x80000000, 2, 7, 5, 0),
    /*  7 */ CHR("X", 0, 2),
    /*  8 */ CHR("Y", 1, 0),
    /*  9 */ SFX("HZ", 1, 1),
    /* 10 */ NSE("1-4", NSE_HEADER | 4),
};

TEST(TableGroups, EachGroupOnceBehindThePlaceholder)
{
    Records records = kTable;
    for (const bool withCount : {false, true})
    {
        const CScpiParserTableGroups groups = Analyse(records, withCount);
        EXPECT_THAT(groups.Groups(tagScpiTableKind::Header), ElementsAre(0, 2, 4));
        EXPECT_THAT(groups.Groups(tagScpiTableKind::Parameter), ElementsAre(5));
        EXPECT_THAT(groups.Groups(tagScpiTableKind::CharacterData), ElementsAre(7));
        EXPECT_THAT(groups.Groups(tagScpiTableKind::UnitSuffix), ElementsAre(9));
        EXPECT_EQ(groups.Groups(tagScpiTableKind::NumericSuffix).size(), withCount ? 1U : 0U);
        EXPECT_EQ(groups.TableEnd(), withCount ? 11 : 10);
        EXPECT_EQ(groups.OffsetWidth(), withCount ? 2 : 1);
        EXPECT_EQ(groups.m_kind, tagScpiTableKind::None);
    }
    EXPECT_EQ(static_cast<int>(tagScpiTableKind::None), 5);
}

TEST(TableGroups, EmptyRootAndMissingTableHaveNoGroups)
{
    Records records = {HDR("A", 1, DEF, 0, 0, 0, 0)};
    const CScpiParserTableGroups groups = Analyse(records);
    EXPECT_THAT(groups.Groups(tagScpiTableKind::Header), IsEmpty());
    EXPECT_EQ(groups.TableEnd(), 0);
    EXPECT_EQ(groups.OffsetWidth(), 0);
    CScpiParserTableGroups untouched;
    untouched.AddGroup(tagScpiTableKind::Header, 3, 4);
    CScpiParserTable().AnalyseGroups(untouched);
    EXPECT_EQ(untouched.TableEnd(), 7);
}

TEST(TableGroups, WidthIsThatOfTheLargestIndex)
{
    constexpr std::pair<long, int> kWidths[] = {
        {1, 0},
        {2, 1},
        {10, 1},
        {11, 2},
        {100, 2},
        {101, 3},
    };
    for (const auto& [end, width] : kWidths)
    {
        CScpiParserTableGroups groups;
        groups.AddGroup(tagScpiTableKind::Header, 0, end);
        groups.Finish();
        EXPECT_EQ(groups.OffsetWidth(), width) << end;
        std::ostringstream out;
        out << std::left;
        groups.DumpOffset(out, 0);
        EXPECT_EQ(out.str(),
                  "/* [" + std::string(static_cast<std::size_t>(std::max(width, 1)) - 1, ' ') + "0] */ ");
    }
}

TEST(TableGroups, TokensOfAFlagWord)
{
    std::string text;
    std::uint32_t value = 0x1C300;
    CScpiParserTableGroups::TokeniseEnum(text, value, "ARG_SFLOAT", ARG_SFLOAT);
    EXPECT_EQ(text, "");
    CScpiParserTableGroups::TokeniseEnum(text, value, "ARG_SINT", ARG_SINT);
    EXPECT_EQ(text, "ARG_SINT");
    CScpiParserTableGroups::TokeniseValue(text, value);
    EXPECT_EQ(text, "ARG_SINT");
    CScpiParserTableGroups::TokeniseValue(text, 5);
    EXPECT_EQ(text, "ARG_SINT|5");
    text.clear();
    CScpiParserTableGroups::TokeniseValue(text, 0);
    EXPECT_EQ(text, "0");
}

TEST(TableGroups, SharedGroupsOfADeepTreeAreVisitedOnce)
{
    constexpr std::uint32_t kLevels = 20'000;
    Records records;
    for (std::uint32_t i = 0; i < kLevels; ++i)
    {
        const std::uint32_t child = i + 1 < kLevels ? 2 * i + 2 : 0;
        records.push_back(HDR("A", DEF, DEF, child, 2, 0, 0));
        records.push_back(HDR("B", DEF, DEF, child, 0, 0, 0));
    }
    EXPECT_EQ(Analyse(records).Groups(tagScpiTableKind::Header).size(), kLevels);
}

TEST(TableGroups, ExpressionsNameHeadersBeforeThem)
{
    Records records = kTable;
    records.push_back(NSE("5", NSE_HEADER | 10));
    records.push_back(NSE("", NSE_HEADER | 2));
    std::memset(records.back().nse.szExpression, '1', kTableExpressionSize);
    const auto expressions = FindSuffixExpressions(records.data(), records.size());
    ASSERT_EQ(expressions.size(), 1U);
    EXPECT_EQ(expressions[0].iHeader, 4U);
    EXPECT_EQ(expressions[0].expression, "1-4");
    EXPECT_THAT(FindSuffixExpressions(records.data(), 10), IsEmpty());
    EXPECT_THAT(FindSuffixExpressions(nullptr, 10), IsEmpty());
}

} // namespace
