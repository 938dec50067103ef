#include "TableGroupList.h"

#include "CScpiParserTable.h"
#include "Common/ToolFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

namespace ZoVelkor::Tools
{

namespace
{

/// Entries shown of one group: the groups of a strange table may overlap and be as long as the table.
constexpr std::size_t kMaxEntries = 256;

struct KindTitle
{
    tagScpiTableKind kind;
    const char* title;
};

constexpr KindTitle kKinds[] = {
    {tagScpiTableKind::Header, "Headers"},
    {tagScpiTableKind::Parameter, "Parameters"},
    {tagScpiTableKind::UnitSuffix, "Units"},
    {tagScpiTableKind::CharacterData, "Mnemonics"},
    {tagScpiTableKind::NumericSuffix, "Numeric-suffix expressions"},
};

struct GroupRange
{
    tagScpiTableKind kind;
    std::size_t start;
    std::size_t size;
};

std::size_t GroupSize(const CScpiParserTable& table, tagScpiTableKind kind, long start)
{
    const _CMD_SET_RECORD& record = table.GetParserTable()[start];
    switch (kind)
    {
    case tagScpiTableKind::Header:
        return record.hdr.iLength;
    case tagScpiTableKind::Parameter:
        return static_cast<std::size_t>(table.GetParGroupSize(start));
    case tagScpiTableKind::UnitSuffix:
        return record.sfx.iLength;
    case tagScpiTableKind::CharacterData:
        return record.chr.iLength;
    case tagScpiTableKind::NumericSuffix:
        return static_cast<std::size_t>(table.GetRecordCount() - start);
    case tagScpiTableKind::None:
        break;
    }
    return 0;
}

std::vector<GroupRange> FindGroups(NamedTable& source)
{
    CScpiParserTable table;
    table.SetParserTable(source.records.data(), static_cast<long>(source.records.size()));
    CScpiParserTableGroups groups;
    table.AnalyseGroups(groups);
    std::vector<GroupRange> ranges;
    for (const KindTitle& kind : kKinds)
    {
        for (const long start : groups.Groups(kind.kind))
        {
            ranges.push_back(
                {kind.kind, static_cast<std::size_t>(start), GroupSize(table, kind.kind, start)});
        }
    }
    return ranges;
}

/// The text that a record of any kind begins with.
std::string RecordName(const _CMD_SET_RECORD& record, tagScpiTableKind kind)
{
    if (kind == tagScpiTableKind::NumericSuffix)
    {
        return fmt::format("{}:{}", record.nse.iValue & ~NSE_HEADER, Printable(record.nse.szExpression));
    }
    const bool isCommon = kind == tagScpiTableKind::Header && (record.hdr.iFollow & CCMD) != 0;
    // The check asks for the NUL of the records that commands use, and a list may be longer.
    const std::string_view text(record.hdr.szKeyword, strnlen(record.hdr.szKeyword, kTableTextSize));
    std::string name(isCommon ? "*" : "");
    return name += Printable(text);
}

/// The record behind one of a group; what lies inside a parameter chain without belonging to it is passed
/// over.
std::size_t NextRecord(const NamedTable& table, const GroupRange& group, std::size_t record)
{
    const std::size_t next =
        group.kind == tagScpiTableKind::Parameter ? table.records[record].par.iNextPar : record + 1;
    return next > record ? next : group.start + group.size;
}

void AppendGroup(std::string& text, const NamedTable& table, const GroupRange& group)
{
    text += fmt::format("{:>6} {:>6} ", group.start, group.size);
    std::size_t entries = 0;
    for (std::size_t i = group.start; i < group.start + group.size; i = NextRecord(table, group, i))
    {
        if (++entries > kMaxEntries)
        {
            text += " ...";
            break;
        }
        text += ' ' + RecordName(table.records[i], group.kind);
    }
    text += '\n';
}

} // namespace

std::string DescribeGroups(NamedTable& table)
{
    const std::vector<GroupRange> groups = FindGroups(table);
    std::string text = fmt::format("{} records, {} groups\n", table.records.size(), groups.size());
    const char* title = nullptr;
    for (const GroupRange& group : groups)
    {
        const auto* const kind = std::find_if(std::begin(kKinds),
                                              std::end(kKinds),
                                              [&](const KindTitle& row) { return row.kind == group.kind; });
        if (kind->title != title)
        {
            title = kind->title;
            text += fmt::format("\n{}\n first  count  entries\n", title);
        }
        AppendGroup(text, table, group);
    }
    if (const auto outside = RecordsOutsideGroups(table); !outside.empty())
    {
        text += fmt::format("\nOutside every group: {}\n", fmt::join(outside, " "));
    }
    return text;
}

std::vector<std::size_t> RecordsOutsideGroups(NamedTable& table)
{
    std::vector<bool> isInside(table.records.size());
    for (const GroupRange& group : FindGroups(table))
    {
        std::fill_n(isInside.begin() + static_cast<long>(group.start), group.size, true);
    }
    std::vector<std::size_t> outside;
    for (std::size_t i = 0; i < isInside.size(); ++i)
    {
        if (!isInside[i])
        {
            outside.push_back(i);
        }
    }
    return outside;
}

} // namespace ZoVelkor::Tools
