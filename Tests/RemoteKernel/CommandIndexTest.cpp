#include "CCommandRecorder.h"
#include "CProgramMessageParser.h"
#include "ParserTestTable.h"

#include <gtest/gtest.h>

namespace ZoVelkor::RemoteKernel::Testing
{

namespace
{
using tagTable = std::vector<_CMD_SET_RECORD>;

tagCommandSource SourceOf(const tagTable& table)
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
    const tagTable first = CTableBuilder()
                               .Add("*IDN", 1, DEF, QMARK)
                               .Add("[:SENSe#]:FREQuency", 2, 3, QMARK | HDR_SET, {{ARG_SFLOAT}})
                               .Add("SYSTem:VERSion", 4, DEF, QMARK)
                               .Build();
    const tagTable second = CTableBuilder()
                                .Add("*OPT", 11, DEF, QMARK)
                                .Add("[:SENSe#]:POWer", 12, DEF, QMARK)
                                .Add("SENSe:GAIN", 13, DEF, QMARK)
                                .Add("SYSTem:VERSion", 14, DEF, QMARK)
                                .Add("SYSTem", DEF, DEF, 0)
                                .Build();
    const tagCommandSource sources[] = {SourceOf(first), SourceOf(second)};
    const CCommandIndex index(sources);
    EXPECT_EQ(Converse(index, "*IDN?;*OPT?;FREQ?;POW?;SYST:VERS?"), "1?; 11?; 2? [1]; 12? [1]; 14?");
    EXPECT_EQ(index.Find("SYST:VERS?")->pApplication, sources[1].spOwner.get());
    EXPECT_EQ(index.Find("*IDN?")->pApplication, sources[0].spOwner.get());
    EXPECT_EQ(Converse(index, "SENS1:GAIN?"), "13?") << "its own table has no suffix there";
    EXPECT_EQ(Converse(index, "SENS2:GAIN?"), "!-114");
}

TEST(CommandIndex, DirectChildHasPrecedenceOverOneBelowAnOptionalNode)
{
    const tagTable table = CTableBuilder()
                               .Add("[:FIRSt]:LEVel", 1, DEF, 0)
                               .Add("[:SECond]:LEVel", 2, DEF, 0)
                               .Add("[:SECond]:MODE", 3, DEF, 0)
                               .Add("MODE", 4, DEF, 0)
                               .Build();
    const tagCommandSource source = SourceOf(table);
    const CCommandIndex index({&source, 1});
    EXPECT_EQ(Converse(index, "LEV;MODE;SEC:LEV;MODE"), "1; 4; 2; 3");
}

TEST(CommandIndex, FollowsTheLayoutOfTheRootGroups)
{
    tagTable table(5);
    table[0].hdr = {"CLS", 1, DEF, 0, 1, 0, CCMD};
    table[1].hdr = {"undef", DEF, DEF, 0, 1, 0, 0};
    table[2].hdr = {"FOO", 2, DEF, 3, 1, 0, 0};
    table[3].hdr = {"BAR", 3, DEF, 0, 2, 0, 0};
    table[4].hdr = {"BAZ", 4, DEF, 0, 0, 0, 0};
    const tagCommandSource source{table.data(), table.size(), MakeOwner()};
    // Deliberate: an "undef" group behind the common commands is skipped by their length.
    EXPECT_EQ(Converse(CCommandIndex({&source, 1}), "*CLS;FOO;FOO:BAR;BAZ;:undef"), "1; 2; 3; 4; !-113");
}

TEST(CommandIndex, FindsCommandsForHelp)
{
    const tagTable table = MakeParserTestTable();
    const tagCommandSource source = SourceOf(table);
    const CCommandIndex index({&source, 1});
    const tagCommandEntry* const entry = index.Find(":sens2:FREQ:CENTER");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->sSyntaxPath, "[:SENSe]:FREQuency:CENTer");
    EXPECT_EQ(entry->bsHeader.View(), L"SENSE:FREQUENCY:CENTER");
    EXPECT_EQ(index.Find("freq:cent?"), entry);
    EXPECT_EQ(index.Find("TEST:QONL")->sSyntaxPath, ":TEST:QONLy");
    EXPECT_EQ(index.Find("*IDN?")->bsHeader.View(), L"*IDN");
    for (const char* header :
         {"", ":", "*", "SENS", "FREQ:CENT:", "FREQ CENT", "IDN", "*IDN:FOO", "TEST:EVEN?"})
    {
        EXPECT_EQ(index.Find(header), nullptr) << header;
    }
}

TEST(CommandIndex, LeavesDamagedSourcesOutAndKeepsOwners)
{
    tagTable damaged = MakeParserTestTable();
    damaged[0].hdr.iLength = 0xFFFF;
    const tagTable sound = CTableBuilder().Add("FOO", 1, DEF, 0).Build();
    std::vector<tagCommandSource> sources{SourceOf(damaged), SourceOf(sound)};
    const std::weak_ptr<CApplication> owner = sources[1].spOwner;
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
