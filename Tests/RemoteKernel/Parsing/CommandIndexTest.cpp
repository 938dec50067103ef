#include "CCommandRecorder.h"
#include "ParserTestTable.h"
#include "Parsing/CProgramMessageParser.h"

#include <gtest/gtest.h>

#include <cstring>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{
using Records = std::vector<_CMD_SET_RECORD>;

CommandSource SourceOf(const Records& table)
{
    return {table.data(), table.size(), MakeOwner()};
}

std::string Converse(const CCommandIndex& index, std::string message)
{
    CProgramMessageParser parser;
    CCommandRecorder recorder;
    parser.Parse(index, message, recorder);
    return recorder.m_log;
}

TEST(CommandIndex, MergesTreesOfSeveralApplications)
{
    const Records first = CTableBuilder()
                              .Add("*IDN", 1, DEF, QMARK)
                              .Add("[:SENSe#]:FREQuency", 2, 3, QMARK | HDR_SET, {{ARG_SFLOAT}})
                              .Add("SYSTem:VERSion", 4, DEF, QMARK)
                              .Build();
    const Records second = CTableBuilder()
                               .Add("*OPT", 11, DEF, QMARK)
                               .Add("[:SENSe#]:POWer", 12, DEF, QMARK)
                               .Add("SENSe:GAIN", 13, DEF, QMARK)
                               .Add("SYSTem:VERSion", 14, DEF, QMARK)
                               .Add("SYSTem", DEF, DEF, 0)
                               .Build();
    const CommandSource sources[] = {SourceOf(first), SourceOf(second)};
    const CCommandIndex index(sources);
    EXPECT_EQ(Converse(index, "*IDN?;*OPT?;FREQ?;POW?;SYST:VERS?"), "1?; 11?; 2? [1]; 12? [1]; 14?");
    EXPECT_EQ(index.Find("SYST:VERS?")->application, sources[1].owner.get());
    EXPECT_EQ(index.Find("*IDN?")->application, sources[0].owner.get());
    EXPECT_EQ(Converse(index, "SENS1:GAIN?"), "13?") << "its own table has no suffix there";
    EXPECT_EQ(Converse(index, "SENS2:GAIN?"), "!-114");
}

/// Those of a few suffixes that the header A of a table accepts.
std::string Accepted(const Records& table)
{
    const CommandSource source = SourceOf(table);
    const CCommandIndex index({&source, 1});
    std::string accepted;
    for (const char* suffix : {"", "0", "1", "2", "3", "4", "5", "8", "10", "2147483647"})
    {
        const std::string log = Converse(index, std::string("A") + suffix);
        EXPECT_TRUE(log.starts_with("1 [") || log == "!-114") << log;
        accepted += log == "!-114" ? "" : (accepted.empty() ? "" : ",") + log.substr(3, log.find(']') - 3);
    }
    return accepted;
}

TEST(CommandIndex, CompilesSuffixExpressions)
{
    struct Row
    {
        const char* szExpression;
        const char* accepted;
    };
    constexpr Row kRows[] = {
        {"", ""},
        {"<0", ""},
        {"*", "1,0,1,2,3,4,5,8,10,2147483647"},
        {"1..n", "1,1,2,3,4,5,8,10,2147483647"},
        {"!4", "1,0,1,2,3,5,8,10,2147483647"},
        {"2-3", "2,3"},
        {"8,0;2-4,3", "0,2,3,4,8"},
        {"010", "8"},
    };
    Records table(2);
    table[0].hdr = {"A", 1, DEF, 0, 1, 0, NSUFF};
    for (const Row& row : kRows)
    {
        table[1].nse = {{}, NSE_HEADER};
        std::strcpy(table[1].nse.szExpression, row.szExpression);
        EXPECT_EQ(Accepted(table), row.accepted) << row.szExpression;
    }
    table.push_back({.nse = {"5", NSE_HEADER}});
    EXPECT_EQ(Accepted(table), "8") << "the first expression counts";
    table.resize(1);
    EXPECT_EQ(Accepted(table), "1,0,1,2,3,4,5,8,10,2147483647");
}

TEST(CommandIndex, EachApplicationsSuffixExpressionsHoldForItsCommands)
{
    const Records wide =
        CTableBuilder().Add("[:SENSe#0-9]:GAIN", 1, DEF, 0).Add("[:SENSe]:BOTH", 3, DEF, 0).Build();
    const Records narrow =
        CTableBuilder().Add("SENSe#2-3:POWer", 11, DEF, 0).Add("SENSe:BOTH", 12, DEF, 0).Build();
    const Records free = CTableBuilder().Add("SENSe#:ANY", 21, DEF, 0).Build();
    const CommandSource sources[] = {SourceOf(wide), SourceOf(narrow), SourceOf(free)};
    const CCommandIndex index(sources);
    EXPECT_EQ(Converse(index, "SENS9:GAIN;ANY"), "1 [9]; 21 [9]");
    EXPECT_EQ(Converse(index, "GAIN;:SENS3:POW;BOTH;ANY"), "1 [1]; 11 [3]; 12 [3]; 21 [3]");
    EXPECT_EQ(Converse(index, "SENS9:POW"), "!-114");
    EXPECT_EQ(Converse(index, "SENS:BOTH"), "!-114") << "the later application's command counts";
    EXPECT_EQ(Converse(index, "SENS10:ANY;GAIN"), "21 [10]; !-114");
}

TEST(CommandIndex, TwoHeadersWithOneChildGroupHaveTheirOwnExpressions)
{
    Records table(5);
    table[0].hdr = {"A", DEF, DEF, 2, 2, 0, NSUFF};
    table[1].hdr = {"B", DEF, DEF, 2, 0, 0, NSUFF};
    table[2].hdr = {"X", 1, DEF, 0, 1, 0, 0};
    table[3].nse = {"2", NSE_HEADER | 1};
    table[4].nse = {"1", NSE_HEADER | 0};
    const CommandSource source = SourceOf(table);
    const CCommandIndex index({&source, 1});
    EXPECT_EQ(Converse(index, "A:X;:B2:X;:A2:X"), "1 [1]; 1 [2]; !-114");
}

TEST(CommandIndex, DirectChildHasPrecedenceOverOneBelowAnOptionalNode)
{
    const Records table = CTableBuilder()
                              .Add("[:FIRSt]:LEVel", 1, DEF, 0)
                              .Add("[:SECond]:LEVel", 2, DEF, 0)
                              .Add("[:SECond]:MODE", 3, DEF, 0)
                              .Add("MODE", 4, DEF, 0)
                              .Build();
    const CommandSource source = SourceOf(table);
    const CCommandIndex index({&source, 1});
    EXPECT_EQ(Converse(index, "LEV;MODE;SEC:LEV;MODE"), "1; 4; 2; 3");
}

TEST(CommandIndex, FollowsTheLayoutOfTheRootGroups)
{
    Records table(5);
    table[0].hdr = {"CLS", 1, DEF, 0, 1, 0, CCMD};
    table[1].hdr = {"undef", DEF, DEF, 0, 1, 0, 0};
    table[2].hdr = {"FOO", 2, DEF, 3, 1, 0, 0};
    table[3].hdr = {"BAR", 3, DEF, 0, 2, 0, 0};
    table[4].hdr = {"BAZ", 4, DEF, 0, 0, 0, 0};
    const CommandSource source{table.data(), table.size(), MakeOwner()};
    // Deliberate: an "undef" group behind the common commands is skipped by their length.
    EXPECT_EQ(Converse(CCommandIndex({&source, 1}), "*CLS;FOO;FOO:BAR;BAZ;:undef"), "1; 2; 3; 4; !-113");
}

TEST(CommandIndex, FindsCommandsForHelp)
{
    const Records table = MakeParserTestTable();
    const CommandSource source = SourceOf(table);
    const CCommandIndex index({&source, 1});
    const CommandEntry* const entry = index.Find(":sens2:FREQ:CENTER");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->syntaxPath, "[:SENSe]:FREQuency:CENTer");
    EXPECT_EQ(entry->headerText.View(), L"SENSE:FREQUENCY:CENTER");
    EXPECT_EQ(index.Find("freq:cent?"), entry);
    EXPECT_EQ(index.Find("TEST:QONL")->syntaxPath, ":TEST:QONLy");
    EXPECT_EQ(index.Find("*IDN?")->headerText.View(), L"*IDN");
    for (const char* header :
         {"", ":", "*", "SENS", "FREQ:CENT:", "FREQ CENT", "IDN", "*IDN:FOO", "TEST:EVEN?"})
    {
        EXPECT_EQ(index.Find(header), nullptr) << header;
    }
}

TEST(CommandIndex, LeavesDamagedSourcesOutAndKeepsOwners)
{
    Records damaged = MakeParserTestTable();
    damaged[0].hdr.iLength = 0xFFFF;
    const Records sound = CTableBuilder().Add("FOO", 1, DEF, 0).Build();
    std::vector<CommandSource> sources{SourceOf(damaged), SourceOf(sound)};
    const std::weak_ptr<CApplication> owner = sources[1].owner;
    {
        const CCommandIndex index(sources);
        sources.clear();
        EXPECT_EQ(Converse(index, "FOO;*CLS"), "1; !-113");
        EXPECT_FALSE(owner.expired());
    }
    EXPECT_TRUE(owner.expired());
    EXPECT_EQ(Converse(CCommandIndex({}), "FOO"), "!-113");
}
} // namespace

} // namespace ZoVelkor::RemoteKernel::Testing
