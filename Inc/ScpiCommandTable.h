#pragma once

#include <cstddef>
#include <cstdint>

namespace ZoVelkor
{

/// Handler index of a header that lacks the form in question.
inline constexpr std::int32_t DEF = -1;

/// Space for a keyword, a parameter name, a suffix or a mnemonic, terminating NUL included.
inline constexpr std::size_t kTableTextSize = 16;

/// Space for a numeric-suffix expression, terminating NUL included.
inline constexpr std::size_t kTableExpressionSize = 36;

// Header flags; MNEM, HDR_DIAG and NSUFF_EXT also occur in parameter types.
inline constexpr std::uint32_t CCMD = 0x1;          ///< common command, written with a star and without colon
inline constexpr std::uint32_t MNEM = 0x2;          ///< character data
inline constexpr std::uint32_t COMP = 0x4;          ///< compound header
inline constexpr std::uint32_t NSUFF = 0x8;         ///< the keyword takes a numeric suffix
inline constexpr std::uint32_t QMARK = 0x10;        ///< a query form exists
inline constexpr std::uint32_t HDR = 0x20;          ///< header node
inline constexpr std::uint32_t UNIT = 0x40;         ///< a unit suffix is allowed
inline constexpr std::uint32_t MESS = 0x80;         ///< message
inline constexpr std::uint32_t HDR_SET = 0x1000000; ///< a setting form exists beside the query form
inline constexpr std::uint32_t HDR_DIAG = 0x2000000;  ///< diagnostic command, listed only on request
inline constexpr std::uint32_t DELEGATE = 0x4000000;  ///< execution is delegated
inline constexpr std::uint32_t NSUFF_EXT = 0x8000000; ///< extended numeric suffix

// Parameter types: what kinds of program data a parameter accepts.
inline constexpr std::uint32_t ARG_PINT = 0x100;       ///< positive integer
inline constexpr std::uint32_t ARG_NINT = 0x200;       ///< negative integer
inline constexpr std::uint32_t ARG_PFLOAT_S = 0x400;   ///< positive number with fraction or exponent
inline constexpr std::uint32_t ARG_NFLOAT_S = 0x800;   ///< negative number with fraction or exponent
inline constexpr std::uint32_t ARG_IBLOCK = 0x1000;    ///< indefinite-length block
inline constexpr std::uint32_t ARG_DBLOCK = 0x2000;    ///< definite-length block
inline constexpr std::uint32_t ARG_HEX = 0x4000;       ///< \#H...
inline constexpr std::uint32_t ARG_BIN = 0x8000;       ///< \#B...
inline constexpr std::uint32_t ARG_OCT = 0x10000;      ///< \#Q...
inline constexpr std::uint32_t ARG_STRG = 0x20000;     ///< string in quotes
inline constexpr std::uint32_t ARG_STRGUD = 0x40000;   ///< string without quotes
inline constexpr std::uint32_t ARG_EXPR = 0x80000;     ///< expression in parentheses
inline constexpr std::uint32_t ARG_MINMAX = 0x100000;  ///< MINimum, MAXimum
inline constexpr std::uint32_t ARG_DEFAULT = 0x200000; ///< DEFault
inline constexpr std::uint32_t ARG_UPDOWN = 0x400000;  ///< UP, DOWN
inline constexpr std::uint32_t ARG_OFF = 0x800000;     ///< ON, OFF
inline constexpr std::uint32_t ARG_KEEP = 0x1000000;   ///< KEEP
inline constexpr std::uint32_t EXP = 0x10000000;       ///< exponent
inline constexpr std::uint32_t SUFF = 0x20000000;      ///< suffix
inline constexpr std::uint32_t DATA = 0x40000000;      ///< data
inline constexpr std::uint32_t SYNERR = 0x80000000;    ///< syntax error

inline constexpr std::uint32_t ARG_PFLOAT = ARG_PFLOAT_S | ARG_PINT; ///< any positive decimal number
inline constexpr std::uint32_t ARG_NFLOAT = ARG_NFLOAT_S | ARG_NINT; ///< any negative decimal number
inline constexpr std::uint32_t ARG_BLOCK = ARG_IBLOCK | ARG_DBLOCK;  ///< a block of either form
/// An integer of any sign and base.
inline constexpr std::uint32_t ARG_SINT = ARG_OCT | ARG_BIN | ARG_HEX | ARG_NINT | ARG_PINT;
/// Any number: what most numeric parameters accept.
inline constexpr std::uint32_t ARG_SFLOAT = ARG_SINT | ARG_PFLOAT_S | ARG_NFLOAT_S;

static_assert(ARG_PFLOAT == 0x500 && ARG_NFLOAT == 0xA00 && ARG_BLOCK == 0x3000);
static_assert(ARG_SINT == 0x1C300 && ARG_SFLOAT == 0x1CF00);

// Argument flags, in the exponent word of a parameter.
inline constexpr std::uint32_t ARG_FLAG_EXP = 0x1;  ///< kept for generated tables
inline constexpr std::uint32_t ARG_FLAG_SSR = 0x2;  ///< the flags are written by name in generated source
inline constexpr std::uint32_t ARG_FLAG_REP = 0x4;  ///< the parameter may be repeated: a list
inline constexpr std::uint32_t ARG_FLAG_DIAG = 0x8; ///< kept for generated tables
inline constexpr std::uint32_t ARG_FLAG_OPT = 0x10; ///< the parameter may be left out
inline constexpr std::uint32_t ARG_FLAG_OPEN_BEGIN = 0x20; ///< kept for generated tables
inline constexpr std::uint32_t ARG_FLAG_OPEN_END = 0x40;   ///< kept for generated tables
inline constexpr std::uint32_t ARG_FLAG_OPT_GROUP = 0x80;  ///< kept for generated tables

/// Header record: one node of the command tree.
struct _CS_HDR
{
    char szKeyword[kTableTextSize]; ///< syntax form; brackets around it, [ and ], mark an optional node
    std::int32_t iNodataMode;       ///< handler of the form without data (query or event); DEF: none
    std::int32_t iDataMode;         ///< handler of the form with data (setting); DEF: none
    std::uint32_t iSubStart;        ///< first record of the child group; 0: no child
    std::uint32_t iLength;          ///< records of the group that begins here, on its first record only
    std::uint32_t iDatatype;        ///< first record of the parameter chain; 0: no parameters
    std::uint32_t iFollow;          ///< header flags
};

/// Parameter record: one argument of a command.
struct _CS_PAR
{
    char szName[kTableTextSize]; ///< for listings and generated source
    std::uint32_t iType;         ///< accepted kinds, ARG_... and MNEM
    std::uint32_t iSuffixList;   ///< unit-suffix group; 0: none
    std::uint32_t iCount;        ///< records of the keyword list
    std::uint32_t iKeywords;     ///< first record of the keyword list
    std::uint32_t iNextPar;      ///< next parameter of the same header; not beyond this record: the last one
    std::uint32_t iExponent;     ///< argument flags, ARG_FLAG_...
};

/// Unit-suffix record.
struct _CS_SFX
{
    char szSuffix[kTableTextSize]; ///< unit in capitals, multiplier included
    std::uint32_t iEnum;           ///< value delivered to the handler for this unit
    std::uint32_t iLength;         ///< records of the group, on its first record only
    std::uint32_t iUnused[4];      ///< 0
};

/// Character-data record.
struct _CS_CHR
{
    char szKeyword[kTableTextSize]; ///< mnemonic in syntax form
    std::uint32_t iEnum;            ///< value delivered to the handler for this mnemonic
    std::uint32_t iLength;          ///< records of the group, on its first record only
    std::uint32_t iUnused[4];       ///< 0
};

/// Marks the value word of a numeric-suffix expression; the other bits are the index of its header record.
///
/// No other kind of record sets this bit in its last word.
inline constexpr std::uint32_t NSE_HEADER = 0x80000000;

/// Numeric-suffix expression record: which suffixes one header accepts.
///
/// The expressions are the last records of a table, behind all other groups: the group is the run of records
/// at the table's end whose value word carries NSE_HEADER, so that a table's size is enough to find it. A
/// header takes at most one expression, the first that names it; headers without one accept any suffix.
/// FindSuffixExpressions (ScpiTableCheck.h) lists them. A suffix that a client leaves out is 1, and is
/// accepted only where 1 is. Where several applications share a node, each one's expression holds for its own
/// commands.
struct _CS_NSE
{
    char szExpression[kTableExpressionSize]; ///< grammar of CNumericSuffixExpression
    std::uint32_t iValue;                    ///< NSE_HEADER | index of the header record
};

/// One record of a command table; its kind follows from the group that it belongs to.
///
/// A command table is one flat array of 40-byte records without pointers: every cross-reference is the index
/// of another record of the same array. Records come in groups (headers, parameters, unit suffixes, character
/// data, numeric-suffix expressions); the first record of a group carries the group's length. The root header
/// group stands at index 0, after the common commands if there are any.
union _CMD_SET_RECORD
{
    _CS_HDR hdr; ///< node of the command tree
    _CS_PAR par; ///< parameter
    _CS_SFX sfx; ///< unit suffix
    _CS_CHR chr; ///< character data
    _CS_NSE nse; ///< numeric-suffix expression
};

/// The record under the name that generated source uses.
using CMD_SET_RECORD = _CMD_SET_RECORD;

static_assert(sizeof(_CS_HDR) == 40 && offsetof(_CS_HDR, iNodataMode) == 16 &&
              offsetof(_CS_HDR, iFollow) == 36);
static_assert(sizeof(_CS_PAR) == 40 && offsetof(_CS_PAR, iType) == 16 && offsetof(_CS_PAR, iExponent) == 36);
static_assert(sizeof(_CS_SFX) == 40 && offsetof(_CS_SFX, iEnum) == 16 && offsetof(_CS_SFX, iLength) == 20);
static_assert(sizeof(_CS_CHR) == 40 && offsetof(_CS_CHR, iEnum) == 16 && offsetof(_CS_CHR, iLength) == 20);
static_assert(sizeof(_CS_NSE) == 40 && offsetof(_CS_NSE, iValue) == 36);
static_assert(sizeof(_CMD_SET_RECORD) == 40);

} // namespace ZoVelkor
