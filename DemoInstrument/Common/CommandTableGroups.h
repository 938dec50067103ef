#pragma once

#include "KeywordForms.h"
#include "ScpiCommandTable.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>

namespace ZoVelkor::Demo
{

// What the command tables of all applications are written with, beside the record macros. Include this header
// only where a table is written: the names are short.

/// A run of records of one kind: a level of the command tree, the parameters of a command, a list of words.
struct Group
{
    std::uint32_t first;
    std::uint32_t count;
};

/// The group of so many records that follows another one.
constexpr Group After(Group former, std::uint32_t count)
{
    return {former.first + former.count, count};
}

/// No child group, no parameters, no unit, no words; and every record of a group but its first has no length.
inline constexpr std::uint32_t NONE = 0;

// Forms of a command.
inline constexpr std::uint32_t EVENT = NONE;
inline constexpr std::uint32_t QUERY = QMARK;
inline constexpr std::uint32_t SETTING = HDR_SET;
inline constexpr std::uint32_t BOTH = QMARK | HDR_SET;

// Kinds of parameters.
inline constexpr std::uint32_t LIMITS = ARG_MINMAX | ARG_DEFAULT;
inline constexpr std::uint32_t WORDS = LIMITS | ARG_UPDOWN;
inline constexpr std::uint32_t NUMERIC = ARG_SFLOAT | WORDS;
inline constexpr std::uint32_t INTEGER = ARG_SINT | WORDS; // the kernel rounds
inline constexpr std::uint32_t BOOLEAN = ARG_SFLOAT | ARG_OFF | MNEM;

/// Value that the handler gets for a parameter's unit; the kernel turns kHz or ms into these base units.
inline constexpr std::uint32_t BASE_UNIT = 1;

/// Checks the length words of groups: a group's first record has its length, the others have none.
template <auto TKind, auto TLength>
constexpr bool HaveLengths(std::span<const _CMD_SET_RECORD> table, std::initializer_list<Group> groups)
{
    return std::ranges::all_of(groups, [table](Group group) {
        for (std::uint32_t i = 0; i < group.count; ++i)
        {
            if (table[group.first + i].*TKind.*TLength != (i == 0 ? group.count : 0))
            {
                return false;
            }
        }
        return true;
    });
}

constexpr bool AreHeaderGroups(std::span<const _CMD_SET_RECORD> table, std::initializer_list<Group> groups)
{
    return HaveLengths<&_CMD_SET_RECORD::hdr, &_CS_HDR::iLength>(table, groups);
}

constexpr bool AreUnitGroups(std::span<const _CMD_SET_RECORD> table, std::initializer_list<Group> groups)
{
    return HaveLengths<&_CMD_SET_RECORD::sfx, &_CS_SFX::iLength>(table, groups);
}

constexpr bool AreWordGroups(std::span<const _CMD_SET_RECORD> table, std::initializer_list<Group> groups)
{
    return HaveLengths<&_CMD_SET_RECORD::chr, &_CS_CHR::iLength>(table, groups);
}

/// States that a header accepts the numeric suffixes from 1 to a count.
template <std::size_t TCount>
constexpr _CMD_SET_RECORD SuffixesUpTo(std::uint32_t header)
{
    static_assert(TCount >= 1 && TCount <= 9, "written as one digit");
    return {.nse = {{'1', '-', static_cast<char>('0' + TCount)}, NSE_HEADER | header}};
}

/// Checks that each header that takes a numeric suffix, and no other one, has its expression, in the order of
/// the headers.
///
/// @param headers  number of header records, which are the first of the table
constexpr bool
AreSuffixExpressions(std::span<const _CMD_SET_RECORD> table, std::uint32_t headers, Group expressions)
{
    std::uint32_t found = 0;
    for (std::uint32_t header = 0; header < headers; ++header)
    {
        if ((table[header].hdr.iFollow & NSUFF) == 0)
        {
            continue;
        }
        if (found == expressions.count ||
            table[expressions.first + found].nse.iValue != (NSE_HEADER | header))
        {
            return false;
        }
        ++found;
    }
    return found == expressions.count;
}

/// The short form of a word, as queries answer it: TIM1 for TIMer1.
///
/// @param words  their values count from 1 in the order of the table
inline std::string ShortWord(std::span<const _CMD_SET_RECORD> table, Group words, long value)
{
    return ShortForm(table[words.first + static_cast<std::uint32_t>(value) - 1].chr.szKeyword);
}

} // namespace ZoVelkor::Demo
