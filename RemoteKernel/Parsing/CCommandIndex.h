#pragma once

#include "CComBSTR.h"
#include "CommandTableCheck.h"
#include "Mnemonic.h"
#include "ScpiCommandTable.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

class CApplication;

/// One application's command table. The records live as long as the owner.
struct CommandSource
{
    const _CMD_SET_RECORD* records = nullptr;
    std::size_t count = 0;
    std::shared_ptr<CApplication> owner;
};

/// One parameter of a command, ready for checking.
struct ParameterSpec
{
    std::uint32_t type = 0;         ///< accepted kinds in the setting form and in a query-only command
    std::uint32_t queryType = 0;    ///< accepted kinds in the query form of a command that has both
    std::uint32_t flags = 0;        ///< ARG_FLAG_...
    std::uint32_t mnemonicList = 0; ///< list for CCommandIndex::FindMnemonic, 0: none
    std::uint32_t unitList = 0;     ///< list for CCommandIndex::FindUnit, 0: none
};

/// A unit that a parameter accepts, with or without multiplier.
struct Unit
{
    char szText[kTableTextSize]; ///< the unit of the table, in capitals
    std::uint32_t textLength;
    std::int32_t enumeration; ///< value of the table's record
    std::int32_t exponent;    ///< power of ten that leads to the unit in szText
};

/// One suffix of a command's path: the closed range that is accepted, none when low is above high. As it
/// stands here, only 1 is accepted, and it is not passed on.
struct SuffixSlot
{
    std::int32_t low = 1;
    std::int32_t high = 1;
    std::uint32_t further = 0;      ///< further ranges, see CCommandIndex::AcceptsSuffix
    std::uint16_t furtherCount = 0; ///< number of them
    bool own = false;               ///< the application's own table has it, so that the handler gets it
};

/// One executable header.
struct CommandEntry
{
    CApplication* application = nullptr;
    std::int32_t nodataMode = DEF;
    std::int32_t dataMode = DEF;
    std::uint32_t flags = 0;
    std::uint32_t firstParameter = 0;
    std::uint32_t parameterCount = 0;
    std::uint32_t requiredCount = 0; ///< parameters up to the last one that is not optional
    std::uint32_t firstSlot = 0;
    std::uint32_t slotCount = 0; ///< suffix slots on the path in the merged tree
    CComBSTR headerText;         ///< "SENSE:FREQUENCY:CENTER"
    std::string syntaxPath;      ///< "[:SENSe]:FREQuency:CENTer", as the command listings write it
    const _CMD_SET_RECORD* pTable = nullptr; ///< the application's table
    const _CS_HDR* record = nullptr;         ///< the header's record in it

    /// Tells whether the query form exists.
    bool HasQuery() const noexcept { return (flags & QMARK) != 0 && nodataMode != DEF; }

    /// Tells whether the form without '?' exists.
    bool HasSetting() const noexcept
    {
        return dataMode != DEF || ((flags & QMARK) == 0 && nodataMode != DEF);
    }

    /// Tells whether the parameters belong to the setting form, so that the query's are only a help to it.
    bool HasBothForms() const noexcept { return HasQuery() && (HasSetting() || (flags & HDR_SET) != 0); }
};

/// One node of the merged command tree.
struct CommandNode
{
    std::uint32_t settingEntry; ///< entry of a header that ends here, default nodes below included
    std::uint32_t queryEntry;   ///< the same for the query form
    std::uint16_t slotCount;    ///< suffix slots from the root to here
    bool takesSuffix;           ///< the last slot is this node's own
    bool digitKeywords;         ///< some child's keyword ends in a digit by itself
};

/// The command tables of all applications, merged and compiled for the parser.
///
/// Immutable; sessions share it and swap it when tables change. It keeps the applications alive.
/// Looking a keyword up takes constant time, whatever the number of commands.
///
/// Merging: nodes of equal long form are one node; the entry of a node belongs to the last source that makes
/// it executable. A node is optional, or takes a numeric suffix, when a source says
/// so. Which suffixes a command accepts is said by the table that it comes from: by its suffix expressions,
/// and only 1 where its header takes none. Nodes below an optional node can also be reached from above it; a
/// direct child has precedence over them, and an earlier one over a later one. Threads: safe for any number
/// of readers.
class CCommandIndex
{
public:
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;
    static constexpr std::uint32_t kRootNode = 0;
    static constexpr std::uint32_t kCommonNode = 1; ///< parent of the common commands

    /// Compiles the tables. A source whose table ValidateCommandTable refuses is left out: whoever registers
    /// tables tells about them there.
    explicit CCommandIndex(std::span<const CommandSource> sources);

    CCommandIndex(const CCommandIndex&) = delete;
    CCommandIndex& operator=(const CCommandIndex&) = delete;
    ~CCommandIndex();

    const CommandNode& Node(std::uint32_t node) const noexcept { return m_nodes[node]; }
    const CommandEntry& Entry(std::uint32_t entry) const noexcept { return m_entries[entry]; }
    std::size_t EntryCount() const noexcept { return m_entries.size(); }

    std::span<const ParameterSpec> Parameters(const CommandEntry& entry) const noexcept
    {
        return std::span(m_parameters).subspan(entry.firstParameter, entry.parameterCount);
    }

    std::span<const SuffixSlot> SuffixSlots(const CommandEntry& entry) const noexcept
    {
        return {m_suffixSlots.data() + entry.firstSlot, entry.slotCount};
    }

    /// Tells whether a suffix, 0 to 2147483647, lies in one of the slot's ranges.
    bool AcceptsSuffix(const SuffixSlot& slot, long suffix) const noexcept
    {
        return (suffix >= slot.low && suffix <= slot.high) ||
               (slot.furtherCount != 0 && IsInFurtherRange(slot, suffix));
    }

    /// Finds a word of a parameter's own list; null when it is not in it.
    const std::int32_t* FindMnemonic(std::uint32_t list, const MnemonicKey& word) const noexcept;

    /// Finds a unit of a parameter, multipliers included; null when the parameter does not take it.
    const Unit* FindUnit(std::uint32_t list, const MnemonicKey& unit) const noexcept;

    /// Finds a command by its header as a client may write it: any form and case, with or without leading
    /// colon, default nodes, numeric suffixes and '?'; a common command begins with a star.
    ///
    /// @return null when there is no such command
    const CommandEntry* Find(std::string_view header) const noexcept;

    /// Follows one keyword of a header, digits of a numeric suffix included.
    ///
    /// @param[out] keywordLength  characters that belong to the keyword; what follows is the suffix
    /// @return kNone when there is no such child
    std::uint32_t Match(std::uint32_t node,
                        const char* text,
                        const Mnemonic& mnemonic,
                        std::size_t& keywordLength) const noexcept;

private:
    friend class CCommandIndexBuilder;

    struct Edge
    {
        MnemonicKey key;
        std::uint32_t owner = kNone; ///< node or list; kNone: free place
        std::uint32_t target = kNone;
    };

    struct SuffixRange
    {
        std::int32_t low;
        std::int32_t high;
    };

    bool IsInFurtherRange(const SuffixSlot& slot, long suffix) const noexcept;

    std::uint32_t Lookup(std::uint32_t owner, const MnemonicKey& key) const noexcept
    {
        for (std::size_t place = Place(owner, key);; place = (place + 1) & m_edgeMask)
        {
            const Edge& edge = m_edges[place];
            if (edge.owner == owner && edge.key == key)
            {
                return edge.target;
            }
            if (edge.owner == kNone)
            {
                return kNone;
            }
        }
    }

    std::size_t Place(std::uint32_t owner, const MnemonicKey& key) const noexcept
    {
        std::uint64_t mixed = (key.low ^ (owner * 0x9E3779B97F4A7C15ULL)) * 0xFF51AFD7ED558CCDULL;
        mixed = (mixed ^ (mixed >> 32) ^ key.high) * 0xC4CEB9FE1A85EC53ULL;
        return static_cast<std::size_t>(mixed >> 32) & m_edgeMask;
    }

    std::vector<Edge> m_edges; ///< open addressing, at most half full
    std::size_t m_edgeMask = 0;
    std::vector<CommandNode> m_nodes;
    std::vector<CommandEntry> m_entries;
    std::vector<SuffixSlot> m_suffixSlots;
    std::vector<SuffixRange> m_suffixRanges; ///< all but the first of their slots
    std::vector<ParameterSpec> m_parameters;
    std::vector<std::int32_t> m_mnemonics;
    std::vector<Unit> m_units;
    std::vector<std::shared_ptr<CApplication>> m_owners;
};

} // namespace ZoVelkor::RemoteKernel
