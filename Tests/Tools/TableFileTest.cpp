#include "AnalyzerTable.h"
#include "CGeneratorCommands.h"
#include "ScpiTableMacros.h"
#include "ToolRunner.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>
#include <unistd.h>

namespace ZoVelkor::Tools::Testing
{

namespace
{

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

struct tagUsageRow
{
    const char* arguments;
    int exitCode;
    const char* out;
    const char* err;
};

// clang-format off
constexpr tagUsageRow kUsage[] = {
    {"--help",                          0, "Exit codes:",                 ""},
    {"table --help",                    0, "Example: zo table",           ""},
    {"table headers --help",            0, "Example: zo table headers",   ""},
    {"table syntax --help",             0, "Example: zo table syntax",    ""},
    {"table groups --help",             0, "Example: zo table groups",    ""},
    {"table check --help",              0, "Example: zo table check",     ""},
    {"table merge --help",              0, "Example: zo table merge",     ""},
    {"table source --help",             0, "Example: zo table source",    ""},
    {"table save --help",               0, "Example: zo table save",      ""},
    {"",                                2, "",                            "subcommand"},
    {"table",                           2, "",                            "subcommand"},
    {"chair",                           2, "",                            "zo: unknown: chair"},
    {"table chair",                     2, "",                            "zo: unknown: chair"},
    {"table headers",                   2, "",                            "source is required"},
    {"table headers a b",               2, "",                            "b"},
    {"table headers a --timeout 0",     2, "",                            "timeout"},
    {"table merge a",                   2, "",                            "--output is required"},
    {"table save a -o b",               2, "",                            "zo: a: neither"},
    {"table headers TCPIP::a::INSTR",   2, "",                            "TCPIP::a::INSTR: not of the form"},
    {"table headers TCPIP::a::0::SOCKET", 2, "",                          "not of the form"},
    {"table save [::1:5025 -o b",       2, "",                            "zo: [::1:5025: neither"},
    {"table save ::1:5025 -o b",        2, "",                            "neither"},
    {"table save h:65536 -o b",         2, "",                            "neither"},
    {"table save TCPIP9::[::1]::1::SOCKET -o b", 3, "",                   "zo: cannot connect to [::1]:1: "},
    {"table headers missing",           3, "",                            "zo: cannot read missing: No such file"},
    {"table headers .",                 3, "",                            "zo: cannot read .: Is a directory"},
};
// clang-format on

TEST_F(ToolTest, UsageAndItsExitCodes)
{
    for (const tagUsageRow& row : kUsage)
    {
        SCOPED_TRACE(row.arguments);
        const tagRun run = Run(row.arguments);
        EXPECT_EQ(run.exitCode, row.exitCode);
        EXPECT_THAT(run.out, HasSubstr(row.out));
        EXPECT_THAT(run.err, HasSubstr(row.err));
        EXPECT_EQ(run.err.empty(), row.exitCode == 0);
    }
}

constexpr _CMD_SET_RECORD kSound = HDR("OUTPut", 0, 0, 0, 1, 0, QMARK | HDR_SET);

struct tagBadFile
{
    std::string bytes;
    const char* fault;
};

std::vector<tagBadFile> BadFiles()
{
    const _CMD_SET_RECORD outside[] = {HDR("OUTPut", 0, 0, 900, 1, 0, 0)};
    const std::string sound = TableFile({&kSound, 1});
    const std::string records(80, 'x');
    return {
        {"",                                 "no command table of version 1.00: begins with ''"       },
        {"\x1B[2J\n",                        "no command table of version 1.00: begins with '?[2J'"   },
        {"2.00" + sound.substr(4),           "no command table of version 1.00: begins with '2.00,#6'"},
        {"1.00,#240" + sound.substr(13),     "no command table of version 1.00: begins with '1.00,#2'"},
        {"1.00,#600040",                     "the block header has no 6 length digits"                },
        {"1.00,#6-00040" + records,          "the block header has no 6 length digits"                },
        {"1.00,#6000041" + records.substr(0, 41),                                                       "41 bytes are no whole number of 40-byte records"},
        {"1.00,#6000000",                                  "the table has no records"                                                                            },
        {sound + "\n\n",                                  "something follows the 40 bytes of the table" },
        {TableFile(outside),                                  "record 0, SubStart: index 900 is outside the table (1 records)"                                                                        },
    };
}

TEST_F(ToolTest, BadFilesAreNamedAndNotUsed)
{
    for (const auto& [bytes, fault] : BadFiles())
    {
        SCOPED_TRACE(fault);
        Write("bad.tab", bytes);
        const tagRun check = Run("table check bad.tab");
        EXPECT_EQ(check.exitCode, 1);
        EXPECT_THAT(check.out, StartsWith(std::string("bad.tab: ") + fault));
        for (const char* use : {"headers bad.tab", "merge bad.tab bad.tab -o x", "source bad.tab"})
        {
            const tagRun run = Run(std::string("table ") + use);
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
    const tagRun run = Run("table check bad.tab missing.tab good.tab");
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
    const tagRun merge = Run("table merge a.tab g.tab -o -");
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
    const tagRun run = Run("table merge a.tab b.tab -o ab.tab");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.err, StartsWith("zo: Plug-in 'b.tab', record 0, keyword: 'OUTPut' replaces"));
    EXPECT_EQ(Read("ab.tab"), Read("a.tab"));
}

TEST_F(ToolTest, MergeRefusesWhatNoFileHolds)
{
    std::vector<_CMD_SET_RECORD> records(20'000);
    for (const char* name : {"a", "b"})
    {
        for (std::size_t i = 0; i < records.size(); ++i)
        {
            _CS_HDR& header = records[i].hdr = {"", 0, DEF, 0, 0, 0, QMARK};
            (name + std::to_string(i)).copy(header.szKeyword, sizeof header.szKeyword - 1);
        }
        records[0].hdr.iLength = static_cast<std::uint32_t>(records.size());
        Write(name, TableFile(records));
    }
    const tagRun run = Run("table merge a b -o ab");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.err, HasSubstr("1600000 bytes is too large for a table file, limit 999999"));
    EXPECT_FALSE(Exists("ab"));
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
    const tagRun run = Run("table groups t.tab");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    for (const char* line : {"7 records, 6 groups\n",
                             "Headers\n first  count  entries\n     0      1  *RST\n     1      1  OUTPut\n",
                             "Parameters\n first  count  entries\n     2      1  volt\n",
                             "     5      1  V\n",
                             "     4      1  LOW\n",
                             "     6      1  1:1..4\n",
                             "\nOutside every group: 3\n"})
    {
        EXPECT_THAT(run.out, HasSubstr(line));
    }
    const tagRun source = Run("table source t.tab");
    EXPECT_EQ(source.exitCode, 1);
    EXPECT_THAT(source.err, HasSubstr("1 records belong to no group, the first is record 3"));
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
    const tagRun run = Run("table headers t.tab", "", ends[1]);
    close(ends[1]);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(Run("table merge t.tab -o /dev/full").exitCode, 3);
}

} // namespace

} // namespace ZoVelkor::Tools::Testing
