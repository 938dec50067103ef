#pragma once

#include "ZoExport.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace ZoVelkor
{

/// The kinds of groups that the records of a command table form.
enum class tagScpiTableKind
{
    Header,
    Parameter,
    UnitSuffix,
    CharacterData,
    NumericSuffix, ///< numeric-suffix expressions
    None           ///< outside every group
};

/// Number of the kinds that form groups.
inline constexpr std::size_t kScpiTableKinds = static_cast<std::size_t>(tagScpiTableKind::None);

/// The groups of one command table, and the state of writing the table out as source text.
///
/// CScpiParserTable::AnalyseGroups fills it. The state of writing belongs to the writer, and analysis
/// resets it. Indexes count records from 0. Errors: none but std::bad_alloc, and std::out_of_range for the
/// kind None. Threads: one instance belongs to one thread at a time.
class ZO_EXPORT CScpiParserTableGroups
{
public:
    /// Forgets all groups, labels and marks; no kind is current.
    void Reset();

    /// Takes a group in and raises the table's end behind it; a group without records raises the end only.
    void AddGroup(tagScpiTableKind kind, long start, long size);

    /// Puts the starts in order, each once, and finds the width of an index.
    void Finish();

    /// Starts of the groups of one kind: ascending, each once.
    const std::vector<long>& Groups(tagScpiTableKind kind) const;

    /// One behind the last record that belongs to a group.
    long TableEnd() const { return m_tableEnd; }

    /// Decimal digits of the largest record index; 0 for a table of at most one record.
    int OffsetWidth() const { return m_offsetWidth; }

    /// Takes a name out of a flag word when all bits of its mask are set.
    ///
    /// Names of several bits must be tried before the names of the bits.
    /// @param[in,out] text   gains the name, behind "|" unless it was empty
    /// @param[in,out] value  loses the bits of the mask
    static void
    TokeniseEnum(std::string& text, std::uint32_t& value, const std::string& name, std::uint32_t mask);

    /// Appends what no name stood for as a number; an empty text becomes "0" when nothing is left.
    static void TokeniseValue(std::string& text, std::uint32_t value);

    /// Writes an index as a comment, right-aligned in the offset width and with a blank behind it.
    void DumpOffset(std::ostream& out, long index) const;

    // State of writing.
    tagScpiTableKind m_kind = tagScpiTableKind::None;        ///< kind of the group being written
    std::array<long, kScpiTableKinds> m_groupEnds = {};      ///< by kind: one behind what has begun so far
    std::map<std::string, long> m_labels;                    ///< group labels: B_ starts, L_ lengths
    std::map<std::string, long> m_modeNames;                 ///< names of handlers, with their numbers
    std::array<bool, kScpiTableKinds> m_commentWritten = {}; ///< by kind: the column comment is written

private:
    std::array<std::vector<long>, kScpiTableKinds> m_groups;
    long m_tableEnd = 0;
    int m_offsetWidth = 0;
};

} // namespace ZoVelkor
