#include "CScpiParserTable.h"
#include "CScpiParserTableGroups.h"
#include "ParserTableRules.h"
#include "ScpiTableCheck.h"

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>
#include <vector>

namespace ZoVelkor
{

namespace
{

/// Visits every group once; pending header groups wait in a list, so that a deep tree needs no deep stack.
class CGroupAnalyser
{
public:
    CGroupAnalyser(const CScpiParserTable& table, CScpiParserTableGroups& groups)
        : m_table(table),
          m_records(table.GetParserTable()),
          m_count(table.GetRecordCount()),
          m_groups(groups)
    {}

    void AnalyseHeaders(long root)
    {
        AddPending(root);
        while (!m_pending.empty())
        {
            const long start = m_pending.back();
            m_pending.pop_back();
            AnalyseHeaderGroup(start);
        }
        AnalyseParameterLists();
    }

private:
    bool IsNew(tagScpiTableKind kind, long start)
    {
        return start < m_count && m_seen[static_cast<std::size_t>(kind)].insert(start).second;
    }

    void AddPending(long start)
    {
        if (IsNew(tagScpiTableKind::Header, start))
        {
            m_pending.push_back(start);
        }
    }

    bool IsInside(long start, long size) const { return size <= m_count - start; }

    void AnalyseHeaderGroup(long start)
    {
        const long length = TableIndex(m_records[start].hdr.iLength);
        if (length < 0 || !IsInside(start, length))
        {
            return;
        }
        m_groups.AddGroup(tagScpiTableKind::Header, start, length);
        for (long i = start; i < start + length; ++i)
        {
            const _CS_HDR& header = m_records[i].hdr;
            if (TableIndex(header.iSubStart) > 0)
            {
                AddPending(TableIndex(header.iSubStart));
            }
            if (TableIndex(header.iDatatype) > 0)
            {
                AnalyseParameterGroup(TableIndex(header.iDatatype));
            }
        }
    }

    void AnalyseParameterGroup(long start)
    {
        if (!IsNew(tagScpiTableKind::Parameter, start))
        {
            return;
        }
        const long size = m_table.GetParGroupSize(start);
        m_groups.AddGroup(tagScpiTableKind::Parameter, start, size);
        m_parameters.emplace_back(start, start + size);
    }

    /// Chains may share records; in ascending order each record is looked at once.
    void AnalyseParameterLists()
    {
        std::sort(m_parameters.begin(), m_parameters.end());
        long next = 0;
        for (const auto& [start, end] : m_parameters)
        {
            for (next = std::max(next, start); next < end; ++next)
            {
                const _CS_PAR& parameter = m_records[next].par;
                AnalyseList(tagScpiTableKind::CharacterData, TableIndex(parameter.iKeywords));
                AnalyseList(tagScpiTableKind::UnitSuffix, TableIndex(parameter.iSuffixList));
            }
        }
        m_parameters.clear();
    }

    /// Units and mnemonics keep their group's length in the same place.
    void AnalyseList(tagScpiTableKind kind, long start)
    {
        if (start <= 0 || !IsNew(kind, start))
        {
            return;
        }
        const long length = TableIndex(m_records[start].sfx.iLength);
        if (length >= 0 && IsInside(start, length))
        {
            m_groups.AddGroup(kind, start, length);
        }
    }

    const CScpiParserTable& m_table;
    const _CMD_SET_RECORD* m_records;
    long m_count;
    CScpiParserTableGroups& m_groups;
    std::vector<long> m_pending;
    std::vector<std::pair<long, long>> m_parameters; ///< start and end of chains not yet looked into
    std::array<std::unordered_set<long>, kScpiTableKinds> m_seen;
};

} // namespace

void CScpiParserTable::AnalyseGroups(CScpiParserTableGroups& groups) const
{
    if (m_table == nullptr)
    {
        return;
    }
    groups.Reset();
    if (m_count > 0)
    {
        CGroupAnalyser analyser(*this, groups);
        analyser.AnalyseHeaders(0);
        analyser.AnalyseHeaders(RootGroupIndex(m_table, m_count));
    }
    if (m_count != kUnknownCount && m_count > 0)
    {
        const auto count = static_cast<std::size_t>(m_count);
        const auto start = static_cast<long>(FindSuffixExpressionStart(m_table, count));
        // Expressions stand behind every other group; damaged records inside a group are none.
        if (start < m_count && start >= groups.TableEnd())
        {
            groups.AddGroup(tagScpiTableKind::NumericSuffix, start, m_count - start);
        }
    }
    groups.Finish();
}

} // namespace ZoVelkor
