#include "CCommandIndexBuilder.h"

#include "CNumericSuffixExpression.h"
#include "CScpiToken.h"
#include "UnitMultipliers.h"

#include <algorithm>
#include <bit>
#include <cctype>
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

constexpr tagSuffixSlot kAnySuffix{0, std::numeric_limits<std::int32_t>::max(), 0, 0, true};
constexpr tagSuffixSlot kEmptySuffix{1, 0, 0, 0, true};

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsLower(char c)
{
    return c >= 'a' && c <= 'z';
}

/// The short form ends where the small letters begin; a keyword without small letters follows the general
/// rule. Digits at the end belong to both forms: TIMer1 is TIMER1 or TIM1.
std::string ShortForm(const std::string& keyword)
{
    std::size_t stemLength = keyword.size();
    while (stemLength > 0 && IsDigit(keyword[stemLength - 1]))
    {
        --stemLength;
    }
    const std::string stem = keyword.substr(0, stemLength);
    const std::string digits = keyword.substr(stemLength);
    const auto small = std::find_if(stem.begin(), stem.end(), IsLower);
    if (small == stem.begin() || small == stem.end())
    {
        return CScpiToken::ScpiToken2ShortForm(stem) + digits;
    }
    return std::string(stem.begin(), small) + digits;
}

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
    return std::any_of(std::begin(kUnitMultipliers),
                       std::end(kUnitMultipliers),
                       [unit](const tagUnitMultiplier& multiplier) {
                           return unit.starts_with(multiplier.svText) &&
                                  Contains(kBaseUnits, unit.substr(multiplier.svText.size()));
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

void CCommandIndexBuilder::AddSource(const tagCommandSource& source)
{
    const tagTableRoots roots = FindTableRoots(source.pRecords, source.iCount);
    m_index.m_owners.push_back(source.spOwner);
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

void CCommandIndexBuilder::CompileExpressions(const tagCommandSource& source)
{
    m_expressions.clear();
    for (const tagSuffixExpression& expression : FindSuffixExpressions(source.pRecords, source.iCount))
    {
        m_expressions.try_emplace(expression.iHeader, CompileExpression(expression.expression));
    }
}

tagSuffixSlot CCommandIndexBuilder::CompileExpression(std::string_view text)
{
    CNumericSuffixExpression expression;
    long position = 0;
    std::string error;
    expression.SetExpression(std::string(text), false, position, error);
    expression.Normalise();
    const CNumericSuffixExpression::RangeList& ranges = expression.GetRanges();
    tagSuffixSlot slot = kEmptySuffix;
    if (!ranges.empty())
    {
        slot.iLow = static_cast<std::int32_t>(ranges.front().first);
        slot.iHigh = static_cast<std::int32_t>(ranges.front().second);
        slot.iFurther = static_cast<std::uint32_t>(m_index.m_suffixRanges.size());
        slot.iFurtherCount = static_cast<std::uint16_t>(ranges.size() - 1);
        std::transform(std::next(ranges.begin()),
                       ranges.end(),
                       std::back_inserter(m_index.m_suffixRanges),
                       [](const auto& range) {
                           return CCommandIndex::tagSuffixRange{static_cast<std::int32_t>(range.first),
                                                                static_cast<std::int32_t>(range.second)};
                       });
    }
    return slot;
}

tagSuffixSlot CCommandIndexBuilder::SlotOf(std::size_t record, const _CS_HDR& header) const
{
    if ((header.iFollow & NSUFF) == 0)
    {
        return {};
    }
    const auto expression = m_expressions.find(record);
    return expression != m_expressions.end() ? expression->second : kAnySuffix;
}

void CCommandIndexBuilder::MergeGroup(const tagWalk& walk, std::size_t start)
{
    const _CMD_SET_RECORD* const table = walk.pSource->pRecords;
    const std::size_t end = start + table[start].hdr.iLength;
    for (std::size_t record = start; record < end; ++record)
    {
        const _CS_HDR& header = table[record].hdr;
        const std::string_view keyword = header.szKeyword;
        tagWalk below = walk;
        below.iNode = MergeNode(walk, header);
        if ((header.iFollow & CCMD) != 0)
        {
            below.sPath += keyword;
        }
        else
        {
            below.sPath += keyword.starts_with('[') ? "[:" : ":";
            below.sPath += keyword.starts_with('[') ? keyword.substr(1) : keyword;
        }
        below.slots.push_back(SlotOf(record, header));
        if (header.iNodataMode != DEF || header.iDataMode != DEF)
        {
            DefineEntry(below, below.iNode, header);
        }
        if (header.iSubStart != 0)
        {
            MergeGroup(below, header.iSubStart);
        }
    }
}

std::uint32_t CCommandIndexBuilder::MergeNode(const tagWalk& walk, const _CS_HDR& header)
{
    const std::string keyword = WithoutBrackets(header.szKeyword);
    std::string longForm = CScpiToken::ScpiToken2LongForm(keyword);
    const auto [place, isNew] =
        m_children.try_emplace({walk.iNode, longForm}, static_cast<std::uint32_t>(m_tree.size()));
    if (isNew)
    {
        tagTreeNode node;
        node.sLong = std::move(longForm);
        node.sShort = ShortForm(keyword);
        node.iParent = walk.iNode;
        m_tree.push_back(std::move(node));
        m_tree[walk.iNode].children.push_back(place->second);
    }
    tagTreeNode& node = m_tree[place->second];
    node.bOptional = node.bOptional || header.szKeyword[0] == '[';
    node.bTakesSuffix = node.bTakesSuffix || (header.iFollow & NSUFF) != 0;
    return place->second;
}

void CCommandIndexBuilder::DefineEntry(const tagWalk& walk, std::uint32_t node, const _CS_HDR& header)
{
    tagTreeNode& treeNode = m_tree[node];
    if (treeNode.iEntry == CCommandIndex::kNone)
    {
        treeNode.iEntry = static_cast<std::uint32_t>(m_index.m_entries.size());
        m_index.m_entries.emplace_back();
        m_entrySlots.emplace_back();
        m_index.m_entries.back().bsHeader = CComBSTR(LongHeader(node).c_str());
    }
    tagCommandEntry& entry = m_index.m_entries[treeNode.iEntry];
    entry.pApplication = walk.pSource->spOwner.get();
    entry.iNodataMode = header.iNodataMode;
    entry.iDataMode = header.iDataMode;
    entry.iFlags = header.iFollow;
    entry.sSyntaxPath = walk.sPath;
    entry.pTable = walk.pSource->pRecords;
    entry.pRecord = &header;
    m_entrySlots[treeNode.iEntry] = walk.slots;
}

std::string CCommandIndexBuilder::LongHeader(std::uint32_t node) const
{
    const tagTreeNode& treeNode = m_tree[node];
    if (treeNode.iParent == CCommandIndex::kRootNode)
    {
        return treeNode.sLong;
    }
    if (treeNode.iParent == CCommandIndex::kCommonNode)
    {
        return "*" + treeNode.sLong;
    }
    return LongHeader(treeNode.iParent) + ":" + treeNode.sLong;
}

void CCommandIndexBuilder::Finish()
{
    FinishNodes();
    FinishSuffixSlots();
    // Lists of words and units share the edge table with the nodes; their numbers follow those of the nodes.
    m_nextList = static_cast<std::uint32_t>(m_tree.size());
    AddNodeEdges();
    for (tagCommandEntry& entry : m_index.m_entries)
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
        const tagTreeNode& source = m_tree[i];
        const unsigned int above =
            source.iParent == CCommandIndex::kNone ? 0U : m_index.m_nodes[source.iParent].iSlotCount;
        m_index.m_nodes[i] = {CCommandIndex::kNone,
                              CCommandIndex::kNone,
                              static_cast<std::uint16_t>(above + (source.bTakesSuffix ? 1U : 0U)),
                              source.bTakesSuffix,
                              false};
    }
    // Children follow their parents in the list, so that walking backwards finds their entries ready.
    for (std::uint32_t i = static_cast<std::uint32_t>(m_tree.size()); i-- > 0;)
    {
        m_index.m_nodes[i].iSettingEntry = EntryFor(i, false);
        m_index.m_nodes[i].iQueryEntry = EntryFor(i, true);
    }
}

std::uint32_t CCommandIndexBuilder::EntryFor(std::uint32_t node, bool query) const
{
    const tagTreeNode& treeNode = m_tree[node];
    if (treeNode.iEntry != CCommandIndex::kNone)
    {
        const tagCommandEntry& entry = m_index.m_entries[treeNode.iEntry];
        if (query ? entry.HasQuery() : entry.HasSetting())
        {
            return treeNode.iEntry;
        }
    }
    for (const std::uint32_t child : treeNode.children)
    {
        const tagCommandNode& below = m_index.m_nodes[child];
        const std::uint32_t entry = query ? below.iQueryEntry : below.iSettingEntry;
        if (m_tree[child].bOptional && entry != CCommandIndex::kNone)
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
        if (m_tree[node].iEntry == CCommandIndex::kNone)
        {
            continue;
        }
        std::vector<std::uint32_t> path;
        for (std::uint32_t i = node; m_tree[i].iParent != CCommandIndex::kNone; i = m_tree[i].iParent)
        {
            path.insert(path.begin(), i);
        }
        tagCommandEntry& entry = m_index.m_entries[m_tree[node].iEntry];
        entry.iFirstSlot = static_cast<std::uint32_t>(m_index.m_suffixSlots.size());
        for (std::size_t level = 0; level < path.size(); ++level)
        {
            if (m_tree[path[level]].bTakesSuffix)
            {
                m_index.m_suffixSlots.push_back(m_entrySlots[m_tree[node].iEntry][level]);
                ++entry.iSlotCount;
            }
        }
    }
}

void CCommandIndexBuilder::CompileParameters(tagCommandEntry& entry)
{
    entry.iFirstParameter = static_cast<std::uint32_t>(m_index.m_parameters.size());
    std::uint32_t record = entry.pRecord->iDatatype;
    while (record != 0)
    {
        const _CS_PAR& parameter = entry.pTable[record].par;
        m_index.m_parameters.push_back(CompileParameter(entry.pTable, parameter));
        ++entry.iParameterCount;
        if ((parameter.iExponent & ARG_FLAG_OPT) == 0)
        {
            entry.iRequiredCount = entry.iParameterCount;
        }
        record = parameter.iNextPar > record ? parameter.iNextPar : 0;
    }
}

tagParameterSpec CCommandIndexBuilder::CompileParameter(const _CMD_SET_RECORD* table,
                                                        const _CS_PAR& parameter)
{
    tagParameterSpec spec;
    spec.iType = (parameter.iType & kAcceptingBits) != 0 ? parameter.iType : kAnyKind;
    spec.iFlags = parameter.iExponent;
    if ((parameter.iType & MNEM) != 0 && parameter.iKeywords != 0)
    {
        const std::uint32_t count =
            parameter.iCount != 0 ? parameter.iCount : table[parameter.iKeywords].chr.iLength;
        spec.iMnemonicList = CompileMnemonics(table, parameter.iKeywords, count);
    }
    if (parameter.iSuffixList != 0)
    {
        spec.iUnitList = CompileUnits(table, parameter.iSuffixList);
    }
    spec.iQueryType = QueryType(spec.iType, spec.iMnemonicList != 0);
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
    tagUnit record{};
    std::memcpy(record.szText, unit.data(), unit.size());
    record.iTextLength = static_cast<std::uint32_t>(unit.size());
    record.iEnum = static_cast<std::int32_t>(value);
    record.iExponent = exponent;
    m_edges.push_back({list, static_cast<std::uint32_t>(m_index.m_units.size()), key});
    m_index.m_units.push_back(record);
}

void CCommandIndexBuilder::AddMultiples(std::uint32_t list, const std::string& unit, std::uint32_t value)
{
    for (const tagUnitMultiplier& multiplier : kUnitMultipliers)
    {
        const bool isMega = multiplier.svText == "M" && Contains(kMegaUnits, unit);
        AddUnit(list,
                std::string(multiplier.svText) + unit,
                unit,
                value,
                isMega ? kMegaExponent : multiplier.iExponent);
    }
}

void CCommandIndexBuilder::AddNodeEdges()
{
    for (std::uint32_t node = 0; node < m_tree.size(); ++node)
    {
        AddChildEdges(node, node);
        AddOptionalEdges(node, node);
    }
}

void CCommandIndexBuilder::AddChildEdges(std::uint32_t owner, std::uint32_t parent)
{
    const std::vector<std::uint32_t>& children = m_tree[parent].children;
    for (const std::uint32_t child : children)
    {
        m_edges.push_back({owner, child, m_tree[child].sLong});
        m_index.m_nodes[owner].bDigitKeywords |= EndsInDigit(m_tree[child].sLong);
    }
    for (const std::uint32_t child : children)
    {
        m_edges.push_back({owner, child, m_tree[child].sShort});
    }
}

void CCommandIndexBuilder::AddOptionalEdges(std::uint32_t owner, std::uint32_t parent)
{
    for (const std::uint32_t child : m_tree[parent].children)
    {
        if (m_tree[child].bOptional)
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
    for (const tagPendingEdge& edge : m_edges)
    {
        const tagMnemonic key =
            ReadMnemonic(edge.sKey.data(), edge.sKey.data() + edge.sKey.size(), kTableCharacters);
        const bool canBeSent = key.iLength == edge.sKey.size() && key.iLength != 0;
        if (!canBeSent || key.iLength > tagMnemonicKey::kCapacity ||
            m_index.Lookup(edge.iOwner, key.key) != CCommandIndex::kNone)
        {
            continue;
        }
        std::size_t place = m_index.Place(edge.iOwner, key.key);
        while (m_index.m_edges[place].iOwner != CCommandIndex::kNone)
        {
            place = (place + 1) & m_index.m_edgeMask;
        }
        m_index.m_edges[place] = {key.key, edge.iOwner, edge.iTarget};
    }
}

} // namespace ZoVelkor::RemoteKernel
