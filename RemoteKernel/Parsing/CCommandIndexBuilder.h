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

    void AddSource(const CommandSource& source);
    void Finish();

private:
    struct TreeNode
    {
        std::string longForm;
        std::string shortForm;
        std::uint32_t parent = CCommandIndex::kNone;
        std::uint32_t entry = CCommandIndex::kNone;
        bool optional = false;
        bool takesSuffix = false;
        std::vector<std::uint32_t> children;
    };

    /// For each level, the root's being 0, what the header there accepts.
    using SuffixSlots = std::vector<SuffixSlot>;

    /// Where the walk through one source's table stands.
    struct Walk
    {
        const CommandSource* source;
        std::uint32_t node; ///< merged node whose children follow
        SuffixSlots slots;  ///< of the path to this node, in the source's own table
        std::string path;
    };

    /// An edge in the order of precedence.
    struct PendingEdge
    {
        std::uint32_t owner;
        std::uint32_t target;
        std::string key;
    };

    struct ChildKey
    {
        std::uint32_t parent;
        std::string longForm;
        bool operator==(const ChildKey&) const = default;
    };

    struct ChildKeyHash
    {
        std::size_t operator()(const ChildKey& key) const noexcept
        {
            return std::hash<std::string>()(key.longForm) * 31 + key.parent;
        }
    };

    void CompileExpressions(const CommandSource& source);
    SuffixSlot CompileExpression(std::string_view text);
    SuffixSlot SlotOf(std::size_t record, const _CS_HDR& header) const;
    void MergeGroup(const Walk& walk, std::size_t start);
    std::uint32_t MergeNode(const Walk& walk, const _CS_HDR& header);
    void DefineEntry(const Walk& walk, std::uint32_t node, const _CS_HDR& header);
    std::string LongHeader(std::uint32_t node) const;

    void FinishNodes();
    void FinishSuffixSlots();
    std::uint32_t EntryFor(std::uint32_t node, bool query) const;

    void CompileParameters(CommandEntry& entry);
    ParameterSpec CompileParameter(const _CMD_SET_RECORD* table, const _CS_PAR& parameter);
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
    std::vector<TreeNode> m_tree;
    std::unordered_map<std::size_t, SuffixSlot> m_expressions; ///< of one source, by header record
    std::vector<SuffixSlots> m_entrySlots;                     ///< for each entry
    std::unordered_map<ChildKey, std::uint32_t, ChildKeyHash> m_children;
    std::map<std::tuple<const _CMD_SET_RECORD*, std::uint32_t>, std::uint32_t> m_lists;
    std::vector<PendingEdge> m_edges;
    std::uint32_t m_nextList = 0;
};

} // namespace ZoVelkor::RemoteKernel
