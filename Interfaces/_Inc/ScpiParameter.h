#pragma once

#include <cstddef>
#include <cstdint>

namespace ZoVelkor
{

struct IZOScpiBlockData;

/// Kind of one parameter of a program message.
enum tagZO_SCPI_PARAMTYPE : std::uint32_t
{
    ZO_SCPI_PARAMTYPE_UNDEFINED = 0, ///< not classified
    ZO_SCPI_PARAMTYPE_NOVALUE = 1,   ///< left out between two separators
    ZO_SCPI_PARAMTYPE_NUMERIC = 2,   ///< number; the text is decimal, in the base unit where one was resolved
    ZO_SCPI_PARAMTYPE_CHARACTER = 3, ///< character data from the command's own list
    ZO_SCPI_PARAMTYPE_STRING = 4,    ///< string, quotes removed
    ZO_SCPI_PARAMTYPE_BLOCK = 5,     ///< arbitrary block
    ZO_SCPI_PARAMTYPE_EXPRESSION = 6, ///< expression, parentheses included
    ZO_SCPI_PARAMTYPE_SPECIAL = 7 ///< MINimum, ON and the like, see tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE
};

/// Character data with a meaning of its own, whatever the command (SCPI-99 vol. 1, 7.2.1, 7.3).
enum tagZO_SCPI_SPECIAL_CHARACTER_DATA_TYPE : std::uint32_t
{
    ZO_SCPI_SPECIAL_NONE = 0,
    ZO_SCPI_SPECIAL_MINIMUM = 1,
    ZO_SCPI_SPECIAL_MAXIMUM = 2,
    ZO_SCPI_SPECIAL_DEFAULT = 3,
    ZO_SCPI_SPECIAL_UP = 4,
    ZO_SCPI_SPECIAL_DOWN = 5,
    ZO_SCPI_SPECIAL_ON = 6,
    ZO_SCPI_SPECIAL_OFF = 7,
    ZO_SCPI_SPECIAL_INFINITY = 8,
    ZO_SCPI_SPECIAL_NEGATIVE_INFINITY = 9,
    ZO_SCPI_SPECIAL_NOT_A_NUMBER = 10,
    ZO_SCPI_SPECIAL_KEEP = 11
};

/// Space for the text of a parameter, terminating NUL included. A text that does not fit is refused with
/// -223 "Too much data" before any handler sees it.
inline constexpr std::size_t kParameterTextSize = 1028;

/// One parsed parameter, as the remote kernel hands it to a handler.
///
/// Ownership: the kernel owns the record and the reference in pBlockData; both live until Execute returns.
/// Infinity and not-a-number arrive as numbers with their numeric stand-ins (9.9E37, -9.9E37, 9.91E37;
/// SCPI-99 vol. 1, 7.2.1.4 and 7.2.1.5) and the special code set beside it.
struct tagZO_SCPI_PARAMETER
{
    std::uint32_t iType;        ///< tagZO_SCPI_PARAMTYPE
    std::uint32_t iSpecialCode; ///< kind 7: the special word; kind 3: the value of the mnemonic in the table
    char szText[kParameterTextSize]; ///< text, NUL-terminated; a number keeps its unit after one blank
    std::int32_t iUnit;              ///< unit value of the table's suffix record, -1 without unit
    std::int32_t iUnitSuffix;        ///< unit-suffix value of the table's suffix record, -1 without unit
    std::int16_t iNoSuffix;          ///< non-zero: no unit suffix is to be reported
    std::uint32_t iTextLength;       ///< length of the text in bytes
    std::uint32_t iBlockLength;      ///< length of the block in bytes; 0xFFFFFFFF: not known in advance
    IZOScpiBlockData* pBlockData;    ///< the block, a reference held by the record; null for the other kinds
};

static_assert(offsetof(tagZO_SCPI_PARAMETER, szText) == 8 && offsetof(tagZO_SCPI_PARAMETER, iUnit) == 1036);
static_assert(offsetof(tagZO_SCPI_PARAMETER, iUnitSuffix) == 1040);
static_assert(offsetof(tagZO_SCPI_PARAMETER, iNoSuffix) == 1044);
static_assert(offsetof(tagZO_SCPI_PARAMETER, iTextLength) == 1048);
static_assert(offsetof(tagZO_SCPI_PARAMETER, iBlockLength) == 1052);
static_assert(offsetof(tagZO_SCPI_PARAMETER, pBlockData) == 1056);
static_assert(sizeof(tagZO_SCPI_PARAMETER) == 1064);

} // namespace ZoVelkor
