#include "CommandTableCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

namespace
{
constexpr std::string_view kPlaceholder = "undef";

bool IsTerminated(const char* text, std::size_t size)
{
    return std::memchr(text, '\0', size) != nullptr;
}

/// Walks everything that the roots lead to; the first fault ends the walk.
class CTableChecker
{
public:
    CTableChecker(const _CMD_SET_RECORD* table, std::size_t count)
        : m_table(table),
          m_count(count),
          m_groups(count),
          m_parameterSeen(count)
    {}

    std::string Run()
    {
        if (m_count == 0)
        {
            return "the table has no records";
        }
        const tagTableRoots roots = FindTableRoots(m_table, m_count);
        if (roots.iCommon != tagTableRoots::kNone && m_table[0].hdr.iLength == 0)
        {
            Fault(0, "length", "the common commands have no length");
        }
        for (const std::size_t root : {roots.iCommon, roots.iOrdinary})
        {
            if (root != tagTableRoots::kNone && m_fault.empty())
            {
                CheckGroup(root, root, "length", 1);
            }
        }
        return m_fault;
    }

private:
    enum class tagProgress : unsigned char
    {
        Unseen,
        Open,
        Done
    };

    struct tagGroup
    {
        tagProgress eProgress = tagProgress::Unseen;
        std::size_t iHeight = 0;
        std::size_t iNodes = 0;
    };

    void Fault(std::size_t record, std::string_view field, std::string_view what)
    {
        if (m_fault.empty())
        {
            m_fault = fmt::format("record {}, {}: {}", record, field, what);
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
        return true;
    }

    bool CheckText(std::size_t record, std::string_view field, const char* text)
    {
        if (!IsTerminated(text, kTableTextSize))
        {
            Fault(record, field, "the text has no terminating NUL");
            return false;
        }
        return true;
    }

    /// Leaves height and node count of the group in m_groups.
    void CheckGroup(std::size_t start, std::size_t referrer, std::string_view field, std::size_t level)
    {
        tagGroup& group = m_groups[start];
        if (group.eProgress == tagProgress::Open)
        {
            Fault(referrer, field, fmt::format("the group at {} contains itself", start));
        }
        else if (group.eProgress == tagProgress::Unseen)
        {
            WalkGroup(start, level);
        }
        if (level + group.iHeight > kMaxHeaderLevels + 1)
        {
            Fault(referrer, field, fmt::format("the tree has more than {} levels", kMaxHeaderLevels));
        }
    }

    void WalkGroup(std::size_t start, std::size_t level)
    {
        tagGroup& group = m_groups[start];
        group.eProgress = tagProgress::Open;
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
        group.iHeight = length == 0 ? 0 : 1;
        for (std::size_t record = start; record < start + length && m_fault.empty(); ++record)
        {
            CheckHeader(record, group, level);
            if (group.iNodes > kMaxTreeNodes || ++m_visited > kMaxTreeNodes)
            {
                Fault(start, "length", fmt::format("the tree has more than {} nodes", kMaxTreeNodes));
            }
        }
        group.eProgress = tagProgress::Done;
    }

    void CheckHeader(std::size_t record, tagGroup& group, std::size_t level)
    {
        const _CS_HDR& header = m_table[record].hdr;
        ++group.iNodes;
        if (!CheckText(record, "keyword", header.szKeyword))
        {
            return;
        }
        const std::string_view keyword = header.szKeyword;
        if (keyword.starts_with('[') != keyword.ends_with(']'))
        {
            Fault(record, "keyword", "a bracket has no partner");
            return;
        }
        if (header.iSubStart != 0 && CheckIndex(record, "SubStart", header.iSubStart))
        {
            CheckGroup(header.iSubStart, record, "SubStart", level + 1);
            group.iNodes += m_groups[header.iSubStart].iNodes;
            group.iHeight = std::max(group.iHeight, m_groups[header.iSubStart].iHeight + 1);
        }
        if (header.iDatatype != 0 && m_fault.empty() && CheckIndex(record, "datatype", header.iDatatype))
        {
            CheckChain(header.iDatatype);
        }
    }

    void CheckChain(std::size_t first)
    {
        std::size_t length = 0;
        for (std::size_t record = first; m_fault.empty();)
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
        const _CS_PAR& parameter = m_table[record].par;
        CheckText(record, "name", parameter.szName);
        if (parameter.iSuffixList != 0 && m_fault.empty() &&
            CheckIndex(record, "suffix list", parameter.iSuffixList))
        {
            CheckList(
                record, "suffix list", parameter.iSuffixList, m_table[parameter.iSuffixList].sfx.iLength);
        }
        if (parameter.iKeywords != 0 && m_fault.empty() &&
            CheckIndex(record, "keywords", parameter.iKeywords))
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
        for (std::size_t i = start; i < start + length; ++i)
        {
            if (!CheckText(i, "text", m_table[i].chr.szKeyword))
            {
                return;
            }
        }
    }

    const _CMD_SET_RECORD* m_table;
    std::size_t m_count;
    std::vector<tagGroup> m_groups;
    std::vector<bool> m_parameterSeen;
    std::size_t m_visited = 0;
    std::string m_fault;
};
} // namespace

std::string ValidateCommandTable(const _CMD_SET_RECORD* table, std::size_t count)
{
    return CTableChecker(table, table == nullptr ? 0 : count).Run();
}

tagTableRoots FindTableRoots(const _CMD_SET_RECORD* table, std::size_t count)
{
    tagTableRoots roots;
    if (count == 0 || (table[0].hdr.iFollow & CCMD) == 0)
    {
        roots.iOrdinary = count == 0 ? tagTableRoots::kNone : 0;
        return roots;
    }
    roots.iCommon = 0;
    std::size_t ordinary = table[0].hdr.iLength;
    // Deliberate: tables without common commands of their own keep their place with a group named undef.
    if (ordinary < count && IsTerminated(table[ordinary].hdr.szKeyword, kTableTextSize) &&
        table[ordinary].hdr.szKeyword == kPlaceholder)
    {
        ordinary *= 2;
    }
    if (ordinary != 0 && ordinary < count)
    {
        roots.iOrdinary = ordinary;
    }
    return roots;
}

} // namespace ZoVelkor::RemoteKernel
