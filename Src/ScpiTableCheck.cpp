#include "ScpiTableCheck.h"

#include "CNumericSuffixExpression.h"
#include "ParserTableRules.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace ZoVelkor
{

namespace
{

/// Walks everything that the roots lead to; the first fault ends the walk.
class CTableChecker
{
public:
    CTableChecker(const _CMD_SET_RECORD* table, std::size_t count, tagScpiTableRules rules)
        : m_table(table),
          m_count(count),
          m_rules(rules),
          m_groups(count),
          m_parameterSeen(count),
          m_headerSeen(count),
          m_listSeen(count)
    {}

    std::optional<tagScpiTableFault> Run()
    {
        if (m_count == 0)
        {
            return tagScpiTableFault{tagScpiTableFault::kNoRecord, {}, "the table has no records"};
        }
        const tagTableRoots roots = FindTableRoots(m_table, m_count);
        const bool hasCommon = roots.iCommon != tagTableRoots::kNone;
        if (hasCommon && m_table[0].hdr.iLength == 0)
        {
            Fault(0, "length", "the common commands have no length");
        }
        // A placeholder behind the common commands counts as well: merging takes it for the root group.
        const std::size_t behind = hasCommon ? m_table[0].hdr.iLength : roots.iOrdinary;
        for (const std::size_t root : {roots.iCommon, behind, roots.iOrdinary})
        {
            if (root < m_count && m_fault == std::nullopt)
            {
                CheckGroup(root, root, "length", 1);
            }
        }
        CheckExpressions();
        return std::move(m_fault);
    }

private:
    enum class Progress : unsigned char
    {
        Unseen,
        Open,
        Done
    };

    struct Group
    {
        Progress progress = Progress::Unseen;
        std::size_t height = 0;
        std::size_t nodes = 0;
    };

    bool IsSound() const { return !m_fault.has_value(); }

    void Fault(std::size_t record, std::string_view field, std::string text)
    {
        if (IsSound())
        {
            m_fault = tagScpiTableFault{record, std::string(field), std::move(text)};
        }
    }

    bool CheckIndex(std::size_t record, std::string_view field, std::size_t index)
    {
        if (index >= m_count)
        {
            Fault(record, field, fmt::format("index {} is outside the table ({} records)", index, m_count));
            return false;
        }
        return true;
    }

    bool CheckRun(std::size_t record, std::string_view field, std::size_t start, std::size_t length)
    {
        if (length > m_count - start)
        {
            Fault(record,
                  field,
                  fmt::format("{} records from {} reach past the end of the table ({} records)",
                              length,
                              start,
                              m_count));
            return false;
        }
        m_end = std::max(m_end, start + length);
        return true;
    }

    template <std::size_t size>
    bool CheckText(std::size_t record, std::string_view field, const char (&text)[size])
    {
        if (TableText(text).size() == size)
        {
            Fault(record, field, "the text has no terminating NUL");
            return false;
        }
        return true;
    }

    /// Leaves height and node count of the group in m_groups.
    void CheckGroup(std::size_t start, std::size_t referrer, std::string_view field, std::size_t level)
    {
        Group& group = m_groups[start];
        if (group.progress == Progress::Open)
        {
            Fault(referrer, field, fmt::format("the group at {} contains itself", start));
        }
        else if (group.progress == Progress::Unseen)
        {
            WalkGroup(start, level);
        }
        // A group that was walked at a higher level may be too deep from here.
        if (level + group.height > kMaxHeaderLevels + 1)
        {
            Fault(referrer, field, fmt::format("the tree has more than {} levels", kMaxHeaderLevels));
        }
    }

    void WalkGroup(std::size_t start, std::size_t level)
    {
        Group& group = m_groups[start];
        // Open while it is walked: meeting it again before it is done means that it contains itself.
        group.progress = Progress::Open;
        const std::size_t length = m_table[start].hdr.iLength;
        if (level > kMaxHeaderLevels)
        {
            Fault(start, "length", fmt::format("the tree has more than {} levels", kMaxHeaderLevels));
            return;
        }
        if (!CheckRun(start, "length", start, length))
        {
            return;
        }
        group.height = length == 0 ? 0 : 1;
        for (std::size_t record = start; record < start + length && IsSound(); ++record)
        {
            CheckHeader(record, group, level);
            // Counted twice, as a reader would expand shared groups, and as this walk visits them.
            if (group.nodes > kMaxTreeNodes || ++m_visited > kMaxTreeNodes)
            {
                Fault(start, "length", fmt::format("the tree has more than {} nodes", kMaxTreeNodes));
            }
        }
        group.progress = Progress::Done;
    }

    void CheckHeader(std::size_t record, Group& group, std::size_t level)
    {
        const _CS_HDR& header = m_table[record].hdr;
        ++group.nodes;
        m_headerSeen[record] = true;
        if (!CheckText(record, "keyword", header.szKeyword))
        {
            return;
        }
        const std::string_view keyword = header.szKeyword;
        if (m_rules == tagScpiTableRules::Keywords && keyword.starts_with('[') != keyword.ends_with(']'))
        {
            Fault(record, "keyword", "a bracket has no partner");
            return;
        }
        if (header.iSubStart != 0 && CheckIndex(record, "SubStart", header.iSubStart))
        {
            CheckGroup(header.iSubStart, record, "SubStart", level + 1);
            group.nodes += m_groups[header.iSubStart].nodes;
            group.height = std::max(group.height, m_groups[header.iSubStart].height + 1);
        }
        if (header.iDatatype != 0 && IsSound() && CheckIndex(record, "datatype", header.iDatatype))
        {
            CheckChain(header.iDatatype);
        }
    }

    void CheckChain(std::size_t first)
    {
        std::size_t length = 0;
        for (std::size_t record = first; IsSound();)
        {
            if (++length > kMaxChainLength)
            {
                Fault(
                    first, "nextpar", fmt::format("the chain has more than {} parameters", kMaxChainLength));
                return;
            }
            CheckParameter(record);
            const std::size_t next = m_table[record].par.iNextPar;
            if (next <= record || !CheckIndex(record, "nextpar", next))
            {
                return;
            }
            record = next;
        }
    }

    void CheckParameter(std::size_t record)
    {
        if (m_parameterSeen[record])
        {
            return;
        }
        m_parameterSeen[record] = true;
        m_end = std::max(m_end, record + 1);
        const _CS_PAR& parameter = m_table[record].par;
        CheckText(record, "name", parameter.szName);
        if (parameter.iSuffixList != 0 && IsSound() &&
            CheckIndex(record, "suffix list", parameter.iSuffixList))
        {
            CheckList(
                record, "suffix list", parameter.iSuffixList, m_table[parameter.iSuffixList].sfx.iLength);
        }
        if (parameter.iKeywords != 0 && IsSound() && CheckIndex(record, "keywords", parameter.iKeywords))
        {
            const std::size_t length =
                parameter.iCount != 0 ? parameter.iCount : m_table[parameter.iKeywords].chr.iLength;
            CheckList(record, "count", parameter.iKeywords, length);
        }
    }

    /// Units and mnemonics begin with their text alike.
    void CheckList(std::size_t record, std::string_view field, std::size_t start, std::size_t length)
    {
        if (length > kMaxListLength)
        {
            Fault(record, field, fmt::format("the list has more than {} records", kMaxListLength));
            return;
        }
        if (!CheckRun(record, field, start, length))
        {
            return;
        }
        // Many parameters share a list; what was found sound once is not examined again.
        for (std::size_t i = start + m_listSeen[start]; i < start + length && IsSound(); ++i)
        {
            CheckText(i, "text", m_table[i].chr.szKeyword);
        }
        m_listSeen[start] = std::max(m_listSeen[start], length);
    }

    void CheckExpressions()
    {
        const std::size_t start = FindSuffixExpressionStart(m_table, m_count);
        if (start < m_end)
        {
            Fault(m_end - 1, "value", "a record of another kind is marked as a numeric-suffix expression");
        }
        for (std::size_t i = start; i < m_count && IsSound(); ++i)
        {
            const std::size_t header = m_table[i].nse.iValue & ~NSE_HEADER;
            if (CheckText(i, "expression", m_table[i].nse.szExpression))
            {
                CheckExpression(i);
            }
            if (header >= m_count || !m_headerSeen[header])
            {
                Fault(i, "value", fmt::format("index {} is not a header of the tree", header));
            }
        }
    }

    void CheckExpression(std::size_t record)
    {
        const std::string text = m_table[record].nse.szExpression;
        CNumericSuffixExpression expression;
        long position = 0;
        std::string error;
        if (!expression.SetExpression(text, false, position, error))
        {
            Fault(record, "expression", fmt::format("'{}' at offset {}: {}", text, position, error));
        }
    }

    const _CMD_SET_RECORD* m_table;
    std::size_t m_count;
    tagScpiTableRules m_rules;
    std::vector<Group> m_groups;
    std::vector<bool> m_parameterSeen;
    std::vector<bool> m_headerSeen;
    std::vector<std::size_t> m_listSeen;
    std::size_t m_visited = 0;
    std::size_t m_end = 0;
    std::optional<tagScpiTableFault> m_fault;
};

} // namespace

std::string tagScpiTableFault::Message() const
{
    return iRecord == kNoRecord ? text : fmt::format("record {}, {}: {}", iRecord, field, text);
}

std::optional<tagScpiTableFault>
CheckScpiTable(const _CMD_SET_RECORD* table, std::size_t count, tagScpiTableRules rules)
{
    return CTableChecker(table, table == nullptr ? 0 : count, rules).Run();
}

tagTableRoots FindTableRoots(const _CMD_SET_RECORD* table, std::size_t count)
{
    tagTableRoots roots;
    if (table == nullptr || count == 0)
    {
        return roots;
    }
    const auto ordinary = static_cast<std::size_t>(RootGroupIndex(table, static_cast<long>(count)));
    const bool hasCommon = IsCommonCommand(table->hdr);
    roots.iCommon = hasCommon ? 0 : tagTableRoots::kNone;
    if (ordinary < count && (ordinary != 0 || !hasCommon))
    {
        roots.iOrdinary = ordinary;
    }
    return roots;
}

std::size_t FindSuffixExpressionStart(const _CMD_SET_RECORD* table, std::size_t count)
{
    std::size_t start = table == nullptr ? 0 : count;
    while (start > 0 && (table[start - 1].nse.iValue & NSE_HEADER) != 0)
    {
        --start;
    }
    return start;
}

std::vector<tagSuffixExpression> FindSuffixExpressions(const _CMD_SET_RECORD* table, std::size_t count)
{
    std::vector<tagSuffixExpression> expressions;
    const std::size_t start = FindSuffixExpressionStart(table, count);
    for (std::size_t i = start; table != nullptr && i < count; ++i)
    {
        const std::size_t header = table[i].nse.iValue & ~NSE_HEADER;
        const std::string_view text = TableText(table[i].nse.szExpression);
        if (header < start && text.size() < kTableExpressionSize)
        {
            expressions.push_back({header, text});
        }
    }
    return expressions;
}

} // namespace ZoVelkor
