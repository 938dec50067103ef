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
struct tagCommandSource
{
    const _CMD_SET_RECORD* pRecords = nullptr;
    std::size_t iCount = 0;
    std::shared_ptr<CApplication> spOwner;
};

/// One parameter of a command, ready for checking.
struct tagParameterSpec
{
    std::uint32_t iType = 0;         ///< accepted kinds in the setting form and in a query-only command
    std::uint32_t iQueryType = 0;    ///< accepted kinds in the query form of a command that has both
    std::uint32_t iFlags = 0;        ///< ARG_FLAG_...
    std::uint32_t iMnemonicList = 0; ///< list for CCommandIndex::FindMnemonic, 0: none
    std::uint32_t iUnitList = 0;     ///< list for CCommandIndex::FindUnit, 0: none
};

/// A unit that a parameter accepts, with or without multiplier.
struct tagUnit
{
    char szText[kTableTextSize]; ///< the unit of the table, in capitals
    std::uint32_t iTextLength;
    std::int32_t iEnum;     ///< value of the table's record
    std::int32_t iExponent; ///< power of ten that leads to the unit in szText
};

/// One suffix of a command's path: the closed range that is accepted, none when low is above high. As it
/// stands here, only 1 is accepted, and it is not passed on.
struct tagSuffixSlot
{
    std::int32_t iLow = 1;
    std::int32_t iHigh = 1;
    std::uint32_t iFurther = 0;      ///< further ranges, see CCommandIndex::AcceptsSuffix
    std::uint16_t iFurtherCount = 0; ///< number of them
    bool bOwn = false;               ///< the application's own table has it, so that the handler gets it
};

/// One executable header.
struct tagCommandEntry
{
    CApplication* pApplication = nullptr;
    std::int32_t iNodataMode = DEF;
    std::int32_t iDataMode = DEF;
    std::uint32_t iFlags = 0;
    std::uint32_t iFirstParameter = 0;
    std::uint32_t iParameterCount = 0;
    std::uint32_t iRequiredCount = 0; ///< parameters up to the last one that is not optional
    std::uint32_t iFirstSlot = 0;
    std::uint32_t iSlotCount = 0; ///< suffix slots on the path in the merged tree
    CComBSTR bsHeader;            ///< "SENSE:FREQUENCY:CENTER"
    std::string sSyntaxPath;      ///< "[:SENSe]:FREQuency:CENTer", as the command listings write it
    const _CMD_SET_RECORD* pTable = nullptr; ///< the application's table
    const _CS_HDR* pRecord = nullptr;        ///< the header's record in it

    /// Tells whether the query form exists.
    bool HasQuery() const noexcept { return (iFlags & QMARK) != 0 && iNodataMode != DEF; }

    /// Tells whether the form without '?' exists.
    bool HasSetting() const noexcept
    {
        return iDataMode != DEF || ((iFlags & QMARK) == 0 && iNodataMode != DEF);
    }

    /// Tells whether the parameters belong to the setting form, so that the query's are only a help to it.
    bool HasBothForms() const noexcept { return HasQuery() && (HasSetting() || (iFlags & HDR_SET) != 0); }
};

/// One node of the merged command tree.
struct tagCommandNode
{
    std::uint32_t iSettingEntry; ///< entry of a header that ends here, default nodes below included
    std::uint32_t iQueryEntry;   ///< the same for the query form
    std::uint16_t iSlotCount;    ///< suffix slots from the root to here
    bool bTakesSuffix;           ///< the last slot is this node's own
    bool bDigitKeywords;         ///< some child's keyword ends in a digit by itself
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
    explicit CCommandIndex(std::span<const tagCommandSource> sources);

    CCommandIndex(const CCommandIndex&) = delete;
    CCommandIndex& operator=(const CCommandIndex&) = delete;
    ~CCommandIndex();

    /// Finds the node behind a keyword, in short or long form.
    ///
    /// @return kNone when there is none
    std::uint32_t FindChild(std::uint32_t node, const tagMnemonicKey& keyword) const noexcept
    {
        return Lookup(node, keyword);
    }

    const tagCommandNode& Node(std::uint32_t node) const noexcept { return m_nodes[node]; }
    const tagCommandEntry& Entry(std::uint32_t entry) const noexcept { return m_entries[entry]; }
    std::size_t EntryCount() const noexcept { return m_entries.size(); }

    std::span<const tagParameterSpec> Parameters(const tagCommandEntry& entry) const noexcept
    {
        return std::span(m_parameters).subspan(entry.iFirstParameter, entry.iParameterCount);
    }

    std::span<const tagSuffixSlot> SuffixSlots(const tagCommandEntry& entry) const noexcept
    {
        return {m_suffixSlots.data() + entry.iFirstSlot, entry.iSlotCount};
    }

    /// Tells whether a suffix, 0 to 2147483647, lies in one of the slot's ranges.
    bool AcceptsSuffix(const tagSuffixSlot& slot, long suffix) const noexcept
    {
        return (suffix >= slot.iLow && suffix <= slot.iHigh) ||
               (slot.iFurtherCount != 0 && IsInFurtherRange(slot, suffix));
    }

    /// Finds a word of a parameter's own list; null when it is not in it.
    const std::int32_t* FindMnemonic(std::uint32_t list, const tagMnemonicKey& word) const noexcept;

    /// Finds a unit of a parameter, multipliers included; null when the parameter does not take it.
    const tagUnit* FindUnit(std::uint32_t list, const tagMnemonicKey& unit) const noexcept;

    /// Finds a command by its header as a client may write it: any form and case, with or without leading
    /// colon, default nodes, numeric suffixes and '?'; a common command begins with a star.
    ///
    /// @return null when there is no such command
    const tagCommandEntry* Find(std::string_view header) const noexcept;

    /// Follows one keyword of a header, digits of a numeric suffix included.
    ///
    /// @param[out] keywordLength  characters that belong to the keyword; what follows is the suffix
    /// @return kNone when there is no such child
    std::uint32_t Match(std::uint32_t node,
                        const char* text,
                        const tagMnemonic& mnemonic,
                        std::size_t& keywordLength) const noexcept;

private:
    friend class CCommandIndexBuilder;

    struct tagEdge
    {
        tagMnemonicKey key;
        std::uint32_t iOwner = kNone; ///< node or list; kNone: free place
        std::uint32_t iTarget = kNone;
    };

    struct tagSuffixRange
    {
        std::int32_t iLow;
        std::int32_t iHigh;
    };

    bool IsInFurtherRange(const tagSuffixSlot& slot, long suffix) const noexcept;

    std::uint32_t Lookup(std::uint32_t owner, const tagMnemonicKey& key) const noexcept
    {
        for (std::size_t place = Place(owner, key);; place = (place + 1) & m_edgeMask)
        {
            const tagEdge& edge = m_edges[place];
            if (edge.iOwner == owner && edge.key == key)
            {
                return edge.iTarget;
            }
            if (edge.iOwner == kNone)
            {
                return kNone;
            }
        }
    }

    std::size_t Place(std::uint32_t owner, const tagMnemonicKey& key) const noexcept
    {
        std::uint64_t mixed = (key.iLow ^ (owner * 0x9E3779B97F4A7C15ULL)) * 0xFF51AFD7ED558CCDULL;
        mixed = (mixed ^ (mixed >> 32) ^ key.iHigh) * 0xC4CEB9FE1A85EC53ULL;
        return static_cast<std::size_t>(mixed >> 32) & m_edgeMask;
    }

    std::vector<tagEdge> m_edges; ///< open addressing, at most half full
    std::size_t m_edgeMask = 0;
    std::vector<tagCommandNode> m_nodes;
    std::vector<tagCommandEntry> m_entries;
    std::vector<tagSuffixSlot> m_suffixSlots;
    std::vector<tagSuffixRange> m_suffixRanges; ///< all but the first of their slots
    std::vector<tagParameterSpec> m_parameters;
    std::vector<std::int32_t> m_mnemonics;
    std::vector<tagUnit> m_units;
    std::vector<std::shared_ptr<CApplication>> m_owners;
};

} // namespace ZoVelkor::RemoteKernel
