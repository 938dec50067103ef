#include "Parsing/CommandTableCheck.h"

#include "CCommandRecorder.h"
#include "ParserTestTable.h"
#include "Parsing/CProgramMessageParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{
using Records = std::vector<_CMD_SET_RECORD>;

/// Records: 0 A (group of 2), 1 B, 2 A:C, 3 parameter, 4 and 5 units, 6 word.
Records MakeSmallTable()
{
    return CTableBuilder()
        .Add("A:C", 1, 2, QMARK, {{ARG_SFLOAT | MNEM, 0, {{"HZ", 1}, {"S", 2}}, {{"WORD", 1}}}})
        .Add("B", 3, DEF, 0)
        .Build();
}

struct Damage
{
    const char* szName;
    std::function<void(Records&)> apply;
    const char* fault;
};

// One row a line.
// clang-format off
const Damage kDamages[] = {
    {"GroupPastEnd", [](Records& t) { t[0].hdr.iLength = 8;},
     "record 0, length: 8 records from 0 reach past"},
    {"GroupLengthWraps", [](Records& t) { t[2].hdr.iLength = 0xFFFFFFFF;}, "record 2, length: "},
    {"ChildOutside", [](Records& t) { t[0].hdr.iSubStart = 7;}, "record 0, SubStart: index 7 is outside"},
    {"ChildIsParent", [](Records& t) { t[2].hdr.iSubStart = 2;},
     "record 2, SubStart: the group at 2 contains"},
    {"Keyword", [](Records& t) { std::memset(t[1].hdr.szKeyword, 'X', 16);},
     "record 1, keyword: the text has no"},
    {"Bracket", [](Records& t) { t[1].hdr.szKeyword[0] = '[';}, "record 1, keyword: a bracket"},
    {"ParameterOutside", [](Records& t) { t[2].hdr.iDatatype = 7;}, "record 2, datatype: index 7"},
    {"NextOutside", [](Records& t) { t[3].par.iNextPar = 7;}, "record 3, nextpar: index 7"},
    {"ParameterName", [](Records& t) { std::memset(t[3].par.szName, 'X', 16);}, "record 3, name: "},
    {"UnitsOutside", [](Records& t) { t[3].par.iSuffixList = 7;}, "record 3, suffix list: index 7"},
    {"UnitsPastEnd", [](Records& t) { t[4].sfx.iLength = 4;}, "record 3, suffix list: 4 records from 4"},
    {"UnitText", [](Records& t) { std::memset(t[5].sfx.szSuffix, 'X', 16);}, "record 5, text: "},
    {"WordsOutside", [](Records& t) { t[3].par.iKeywords = 0x80000000;},
     "record 3, keywords: index 2147483648"},
    {"WordsPastEnd", [](Records& t) { t[3].par.iCount = 2;}, "record 3, count: 2 records from 6"},
    {"SuffixExpression", [](Records& t) { t.push_back({.nse = {"1-x", NSE_HEADER | 2}});},
     "record 7, expression: '1-x' at offset 2: unexpected character"},
    {"NoLengthOfCommonCommands", [](Records& t) { t[0].hdr.iFollow = CCMD, t[0].hdr.iLength = 0;},
     "record 0, length: "},
    {"Empty", [](Records& t) { t.clear();}, "no records"},
};
// clang-format on

TEST(CommandTableCheck, NamesRecordAndField)
{
    EXPECT_EQ(ValidateCommandTable(MakeSmallTable().data(), 7), "");
    for (const Damage& damage : kDamages)
    {
        Records table = MakeSmallTable();
        damage.apply(table);
        table.shrink_to_fit();
        EXPECT_THAT(ValidateCommandTable(table.data(), table.size()), testing::HasSubstr(damage.fault))
            << damage.szName;
    }
}

/// Each group's two records lead to the next group, so that the number of paths doubles with each level.
Records MakeDoublingTable(std::uint32_t levels)
{
    Records table(std::size_t{2} * levels);
    for (std::uint32_t i = 0; i < 2 * levels; ++i)
    {
        const std::uint32_t next = i / 2 + 1 < levels ? (i / 2 + 1) * 2 : 0;
        table[i].hdr = {"X", DEF, DEF, next, i % 2 == 0 ? 2U : 0U, 0, 0};
    }
    return table;
}

TEST(CommandTableCheck, BoundsLevelsNodesAndChains)
{
    Records deep(kMaxHeaderLevels);
    for (std::uint32_t i = 0; i < deep.size(); ++i)
    {
        deep[i].hdr = {"X", DEF, DEF, i + 1 < deep.size() ? i + 1 : 0, 1, 0, 0};
    }
    EXPECT_EQ(ValidateCommandTable(deep.data(), deep.size()), "");
    deep.push_back(deep.back());
    deep[kMaxHeaderLevels - 1].hdr.iSubStart = kMaxHeaderLevels;
    EXPECT_THAT(ValidateCommandTable(deep.data(), deep.size()), testing::HasSubstr("32 levels"));
    Records wide(250'001);
    wide[0].hdr.iLength = 250'000;
    EXPECT_EQ(ValidateCommandTable(wide.data(), 250'000), "");
    wide[0].hdr.iLength = 250'001;
    EXPECT_THAT(ValidateCommandTable(wide.data(), wide.size()), testing::HasSubstr("250000 nodes"));
    EXPECT_EQ(ValidateCommandTable(MakeDoublingTable(16).data(), 32), "");
    EXPECT_THAT(ValidateCommandTable(MakeDoublingTable(24).data(), 48), testing::HasSubstr("250000 nodes"));
    Records chain(kMaxChainLength + 2);
    chain[0].hdr = {"X", DEF, 1, 0, 1, 1, 0};
    for (std::uint32_t i = 1; i < chain.size(); ++i)
    {
        chain[i].par = {"p", ARG_STRG, 0, 0, 0, i + 1 < chain.size() ? i + 1 : 0, 0};
    }
    EXPECT_THAT(ValidateCommandTable(chain.data(), chain.size()), testing::HasSubstr("256 parameters"));
    chain[kMaxChainLength].par.iNextPar = 0;
    EXPECT_EQ(ValidateCommandTable(chain.data(), chain.size()), "");
}

TEST(CommandTableCheck, NodeWithoutNameHidesNothing)
{
    // A joined table may begin its root group so.
    Records table(3);
    table[0].hdr = {"RST", 1, DEF, 0, 1, 0, CCMD};
    table[1].hdr = {"", DEF, DEF, 0, 2, 0, 0};
    table[2].hdr = {"undef", 2, DEF, 0, 0, 0, 0};
    const CCommandIndex index(std::vector<CommandSource>{{table.data(), table.size(), MakeOwner()}});
    CProgramMessageParser parser;
    CCommandRecorder recorder;
    for (std::string message : {"*RST;UNDEF", ":*RST", "::UNDEF", "FOO"})
    {
        parser.Parse(index, message, recorder);
    }
    EXPECT_THAT(recorder.m_log, testing::MatchesRegex("1; 2; !-1[0-9]+; !-1[0-9]+; !-113"));
}

TEST(CommandTableCheck, RandomDamageIsFoundOrHarmless)
{
    std::mt19937 random(20260801);
    const Records sound = MakeParserTestTable();
    CProgramMessageParser parser;
    CCommandRecorder recorder;
    for (int round = 0; round < 3000; ++round)
    {
        Records table = sound;
        for (int i = 0; i < 3; ++i)
        {
            auto* const bytes = reinterpret_cast<unsigned char*>(table.data());
            bytes[random() % (table.size() * sizeof(_CMD_SET_RECORD))] = static_cast<unsigned char>(random());
        }
        // A sound remainder must compile and parse; the sanitizers watch.
        const CCommandIndex index(std::vector<CommandSource>{{table.data(), table.size(), MakeOwner()}});
        std::string message = "SENS:FREQ:CENT 1 MHZ;:TRIG:SOUR TIM1;:CALC:SUM? 1,2,3;:OUTP2 ON";
        parser.Parse(index, message, recorder);
    }
}
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
