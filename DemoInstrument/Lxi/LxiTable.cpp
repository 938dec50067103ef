#include "LxiTable.h"

#include "CLxiCommands.h"
#include "Common/CommandTableGroups.h"
#include "ScpiTableMacros.h"

#include <iterator>

namespace ZoVelkor::Demo
{
namespace
{

// The groups, in the order of the table below.
constexpr Group kRoot{0, 2};
constexpr Group kTrigger = After(kRoot, 1);
constexpr Group kSequence = After(kTrigger, 1);
constexpr Group kTriggerLxi = After(kSequence, 1);
constexpr Group kTriggerLan = After(kTriggerLxi, 1);
constexpr Group kSet = After(kTriggerLan, 2);
constexpr Group kLxi = After(kSet, 3);
constexpr Group kIdentify = After(kLxi, 1);
constexpr Group kEvent = After(kIdentify, 2);
constexpr Group kEventLan = After(kEvent, 1);
constexpr Group kLog = After(kEventLan, 3);
constexpr Group kError = After(kLog, 1);
constexpr Group kBooleanParameter = After(kError, 1);
constexpr Group kDelayParameter = After(kBooleanParameter, 1);
constexpr Group kLeadParameter = After(kDelayParameter, 1);
constexpr Group kSecond = After(kLeadParameter, 1);
constexpr Group kSuffixes = After(kSecond, 2);
constexpr Group kEnd = After(kSuffixes, 0);

/// A number, MIN, MAX or DEF; a delay has no steps.
constexpr std::uint32_t DELAY = ARG_SFLOAT | LIMITS;

/// States that a header accepts the numbers of LAN events.
constexpr _CMD_SET_RECORD LanNumbers(std::uint32_t header)
{
    return NSE("0-7", NSE_HEADER | header);
}

// Laid out in columns by hand.
// clang-format off
constexpr _CMD_SET_RECORD kTable[] = {
    //  keyword        nodata           data             children           length             parameters               form
    HDR("TRIGger",     DEF,             DEF,             kTrigger.first,    kRoot.count,       NONE,                    NONE),
    HDR("LXI",         DEF,             DEF,             kLxi.first,        NONE,              NONE,                    NONE),

    // TRIGger
    HDR("[SEQuence]",  DEF,             DEF,             kSequence.first,   kTrigger.count,    NONE,                    NONE),

    // TRIGger[:SEQuence]:
    HDR("LXI",         DEF,             DEF,             kTriggerLxi.first, kSequence.count,   NONE,                    NONE),

    // TRIGger[:SEQuence]:LXI:
    HDR("LAN",         DEF,             DEF,             kTriggerLan.first, kTriggerLxi.count, NONE,                    NSUFF),

    // TRIGger[:SEQuence]:LXI:LAN<0..7>
    HDR("[SET]",       DEF,             DEF,             kSet.first,        kTriggerLan.count, NONE,                    NONE),

    // TRIGger[:SEQuence]:LXI:LAN<0..7>[:SET]:
    HDR("ENABled",     LXI_LAN_ENABLED, LXI_LAN_ENABLED, NONE,              kSet.count,        kBooleanParameter.first, BOTH),
    HDR("DELay",       LXI_LAN_DELAY,   LXI_LAN_DELAY,   NONE,              NONE,              kDelayParameter.first,   BOTH),

    // LXI:
    HDR("IDENtify",    DEF,             DEF,             kIdentify.first,   kLxi.count,        NONE,                    NONE),
    HDR("EVENt",       DEF,             DEF,             kEvent.first,      NONE,              NONE,                    NONE),
    HDR("ERRor",       DEF,             DEF,             kError.first,      NONE,              NONE,                    NONE),

    // LXI:IDENtify
    HDR("[STATe]",     LXI_IDENTIFY,    LXI_IDENTIFY,    NONE,              kIdentify.count,   kBooleanParameter.first, BOTH),

    // LXI:EVENt:
    HDR("LAN",         DEF,             DEF,             kEventLan.first,   kEvent.count,      NONE,                    NSUFF),
    HDR("LOG",         DEF,             DEF,             kLog.first,        NONE,              NONE,                    NONE),

    // LXI:EVENt:LAN<0..7>:
    HDR("SEND",        DEF,             LXI_SEND,        NONE,              kEventLan.count,   kLeadParameter.first,    SETTING),

    // LXI:EVENt:LOG:
    HDR("ALL",         LXI_LOG_ALL,     DEF,             NONE,              kLog.count,        NONE,                    QUERY),
    HDR("COUNt",       LXI_LOG_COUNT,   DEF,             NONE,              NONE,              NONE,                    QUERY),
    HDR("CLEar",       LXI_LOG_CLEAR,   DEF,             NONE,              NONE,              NONE,                    EVENT),

    // LXI:ERRor
    HDR("[NEXT]",      LXI_ERROR_NEXT,  DEF,             NONE,              kError.count,      NONE,                    QUERY),

    //  name     kinds       unit           words  first word next  flags
    PAR("state", BOOLEAN,    NONE,          NONE,  NONE,      NONE, NONE),
    PAR("delay", DELAY,      kSecond.first, NONE,  NONE,      NONE, NONE),
    PAR("lead",  ARG_SFLOAT, kSecond.first, NONE,  NONE,      NONE, ARG_FLAG_OPT),

    SFX("S", BASE_UNIT, kSecond.count),

    LanNumbers(kTriggerLxi.first),
    LanNumbers(kEvent.first),
};
// clang-format on

// A record too many or too few in a group moves all that follow; it does not compile.
static_assert(kEnd.first == std::size(kTable));
static_assert(AreHeaderGroups(kTable,
                              {kRoot,
                               kTrigger,
                               kSequence,
                               kTriggerLxi,
                               kTriggerLan,
                               kSet,
                               kLxi,
                               kIdentify,
                               kEvent,
                               kEventLan,
                               kLog,
                               kError}));
static_assert(AreUnitGroups(kTable, {kSecond}));
static_assert(AreSuffixExpressions(kTable, kBooleanParameter.first, kSuffixes));

} // namespace

std::span<const _CMD_SET_RECORD> CLxiCommands::Table()
{
    return kTable;
}

} // namespace ZoVelkor::Demo
