#include "CScpiParserTableMerger.h"

#include "CScpiPropErrorStrategy.h"
#include "ParserTableRules.h"
#include "ScpiTableCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

namespace ZoVelkor
{

namespace
{

constexpr std::size_t kRecordSize = sizeof(_CMD_SET_RECORD);
constexpr std::uint32_t kSuffixFlags = NSUFF | NSUFF_EXT;

/// A node that no header can name, and that has no handler.
constexpr _CS_HDR kNamelessNode = {"", DEF, DEF, 0, 0, 0, 0};

bool IsExecutable(const _CS_HDR& header)
{
    return header.iNodataMode != DEF || header.iDataMode != DEF;
}

std::size_t KindIndex(tagScpiTableKind kind)
{
    return static_cast<std::size_t>(kind);
}

/// First record and number of records.
using RecordRun = std::pair<std::size_t, std::size_t>;

/// What one parameter brings along: the way to the next parameter, or its units or mnemonics.
RecordRun RunOf(tagScpiTableKind kind, const _CMD_SET_RECORD* table, std::size_t record, std::size_t count)
{
    const _CS_PAR& parameter = table[record].par;
    if (kind == tagScpiTableKind::Parameter)
    {
        return {record, parameter.iNextPar > record ? parameter.iNextPar - record + 1 : 1};
    }
    const bool isUnit = kind == tagScpiTableKind::UnitSuffix;
    const std::size_t start = isUnit ? parameter.iSuffixList : parameter.iKeywords;
    if (start == 0)
    {
        return {};
    }
    // The count of a parameter may reach further than the length that the group itself tells, and then that
    // length need not be sound.
    const std::size_t length = table[start].chr.iLength;
    return {start,
            std::max<std::size_t>(length <= count - start ? length : 0, isUnit ? 0 : parameter.iCount)};
}

/// Runs of records, from the first up to the one behind the last.
using Runs = std::vector<std::pair<std::size_t, std::size_t>>;

/// Joins runs that overlap, so that no record is copied twice.
void UniteRuns(Runs& runs)
{
    std::sort(runs.begin(), runs.end());
    std::size_t kept = 0;
    for (const auto& [start, end] : runs)
    {
        if (kept > 0 && start < runs[kept - 1].second)
        {
            runs[kept - 1].second = std::max(runs[kept - 1].second, end);
        }
        else
        {
            runs[kept++] = {start, end};
        }
    }
    runs.resize(kept);
}

} // namespace

std::string_view CScpiParserTableMerger::tagRecordReference::Keyword() const
{
    return TableText(Record().hdr.szKeyword);
}

std::size_t CScpiParserTableMerger::tagGroupRefsHash::operator()(const tagGroupRefs& groups) const
{
    std::size_t hash = groups.size();
    for (const tagRecordReference& group : groups)
    {
        hash = hash * 1'000'003 + std::hash<const void*>()(group.pPlugIn) + group.iRecord;
    }
    return hash;
}

void CScpiParserTableMerger::AddPlugin(const CScpiParserTable::PlugInData& plugin)
{
    DynamicPlugInData& data = m_plugins.emplace_back();
    data.pTable = plugin.pTable;
    data.iSize = plugin.iSize;
    data.spSink = plugin.spSink;
    data.sName = plugin.sName;
}

void CScpiParserTableMerger::Run(tagTable& table, tagSinks& sinks)
{
    Discard();
    for (DynamicPlugInData& plugin : m_plugins)
    {
        plugin.isSound = Examine(plugin);
        if (plugin.isSound)
        {
            AnalysePlugin(plugin);
        }
    }
    MergeHdr();
    // What only replaced commands use is not copied: no group of the joined table would lead to it.
    MarkParameters();
    MergeChr();
    MergeSfx();
    MergePar();
    MergeRenderOffsets(table, sinks);
    MergeRenderBinary(table, sinks);
    // Sound tables can unite to a tree that is too large; nothing else can go wrong by merging.
    const auto fault = table.size() == 0 ? std::nullopt : CheckScpiTable(&table[0], table.size());
    if (fault)
    {
        m_errors.PropError(&table[0], "Joined table, " + fault->Message());
    }
}

void CScpiParserTableMerger::Discard()
{
    m_levels.clear();
    m_expressions.clear();
    m_common = nullptr;
    m_root = nullptr;
    for (auto* const groups : {&m_headerGroups, &m_parameterGroups, &m_unitGroups, &m_characterGroups})
    {
        groups->clear();
    }
}

void CScpiParserTableMerger::Report(const DynamicPlugInData& plugin,
                                    const _CMD_SET_RECORD* record,
                                    const std::string& text)
{
    m_errors.PropError(record, fmt::format("Plug-in '{}', {}", plugin.sName, text));
}

void CScpiParserTableMerger::Report(const tagRecordReference& record,
                                    std::string_view field,
                                    const std::string& text)
{
    Report(*record.pPlugIn, &record.Record(), fmt::format("record {}, {}: {}", record.iRecord, field, text));
}

bool CScpiParserTableMerger::Examine(const DynamicPlugInData& plugin)
{
    if (plugin.pTable == nullptr)
    {
        Report(plugin, nullptr, "table: the array is null");
        return false;
    }
    if (plugin.iSize % kRecordSize != 0)
    {
        Report(plugin,
               plugin.pTable,
               fmt::format("size: {} bytes are not a whole number of records of {} bytes",
                           plugin.iSize,
                           kRecordSize));
        return false;
    }
    const auto fault = CheckScpiTable(plugin.pTable, plugin.iSize / kRecordSize);
    if (fault)
    {
        Report(plugin, plugin.pTable, fault->Message());
    }
    return !fault;
}

void CScpiParserTableMerger::AnalysePlugin(DynamicPlugInData& plugin)
{
    const std::size_t count = plugin.iSize / kRecordSize;
    plugin.table.SetParserTable(plugin.pTable, static_cast<long>(count));
    const long behind = plugin.table.HasCommonCommands() ? TableIndex(plugin.pTable->hdr.iLength) : 0;
    if (behind != RootGroupIndex(plugin.pTable, static_cast<long>(count)))
    {
        ReportHiddenRoot(plugin, behind);
    }
    plugin.isParameter.assign(count, false);
    for (std::vector<std::uint32_t>& places : plugin.places)
    {
        places.clear();
    }
    plugin.expressions.clear();
    for (const tagSuffixExpression& expression : FindSuffixExpressions(plugin.pTable, count))
    {
        plugin.expressions.try_emplace(expression.iHeader, expression.expression);
    }
}

void CScpiParserTableMerger::ReportHiddenRoot(DynamicPlugInData& plugin, long placeholder)
{
    const auto root = static_cast<std::size_t>(2 * placeholder);
    if (root < plugin.iSize / kRecordSize && plugin.pTable[root].hdr.iLength != 0)
    {
        Report(tagRecordReference{&plugin, static_cast<std::size_t>(placeholder)},
               "keyword",
               "the commands behind the placeholder group are left out");
    }
}

/// Finds out which records are parameters of joined commands: a chain may pass over records of other kinds.
void CScpiParserTableMerger::MarkParameters()
{
    for (const DynamicParserTableGroup& level : m_headerGroups)
    {
        for (const tagRecordReference& definition : level.definitions)
        {
            if (definition.pPlugIn != nullptr)
            {
                MarkChain(*definition.pPlugIn, definition.Record().hdr.iDatatype);
            }
        }
    }
}

void CScpiParserTableMerger::MarkChain(DynamicPlugInData& plugin, std::uint32_t first)
{
    std::uint32_t previous = 0;
    for (std::uint32_t parameter = first; parameter > previous && !plugin.isParameter[parameter];)
    {
        plugin.isParameter[parameter] = true;
        previous = std::exchange(parameter, plugin.pTable[parameter].par.iNextPar);
    }
}

void CScpiParserTableMerger::MergeChr()
{
    MergeLists(tagScpiTableKind::CharacterData, m_characterGroups);
}

void CScpiParserTableMerger::MergeSfx()
{
    MergeLists(tagScpiTableKind::UnitSuffix, m_unitGroups);
}

void CScpiParserTableMerger::MergePar()
{
    MergeLists(tagScpiTableKind::Parameter, m_parameterGroups);
}

void CScpiParserTableMerger::MergeLists(tagScpiTableKind kind, std::list<DynamicParserTableGroup>& out)
{
    for (DynamicPlugInData& plugin : m_plugins)
    {
        if (!plugin.isSound)
        {
            continue;
        }
        Runs runs;
        for (std::size_t i = 0; i < plugin.isParameter.size(); ++i)
        {
            const auto [start, length] = plugin.isParameter[i]
                                             ? RunOf(kind, plugin.pTable, i, plugin.isParameter.size())
                                             : RecordRun();
            if (length != 0)
            {
                runs.emplace_back(start, start + length);
            }
        }
        UniteRuns(runs);
        for (const auto& [start, end] : runs)
        {
            out.push_back({&plugin, start, end - start, -1, {}, {}});
        }
    }
}

void CScpiParserTableMerger::MergeHdr()
{
    tagGroupRefs common;
    tagGroupRefs roots;
    for (DynamicPlugInData& plugin : m_plugins)
    {
        if (!plugin.isSound)
        {
            continue;
        }
        std::size_t root = 0;
        if (plugin.table.HasCommonCommands())
        {
            common.push_back({&plugin, 0});
            // Deliberate: merged instruments keep a placeholder group as it stands, they do not look behind
            // it.
            root = plugin.pTable->hdr.iLength;
        }
        if (root < plugin.iSize / kRecordSize)
        {
            roots.push_back({&plugin, root});
        }
    }
    m_common = MergeHdrGroups(std::move(common));
    m_root = MergeHdrGroups(std::move(roots));
    if (m_common != nullptr)
    {
        SeparateRoot();
    }
}

/// Sees to it that readers of the joined table find the root group right behind the common commands, where
/// they look for it even if there is none.
void CScpiParserTableMerger::SeparateRoot()
{
    const bool isHidden = m_root != nullptr && m_root->definitions.front().Keyword() == "undef";
    const bool isMissing = m_root == nullptr;
    if (isMissing)
    {
        m_root = &m_headerGroups.emplace_back();
    }
    if (isHidden || isMissing)
    {
        m_root->definitions.insert(m_root->definitions.begin(), tagRecordReference{});
        m_root->children.insert(m_root->children.begin(), nullptr);
        m_root->iLength = m_root->definitions.size();
    }
}

/// One level of the united tree and all levels below it; null when the groups have no records.
///
/// The examination of the tables bounds the depth.
CScpiParserTableMerger::DynamicParserTableGroup* CScpiParserTableMerger::MergeHdrGroups(tagGroupRefs groups)
{
    // Headers of one keyword in one plug-in may share a child group; it enters the union once.
    std::set<std::pair<const void*, std::size_t>> seen;
    std::erase_if(groups, [&seen](const tagRecordReference& group) {
        return group.Record().hdr.iLength == 0 || !seen.emplace(group.pPlugIn, group.iRecord).second;
    });
    if (groups.empty())
    {
        return nullptr;
    }
    // Headers that share their child groups share the united group as well.
    const auto [place, isNew] = m_levels.try_emplace(groups, nullptr);
    if (!isNew)
    {
        return place->second;
    }
    DynamicParserTableGroup& level = m_headerGroups.emplace_back();
    place->second = &level;
    std::vector<tagGroupRefs> children;
    FillLevel(level, groups, children);
    for (std::size_t i = 0; i < children.size(); ++i)
    {
        level.children[i] = MergeHdrGroups(std::move(children[i]));
    }
    return &level;
}

void CScpiParserTableMerger::FillLevel(DynamicParserTableGroup& level,
                                       const tagGroupRefs& groups,
                                       std::vector<tagGroupRefs>& children)
{
    level.pPlugIn = groups.front().pPlugIn;
    level.iFirst = groups.front().iRecord;
    std::unordered_map<std::string_view, std::size_t> entries;
    for (const tagRecordReference& group : groups)
    {
        const std::size_t length = group.Record().hdr.iLength;
        entries.reserve(entries.size() + length);
        for (std::size_t i = 0; i < length; ++i)
        {
            const tagRecordReference record{group.pPlugIn, group.iRecord + i};
            const auto [place, isNew] = entries.try_emplace(record.Keyword(), level.definitions.size());
            if (isNew)
            {
                level.definitions.push_back(record);
                children.emplace_back();
            }
            else
            {
                MergeEntry(level.definitions[place->second], record);
            }
            if (record.Record().hdr.iSubStart != 0)
            {
                children[place->second].push_back({group.pPlugIn, record.Record().hdr.iSubStart});
            }
        }
    }
    level.iLength = level.definitions.size();
    level.children.resize(level.iLength, nullptr);
}

void CScpiParserTableMerger::MergeEntry(tagRecordReference& definition, const tagRecordReference& record)
{
    const _CS_HDR& former = definition.Record().hdr;
    const _CS_HDR& header = record.Record().hdr;
    if (((former.iFollow ^ header.iFollow) & kSuffixFlags) != 0)
    {
        Report(record,
               "follow",
               fmt::format("the numeric suffix of '{}' differs from that in plug-in '{}', record {}",
                           record.Keyword(),
                           definition.pPlugIn->sName,
                           definition.iRecord));
    }
    // A mere node on the way to other commands takes nothing away from the one before.
    if (!IsExecutable(header) && header.iDatatype == 0)
    {
        return;
    }
    if (IsExecutable(former))
    {
        Report(record,
               "keyword",
               fmt::format("'{}' replaces the command of plug-in '{}', record {}",
                           record.Keyword(),
                           definition.pPlugIn->sName,
                           definition.iRecord));
    }
    definition = record;
}

void CScpiParserTableMerger::MergeRenderOffsets(tagTable& table, tagSinks& sinks)
{
    std::size_t next = 0;
    // These two first: readers look for them at the table's beginning.
    Place(m_common, next);
    Place(m_root, next);
    for (DynamicParserTableGroup& level : m_headerGroups)
    {
        Place(&level, next);
    }
    PlaceLists(m_parameterGroups, tagScpiTableKind::Parameter, next);
    PlaceLists(m_unitGroups, tagScpiTableKind::UnitSuffix, next);
    PlaceLists(m_characterGroups, tagScpiTableKind::CharacterData, next);
    CollectExpressions();
    table.resize(next + m_expressions.size());
    sinks.resize(next + m_expressions.size());
}

void CScpiParserTableMerger::Place(DynamicParserTableGroup* group, std::size_t& next)
{
    if (group != nullptr && group->iNewIndex < 0)
    {
        group->iNewIndex = static_cast<long>(next);
        next += group->iLength;
    }
}

void CScpiParserTableMerger::PlaceLists(std::list<DynamicParserTableGroup>& groups,
                                        tagScpiTableKind kind,
                                        std::size_t& next)
{
    for (DynamicParserTableGroup& group : groups)
    {
        std::vector<std::uint32_t>& places = group.pPlugIn->places[KindIndex(kind)];
        places.resize(group.pPlugIn->iSize / kRecordSize);
        for (std::size_t i = 0; i < group.iLength; ++i)
        {
            places[group.iFirst + i] = static_cast<std::uint32_t>(next + i);
        }
        Place(&group, next);
    }
}

void CScpiParserTableMerger::CollectExpressions()
{
    for (const DynamicParserTableGroup& level : m_headerGroups)
    {
        for (std::size_t i = 0; i < level.iLength; ++i)
        {
            const tagRecordReference& definition = level.definitions[i];
            if (definition.pPlugIn == nullptr)
            {
                continue;
            }
            const auto expression = definition.pPlugIn->expressions.find(definition.iRecord);
            if (expression != definition.pPlugIn->expressions.end())
            {
                m_expressions.push_back({static_cast<std::size_t>(level.iNewIndex) + i, expression->second});
            }
        }
    }
}

void CScpiParserTableMerger::MergeRenderBinary(tagTable& table, tagSinks& sinks) const
{
    for (const DynamicParserTableGroup& level : m_headerGroups)
    {
        RenderLevel(level, table, sinks);
    }
    for (const auto* const groups : {&m_unitGroups, &m_characterGroups})
    {
        for (const DynamicParserTableGroup& group : *groups)
        {
            RenderList(group, table);
        }
    }
    for (const DynamicParserTableGroup& group : m_parameterGroups)
    {
        RenderParameters(group, table);
    }
    std::size_t place = table.size() - m_expressions.size();
    for (const tagSuffixExpression& expression : m_expressions)
    {
        _CS_NSE& record = table[place++].nse;
        expression.expression.copy(record.szExpression, kTableExpressionSize - 1);
        record.iValue = NSE_HEADER | static_cast<std::uint32_t>(expression.iHeader);
    }
    // Readers tell by record 0 whether there are common commands.
    if (table.size() != 0)
    {
        std::uint32_t& flags = table[0].hdr.iFollow;
        flags = m_common != nullptr ? flags | CCMD : flags & ~CCMD;
    }
}

void CScpiParserTableMerger::RenderLevel(const DynamicParserTableGroup& level,
                                         tagTable& table,
                                         tagSinks& sinks)
{
    for (std::size_t i = 0; i < level.iLength; ++i)
    {
        const std::size_t place = static_cast<std::size_t>(level.iNewIndex) + i;
        const tagRecordReference& definition = level.definitions[i];
        _CS_HDR& header = table[place].hdr;
        header = definition.pPlugIn != nullptr ? definition.Record().hdr : kNamelessNode;
        const DynamicParserTableGroup* const child = level.children[i];
        header.iSubStart = child != nullptr ? static_cast<std::uint32_t>(child->iNewIndex) : 0;
        header.iLength = i == 0 ? static_cast<std::uint32_t>(level.iLength) : 0;
        // The mark of expressions means nothing here, and the record may become the last one of the table.
        header.iFollow &= ~NSE_HEADER;
        if (header.iDatatype != 0)
        {
            const auto& places = definition.pPlugIn->places[KindIndex(tagScpiTableKind::Parameter)];
            header.iDatatype = places[header.iDatatype];
        }
        if (IsExecutable(header))
        {
            sinks[place].m_T = definition.pPlugIn->spSink;
        }
    }
}

void CScpiParserTableMerger::RenderParameters(const DynamicParserTableGroup& group, tagTable& table)
{
    const auto joined = [&group](tagScpiTableKind kind, std::uint32_t record) {
        // A list that is in no group has no records.
        const std::vector<std::uint32_t>& places = group.pPlugIn->places[KindIndex(kind)];
        return record < places.size() ? places[record] : 0;
    };
    for (std::size_t i = 0; i < group.iLength; ++i)
    {
        const std::size_t record = group.iFirst + i;
        if (!group.pPlugIn->isParameter[record])
        {
            continue;
        }
        _CS_PAR& parameter = table[static_cast<std::size_t>(group.iNewIndex) + i].par;
        parameter = group.pPlugIn->pTable[record].par;
        parameter.iSuffixList = joined(tagScpiTableKind::UnitSuffix, parameter.iSuffixList);
        parameter.iKeywords = joined(tagScpiTableKind::CharacterData, parameter.iKeywords);
        const bool hasNext = parameter.iNextPar > record;
        parameter.iNextPar = hasNext ? joined(tagScpiTableKind::Parameter, parameter.iNextPar) : 0;
        parameter.iExponent &= ~NSE_HEADER;
        if (parameter.iKeywords != 0)
        {
            std::uint32_t& length = table[parameter.iKeywords].chr.iLength;
            length = std::max(length, parameter.iCount);
        }
    }
}

void CScpiParserTableMerger::RenderList(const DynamicParserTableGroup& group, tagTable& table)
{
    const auto place = static_cast<std::size_t>(group.iNewIndex);
    for (std::size_t i = 0; i < group.iLength; ++i)
    {
        // Units and mnemonics are laid out alike; what lies behind their length means nothing.
        _CS_CHR record = group.pPlugIn->pTable[group.iFirst + i].chr;
        record.iLength = std::min(record.iLength, static_cast<std::uint32_t>(group.iLength - i));
        std::fill(std::begin(record.iUnused), std::end(record.iUnused), 0U);
        table[place + i].chr = record;
    }
}

long CScpiParserTable::MergePlugins(CScpiPropErrorStrategy& errors,
                                    std::list<PlugInData>& plugins,
                                    std::valarray<_CMD_SET_RECORD>& table,
                                    std::valarray<CAdapt<CComPtr<IZOScpiExecutionSink>>>& sinks,
                                    unsigned long& sizeInBytes)
{
    SetParserTable(nullptr);
    table.resize(0);
    sinks.resize(0);
    sizeInBytes = 0;
    if (plugins.empty())
    {
        return 0;
    }
    if (plugins.size() == 1)
    {
        const PlugInData& plugin = plugins.front();
        SetParserTable(plugin.pTable, static_cast<long>(plugin.iSize / kRecordSize));
        sizeInBytes = plugin.iSize;
        return 0;
    }
    CScpiParserTableMerger merger(errors);
    for (const PlugInData& plugin : plugins)
    {
        merger.AddPlugin(plugin);
    }
    merger.Run(table, sinks);
    if (table.size() != 0)
    {
        SetParserTable(&table[0], static_cast<long>(table.size()));
        sizeInBytes = table.size() * kRecordSize;
    }
    return 0;
}

} // namespace ZoVelkor
