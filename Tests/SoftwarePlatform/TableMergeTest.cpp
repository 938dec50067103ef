#include "CScpiParserTableGroups.h"
#include "CScpiParserTableMerger.h"
#include "CScpiPropErrorStrategy.h"
#include "ScpiTableCheck.h"
#include "ScpiTableMacros.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <sstream>

namespace
{

using namespace ZoVelkor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Records = std::vector<CMD_SET_RECORD>;
using TableLines = std::list<std::string>;

/// Counts its references; lives on the stack.
struct CTestSink final : IZOScpiExecutionSink
{
    HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return ++m_references; }
    ULONG Release() override { return --m_references; }
    // clang-format off
    HRESULT Execute(IUnknown*, long, unsigned long, short, long*, unsigned long, tagZO_SCPI_PARAMETER*, wchar_t*,
                    IZOScpiOutputBuffer*) override { return E_NOTIMPL; }
    // clang-format on
    ULONG m_references = 0;
};

std::uint32_t SizeOf(const Records& records)
{
    return static_cast<std::uint32_t>(records.size() * sizeof(CMD_SET_RECORD));
}

/// A merge of plug-ins named A, B and so on, and what came of it.
struct Merge
{
    explicit Merge(std::vector<Records> tables) : sources(std::move(tables)), owners(sources.size())
    {
        for (std::size_t i = 0; i < sources.size(); ++i)
        {
            plugins.push_back(
                {sources[i].data(), SizeOf(sources[i]), &owners[i], {static_cast<char>('A' + i)}});
        }
    }

    Merge& Run()
    {
        CScpiPropErrorStrategy errors;
        errors.SetMember(nullptr, ZO_SCPI_NODE_CAPTURE, false, false, false);
        EXPECT_EQ(table.MergePlugins(errors, plugins, joined, sinks, size), 0);
        reports = errors.ReportCapturedErrors(0);
        return *this;
    }

    TableLines Lines() const
    {
        TableLines lines;
        table.GetAllCommands(false, true, lines);
        return lines;
    }

    /// Keyword and plug-in of every entry of the sink array.
    TableLines Owners() const
    {
        TableLines lines;
        for (std::size_t i = 0; i < sinks.size(); ++i)
        {
            if (sinks[i].m_T != nullptr)
            {
                const auto* const sink = static_cast<const CTestSink*>(sinks[i].m_T.Get());
                const auto owner = static_cast<char>('A' + (sink - owners.data()));
                lines.push_back(std::string(joined[i].hdr.szKeyword) + owner);
            }
        }
        return lines;
    }

    std::vector<Records> sources;
    std::vector<CTestSink> owners;
    std::list<CScpiParserTable::PlugInData> plugins;
    CScpiParserTable table;
    CScpiParserTableMerger::tagTable joined;
    CScpiParserTableMerger::tagSinks sinks;
    unsigned long size = 99;
    std::string reports;
};

// clang-format off
/// Chains with a common tail and with other records between, shared and partly used lists, an expression.
const Records kRich = {
    /* 0 */ HDR("IDN", 1, DEF, 0, 1, 0, CCMD | QMARK), HDR("SYSTem", DEF, DEF, 3, 2, 0, 0), HDR("FREQuency", DEF, 2, 0, 0, 5, HDR_SET),
    /* 3 */ HDR("BAND", DEF, 3, 0, 2, 8, NSUFF), HDR("ERRor", 4, DEF, 0, 0, 0, QMARK), PAR("x", ARG_SFLOAT, 9, 0, 0, 8, 0),
    /* 6 */ CHR("LOW", 1, 2), CHR("HIGH", 2, 0), PAR("y", MNEM, 0, 1, 7, 5, 0),
    /* 9 */ SFX("HZ", 1, 2), SFX("KHZ", 2, 0), NSE("1-4", NSE_HEADER | 3)};
const Records kPlain = {
    /* 0 */ HDR("SYSTem", DEF, DEF, 2, 2, 0, 0), HDR("MODE", 7, DEF, 0, 0, 0, 0), HDR("DATE", 8, DEF, 0, 1, 3, 0),
    /* 3 */ PAR("z", MNEM, 0, 1, 4, 0, 0), CHR("NOW", 1, 1)};
const Records kOneCommand = {HDR("MODE", 1, 2, 0, 1, 0, QMARK)};
const Records kOneNode = {HDR("MODE", DEF, DEF, 1, 1, 0, 0), HDR("SUB", 5, DEF, 0, 1, 0, 0)};
const Records kOtherCase = {HDR("Mode", 1, DEF, 0, 1, 0, QMARK)};
const Records kParameterOnly = {HDR("MODE", DEF, DEF, 0, 1, 1, 0), PAR("p", ARG_STRG, 0, 0, 0, 0, 0)};
const Records kSuffixed = {HDR("MODE", DEF, DEF, 1, 1, 0, NSUFF), HDR("TOP", 6, DEF, 0, 1, 0, 0)};
const Records kCommon = {HDR("RST", 1, DEF, 0, 1, 1, CCMD), PAR("p", ARG_STRG, 0, 0, 0, 0, 0)};
const Records kCommonOnly = {HDR("RST", 1, DEF, 0, 2, 0, CCMD), HDR("CLS", 2, DEF, 0, 0, 0, CCMD)};
const Records kUnmarkedCommon = {HDR("TST", 3, DEF, 0, 2, 0, CCMD), HDR("RST", 4, DEF, 0, 0, 0, 0)};
const Records kPlaceholder = {
    HDR("IDN", 1, DEF, 0, 1, 0, CCMD), HDR("undef", DEF, DEF, 0, 1, 0, 0), HDR("LOST", 1, DEF, 0, 1, 0, 0)};
/// Takes a command away from kPlain, with parameter and word; its own parameter is last when joined.
const Records kReplacing = {
    HDR("SYSTem", DEF, DEF, 2, 1, 0, 0), PAR("r", ARG_STRG, 0, 0, 0, 0, NSE_HEADER), HDR("DATE", 8, DEF, 0, 1, 1, 0)};
/// A group of units that begins inside another one, and words of which one parameter counts more than the group tells.
const Records kNested = {
    /* 0 */ HDR("ONE", 1, DEF, 0, 2, 2, 0), HDR("TWO", 2, DEF, 0, 0, 6, 0), PAR("a", ARG_SINT, 4, 0, 0, 3, 0),
    /* 3 */ PAR("b", MNEM, 0, 3, 7, 0, 0), SFX("HZ", 1, 2), SFX("KHZ", 2, 1),
    /* 6 */ PAR("c", ARG_SINT, 5, 0, 0, 0, 0), CHR("LOW", 1, 99), CHR("MID", 2, 1), CHR("HIGH", 3, 0)};
const Records kEmpty = {HDR("A", 1, DEF, 0, 0, 0, 0)};
struct MergeCase
{
    const char* szName; std::vector<Records> tables; TableLines lines; TableLines owners; const char* report;
};

const MergeCase kMergeCases[] = {
    {"Union", {kRich, kPlain},
     {"*IDN?", ":SYSTem:BAND HIGH", ":SYSTem:ERRor?", ":SYSTem:DATE NOW", ":FREQuency <numeric_value> [HZ|KHZ],HIGH", ":MODE"},
     {"IDNA", "FREQuencyA", "MODEB", "BANDA", "ERRorA", "DATEB"}, ""},
    {"OrderOfPlugins", {kPlain, kRich},
     {"*IDN?", ":SYSTem:DATE NOW", ":SYSTem:BAND HIGH", ":SYSTem:ERRor?", ":MODE", ":FREQuency <numeric_value> [HZ|KHZ],HIGH"},
     {"IDNB", "MODEA", "FREQuencyB", "DATEA", "BANDB", "ERRorB"}, ""},
    {"LaterDefinitionWins", {kOneCommand, kPlain}, {":MODE", ":SYSTem:DATE NOW"}, {"MODEB", "DATEB"},
     "Plug-in 'B', record 1, keyword: 'MODE' replaces the command of plug-in 'A', record 0"},
    {"NodeAddsChildrenOnly", {kOneCommand, kOneNode}, {":MODE:SUB", ":MODE?"}, {"MODEA", "SUBB"}, ""},
    {"CommandReplacesNode", {kOneNode, kOneCommand}, {":MODE:SUB", ":MODE?"}, {"MODEB", "SUBA"}, ""},
    {"ParametersDefineToo", {kOneCommand, kParameterOnly}, {}, {}, "replaces the command of plug-in 'A'"},
    {"CaseMakesADifference", {kOneCommand, kOtherCase}, {":MODE?", ":Mode?"}, {"MODEA", "ModeB"}, ""},
    {"SuffixConflict", {kOneNode, kSuffixed}, {":MODE:SUB", ":MODE:TOP"}, {"SUBA", "TOPB"},
     "Plug-in 'B', record 0, follow: the numeric suffix of 'MODE' differs from that in plug-in 'A', record 0"},
    {"CommonCommandsOfAll", {kCommonOnly, kUnmarkedCommon}, {"*RST", "*CLS", "*TST"}, {"RSTB", "CLSA", "TSTB"}, "'RST' replaces"},
    {"PlaceholderIsTakenAsItStands", {kPlaceholder, kOneCommand}, {"*IDN", ":MODE?"}, {"IDNA", "MODEB"},
     "Plug-in 'A', record 1, keyword: the commands behind the placeholder group are left out"},
    {"NothingButPlaceholder", {kPlaceholder, kEmpty}, {"*IDN"}, {"IDNA"}, "left out"},
    {"NestedLists", {kNested, kEmpty}, {":ONE <integer> [HZ|KHZ],HIGH|LOW|MID", ":TWO <integer> [KHZ]"}, {"ONEA", "TWOA"}, ""},
    {"ReplacedParameters", {kPlain, kReplacing}, {":SYSTem:DATE <string>", ":MODE"}, {"MODEA", "DATEB"}, "'DATE' replaces"},
    {"EmptyTables", {kEmpty, kEmpty}, {}, {}, ""},
    {"EmptyBesideFull", {kEmpty, kOneCommand}, {":MODE?"}, {"MODEB"}, ""},
    {"SameKeywordTwice", {{HDR("A", 1, DEF, 0, 2, 0, 0), HDR("A", 2, DEF, 0, 0, 0, QMARK)}, kEmpty}, {":A?"}, {"AA"}, "'A' replaces"},
};
// clang-format on

TEST(TableMerge, ListsAndOwners)
{
    for (const MergeCase& row : kMergeCases)
    {
        SCOPED_TRACE(row.szName);
        Merge merge(row.tables);
        EXPECT_EQ(merge.Run().Lines(), row.lines);
        EXPECT_EQ(merge.Owners(), row.owners);
        EXPECT_EQ(merge.sinks.size(), merge.joined.size());
        EXPECT_EQ(merge.size, merge.joined.size() * 40);
        EXPECT_EQ(merge.table.GetParserTable(), merge.joined.size() == 0 ? nullptr : &merge.joined[0]);
        // A record outside every group would shift the indexes of a compiled table.
        EXPECT_TRUE(merge.joined.size() == 0 || !CheckScpiTable(&merge.joined[0], merge.joined.size()));
        std::ostringstream source, header;
        merge.table.DumpSourceHeader(source, header);
        EXPECT_THAT(source.str(), Not(HasSubstr("UNREFERENCED")));
        EXPECT_THAT(merge.reports, HasSubstr(row.report));
        EXPECT_EQ(merge.reports.empty(), *row.report == '\0') << merge.reports;
    }
}

TEST(TableMerge, NoneAndOneAreNotMerged)
{
    EXPECT_EQ(Merge({}).Run().table.GetParserTable(), nullptr);
    for (const Records& records : {kOneCommand, Records{HDR("A", 1, 1, 9, 9, 9, 0)}})
    {
        Merge merge({records});
        merge.joined.resize(3);
        merge.Run();
        EXPECT_EQ(merge.table.GetParserTable(), merge.sources[0].data());
        EXPECT_EQ(merge.size, SizeOf(records));
        EXPECT_EQ(merge.joined.size() + merge.sinks.size(), 0U);
        EXPECT_EQ(merge.reports, "");
        EXPECT_EQ(merge.Lines().empty(), records[0].hdr.iSubStart != 0);
    }
}

TEST(TableMerge, EntriesHoldOneReferenceEach)
{
    Merge merge({kRich, kPlain});
    EXPECT_EQ(merge.owners[0].m_references, 1U);
    merge.Run().Run();
    EXPECT_EQ(merge.owners[0].m_references, 5U);
    EXPECT_EQ(merge.owners[1].m_references, 3U);
    merge.plugins.clear();
    EXPECT_EQ(merge.owners[0].m_references, 4U);
    merge.Run();
    EXPECT_EQ(merge.owners[0].m_references + merge.owners[1].m_references, 0U);
    EXPECT_EQ(merge.size, 0U);
}

TEST(TableMerge, RecordsOfTheJoinedTableHaveTheirGroupsAndExpressions)
{
    Merge merge({kPlaceholder, kRich, kCommon, kPlain});
    merge.Run();
    EXPECT_EQ(CheckScpiTable(&merge.joined[0], merge.joined.size()), std::nullopt);
    CScpiParserTableGroups groups;
    merge.table.AnalyseGroups(groups);
    // Commons IDN RST; root: nameless, undef, SYSTem, FREQuency, MODE.
    EXPECT_THAT(groups.Groups(tagScpiTableKind::Header), ElementsAre(0, 2, 7));
    EXPECT_EQ(merge.joined[2].hdr.iLength, 5U);
    EXPECT_STREQ(merge.joined[2].hdr.szKeyword, "");
    EXPECT_STREQ(merge.joined[3].hdr.szKeyword, "undef");
    EXPECT_EQ(groups.TableEnd(), static_cast<long>(merge.joined.size()));
    const auto found = FindSuffixExpressions(&merge.joined[0], merge.joined.size());
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].expression, "1-4");
    EXPECT_STREQ(merge.joined[found[0].iHeader].hdr.szKeyword, "BAND");
}

TEST(TableMerge, SharedGroupsStayShared)
{
    const Records shared = {HDR("BANDwidth", DEF, DEF, 2, 2, 0, 0),
                            HDR("BWIDth", DEF, DEF, 2, 0, 0, 0),
                            HDR("AUTO", 1, DEF, 0, 1, 0, 0)};
    const Records adding = {HDR("BWIDth", DEF, DEF, 1, 1, 0, 0), HDR("TYPE", 1, DEF, 0, 1, 0, 0)};
    Merge alone({shared, kOneCommand});
    EXPECT_EQ(alone.Run().joined.size(), 4U);
    EXPECT_EQ(alone.joined[0].hdr.iSubStart, alone.joined[1].hdr.iSubStart);
    EXPECT_EQ(Merge({shared, shared}).Run().joined.size(), 3U);
    EXPECT_THAT(Merge({shared, adding}).Run().Lines(),
                ElementsAre(":BANDwidth:AUTO", ":BWIDth:AUTO", ":BWIDth:TYPE"));
}

// clang-format off
struct Damage { std::function<void(Records&)> apply; const char* report; };

const Damage kDamages[] = {
    {[](Records& t) { t[1].hdr.iLength = 99; }, "record 1, length: 99 records from 1 reach past"},
    {[](Records& t) { t[0].hdr.iLength = 0x80000001; }, "record 0, length: "},
    {[](Records& t) { t[1].hdr.iSubStart = 12; }, "record 1, SubStart: index 12 is outside"},
    {[](Records& t) { t[4].hdr.iSubStart = 1; }, "record 4, SubStart: the group at 1 contains itself"},
    {[](Records& t) { std::memset(t[2].hdr.szKeyword, 'K', 16); }, "record 2, keyword: "},
    {[](Records& t) { t[2].hdr.iDatatype = 0xFFFFFFFF; }, "record 2, datatype: "},
    {[](Records& t) { t[5].par.iNextPar = 12; }, "record 5, nextpar: "},
    {[](Records& t) { t[9].sfx.iLength = 4; }, "record 5, suffix list: 4 records from 9"},
    {[](Records& t) { t[8].par.iCount = 5000; }, "record 8, count: "},
    {[](Records& t) { std::memset(t[7].chr.szKeyword, 'K', 16); }, "record 7, text: "},
    {[](Records& t) { t[11].nse.iValue = NSE_HEADER | 5; }, "record 11, value: index 5 is not a header"},
    {[](Records& t) { std::memset(t[11].nse.szExpression, '1', 36); }, "record 11, expression: "},
    {[](Records& t) { t[10].sfx.iUnused[3] = NSE_HEADER; }, "record 10, value: a record of another"},
    {[](Records& t) { t[0].hdr.iLength = 0; }, "record 0, length: the common commands"},
    {[](Records& t) {
         const auto start = static_cast<std::uint32_t>(t.size());
         t.insert(t.end(), 40, HDR("D", DEF, DEF, 0, 1, 0, 0));
         for (std::uint32_t i = start; i + 1 < t.size(); ++i) { t[i].hdr.iSubStart = i + 1; }
         t[4].hdr.iSubStart = start;
     }, "the tree has more than 32 levels"},
    {[](Records& t) {
         const auto start = static_cast<std::uint32_t>(t.size());
         for (std::uint32_t i = 0; i < 42; ++i) {
             t.push_back(HDR("D", DEF, DEF, i < 40 ? start + i / 2 * 2 + 2 : 0, i % 2 == 0 ? 2U : 0U, 0, 0)); }
         t[4].hdr.iSubStart = start;
     }, "the tree has more than 250000 nodes"},
};
// clang-format on

TEST(TableMerge, DamagedTableIsNamedAndLeftOut)
{
    const TableLines expected = Merge({kOneCommand, kEmpty, kOneNode}).Run().Lines();
    for (const Damage& damage : kDamages)
    {
        SCOPED_TRACE(damage.report);
        Records damaged = kRich;
        damage.apply(damaged);
        damaged.shrink_to_fit();
        Merge merge({kOneCommand, damaged, kOneNode});
        EXPECT_EQ(merge.Run().Lines(), expected);
        EXPECT_THAT(merge.reports, testing::StartsWith("Plug-in 'B', "));
        EXPECT_THAT(merge.reports, HasSubstr(damage.report));
        EXPECT_EQ(merge.reports.find('\n'), std::string::npos);
        EXPECT_EQ(merge.owners[1].m_references, 1U);
    }
    Merge merge({kOneCommand, kRich, kRich, kOneNode});
    std::next(merge.plugins.begin())->iSize += 1;
    std::next(merge.plugins.begin(), 2)->pTable = nullptr;
    EXPECT_EQ(merge.Run().Lines(), expected);
    EXPECT_EQ(merge.reports,
              "Plug-in 'B', size: 481 bytes are not a whole number of records of 40 bytes\n"
              "Plug-in 'C', table: the array is null");
}

TEST(TableMerge, RandomDamageIsReportedOrHarmless)
{
    std::mt19937 random(20260802);
    int left = 0;
    for (int round = 0; round < 4000; ++round)
    {
        Records damaged = kRich;
        for (unsigned i = 0; i <= random() % 3; ++i)
        {
            const std::size_t place = random() % SizeOf(damaged);
            // Small values make plausible indexes.
            const auto value = static_cast<unsigned char>(random() % 2 == 0 ? random() % 14 : random());
            reinterpret_cast<unsigned char*>(damaged.data())[place] = value;
        }
        Merge merge({kPlain, damaged});
        merge.Run();
        ASSERT_EQ(CheckScpiTable(&merge.joined[0], merge.joined.size()), std::nullopt) << merge.reports;
        EXPECT_GE(merge.Lines().size(), 1U);
        left += merge.owners[1].m_references == 1 ? 1 : 0;
        CScpiParserTable single;
        CScpiParserTableGroups groups;
        single.SetParserTable(damaged.data(), static_cast<long>(damaged.size()));
        single.AnalyseGroups(groups);
        EXPECT_LE(groups.TableEnd(), static_cast<long>(damaged.size()));
    }
    EXPECT_GT(left, 500);
    EXPECT_LT(left, 3500);
}

} // namespace
