#pragma once

#include "CCommandIndex.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

/// Compiles sources into a command index: first the merged tree, then parameters, then the edges.
class CCommandIndexBuilder
{
public:
    explicit CCommandIndexBuilder(CCommandIndex& index);

    void AddSource(const tagCommandSource& source);
    void Finish();

private:
    struct tagTreeNode
    {
        std::string sLong;
        std::string sShort;
        std::uint32_t iParent = CCommandIndex::kNone;
        std::uint32_t iEntry = CCommandIndex::kNone;
        bool bOptional = false;
        bool bTakesSuffix = false;
        std::vector<std::uint32_t> children;
    };

    /// For each level, the root's being 0, what the header there accepts.
    using tagSuffixSlots = std::vector<tagSuffixSlot>;

    /// Where the walk through one source's table stands.
    struct tagWalk
    {
        const tagCommandSource* pSource;
        std::uint32_t iNode;  ///< merged node whose children follow
        tagSuffixSlots slots; ///< of the path to this node, in the source's own table
        std::string sPath;
    };

    /// An edge in the order of precedence.
    struct tagPendingEdge
    {
        std::uint32_t iOwner;
        std::uint32_t iTarget;
        std::string sKey;
    };

    struct tagChildKey
    {
        std::uint32_t iParent;
        std::string sLong;
        bool operator==(const tagChildKey&) const = default;
    };

    struct tagChildKeyHash
    {
        std::size_t operator()(const tagChildKey& key) const noexcept
        {
            return std::hash<std::string>()(key.sLong) * 31 + key.iParent;
        }
    };

    void CompileExpressions(const tagCommandSource& source);
    tagSuffixSlot CompileExpression(std::string_view text);
    tagSuffixSlot SlotOf(std::size_t record, const _CS_HDR& header) const;
    void MergeGroup(const tagWalk& walk, std::size_t start);
    std::uint32_t MergeNode(const tagWalk& walk, const _CS_HDR& header);
    void DefineEntry(const tagWalk& walk, std::uint32_t node, const _CS_HDR& header);
    std::string LongHeader(std::uint32_t node) const;

    void FinishNodes();
    void FinishSuffixSlots();
    std::uint32_t EntryFor(std::uint32_t node, bool query) const;

    void CompileParameters(tagCommandEntry& entry);
    tagParameterSpec CompileParameter(const _CMD_SET_RECORD* table, const _CS_PAR& parameter);
    std::uint32_t CompileMnemonics(const _CMD_SET_RECORD* table, std::uint32_t start, std::uint32_t count);
    std::uint32_t CompileUnits(const _CMD_SET_RECORD* table, std::uint32_t start);
    void AddUnit(std::uint32_t list,
                 const std::string& key,
                 const std::string& unit,
                 std::uint32_t value,
                 int exponent);
    void AddMultiples(std::uint32_t list, const std::string& unit, std::uint32_t value);

    void AddNodeEdges();
    void AddChildEdges(std::uint32_t owner, std::uint32_t parent);
    void AddOptionalEdges(std::uint32_t owner, std::uint32_t parent);
    void FillEdgeTable();

    CCommandIndex& m_index;
    std::vector<tagTreeNode> m_tree;
    std::unordered_map<std::size_t, tagSuffixSlot> m_expressions; ///< of one source, by header record
    std::vector<tagSuffixSlots> m_entrySlots;                     ///< for each entry
    std::unordered_map<tagChildKey, std::uint32_t, tagChildKeyHash> m_children;
    std::map<std::tuple<const _CMD_SET_RECORD*, std::uint32_t>, std::uint32_t> m_lists;
    std::vector<tagPendingEdge> m_edges;
    std::uint32_t m_nextList = 0;
};

} // namespace ZoVelkor::RemoteKernel
