#include "CScpiParserTable.h"
#include "CScpiParserTableGroups.h"
#include "ParserTableRules.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>

namespace ZoVelkor
{

namespace
{

struct FlagName
{
    const char* name;
    std::uint32_t mask;
};

constexpr FlagName kHeaderFlags[] = {
    {"CCMD", CCMD},
    {"MNEM", MNEM},
    {"COMP", COMP},
    {"NSUFF", NSUFF},
    {"QMARK", QMARK},
    {"HDR", HDR},
    {"UNIT", UNIT},
    {"MESS", MESS},
    {"HDR_SET", HDR_SET},
    {"HDR_DIAG", HDR_DIAG},
    {"DELEGATE", DELEGATE},
    {"NSUFF_EXT", NSUFF_EXT},
};

/// Names of several bits stand before the names of the bits.
constexpr FlagName kParameterTypes[] = {
    {"ARG_SFLOAT", ARG_SFLOAT},
    {"ARG_SINT", ARG_SINT},
    {"ARG_PFLOAT", ARG_PFLOAT},
    {"ARG_NFLOAT", ARG_NFLOAT},
    {"ARG_BLOCK", ARG_BLOCK},
    {"MNEM", MNEM},
    {"ARG_PINT", ARG_PINT},
    {"ARG_NINT", ARG_NINT},
    {"ARG_PFLOAT_S", ARG_PFLOAT_S},
    {"ARG_NFLOAT_S", ARG_NFLOAT_S},
    {"ARG_IBLOCK", ARG_IBLOCK},
    {"ARG_DBLOCK", ARG_DBLOCK},
    {"ARG_HEX", ARG_HEX},
    {"ARG_BIN", ARG_BIN},
    {"ARG_OCT", ARG_OCT},
    {"ARG_STRG", ARG_STRG},
    {"ARG_STRGUD", ARG_STRGUD},
    {"ARG_EXPR", ARG_EXPR},
    {"ARG_MINMAX", ARG_MINMAX},
    {"ARG_DEFAULT", ARG_DEFAULT},
    {"ARG_UPDOWN", ARG_UPDOWN},
    {"ARG_OFF", ARG_OFF},
    {"ARG_KEEP", ARG_KEEP},
    {"HDR_DIAG", HDR_DIAG},
    {"NSUFF_EXT", NSUFF_EXT},
    {"EXP", EXP},
    {"SUFF", SUFF},
    {"DATA", DATA},
    {"SYNERR", SYNERR},
};

constexpr FlagName kArgumentFlags[] = {
    {"ARG_FLAG_EXP", ARG_FLAG_EXP},
    {"ARG_FLAG_SSR", ARG_FLAG_SSR},
    {"ARG_FLAG_REP", ARG_FLAG_REP},
    {"ARG_FLAG_DIAG", ARG_FLAG_DIAG},
    {"ARG_FLAG_OPT", ARG_FLAG_OPT},
    {"ARG_FLAG_OPEN_BEGIN", ARG_FLAG_OPEN_BEGIN},
    {"ARG_FLAG_OPEN_END", ARG_FLAG_OPEN_END},
    {"ARG_FLAG_OPT_GROUP", ARG_FLAG_OPT_GROUP},
};

constexpr FlagName kArgumentFlagsWithoutSsr[] = {
    {"JA", ARG_FLAG_EXP},
};

/// How a kind of group is written.
struct KindText
{
    tagScpiTableKind kind;
    const char* label;
    const char* title;
    const char* columns;
};

// clang-format off
constexpr const char* kHeaderColumns =
    " *    | Keyword       | nodata mode                    | data mode                      | SubStart | length   | datatype | follow";
constexpr const char* kParameterColumns =
    " *    | internal name | parameter type                 | suffix list                    | count    | keywords | nextpar  | exponent";
constexpr const char* kUnitColumns = " *    | suffix        | enum                           | table length";
constexpr const char* kWordColumns = " *    | keyword       | enum                           | table length";
// clang-format on

/// In the order in which a record is looked up.
constexpr KindText kKinds[] = {
    {tagScpiTableKind::Header, "HDR", "/** command token tables", kHeaderColumns},
    {tagScpiTableKind::Parameter, "PAR", "/** parameter types", kParameterColumns},
    {tagScpiTableKind::CharacterData, "CHR", "/** character data tables", kWordColumns},
    {tagScpiTableKind::UnitSuffix, "SFX", "/** unit suffix tables", kUnitColumns},
};

constexpr const char* kStars =
    "//******************************************************************************";

constexpr const char* kHeaderIntro[] = {
    kStars,
    "//",
    "// @file          PrsTab.hpp",
    "// @copyright     Owner of the command table",
    "// @version       $Header$",
    "// @author        CScpiParserTable",
    "// @language      C++ ANSI V3",
    "//",
    "// @description   Automatisch generierte Parser-Tabelle.",
    "//",
    "// @history",
    "//   $Log$",
    "//",
    kStars,
    kStars,
    "",
    "#ifndef ZO_SCPITREE_PRSTAB_TEMPLATE_H_INCLUDED",
    "#define ZO_SCPITREE_PRSTAB_TEMPLATE_H_INCLUDED",
    "",
    "// TYPES DECLARATION ***********************************************************",
    "",
    "// CONSTANTS DEFINITION ********************************************************",
    "#ifdef  __cplusplus",
    "extern \"C\" {",
    "#endif",
    "extern CMD_SET_RECORD  CommandSetTables[]; ",
    "extern unsigned long  CommandSetTableSize; ",
    "#ifdef  __cplusplus",
    "}",
    "#endif",
};

constexpr const char* kHeaderFinal[] = {
    "// MACRO DEFINITIONS ***********************************************************",
    "",
    "// INLINE FUNCTIONS ************************************************************",
    "",
    "#endif /* ZO_SCPITREE_PRSTAB_TEMPLATE_H_INCLUDED */",
};

// Deliberate: tools that compare versions of the file expect no comment line before the description.
constexpr const char* kSourceIntro[] = {
    kStars,
    "//",
    "// @file          PrsTab.cpp",
    "// @copyright     Owner of the command table",
    "// @version       $Header$",
    "// @author        CScpiParserTable",
    "// @language      C++ ANSI V3",
    "// @description   Automatisch generierte Parser-Tabelle.",
    "//",
    "// @history",
    "//   $Log$",
    "//",
    kStars,
    kStars,
    "",
    "//lint -e72 -e12 -e322 -e7 template file",
    "#include \"StdAfx.h\"",
    "#include \"PrsTab.h\"",
    "#include \"ZoRemote.h\"",
    "",
};

void WriteLine(std::ostream& out, std::string_view line)
{
    out << line << std::endl;
}

template <std::size_t size>
void WriteLines(std::ostream& out, const char* const (&lines)[size])
{
    for (const char* line : lines)
    {
        WriteLine(out, line);
    }
}

/// A field's text as string literal. A text without terminator loses its last character, because a literal
/// brings its own terminator along.
template <std::size_t size>
std::string Quoted(const char (&field)[size])
{
    std::string literal = "\"";
    char former = '\0';
    for (const char character : TableText(field).substr(0, size - 1))
    {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte >= 0x7F)
        {
            literal += fmt::format("\\{:03o}", byte);
        }
        else
        {
            // Two question marks in a row could begin a trigraph.
            const bool isSpecial = byte == '"' || byte == '\\' || (byte == '?' && former == '?');
            literal.append(isSpecial ? 1 : 0, '\\').append(1, character);
        }
        former = character;
    }
    return literal + '"';
}

template <std::size_t size>
std::string FlagText(const FlagName (&names)[size], std::uint32_t value)
{
    std::string text;
    for (const FlagName& row : names)
    {
        CScpiParserTableGroups::TokeniseEnum(text, value, row.name, row.mask);
    }
    CScpiParserTableGroups::TokeniseValue(text, value);
    return text;
}

std::string ArgumentFlagText(std::uint32_t flags)
{
    // Deliberate: readers of the file know the flags without ARG_FLAG_SSR by "JA" and numbers only.
    return (flags & ARG_FLAG_SSR) != 0 ? FlagText(kArgumentFlags, flags)
                                       : FlagText(kArgumentFlagsWithoutSsr, flags);
}

/// The handler index as text; its name is collected.
std::string ModeText(CScpiParserTableGroups& groups, std::int32_t mode)
{
    if (mode == DEF)
    {
        return "DEF";
    }
    std::string number = std::to_string(mode);
    groups.m_modeNames["IEC_" + number] = mode;
    return number;
}

std::string RecordText(CScpiParserTableGroups& groups, const _CS_HDR& record)
{
    return fmt::format("HDR( {:<18}, {:<31}, {:<31}, {:<9}, {:<9}, {:<9}, {})",
                       Quoted(record.szKeyword),
                       ModeText(groups, record.iNodataMode),
                       ModeText(groups, record.iDataMode),
                       record.iSubStart,
                       record.iLength,
                       record.iDatatype,
                       FlagText(kHeaderFlags, record.iFollow));
}

std::string RecordText(const _CS_PAR& record)
{
    return fmt::format("PAR( {:<18}, {:<51}, {:<11}, {:<9}, {:<9}, {:<9}, {})",
                       Quoted(record.szName),
                       FlagText(kParameterTypes, record.iType),
                       record.iSuffixList,
                       record.iCount,
                       record.iKeywords,
                       record.iNextPar,
                       ArgumentFlagText(record.iExponent));
}

std::string RecordText(const _CS_SFX& record)
{
    return fmt::format("SFX({:<18}, {:<31}, {:<31})", Quoted(record.szSuffix), record.iEnum, record.iLength);
}

std::string RecordText(const _CS_CHR& record)
{
    return fmt::format(
        "CHR( {:<18}, {:<31}, {:<31})", Quoted(record.szKeyword), record.iEnum, record.iLength);
}

std::string RecordText(const _CS_NSE& record)
{
    return fmt::format("NSE( {:<40}, {:<9})", Quoted(record.szExpression), record.iValue);
}

std::string RecordText(CScpiParserTableGroups& groups, tagScpiTableKind kind, const _CMD_SET_RECORD& record)
{
    switch (kind)
    {
    case tagScpiTableKind::Header:
        return RecordText(groups, record.hdr);
    case tagScpiTableKind::Parameter:
        return RecordText(record.par);
    case tagScpiTableKind::UnitSuffix:
        return RecordText(record.sfx);
    case tagScpiTableKind::CharacterData:
        return RecordText(record.chr);
    case tagScpiTableKind::NumericSuffix:
        return RecordText(record.nse);
    case tagScpiTableKind::None:
        break;
    }
    return {};
}

/// Column comment, at the first group of a kind, and label of a group.
void WriteGroupBlock(
    std::ostream& source, CScpiParserTableGroups& groups, const KindText& text, long start, long size)
{
    bool& isStarted = groups.m_commentWritten.at(static_cast<std::size_t>(text.kind));
    // Deliberate: users of the labels know the first group of a kind as 0 and the last one as 1.
    const std::string name = fmt::format("_{}_{:d}", text.label, isStarted);
    if (!isStarted)
    {
        const char* const comment[] = {text.title, " *", text.columns, " */", ""};
        WriteLines(source, comment);
        isStarted = true;
    }
    WriteLine(source, "");
    WriteLine(source, fmt::format("/* [{}] token group B{} */", start, name));
    groups.m_labels["B" + name] = start;
    groups.m_labels["L" + name] = size;
}

long& GroupEnd(CScpiParserTableGroups& groups, tagScpiTableKind kind)
{
    return groups.m_groupEnds.at(static_cast<std::size_t>(kind));
}

bool StartsAt(const CScpiParserTableGroups& groups, tagScpiTableKind kind, long index)
{
    const std::vector<long>& starts = groups.Groups(kind);
    return std::binary_search(starts.begin(), starts.end(), index);
}

} // namespace

void CScpiParserTable::DumpSourceHeader(std::ostream& source, std::ostream& header) const
{
    CScpiParserTableGroups groups;
    AnalyseGroups(groups);
    DumpHeader_Intro(header);
    DumpHeader_Final(header);
    DumpSource_Intro(source);
    DumpSource_Table(source, groups);
}

void CScpiParserTable::DumpHeader_Intro(std::ostream& header)
{
    WriteLines(header, kHeaderIntro);
}

void CScpiParserTable::DumpHeader_Final(std::ostream& header)
{
    WriteLines(header, kHeaderFinal);
}

void CScpiParserTable::DumpSource_Intro(std::ostream& source)
{
    WriteLines(source, kSourceIntro);
}

void CScpiParserTable::DumpSource_Table(std::ostream& source, CScpiParserTableGroups& groups) const
{
    static constexpr const char* kBegin[] = {"CMD_SET_RECORD CommandSetTables[] =", "{", ""};
    static constexpr const char* kEnd[] = {
        "};", "", "unsigned long  CommandSetTableSize = sizeof(CommandSetTables);"};
    WriteLines(source, kBegin);
    for (long index = 0; index < groups.TableEnd(); ++index)
    {
        DumpSource_Element(source, groups, index);
    }
    WriteLines(source, kEnd);
}

void CScpiParserTable::DumpSource_Element(std::ostream& source,
                                          CScpiParserTableGroups& groups,
                                          long index) const
{
    DumpSource_Group(source, groups, index);
    groups.DumpOffset(source, index);
    const std::string text = RecordText(groups, groups.m_kind, m_table[index]);
    if (text.empty())
    {
        // Deliberate: the hole is shown; what the record means is not known.
        WriteLine(source, " /** UNREFERENCED **/");
        return;
    }
    WriteLine(source, (index == 0 ? "   " : "  ,") + text);
}

void CScpiParserTable::DumpSource_Group(std::ostream& source,
                                        CScpiParserTableGroups& groups,
                                        long index) const
{
    // Behind a group that lies inside another one the outer group goes on.
    if (groups.m_kind == tagScpiTableKind::None || index >= GroupEnd(groups, groups.m_kind))
    {
        const auto* const outer =
            std::find_if(std::begin(kKinds), std::end(kKinds), [&](const KindText& row) {
                return index < GroupEnd(groups, row.kind);
            });
        groups.m_kind = outer != std::end(kKinds) ? outer->kind : tagScpiTableKind::None;
    }
    if (StartsAt(groups, tagScpiTableKind::NumericSuffix, index))
    {
        groups.m_kind = tagScpiTableKind::NumericSuffix;
        GroupEnd(groups, groups.m_kind) = groups.TableEnd();
        return;
    }
    const auto* const text = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const KindText& row) {
        return StartsAt(groups, row.kind, index);
    });
    if (text == std::end(kKinds))
    {
        return;
    }
    const long size = GetGroupSize(text->kind, index);
    WriteGroupBlock(source, groups, *text, index, size);
    // A parameter chain may begin inside another one; the longer one counts.
    groups.m_kind = text->kind;
    GroupEnd(groups, text->kind) = std::max(GroupEnd(groups, text->kind), index + size);
}

long CScpiParserTable::GetGroupSize(tagScpiTableKind kind, long start) const
{
    const _CMD_SET_RECORD& record = m_table[start];
    switch (kind)
    {
    case tagScpiTableKind::Header:
        return TableIndex(record.hdr.iLength);
    case tagScpiTableKind::Parameter:
        return GetParGroupSize(start);
    case tagScpiTableKind::UnitSuffix:
        return TableIndex(record.sfx.iLength);
    case tagScpiTableKind::CharacterData:
        return TableIndex(record.chr.iLength);
    case tagScpiTableKind::NumericSuffix:
    case tagScpiTableKind::None:
        break;
    }
    return 0;
}

} // namespace ZoVelkor
