#include "Analyzer/AnalyzerTable.h"
#include "CScriptedServer.h"
#include "Generator/CGeneratorCommands.h"
#include "Instrument/CDemoInstrument.h"
#include "ScpiTableMacros.h"
#include "ToolRunner.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <future>
#include <sstream>
#include <unistd.h>

namespace ZoVelkor::Tools::Testing
{

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::vector<std::string> SortedLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

struct UsageRow
{
    const char* arguments;
    int exitCode;
    const char* err;
};

// clang-format off
constexpr UsageRow kBadUsage[] = {
    {"",                                         2, "subcommand"},
    {"table",                                    2, "subcommand"},
    {"chair",                                    2, "zo: unknown: chair"},
    {"table chair",                              2, "zo: unknown: chair"},
    {"table headers",                            2, "source is required"},
    {"table headers a b",                        2, "b"},
    {"table headers a --timeout 0",              2, "timeout"},
    {"table headers h:1 --timeout nan",          2, "--timeout: nan is not from 0.001 to 86400"},
    {"table merge a",                            2, "--output is required"},
    {"table save a/b -o b",                      2, "zo: a/b: neither"},
    {"table headers TCPIP::a::INSTR",            2, "TCPIP::a::INSTR: not of the form"},
    {"table headers TCPIP::a::0::SOCKET",        2, "not of the form"},
    {"table save [::1:5025 -o b",                2, "zo: [::1:5025: neither"},
    {"table save ::1:5025 -o b",                 2, "neither"},
    {"table save h:65536 -o b",                  2, "neither"},
    {"table save TCPIP9::[::1]::1::SOCKET -o b", 3, "zo: cannot connect to [::1]:1: "},
    {"table headers 127.0.0.1:1",                3, "zo: cannot connect to 127.0.0.1:1: Connection refused\n"},
    {"table headers no..host:5025",              3, "zo: cannot find host no..host: "},
    {"table headers missing",                    3, "zo: cannot read missing: No such file"},
    {"table headers .",                          3, "zo: cannot read .: Is a directory"},
};
// clang-format on

TEST_F(ToolTest, BadUsageHasAMessageAndAnExitCode)
{
    for (const UsageRow& row : kBadUsage)
    {
        const ToolRun run = Run(row.arguments);
        EXPECT_EQ(run.exitCode, row.exitCode) << row.arguments;
        EXPECT_EQ(run.out, "") << row.arguments;
        EXPECT_THAT(run.err, HasSubstr(row.err)) << row.arguments;
    }
}

TEST_F(ToolTest, HelpHasAnExampleAtEveryLevel)
{
    for (const std::string level : {"zo", "zo table", "zo table headers", "zo table merge", "zo table save"})
    {
        const ToolRun run = Run(level.substr(2) + " --help");
        EXPECT_EQ(run.exitCode, 0) << level;
        EXPECT_THAT(run.out, HasSubstr("Example: " + level)) << level;
    }
}

constexpr _CMD_SET_RECORD kSound = HDR("OUTPut", 0, 0, 0, 1, 0, QMARK | HDR_SET);

struct BadFile
{
    std::string bytes;
    const char* fault;
};

std::vector<BadFile> BadFiles()
{
    const _CMD_SET_RECORD outside[] = {HDR("OUTPut", 0, 0, 900, 1, 0, 0)};
    const _CMD_SET_RECORD bracket[] = {HDR("[OUTPut", 0, 0, 0, 1, 0, 0)};
    const std::string sound = TableFile({&kSound, 1});
    const std::string records(80, 'x');
    return {
        {"", "no command table of version 1.00: begins with ''"},
        {"\x1B[2J\n", "no command table of version 1.00: begins with '?[2J'"},
        {"2.00" + sound.substr(4), "no command table of version 1.00: begins with '2.00,#6'"},
        {"1.00,#240" + sound.substr(13), "no command table of version 1.00: begins with '1.00,#2'"},
        {"1.00,#600040", "the block header has no 6 length digits"},
        {"1.00,#6-00040" + records, "the block header has no 6 length digits"},
        {"1.00,#6000041" + records.substr(0, 41), "41 bytes are no whole number of 40-byte records"},
        {"1.00,#6000000", "the table has no records"},
        {TableFile(bracket), "record 0, keyword: a bracket has no partner"},
        {sound + "\n\n", "something follows the 40 bytes of the table"},
        {TableFile(outside), "record 0, SubStart: index 900 is outside the table (1 records)"},
    };
}

TEST_F(ToolTest, BadFilesAreNamedAndNotUsed)
{
    for (const auto& [bytes, fault] : BadFiles())
    {
        SCOPED_TRACE(fault);
        Write("bad.tab", bytes);
        const ToolRun check = Run("table check bad.tab");
        EXPECT_EQ(check.exitCode, 1);
        EXPECT_THAT(check.out, StartsWith(std::string("bad.tab: ") + fault));
        for (const char* use : {"headers bad.tab", "merge bad.tab bad.tab -o x", "source bad.tab"})
        {
            const ToolRun run = Run(std::string("table ") + use);
            EXPECT_EQ(run.exitCode, 1) << use;
            EXPECT_EQ(run.out, "") << use;
            EXPECT_THAT(run.err, StartsWith(std::string("zo: bad.tab: ") + fault)) << use;
        }
        EXPECT_FALSE(Exists("x") || Exists("PrsTab.cpp"));
    }
}

TEST_F(ToolTest, EveryTruncationIsNoticed)
{
    const std::string sound = TableFile({&kSound, 1});
    for (std::size_t length = 0; length < sound.size(); ++length)
    {
        EXPECT_EQ(Run("table check -", sound.substr(0, length)).exitCode, 1) << length;
    }
    EXPECT_EQ(Run("table check -", sound + "\n").out,
              "standard input: sound, 1 records, 1 commands and 0 diagnostic ones\n");
}

TEST_F(ToolTest, CheckTellsAllFaultsOfAllFiles)
{
    _CMD_SET_RECORD damaged[] = {
        HDR("[OUTPut", 0, DEF, 7, 3, 0, 0),
        HDR("INPut", 0, DEF, 0, 0, 3, 0),
        HDR("", 0, DEF, 0, 0, 8, 0),
        PAR("value", ARG_SINT, 9, 0, 0, 0, 0),
    };
    std::fill(std::begin(damaged[2].hdr.szKeyword), std::end(damaged[2].hdr.szKeyword), 'x');
    Write("bad.tab", TableFile(damaged));
    Write("good.tab", TableFile({&kSound, 1}));
    const ToolRun run = Run("table check bad.tab missing.tab good.tab");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_THAT(run.err, StartsWith("zo: cannot read missing.tab"));
    EXPECT_EQ(run.out,
              "bad.tab: record 0, keyword: a bracket has no partner\n"
              "bad.tab: record 0, SubStart: index 7 is outside the table (4 records)\n"
              "bad.tab: record 3, suffix list: index 9 is outside the table (4 records)\n"
              "bad.tab: record 2, keyword: the text has no terminating NUL\n"
              "bad.tab: record 2, datatype: index 8 is outside the table (4 records)\n"
              "good.tab: sound, 1 records, 1 commands and 0 diagnostic ones\n");
}

TEST_F(ToolTest, MergedTablesListTheCommandsOfBoth)
{
    Write("a.tab", TableFile(Demo::AnalyzerTable()));
    Write("g.tab", TableFile(Demo::CGeneratorCommands::Table()));
    const ToolRun merge = Run("table merge a.tab g.tab -o -");
    EXPECT_EQ(merge.exitCode, 0);
    EXPECT_EQ(merge.err, "");
    EXPECT_EQ(Run("table check -", merge.out).exitCode, 0);
    for (const char* listing : {"headers ", "syntax ", "headers --diagnostic "})
    {
        const std::string command = std::string("table ") + listing;
        EXPECT_EQ(SortedLines(Run(command + "-", merge.out).out),
                  SortedLines(Run(command + "a.tab").out + Run(command + "g.tab").out))
            << listing;
    }
}

TEST_F(ToolTest, MergeTellsWhichCommandIsReplaced)
{
    Write("a.tab", TableFile({&kSound, 1}));
    Write("b.tab", TableFile({&kSound, 1}));
    const ToolRun run = Run("table merge a.tab b.tab -o ab.tab");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.err, StartsWith("zo: Plug-in 'b.tab', record 0, keyword: 'OUTPut' replaces"));
    EXPECT_EQ(Read("ab.tab"), Read("a.tab"));
}

TEST_F(ToolTest, GroupsTellWhereTheyStandAndWhatIsInNone)
{
    const _CMD_SET_RECORD table[] = {
        HDR("RST", 0, DEF, 0, 1, 0, CCMD),
        HDR("OUTPut", 0, 0, 0, 1, 2, NSUFF),
        PAR("volt", ARG_SFLOAT | MNEM, 5, 1, 4, 0, 0),
        SFX("HOLE", 0, 0),
        CHR("LOW", 1, 1),
        SFX("V", 1, 1),
        NSE("1..4", NSE_HEADER | 1),
    };
    Write("t.tab", TableFile(table));
    const ToolRun run = Run("table groups t.tab");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out,
              "7 records, 6 groups\n"
              "\nHeaders\n first  count  entries\n     0      1  *RST\n     1      1  OUTPut\n"
              "\nParameters\n first  count  entries\n     2      1  volt\n"
              "\nUnits\n first  count  entries\n     5      1  V\n"
              "\nMnemonics\n first  count  entries\n     4      1  LOW\n"
              "\nNumeric-suffix expressions\n first  count  entries\n     6      1  1:1..4\n"
              "\nOutside every group: 3\n");
    const ToolRun source = Run("table source t.tab");
    EXPECT_EQ(source.exitCode, 1);
    EXPECT_THAT(source.err, HasSubstr("1 records belong to no group, the first is record 3"));
}

TEST_F(ToolTest, ListsLongerThanTheirUseAreShownInsideTheirRecords)
{
    _CMD_SET_RECORD table[] = {
        HDR("OUTPut", 0, 0, 0, 1, 1, 0),
        PAR("volt", MNEM, 0, 1, 2, 0, 0),
        CHR("LOW", 1, 2),
        CHR("", 0, 0),
    };
    std::memset(&table[3], 'x', sizeof table[3]);
    table[3].chr.szKeyword[1] = '\n';
    Write("t.tab", TableFile(table));
    EXPECT_THAT(Run("table groups t.tab").out, EndsWith("     2      2  LOW x?xxxxxxxxxxxxxx\n"));
}

TEST_F(ToolTest, SourceOverwritesOnlyWhenForced)
{
    Write("t.tab", TableFile({&kSound, 1}));
    Write("PrsTab.hpp", "mine");
    EXPECT_EQ(Run("table source t.tab").exitCode, 1);
    EXPECT_EQ(Read("PrsTab.hpp"), "mine");
    EXPECT_FALSE(Exists("PrsTab.cpp"));
    EXPECT_EQ(Run("table source t.tab -o . --force").exitCode, 0);
    EXPECT_THAT(Read("PrsTab.cpp"), HasSubstr("HDR( \"OUTPut\""));
    EXPECT_THAT(Read("PrsTab.hpp"), HasSubstr("extern CMD_SET_RECORD  CommandSetTables[];"));
    EXPECT_EQ(Run("table source t.tab -o nowhere").exitCode, 3);
}

TEST_F(ToolTest, ReaderThatHasGoneEndsItQuietly)
{
    Write("t.tab", TableFile({&kSound, 1}));
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    const ToolRun run = Run("table headers t.tab", "", ends[1]);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(Run("table merge t.tab t.tab -o tt.tab", "", -1, ends[1]).exitCode, 0);
    EXPECT_TRUE(Exists("tt.tab"));
    EXPECT_EQ(Run("table headers missing", "", -1, ends[1]).exitCode, 3);
    close(ends[1]);
    EXPECT_EQ(Run("table merge t.tab -o /dev/full").exitCode, 3);
}

class DemoTable : public ToolTest
{
protected:
    std::string Address() const { return m_instrument.Address(); }
    std::string Resource() const
    {
        return "tcpip0::localhost::" + std::to_string(m_instrument.Port()) + "::socket";
    }

private:
    const Demo::CDemoInstrument m_instrument{
        {.port = 0, .registryFile = (Folder() / "registry.db").string()}};
};

TEST_F(DemoTable, IsTheSameFromInstrumentAndFile)
{
    Write(Resource(), "a file that happens to have that name");
    ASSERT_EQ(Run("table save " + Resource() + " -o demo.tab").exitCode, 0);
    EXPECT_EQ(Run("table check demo.tab").exitCode, 0);
    const ToolRun headers = Run("table headers " + Address());
    EXPECT_EQ(headers.out, Run("table headers demo.tab").out);
    for (const char* line : {"*IDN?/qonly/\n", ":SENSe]:FREQuency:CENTer\n", ":OUTPut[:STATe]\n"})
    {
        EXPECT_THAT(headers.out, HasSubstr(line));
    }
    EXPECT_THAT(headers.out, testing::Not(HasSubstr("TABLe")));
    EXPECT_THAT(Run("table syntax --diagnostic " + Address()).out, HasSubstr(":SYSTem:HELP:TABLe?\n"));
}

struct BadAnswer
{
    const char* answer;
    bool closes;
    int exitCode;
    const char* err;
};

// clang-format off
constexpr BadAnswer kBadAnswers[] = {
    {"-113,\"Undefined header;#SYST\"\r\n", false, 1, "gives no command table: -113,\"Undefined header;#SYST\"\n"},
    {"-300,\"Too many connections\"\n",     true,  1, "gives no command table: -300,\"Too many connections\"\n"},
    {"0,\"No error\"\n",                    false, 1, "gives no command table: 0,\"No error\"\n"},
    {"2.00,#6000040 \n",                    false, 1, "gives no command table: 2.00,#6\n"},
    {"ACME #\n",                            false, 1, "gives no command table: ACME #\n"},
    {"1.00,#6\x1B[2Jxx",                    false, 1, "gives no command table: 1.00,#6?[2Jxx\n"},
    {"1.00,#6000041xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", false, 1, "41 bytes are no whole number"},
    {"1.00,#6000040xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", false, 1, "record 0, length"},
    {"",                                    true,  3, "closed the connection in the middle of an answer (0 bytes"},
    {"1.00,#6000040xxx",                    true,  3, "closed the connection in the middle of an answer (16 bytes"},
    {"1.00,#6000040xxx",                    false, 3, "no complete answer within 0.05 s (16 bytes of it came)"},
};
// clang-format on

TEST_F(ToolTest, BadAnswersOfInstruments)
{
    for (const BadAnswer& row : kBadAnswers)
    {
        SCOPED_TRACE(row.err);
        CScriptedServer server;
        const std::string address = server.Address().Text();
        const char* const timeout = row.exitCode == 3 && !row.closes ? "0.05" : "60";
        auto end = std::async(std::launch::async,
                              [&] { return Run("table save " + address + " -o x --timeout " + timeout); });
        CPeer peer = server.Accept();
        // Closing on unread questions would reset the connection.
        peer.ReadTo("SYSTem:ERRor?\n");
        peer.Send(row.answer);
        if (row.closes)
        {
            peer.FinishSending();
        }
        const ToolRun run = end.get();
        EXPECT_EQ(run.exitCode, row.exitCode);
        EXPECT_THAT(run.err, HasSubstr(address));
        EXPECT_THAT(run.err, HasSubstr(row.err));
        EXPECT_FALSE(Exists("x"));
    }
}

} // namespace

} // namespace ZoVelkor::Tools::Testing
