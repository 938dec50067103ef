#include "CScpiParserTable.h"
#include "CScpiParserTableGroups.h"
#include "RoundTripTable.h"
#include "ScpiTableMacros.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace ZoVelkor
{
namespace
{

using testing::HasSubstr;
using testing::Not;

CScpiParserTable TableOf(std::span<_CMD_SET_RECORD> records)
{
    CScpiParserTable table;
    table.SetParserTable(records.data(), static_cast<long>(records.size()));
    return table;
}

std::string SourceOf(std::span<_CMD_SET_RECORD> records)
{
    std::ostringstream source;
    std::ostringstream header;
    TableOf(records).DumpSourceHeader(source, header);
    return source.str();
}

/// The entries of a map as text.
std::string Text(const std::map<std::string, long>& map)
{
    std::string text;
    for (const auto& [name, value] : map)
    {
        text += name + '=' + std::to_string(value) + ' ';
    }
    return text;
}

TEST(TableSource, LaterGroupsReplaceTheSecondLabelOfTheirKind)
{
    CScpiParserTableGroups groups;
    std::vector<_CMD_SET_RECORD> records(RoundTripTable().begin(), RoundTripTable().end());
    const CScpiParserTable table = TableOf(records);
    table.AnalyseGroups(groups);
    std::ostringstream source;
    table.DumpSource_Table(source, groups);
    EXPECT_EQ(Text(groups.m_labels),
              "B_CHR_0=11 B_HDR_0=0 B_HDR_1=4 B_PAR_0=6 B_PAR_1=10 B_SFX_0=13 B_SFX_1=15 "
              "L_CHR_0=2 L_HDR_0=2 L_HDR_1=2 L_PAR_0=4 L_PAR_1=1 L_SFX_0=2 L_SFX_1=1 ");
    EXPECT_EQ(Text(groups.m_modeNames),
              "IEC_-2=-2 IEC_-2147483648=-2147483648 IEC_1=1 IEC_2=2 IEC_2147483647=2147483647 IEC_7=7 ");
}

TEST(TableSource, KindsWithoutGroupHaveNoComment)
{
    CMD_SET_RECORD records[] = {HDR("A", 1, DEF, 0, 1, 0, 0)};
    const std::string source = SourceOf(records);
    EXPECT_THAT(source, HasSubstr("/** command token tables"));
    EXPECT_THAT(source, Not(HasSubstr("/** parameter types")));
    EXPECT_THAT(source, HasSubstr("\n/* [0] */    HDR( \"A\"  "));
}

TEST(TableSource, RecordsOutsideEveryGroupAreLeftOut)
{
    CMD_SET_RECORD records[] = {
        HDR("A", 1, DEF, 2, 1, 0, 0),
        HDR("LOST", 2, DEF, 0, 0, 0, 0),
        HDR("B", 3, DEF, 0, 1, 0, 0),
        HDR("BEYOND", 4, DEF, 0, 1, 0, 0),
    };
    const std::string source = SourceOf(records);
    EXPECT_THAT(source, HasSubstr("\n/* [1] */  /** UNREFERENCED **/\n\n/* [2] token group B_HDR_1 */\n"));
    EXPECT_THAT(source, Not(HasSubstr("BEYOND")));
}

TEST(TableSource, ParameterChainGoesOnBehindAShorterOneInside)
{
    CMD_SET_RECORD records[] = {
        HDR("A", 1, DEF, 0, 2, 2, 0),
        HDR("B", 2, DEF, 0, 0, 3, 0),
        PAR("first", 0, 0, 0, 0, 4, 0),
        PAR("inner", 0, 0, 0, 0, 0, 0),
        PAR("second", 0, 0, 0, 0, 0, 0),
    };
    EXPECT_THAT(SourceOf(records), HasSubstr("/* [4] */   ,PAR( \"second\"  "));
}

TEST(TableSource, ParameterChainGoesOnBehindWordsInside)
{
    CMD_SET_RECORD records[] = {
        HDR("A", 1, DEF, 0, 1, 1, 0),
        PAR("first", MNEM, 0, 1, 2, 3, 0),
        CHR("WORD", 1, 1),
        PAR("second", 0, 0, 0, 0, 0, 0),
    };
    EXPECT_THAT(SourceOf(records), HasSubstr("/* [3] */   ,PAR( \"second\"  "));
}

TEST(TableSource, TextWithoutTerminatorLosesTheByteThatItWouldNeed)
{
    CMD_SET_RECORD records[] = {HDR("", 1, DEF, 0, 1, 0, 0)};
    std::memcpy(records[0].hdr.szKeyword, "ABCDEFGHIJKLMNOP", kTableTextSize);
    EXPECT_THAT(SourceOf(records), HasSubstr("HDR( \"ABCDEFGHIJKLMNO\" , 1 "));
}

TEST(TableSource, WithoutTableThereAreNoElements)
{
    EXPECT_THAT(SourceOf({}), HasSubstr("=\n{\n\n};\n\nunsigned long  CommandSetTableSize"));
}

} // namespace
} // namespace ZoVelkor
