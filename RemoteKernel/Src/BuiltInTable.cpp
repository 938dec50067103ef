#include "BuiltInTable.h"

#include "ScpiTableMacros.h"

namespace ZoVelkor::RemoteKernel
{

namespace
{

constexpr std::uint32_t kEvent = 0;
constexpr std::uint32_t kQuery = QMARK;
constexpr std::uint32_t kBoth = QMARK | HDR_SET;

// The groups below follow one another; their first records stand at these places.
constexpr std::uint32_t kSystem = 8;
constexpr std::uint32_t kError = 11;
constexpr std::uint32_t kHelp = 14;
constexpr std::uint32_t kHeaderText = 16;

// clang-format off
constexpr _CMD_SET_RECORD kTable[] = {
    //  keyword     without data                with data    children group parameters   flags
    HDR("CLS",      BUILTIN_CLS,                DEF,         0,       7,    0,           CCMD | kEvent),
    HDR("IDN",      BUILTIN_IDN_QUERY,          DEF,         0,       0,    0,           CCMD | kQuery),
    HDR("OPC",      BUILTIN_OPC_QUERY,          BUILTIN_OPC, 0,       0,    0,           CCMD | kBoth),
    HDR("OPT",      BUILTIN_OPT_QUERY,          DEF,         0,       0,    0,           CCMD | kQuery),
    HDR("RST",      BUILTIN_RST,                DEF,         0,       0,    0,           CCMD | kEvent),
    HDR("TST",      BUILTIN_TST_QUERY,          DEF,         0,       0,    0,           CCMD | kQuery),
    HDR("WAI",      BUILTIN_WAI,                DEF,         0,       0,    0,           CCMD | kEvent),

    HDR("SYSTem",   DEF,                        DEF,         kSystem, 1,    0,           0),

    HDR("ERRor",    DEF,                        DEF,         kError,  3,    0,           0),
    HDR("HELP",     DEF,                        DEF,         kHelp,   0,    0,           0),
    HDR("VERSion",  BUILTIN_VERSION_QUERY,      DEF,         0,       0,    0,           kQuery),

    HDR("[NEXT]",   BUILTIN_ERROR_NEXT_QUERY,   DEF,         0,       3,    0,           kQuery),
    HDR("ALL",      BUILTIN_ERROR_ALL_QUERY,    DEF,         0,       0,    0,           kQuery),
    HDR("COUNt",    BUILTIN_ERROR_COUNT_QUERY,  DEF,         0,       0,    0,           kQuery),

    HDR("HEADers",  BUILTIN_HELP_HEADERS_QUERY, DEF,         0,       2,    0,           kQuery),
    HDR("SYNTax",   BUILTIN_HELP_SYNTAX_QUERY,  DEF,         0,       0,    kHeaderText, kQuery),

    //  name            kinds    units words keywords next flags
    PAR("command_header", ARG_STRG, 0, 0,    0,       0,   0),
};
// clang-format on

static_assert(kSystem == 8 && kHeaderText + 1 == sizeof(kTable) / sizeof(kTable[0]));

} // namespace

std::span<const _CMD_SET_RECORD> BuiltInTable() noexcept
{
    return kTable;
}

} // namespace ZoVelkor::RemoteKernel
