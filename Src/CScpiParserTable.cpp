#include "CScpiParserTable.h"

#include "ParserTableRules.h"
#include "ScpiTableCheck.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace ZoVelkor
{

namespace
{

constexpr std::size_t kMaxTreeDepth = 32;

/// One listing under way: what is asked for, and the groups between the root and the present one.
class CCommandWalk
{
public:
    CCommandWalk(bool diagnostic, bool syntax, const _CMD_SET_RECORD* table, std::list<std::string>& out)
        : m_diagnostic(diagnostic),
          m_syntax(syntax),
          m_table(table),
          m_out(out)
    {}

    void WalkTable(std::size_t count)
    {
        const tagTableRoots roots = FindTableRoots(m_table, count);
        if (roots.iCommon != tagTableRoots::kNone)
        {
            WalkGroup("*", m_table + roots.iCommon);
        }
        if (roots.iOrdinary != tagTableRoots::kNone)
        {
            WalkGroup(std::string(), m_table + roots.iOrdinary);
        }
    }

    void WalkGroup(const std::string& prefix, const _CMD_SET_RECORD* group)
    {
        // Tables of unknown size are listed unexamined, so damage has to end here.
        const bool isCyclic = std::find(m_ancestors.begin(), m_ancestors.end(), group) != m_ancestors.end();
        if (isCyclic || m_ancestors.size() >= kMaxTreeDepth)
        {
            return;
        }
        m_ancestors.push_back(group);
        const long count = TableIndex(group->hdr.iLength);
        for (long i = 0; i < count; ++i)
        {
            WalkNode(prefix, group[i].hdr);
        }
        m_ancestors.pop_back();
    }

private:
    void WalkNode(const std::string& prefix, const _CS_HDR& header)
    {
        const std::string path = PathOf(prefix, header);
        const long child = TableIndex(header.iSubStart);
        if (child > 0)
        {
            WalkGroup(path, m_table + child);
        }
        const bool isExecutable = header.iNodataMode != DEF || header.iDataMode != DEF;
        if (!isExecutable || CScpiParserTable::GetSystemHelpHeaderIsDiagnostic(header) != m_diagnostic)
        {
            return;
        }
        if (m_syntax)
        {
            CScpiParserTable::CollectSyntaxHelp(path, m_out, header, m_table);
        }
        else
        {
            CScpiParserTable::CollectHeaderHelp(path, m_out, header, m_table);
        }
    }

    static std::string PathOf(const std::string& prefix, const _CS_HDR& header)
    {
        std::string_view keyword = TableText(header.szKeyword);
        std::string path = prefix;
        if (!IsCommonCommand(header))
        {
            path += keyword.starts_with('[') ? "[:" : ":";
            keyword.remove_prefix(keyword.starts_with('[') ? 1 : 0);
        }
        return path.append(keyword);
    }

    bool m_diagnostic;
    bool m_syntax;
    const _CMD_SET_RECORD* m_table;
    std::list<std::string>& m_out;
    std::vector<const _CMD_SET_RECORD*> m_ancestors;
};

/// Which forms a header has; a header without the query flag is for setting.
enum class Forms
{
    SettingOnly,
    QueryOnly,
    Both
};

Forms FormsOf(const _CS_HDR& header)
{
    if ((header.iFollow & QMARK) == 0)
    {
        return Forms::SettingOnly;
    }
    return (header.iFollow & HDR_SET) != 0 ? Forms::Both : Forms::QueryOnly;
}

/// A word that a parameter type stands for.
struct TypeWord
{
    std::uint32_t mask;
    const char* word;
};

/// A switch that also takes a number and mnemonics.
constexpr std::uint32_t kBooleanType = ARG_SFLOAT | ARG_OFF | MNEM;
static_assert(kBooleanType == 0x81CF02);

/// The first row whose bits are all set names the number.
constexpr TypeWord kNumberWords[] = {
    {ARG_SFLOAT, "<numeric_value>"},
    {ARG_SINT, "<integer>"},
    {ARG_PFLOAT_S | ARG_NFLOAT_S, "<float>"},
};

/// The number notations of types that none of the rows above covers.
constexpr TypeWord kNotationWords[] = {
    {ARG_HEX, "<hex>"},
    {ARG_BIN, "<bin>"},
    {ARG_OCT, "<oct>"},
};

/// Each row of which one bit is set adds its word.
constexpr TypeWord kTypeWords[] = {
    {ARG_MINMAX, "MINimum"},
    {ARG_MINMAX, "MAXimum"},
    {ARG_DEFAULT, "DEFault"},
    {ARG_UPDOWN, "UP"},
    {ARG_UPDOWN, "DOWN"},
    {ARG_OFF, "ON"},
    {ARG_OFF, "OFF"},
    {ARG_KEEP, "KEEP"},
    {ARG_STRG, "<string>"},
    {ARG_EXPR, "<expression>"},
    {ARG_BLOCK, "<block_data>"},
};

struct CollapseRule
{
    std::string_view words;
    std::string_view replacement;
};

constexpr CollapseRule kCollapses[] = {
    {"<numeric_value>|ON|OFF", "<boolean>"},
    {"<numeric_value>|OFF|ON", "<boolean>"},
    {"<boolean>|OFF|ON", "<boolean>"},
    {"<numeric_value>|DEFault|DOWN|MAXimum|MINimum|UP", "<numeric_value>"},
};

template <std::size_t size>
void AddWords(std::set<std::string>& words, const TypeWord (&rows)[size], std::uint32_t type)
{
    for (const TypeWord& row : rows)
    {
        if ((type & row.mask) != 0)
        {
            words.insert(row.word);
        }
    }
}

void AddNumberWords(std::set<std::string>& words, std::uint32_t type)
{
    if (type == kBooleanType)
    {
        words.insert("<boolean>");
        return;
    }
    for (const TypeWord& row : kNumberWords)
    {
        if ((type & row.mask) == row.mask)
        {
            words.insert(row.word);
            return;
        }
    }
    AddWords(words, kNotationWords, type);
}

/// Adds a word behind a separator, which an empty text does without.
void AppendWord(std::string& text, std::string_view word, char separator)
{
    if (!text.empty())
    {
        text += separator;
    }
    text += word;
}

/// Replaces a run of whole words in a text joined by "|".
void Collapse(std::string& text, const CollapseRule& rule)
{
    const std::size_t begin = text.find(rule.words);
    if (begin == std::string::npos)
    {
        return;
    }
    const std::size_t end = begin + rule.words.size();
    const bool isWhole = (begin == 0 || text[begin - 1] == '|') && (end == text.size() || text[end] == '|');
    if (isWhole)
    {
        text.replace(begin, rule.words.size(), rule.replacement);
    }
}

} // namespace

bool CScpiParserTable::HasCommonCommands() const
{
    return m_table != nullptr && m_count > 0 && IsCommonCommand(m_table->hdr);
}

long CScpiParserTable::GetParGroupSize(long start) const
{
    if (m_table == nullptr || start < 0 || start >= m_count)
    {
        return 0;
    }
    long size = 0;
    long index = start;
    do
    {
        size = std::max(size, index - start + 1);
        index = TableIndex(m_table[index].par.iNextPar);
    } while (index >= start + size && index < m_count);
    return size;
}

long CScpiParserTable::GetAllCommands(bool diagnostic, bool syntax, std::list<std::string>& out) const
{
    out.clear();
    const bool isSound =
        m_count == kUnknownCount || !CheckScpiTable(m_table, static_cast<std::size_t>(m_count));
    if (m_table != nullptr && isSound)
    {
        CCommandWalk(diagnostic, syntax, m_table, out).WalkTable(static_cast<std::size_t>(m_count));
    }
    return 0;
}

void CScpiParserTable::CollectCommands(bool diagnostic,
                                       bool syntax,
                                       const std::string& prefix,
                                       std::list<std::string>& out,
                                       const _CMD_SET_RECORD* group,
                                       const _CMD_SET_RECORD* table)
{
    CCommandWalk walk(diagnostic, syntax, table, out);
    if (group == table && prefix.empty() && IsCommonCommand(table->hdr))
    {
        walk.WalkTable(static_cast<std::size_t>(kUnknownCount));
    }
    else
    {
        walk.WalkGroup(prefix, group);
    }
}

void CScpiParserTable::CollectHeaderHelp(std::string path,
                                         std::list<std::string>& out,
                                         const _CS_HDR& header,
                                         const _CMD_SET_RECORD* /*table*/)
{
    out.push_back(std::move(path) + GetSystemHelpHeaderMessageTerminator(header));
}

void CScpiParserTable::CollectSyntaxHelp(std::string path,
                                         std::list<std::string>& out,
                                         const _CS_HDR& header,
                                         const _CMD_SET_RECORD* table)
{
    std::string line = std::move(path) + GetSystemHelpSyntaxMessageTerminator(header);
    const std::string parameters = GetSystemHelpSyntaxParameterList(header, table);
    if (!parameters.empty())
    {
        line += ' ' + parameters;
    }
    out.push_back(std::move(line));
}

bool CScpiParserTable::GetSystemHelpHeaderIsDiagnostic(const _CS_HDR& header)
{
    return (header.iFollow & HDR_DIAG) != 0;
}

std::string CScpiParserTable::GetSystemHelpHeaderMessageTerminator(const _CS_HDR& header)
{
    switch (FormsOf(header))
    {
    case Forms::SettingOnly:
        return "/nquery/";
    case Forms::QueryOnly:
        return "?/qonly/";
    case Forms::Both:
        break;
    }
    return {};
}

std::string CScpiParserTable::GetSystemHelpSyntaxMessageTerminator(const _CS_HDR& header)
{
    switch (FormsOf(header))
    {
    case Forms::Both:
        return "[?]";
    case Forms::QueryOnly:
        return "?";
    case Forms::SettingOnly:
        break;
    }
    return {};
}

std::string CScpiParserTable::GetSystemHelpSyntaxParameterList(const _CS_HDR& header,
                                                               const _CMD_SET_RECORD* table)
{
    std::string list;
    // The chain runs upward, so that it ends also in a damaged table.
    long previous = 0;
    for (long index = TableIndex(header.iDatatype); index > previous;)
    {
        const _CS_PAR& parameter = table[index].par;
        AppendWord(list, GetSystemHelpSyntaxParameter(parameter, table), ',');
        previous = std::exchange(index, TableIndex(parameter.iNextPar));
    }
    return list;
}

std::string CScpiParserTable::GetSystemHelpSyntaxParameter(const _CS_PAR& parameter,
                                                           const _CMD_SET_RECORD* table)
{
    std::set<std::string> words;
    AddNumberWords(words, parameter.iType);
    AddWords(words, kTypeWords, parameter.iType);
    if ((parameter.iType & MNEM) != 0)
    {
        GetSystemHelpSyntaxCharList(words, parameter, table);
    }
    if (words.empty())
    {
        words.insert("<any>");
    }
    std::string text;
    for (const std::string& word : words)
    {
        AppendWord(text, word, '|');
    }
    for (const CollapseRule& rule : kCollapses)
    {
        Collapse(text, rule);
    }
    const std::string units = GetSystemHelpSyntaxUnitList(parameter, table);
    return units.empty() ? text : text + " [" + units + ']';
}

void CScpiParserTable::GetSystemHelpSyntaxCharList(std::set<std::string>& words,
                                                   const _CS_PAR& parameter,
                                                   const _CMD_SET_RECORD* table)
{
    const long first = TableIndex(parameter.iKeywords);
    const long count = first > 0 ? TableIndex(parameter.iCount) : 0;
    for (long i = 0; i < count; ++i)
    {
        words.insert(GetSystemHelpSyntaxChar(table[first + i].chr));
    }
}

std::string CScpiParserTable::GetSystemHelpSyntaxUnitList(const _CS_PAR& parameter,
                                                          const _CMD_SET_RECORD* table)
{
    std::string units;
    const long first = TableIndex(parameter.iSuffixList);
    const long count = first > 0 ? TableIndex(table[first].sfx.iLength) : 0;
    for (long i = 0; i < count; ++i)
    {
        AppendWord(units, GetSystemHelpSyntaxUnit(table[first + i].sfx), '|');
    }
    return units;
}

std::string CScpiParserTable::GetSystemHelpSyntaxChar(const _CS_CHR& mnemonic)
{
    return std::string(TableText(mnemonic.szKeyword));
}

std::string CScpiParserTable::GetSystemHelpSyntaxUnit(const _CS_SFX& unit)
{
    return std::string(TableText(unit.szSuffix));
}

} // namespace ZoVelkor
