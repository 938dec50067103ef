#include "CScpiErrorMap.h"
#include "CScpiParserTable.h"
#include "CScpiToken.h"
#include "ScpiTableMacros.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <list>
#include <string>
#include <vector>

namespace
{

using namespace ZoVelkor;
using Lines = std::list<std::string>;

struct TokenCase
{
    const char* text;
    const char* longForm;
    const char* shortForm;
    const char* syntaxForm;
    const char* numericShortForm;
};

constexpr TokenCase kTokenCases[] = {
    {"FREQuency", "FREQUENCY", "FREQ", "FREQuency", "FREQ"},
    {"frequency", "FREQUENCY", "FREQ", "FREQuency", "FREQ"},
    {"power", "POWER", "POW", "POWer", "POW"},
    {"trace", "TRACE", "TRAC", "TRACe", "TRAC"},
    {"POWE1", "POWE1", "POWE", "POWE1", "POWE1"},
    {"POWE0", "POWE0", "POWE", "POWE0", "POWE0"},
    {"powe12x3", "POWE12X3", "POWE", "POWE12x3", "POWE12"},
    {"TRAC10", "TRAC10", "TRAC", "TRAC10", "TRAC10"},
    {"TRAC12X", "TRAC12X", "TRAC", "TRAC12x", "TRAC12"},
    {"TRACE1", "TRACE1", "TRAC", "TRACe1", "TRAC"},
    {"abcd", "ABCD", "ABCD", "ABCD", "ABCD"},
    {"abce", "ABCE", "ABCE", "ABCE", "ABCE"},
    {"ab1", "AB1", "AB1", "AB1", "AB1"},
    {"", "", "", "", ""},
};

TEST(Token, FormsOfAKeyword)
{
    for (const TokenCase& row : kTokenCases)
    {
        SCOPED_TRACE(row.text);
        CScpiToken token{std::string(row.text)};
        EXPECT_EQ(token.ToLongForm(), row.longForm);
        EXPECT_EQ(token.ToShortForm(), row.shortForm);
        EXPECT_EQ(token.ToNumericShortForm(), row.numericShortForm);
        EXPECT_EQ(token.ToSyntaxForm(), row.syntaxForm);
        EXPECT_EQ(CScpiToken::ScpiToken2SyntaxForm(row.text), row.syntaxForm);
    }
}

TEST(Token, CheckNamesTheFirstFault)
{
    EXPECT_EQ(CScpiToken().Check(), "Empty scpi token");
    EXPECT_EQ(CScpiToken("ABCDEFGHIJKL").Check(), "");
    EXPECT_EQ(CScpiToken("1BCDEFGHIJKLM").Check(),
              "The token '1BCDEFGHIJKLM' has too many digits (12 are o.k.).");
    EXPECT_EQ(CScpiToken("1ABC").Check(), "The first character is invalid in the scpi token 1ABC");
    EXPECT_EQ(CScpiToken("\xC4").Check(), "The first character is invalid in the scpi token \xC4");
    EXPECT_EQ(CScpiToken("A_1").Check(), "");
}

TEST(Token, NormaliseReplacesTheStoredText)
{
    CScpiToken token("1trace");
    const CScpiToken copy(token);
    token.Normalise();
    EXPECT_EQ(token.Check(), "The first character is invalid in the scpi token 1TRace");
    EXPECT_EQ(copy.Check(), "The first character is invalid in the scpi token 1trace");
}

struct ErrorTextCase
{
    short code;
    const char* text;
};

constexpr ErrorTextCase kErrorTextCases[] = {
    {0, "No error"},
    {-100, "Command error"},
    {-115, "Unexpected number of parameter"},
    {-170, "Expression error"},
    {-225, "Out of memory"},
    {-260, "Expression error"},
    {-291, "Out of memory"},
    {-300, "Device specific error"},
    {-310, "System error"},
    {-321, "Out of memory"},
    {-440, "Query unterminated indef response"},
    {-800, "Operation complete"},
    {-106, "Device specific error"},
    {-801, "Device specific error"},
    {-32768, "Device specific error"},
    {1, "Device specific error"},
};

TEST(ErrorMap, TextsOfKnownAndUnknownCodes)
{
    const CScpiErrorMap map;
    const CScpiErrorMap copy(map);
    for (const ErrorTextCase& row : kErrorTextCases)
    {
        SCOPED_TRACE(row.code);
        CComBSTR text(L"old");
        map.GetErrorText(row.code, text);
        EXPECT_TRUE(text == row.text);
        text = L"";
        copy.GetErrorText(row.code, text);
        EXPECT_TRUE(text == row.text);
        EXPECT_EQ(GetScpiErrorText(row.code), row.text);
    }
}

TEST(ErrorMap, ListIsSortedAsText)
{
    const std::list<std::string> lines = CScpiErrorMap().GetAllErrorResponseMessages();
    ASSERT_EQ(lines.size(), 121U);
    EXPECT_EQ(lines.front(), "-100,\"Command error\"");
    EXPECT_EQ(lines.back(), "0,\"No error\"");
    EXPECT_EQ(*std::prev(lines.end(), 2), "-800,\"Operation complete\"");
}

CMD_SET_RECORD kTree[] = {
    /*  0 */ HDR("RST", 1, DEF, 0, 2, 0, CCMD),
    /*  1 */ HDR("IDN", 2, DEF, 0, 0, 0, CCMD | QMARK),
    /*  2 */ HDR("undef", DEF, DEF, 0, 0, 0, 0),
    /*  3 */ HDR("undef", DEF, DEF, 0, 0, 0, 0),
    /*  4 */ HDR("[SENSe]", DEF, DEF, 6, 2, 0, 0),
    /*  5 */ HDR("SERVice", 3, DEF, 0, 0, 0, HDR_DIAG),
    /*  6 */ HDR("FREQuency", 4, 5, 8, 2, 10, QMARK | HDR_SET),
    /*  7 */ HDR("MODE", DEF, 6, 0, 0, 12, HDR_SET),
    /*  8 */ HDR("STEP", 7, DEF, 0, 2, 0, QMARK),
    /*  9 */ HDR("TEST", DEF, 8, 0, 0, 0, HDR_DIAG),
    /* 10 */ PAR("value", ARG_SFLOAT | ARG_MINMAX, 15, 0, 0, 11, 0),
    /* 11 */ PAR("other", ARG_STRG, 0, 0, 0, 10, 0),
    /* 12 */ PAR("mode", MNEM, 0, 2, 13, 0, 0),
    /* 13 */ CHR("SLOW", 0, 2),
    /* 14 */ CHR("FAST", 1, 0),
    /* 15 */ SFX("MHZ", 0, 2),
    /* 16 */ SFX("HZ", 1, 0),
};

Lines Listing(CMD_SET_RECORD* table, bool diagnostic, bool syntax)
{
    Lines lines{"stale"};
    EXPECT_EQ(CScpiParserTable(table).GetAllCommands(diagnostic, syntax, lines), 0);
    return lines;
}

TEST(ParserTable, HeaderHelpListsChildrenFirst)
{
    const Lines expected = {"*RST/nquery/",
                            "*IDN?/qonly/",
                            "[:SENSe]:FREQuency:STEP?/qonly/",
                            "[:SENSe]:FREQuency",
                            "[:SENSe]:MODE/nquery/"};
    EXPECT_EQ(Listing(kTree, false, false), expected);
}

TEST(ParserTable, SyntaxHelpAddsParameters)
{
    const Lines expected = {"*RST",
                            "*IDN?",
                            "[:SENSe]:FREQuency:STEP?",
                            "[:SENSe]:FREQuency[?] <numeric_value>|MAXimum|MINimum [MHZ|HZ],<string>",
                            "[:SENSe]:MODE FAST|SLOW"};
    EXPECT_EQ(Listing(kTree, false, true), expected);
}

TEST(ParserTable, DiagnosticListingHasDiagnosticCommandsOnly)
{
    const Lines expected = {"[:SENSe]:FREQuency:TEST/nquery/", ":SERVice/nquery/"};
    EXPECT_EQ(Listing(kTree, true, false), expected);
}

TEST(ParserTable, RootFollowsCommonCommandsWithoutPlaceholder)
{
    CMD_SET_RECORD tree[] = {HDR("RST", 1, DEF, 0, 1, 0, CCMD), HDR("ABORt", 2, DEF, 0, 1, 0, 0)};
    EXPECT_EQ(Listing(tree, false, true), (Lines{"*RST", ":ABORt"}));
    tree[0].hdr.iFollow = 0;
    EXPECT_EQ(Listing(tree, false, true), Lines{":RST"});
}

TEST(ParserTable, WithoutTableNothingIsListed)
{
    const CScpiParserTable table;
    EXPECT_FALSE(table.HasCommonCommands());
    EXPECT_EQ(table.GetParGroupSize(0), 0);
    EXPECT_TRUE(Listing(nullptr, false, false).empty());
    EXPECT_TRUE(CScpiParserTable(kTree).HasCommonCommands());
    EXPECT_EQ(CScpiParserTable(kTree).GetParserTable(), kTree);
}

TEST(ParserTable, ParameterGroupReachesItsHighestRecord)
{
    CMD_SET_RECORD table[] = {
        PAR("a", 0, 0, 0, 0, 2, 0),
        PAR("b", 0, 0, 0, 0, 0, 0),
        PAR("c", 0, 0, 0, 0, 4, 0),
        PAR("d", 0, 0, 0, 0, 0, 0),
        PAR("e", 0, 0, 0, 0, 0xFFFFFFFFU, 0),
    };
    const CScpiParserTable parser(table);
    EXPECT_EQ(parser.GetParGroupSize(0), 5);
    EXPECT_EQ(parser.GetParGroupSize(1), 1);
    EXPECT_EQ(parser.GetParGroupSize(2), 3);
    EXPECT_EQ(parser.GetParGroupSize(-1), 0);
}

struct ParameterCase
{
    const char* name;
    std::uint32_t type;
    const char* text;
};

// Mnemonics of a parameter with MNEM are SLOW and FAST.
constexpr ParameterCase kParameterCases[] = {
    {"Nothing", 0, "<any>"},
    {"PositiveInteger", ARG_PINT, "<any>"},
    {"Integer", ARG_SINT, "<integer>"},
    {"Float", ARG_PFLOAT_S | ARG_NFLOAT_S, "<float>"},
    {"FloatBeforeHex", ARG_PFLOAT_S | ARG_NFLOAT_S | ARG_HEX, "<float>"},
    {"Notations", ARG_HEX | ARG_OCT | ARG_BIN, "<bin>|<hex>|<oct>"},
    {"Numeric", ARG_SFLOAT, "<numeric_value>"},
    {"AllLimits", ARG_SFLOAT | ARG_MINMAX | ARG_DEFAULT | ARG_UPDOWN, "<numeric_value>"},
    {"SomeLimits", ARG_SFLOAT | ARG_MINMAX | ARG_DEFAULT, "<numeric_value>|DEFault|MAXimum|MINimum"},
    {"Switch", ARG_SFLOAT | ARG_OFF, "<boolean>"},
    {"SwitchAndKeep", ARG_SFLOAT | ARG_OFF | ARG_KEEP, "<numeric_value>|KEEP|OFF|ON"},
    {"NotAdjacent", ARG_SFLOAT | ARG_OFF | ARG_STRG, "<numeric_value>|<string>|OFF|ON"},
    {"OnlyOnAndOff", ARG_OFF, "OFF|ON"},
    {"Mnemonics", MNEM, "FAST|SLOW"},
    {"Block", ARG_IBLOCK, "<block_data>"},
    {"Expression", ARG_EXPR | ARG_STRG, "<expression>|<string>"},
};

TEST(ParserTable, ParameterSyntax)
{
    for (const ParameterCase& row : kParameterCases)
    {
        SCOPED_TRACE(row.name);
        const CMD_SET_RECORD record = PAR("p", row.type, 0, 2, 13, 0, 0);
        EXPECT_EQ(CScpiParserTable::GetSystemHelpSyntaxParameter(record.par, kTree), row.text);
    }
}

TEST(ParserTable, SwitchesCollapseByWholeWords)
{
    const CMD_SET_RECORD table[] = {
        HDR("A", 1, DEF, 0, 1, 1, 0),
        PAR("p", 0x81CF02, 0, 0, 0, 0, 0),
        PAR("p", 0x81CF02, 0, 1, 5, 0, 0),
        PAR("p", ARG_SFLOAT | MNEM, 0, 2, 4, 0, 0),
        CHR("OFF", 0, 2),
        CHR("ONCE", 1, 1),
    };
    EXPECT_EQ(CScpiParserTable::GetSystemHelpSyntaxParameter(table[1].par, table), "<boolean>");
    EXPECT_EQ(CScpiParserTable::GetSystemHelpSyntaxParameter(table[2].par, table), "<boolean>|ONCE");
    EXPECT_EQ(CScpiParserTable::GetSystemHelpSyntaxParameter(table[3].par, table),
              "<numeric_value>|OFF|ONCE");
}

TEST(ParserTable, DamagedTablesEnd)
{
    CMD_SET_RECORD tree[] = {
        HDR("A", 1, DEF, 1, 1, 0, 0),
        HDR("B", 1, DEF, 1, 2, 3, 0),
        HDR("C", 1, DEF, 0xFFFFFFFFU, 0, 0xFFFFFFFFU, 0),
        PAR("P", ARG_STRG, 0xFFFFFFFFU, 0xFFFFFFFFU, 1, 3, 0),
    };
    EXPECT_EQ(Listing(tree, false, true), (Lines{":A:B <string>", ":A:C", ":A"}));
    std::memset(tree[2].hdr.szKeyword, 'X', kTableTextSize);
    EXPECT_EQ(*std::next(Listing(tree, false, true).begin()), ":A:" + std::string(kTableTextSize, 'X'));
    tree[0].hdr.iLength = 0x80000000U;
    EXPECT_TRUE(Listing(tree, false, false).empty());
}

TEST(ParserTable, TreesAreFollowedFor32Levels)
{
    std::vector<CMD_SET_RECORD> chain;
    for (std::uint32_t i = 1; i <= 40; ++i)
    {
        chain.push_back(HDR("N", 1, DEF, i, 1, 0, 0));
    }
    chain.back().hdr.iSubStart = 0;
    EXPECT_EQ(Listing(chain.data(), false, false).size(), 32U);
}

} // namespace
