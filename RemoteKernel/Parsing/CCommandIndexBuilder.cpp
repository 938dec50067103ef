#include "CCommandIndexBuilder.h"

#include "CNumericSuffixExpression.h"
#include "CScpiToken.h"
#include "CharacterClasses.h"
#include "KeywordForms.h"
#include "UnitMultipliers.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

namespace ZoVelkor::RemoteKernel
{

namespace
{
constexpr std::uint32_t kNumericBits = ARG_SFLOAT;
constexpr std::uint32_t kAcceptingBits = kNumericBits | ARG_BLOCK | ARG_STRG | ARG_STRGUD | ARG_EXPR | MNEM |
                                         ARG_MINMAX | ARG_DEFAULT | ARG_UPDOWN | ARG_OFF | ARG_KEEP;
constexpr std::uint32_t kAnyKind = kNumericBits | ARG_BLOCK | ARG_STRG | ARG_EXPR;

constexpr SuffixSlot kAnySuffix{0, std::numeric_limits<std::int32_t>::max(), 0, 0, true};
constexpr SuffixSlot kEmptySuffix{1, 0, 0, 0, true};

std::string WithoutBrackets(std::string_view keyword)
{
    const bool optional = keyword.size() >= 2 && keyword.front() == '[';
    return std::string(optional ? keyword.substr(1, keyword.size() - 2) : keyword);
}

bool EndsInDigit(const std::string& text)
{
    return !text.empty() && IsDigit(text.back());
}

template <class TRange>
bool Contains(const TRange& range, std::string_view text)
{
    return std::find(std::begin(range), std::end(range), text) != std::end(range);
}

/// Tells whether a unit of a table is itself a multiple of a well-known one.
bool IsMultiple(std::string_view unit)
{
    return std::any_of(
        std::begin(kUnitMultipliers), std::end(kUnitMultipliers), [unit](const UnitMultiplier& multiplier) {
            return unit.starts_with(multiplier.text) &&
                   Contains(kBaseUnits, unit.substr(multiplier.text.size()));
        });
}

bool TakesMultipliers(std::string_view unit)
{
    return !unit.empty() && !unit.starts_with(kLogarithmicPrefix) && !Contains(kPlainUnits, unit) &&
           !IsMultiple(unit);
}

/// Kinds that remain in the query form of a command with both forms: limits instead of numbers, no blocks.
std::uint32_t QueryType(std::uint32_t type, bool hasMnemonics)
{
    std::uint32_t query = type & ~ARG_BLOCK;
    if ((type & kNumericBits) != 0)
    {
        query &= ~(kNumericBits | ARG_UPDOWN | ARG_OFF | ARG_KEEP);
    }
    return hasMnemonics ? query : query & ~MNEM;
}
} // namespace

CCommandIndexBuilder::CCommandIndexBuilder(CCommandIndex& index) : m_index(index), m_tree(2)
{}

void CCommandIndexBuilder::AddSource(const CommandSource& source)
{
    const tagTableRoots roots = FindTableRoots(source.records, source.count);
    m_index.m_owners.push_back(source.owner);
    CompileExpressions(source);
    if (roots.iCommon != tagTableRoots::kNone)
    {
        MergeGroup({&source, CCommandIndex::kCommonNode, {}, "*"}, roots.iCommon);
    }
    if (roots.iOrdinary != tagTableRoots::kNone)
    {
        MergeGroup({&source, CCommandIndex::kRootNode, {}, ""}, roots.iOrdinary);
    }
}

void CCommandIndexBuilder::CompileExpressions(const CommandSource& source)
{
    m_expressions.clear();
    for (const tagSuffixExpression& expression : FindSuffixExpressions(source.records, source.count))
    {
        m_expressions.try_emplace(expression.iHeader, CompileExpression(expression.expression));
    }
}

SuffixSlot CCommandIndexBuilder::CompileExpression(std::string_view text)
{
    CNumericSuffixExpression expression;
    long position = 0;
    std::string error;
    expression.SetExpression(std::string(text), false, position, error);
    expression.Normalise();
    const CNumericSuffixExpression::RangeList& ranges = expression.GetRanges();
    SuffixSlot slot = kEmptySuffix;
    if (!ranges.empty())
    {
        slot.low = static_cast<std::int32_t>(ranges.front().first);
        slot.high = static_cast<std::int32_t>(ranges.front().second);
        slot.further = static_cast<std::uint32_t>(m_index.m_suffixRanges.size());
        slot.furtherCount = static_cast<std::uint16_t>(ranges.size() - 1);
        std::transform(std::next(ranges.begin()),
                       ranges.end(),
                       std::back_inserter(m_index.m_suffixRanges),
                       [](const auto& range) {
                           return CCommandIndex::SuffixRange{static_cast<std::int32_t>(range.first),
                                                             static_cast<std::int32_t>(range.second)};
                       });
    }
    return slot;
}

SuffixSlot CCommandIndexBuilder::SlotOf(std::size_t record, const _CS_HDR& header) const
{
    if ((header.iFollow & NSUFF) == 0)
    {
        return {};
    }
    const auto expression = m_expressions.find(record);
    return expression != m_expressions.end() ? expression->second : kAnySuffix;
}

void CCommandIndexBuilder::MergeGroup(const Walk& walk, std::size_t start)
{
    const _CMD_SET_RECORD* const table = walk.source->records;
    const std::size_t end = start + table[start].hdr.iLength;
    for (std::size_t record = start; record < end; ++record)
    {
        const _CS_HDR& header = table[record].hdr;
        const std::string_view keyword = header.szKeyword;
        Walk below = walk;
        below.node = MergeNode(walk, header);
        if ((header.iFollow & CCMD) != 0)
        {
            below.path += keyword;
        }
        else
        {
            below.path += keyword.starts_with('[') ? "[:" : ":";
            below.path += keyword.starts_with('[') ? keyword.substr(1) : keyword;
        }
        below.slots.push_back(SlotOf(record, header));
        if (header.iNodataMode != DEF || header.iDataMode != DEF)
        {
            DefineEntry(below, below.node, header);
        }
        if (header.iSubStart != 0)
        {
            MergeGroup(below, header.iSubStart);
        }
    }
}

std::uint32_t CCommandIndexBuilder::MergeNode(const Walk& walk, const _CS_HDR& header)
{
    const std::string keyword = WithoutBrackets(header.szKeyword);
    std::string longForm = CScpiToken::ScpiToken2LongForm(keyword);
    const auto [place, isNew] =
        m_children.try_emplace({walk.node, longForm}, static_cast<std::uint32_t>(m_tree.size()));
    if (isNew)
    {
        TreeNode node;
        node.longForm = std::move(longForm);
        node.shortForm = ShortForm(keyword);
        node.parent = walk.node;
        m_tree.push_back(std::move(node));
        m_tree[walk.node].children.push_back(place->second);
    }
    TreeNode& node = m_tree[place->second];
    node.optional = node.optional || header.szKeyword[0] == '[';
    node.takesSuffix = node.takesSuffix || (header.iFollow & NSUFF) != 0;
    return place->second;
}

void CCommandIndexBuilder::DefineEntry(const Walk& walk, std::uint32_t node, const _CS_HDR& header)
{
    TreeNode& treeNode = m_tree[node];
    if (treeNode.entry == CCommandIndex::kNone)
    {
        treeNode.entry = static_cast<std::uint32_t>(m_index.m_entries.size());
        m_index.m_entries.emplace_back();
        m_entrySlots.emplace_back();
        m_index.m_entries.back().headerText = CComBSTR(LongHeader(node).c_str());
    }
    // A later definition replaces an earlier one as a whole; only the header's text is the same.
    CommandEntry& entry = m_index.m_entries[treeNode.entry];
    entry.application = walk.source->owner.get();
    entry.nodataMode = header.iNodataMode;
    entry.dataMode = header.iDataMode;
    entry.flags = header.iFollow;
    entry.syntaxPath = walk.path;
    entry.pTable = walk.source->records;
    entry.record = &header;
    m_entrySlots[treeNode.entry] = walk.slots;
}

std::string CCommandIndexBuilder::LongHeader(std::uint32_t node) const
{
    const TreeNode& treeNode = m_tree[node];
    if (treeNode.parent == CCommandIndex::kRootNode)
    {
        return treeNode.longForm;
    }
    if (treeNode.parent == CCommandIndex::kCommonNode)
    {
        return "*" + treeNode.longForm;
    }
    return LongHeader(treeNode.parent) + ":" + treeNode.longForm;
}

void CCommandIndexBuilder::Finish()
{
    FinishNodes();
    FinishSuffixSlots();
    // Lists of words and units share the edge table with the nodes; their numbers follow those of the nodes.
    m_nextList = static_cast<std::uint32_t>(m_tree.size());
    AddNodeEdges();
    for (CommandEntry& entry : m_index.m_entries)
    {
        CompileParameters(entry);
    }
    FillEdgeTable();
}

void CCommandIndexBuilder::FinishNodes()
{
    m_index.m_nodes.resize(m_tree.size());
    for (std::uint32_t i = 0; i < m_tree.size(); ++i)
    {
        const TreeNode& source = m_tree[i];
        const unsigned int above =
            source.parent == CCommandIndex::kNone ? 0U : m_index.m_nodes[source.parent].slotCount;
        m_index.m_nodes[i] = {CCommandIndex::kNone,
                              CCommandIndex::kNone,
                              static_cast<std::uint16_t>(above + (source.takesSuffix ? 1U : 0U)),
                              source.takesSuffix,
                              false};
    }
    // Children follow their parents in the list, so that walking backwards finds their entries ready.
    for (std::uint32_t i = static_cast<std::uint32_t>(m_tree.size()); i-- > 0;)
    {
        m_index.m_nodes[i].settingEntry = EntryFor(i, false);
        m_index.m_nodes[i].queryEntry = EntryFor(i, true);
    }
}

std::uint32_t CCommandIndexBuilder::EntryFor(std::uint32_t node, bool query) const
{
    const TreeNode& treeNode = m_tree[node];
    if (treeNode.entry != CCommandIndex::kNone)
    {
        const CommandEntry& entry = m_index.m_entries[treeNode.entry];
        if (query ? entry.HasQuery() : entry.HasSetting())
        {
            return treeNode.entry;
        }
    }
    for (const std::uint32_t child : treeNode.children)
    {
        const CommandNode& below = m_index.m_nodes[child];
        const std::uint32_t entry = query ? below.queryEntry : below.settingEntry;
        if (m_tree[child].optional && entry != CCommandIndex::kNone)
        {
            return entry;
        }
    }
    return CCommandIndex::kNone;
}

void CCommandIndexBuilder::FinishSuffixSlots()
{
    for (std::uint32_t node = 0; node < m_tree.size(); ++node)
    {
        if (m_tree[node].entry == CCommandIndex::kNone)
        {
            continue;
        }
        std::vector<std::uint32_t> path;
        for (std::uint32_t i = node; m_tree[i].parent != CCommandIndex::kNone; i = m_tree[i].parent)
        {
            path.insert(path.begin(), i);
        }
        CommandEntry& entry = m_index.m_entries[m_tree[node].entry];
        entry.firstSlot = static_cast<std::uint32_t>(m_index.m_suffixSlots.size());
        for (std::size_t level = 0; level < path.size(); ++level)
        {
            if (m_tree[path[level]].takesSuffix)
            {
                m_index.m_suffixSlots.push_back(m_entrySlots[m_tree[node].entry][level]);
                ++entry.slotCount;
            }
        }
    }
}

void CCommandIndexBuilder::CompileParameters(CommandEntry& entry)
{
    entry.firstParameter = static_cast<std::uint32_t>(m_index.m_parameters.size());
    std::uint32_t record = entry.record->iDatatype;
    while (record != 0)
    {
        const _CS_PAR& parameter = entry.pTable[record].par;
        m_index.m_parameters.push_back(CompileParameter(entry.pTable, parameter));
        ++entry.parameterCount;
        if ((parameter.iExponent & ARG_FLAG_OPT) == 0)
        {
            entry.requiredCount = entry.parameterCount;
        }
        record = parameter.iNextPar > record ? parameter.iNextPar : 0;
    }
}

ParameterSpec CCommandIndexBuilder::CompileParameter(const _CMD_SET_RECORD* table, const _CS_PAR& parameter)
{
    ParameterSpec spec;
    spec.type = (parameter.iType & kAcceptingBits) != 0 ? parameter.iType : kAnyKind;
    spec.flags = parameter.iExponent;
    if ((parameter.iType & MNEM) != 0 && parameter.iKeywords != 0)
    {
        const std::uint32_t count =
            parameter.iCount != 0 ? parameter.iCount : table[parameter.iKeywords].chr.iLength;
        spec.mnemonicList = CompileMnemonics(table, parameter.iKeywords, count);
    }
    if (parameter.iSuffixList != 0)
    {
        spec.unitList = CompileUnits(table, parameter.iSuffixList);
    }
    spec.queryType = QueryType(spec.type, spec.mnemonicList != 0);
    return spec;
}

std::uint32_t
CCommandIndexBuilder::CompileMnemonics(const _CMD_SET_RECORD* table, std::uint32_t start, std::uint32_t count)
{
    const auto [place, isNew] = m_lists.try_emplace({table + start, count}, m_nextList);
    if (!isNew)
    {
        return place->second;
    }
    const std::uint32_t list = m_nextList++;
    const auto firstMnemonic = static_cast<std::uint32_t>(m_index.m_mnemonics.size());
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const _CS_CHR& record = table[start + i].chr;
        m_index.m_mnemonics.push_back(static_cast<std::int32_t>(record.iEnum));
        m_edges.push_back({list, firstMnemonic + i, CScpiToken::ScpiToken2LongForm(record.szKeyword)});
    }
    // Behind the long forms: the first edge of a text stays, and a long form wins.
    for (std::uint32_t i = 0; i < count; ++i)
    {
        m_edges.push_back({list, firstMnemonic + i, ShortForm(table[start + i].chr.szKeyword)});
    }
    return list;
}

std::uint32_t CCommandIndexBuilder::CompileUnits(const _CMD_SET_RECORD* table, std::uint32_t start)
{
    const auto [place, isNew] = m_lists.try_emplace({table + start, 0}, m_nextList);
    if (!isNew)
    {
        return place->second;
    }
    const std::uint32_t list = m_nextList++;
    const std::uint32_t count = table[start].sfx.iLength;
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const std::string unit = CScpiToken::ScpiToken2LongForm(table[start + i].sfx.szSuffix);
        AddUnit(list, unit, unit, table[start + i].sfx.iEnum, 0);
    }
    // Behind the units themselves: a multiple that is spelt like one of them is that one.
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const std::string unit = CScpiToken::ScpiToken2LongForm(table[start + i].sfx.szSuffix);
        if (TakesMultipliers(unit))
        {
            AddMultiples(list, unit, table[start + i].sfx.iEnum);
        }
    }
    return list;
}

void CCommandIndexBuilder::AddUnit(
    std::uint32_t list, const std::string& key, const std::string& unit, std::uint32_t value, int exponent)
{
    Unit record{};
    std::memcpy(record.szText, unit.data(), unit.size());
    record.textLength = static_cast<std::uint32_t>(unit.size());
    record.enumeration = static_cast<std::int32_t>(value);
    record.exponent = exponent;
    m_edges.push_back({list, static_cast<std::uint32_t>(m_index.m_units.size()), key});
    m_index.m_units.push_back(record);
}

void CCommandIndexBuilder::AddMultiples(std::uint32_t list, const std::string& unit, std::uint32_t value)
{
    for (const UnitMultiplier& multiplier : kUnitMultipliers)
    {
        const bool isMega = multiplier.text == "M" && Contains(kMegaUnits, unit);
        AddUnit(list,
                std::string(multiplier.text) + unit,
                unit,
                value,
                isMega ? kMegaExponent : multiplier.exponent);
    }
}

void CCommandIndexBuilder::AddNodeEdges()
{
    for (std::uint32_t node = 0; node < m_tree.size(); ++node)
    {
        // In this order: a node's own children win over those that an omitted optional node brings.
        AddChildEdges(node, node);
        AddOptionalEdges(node, node);
    }
}

void CCommandIndexBuilder::AddChildEdges(std::uint32_t owner, std::uint32_t parent)
{
    const std::vector<std::uint32_t>& children = m_tree[parent].children;
    for (const std::uint32_t child : children)
    {
        m_edges.push_back({owner, child, m_tree[child].longForm});
        m_index.m_nodes[owner].digitKeywords |= EndsInDigit(m_tree[child].longForm);
    }
    for (const std::uint32_t child : children)
    {
        m_edges.push_back({owner, child, m_tree[child].shortForm});
    }
}

void CCommandIndexBuilder::AddOptionalEdges(std::uint32_t owner, std::uint32_t parent)
{
    for (const std::uint32_t child : m_tree[parent].children)
    {
        if (m_tree[child].optional)
        {
            AddChildEdges(owner, child);
            AddOptionalEdges(owner, child);
        }
    }
}

void CCommandIndexBuilder::FillEdgeTable()
{
    const std::size_t size = std::bit_ceil(2 * m_edges.size() + 1);
    m_index.m_edges.resize(size);
    m_index.m_edgeMask = size - 1;
    for (const PendingEdge& edge : m_edges)
    {
        const Mnemonic key =
            ReadMnemonic(edge.key.data(), edge.key.data() + edge.key.size(), kTableCharacters);
        // A text that no message can hold needs no edge; of two equal ones the first stays.
        const bool canBeSent = key.length == edge.key.size() && key.length != 0;
        if (!canBeSent || key.length > MnemonicKey::kCapacity ||
            m_index.Lookup(edge.owner, key.key) != CCommandIndex::kNone)
        {
            continue;
        }
        std::size_t place = m_index.Place(edge.owner, key.key);
        while (m_index.m_edges[place].owner != CCommandIndex::kNone)
        {
            place = (place + 1) & m_index.m_edgeMask;
        }
        m_index.m_edges[place] = {key.key, edge.owner, edge.target};
    }
}

} // namespace ZoVelkor::RemoteKernel
