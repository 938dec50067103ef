#include "InstrumentTable.h"

#include "CInstrumentCommands.h"
#include "Common/CommandTableGroups.h"
#include "ScpiTableMacros.h"

#include <iterator>

namespace ZoVelkor::Demo
{
namespace
{

// The groups, in the order of the table below.
constexpr Group kCommon{0, 2};
constexpr Group kRoot = After(kCommon, 1);
constexpr Group kSystem = After(kRoot, 3);
constexpr Group kCommunicate = After(kSystem, 1);
constexpr Group kLan = After(kCommunicate, 1);
constexpr Group kStateParameter = After(kLan, 1);
constexpr Group kDateParameters = After(kStateParameter, 3);
constexpr Group kTimeParameters = After(kDateParameters, 3);
constexpr Group kNameParameter = After(kTimeParameters, 1);
constexpr Group kEnd = After(kNameParameter, 0);

// Laid out in columns by hand.
// clang-format off
constexpr _CMD_SET_RECORD kTable[] = {
    //  keyword        nodata         data           children            length              parameters             form
    HDR("RCL",         DEF,           RECALL_STATE,  NONE,               kCommon.count,      kStateParameter.first, CCMD | SETTING),
    HDR("SAV",         DEF,           SAVE_STATE,    NONE,               NONE,               kStateParameter.first, CCMD | SETTING),

    HDR("SYSTem",      DEF,           DEF,           kSystem.first,      kRoot.count,        NONE,                  NONE),

    // SYSTem:
    HDR("DATE",        SYSTEM_DATE,   SYSTEM_DATE,   NONE,               kSystem.count,      kDateParameters.first, BOTH),
    HDR("TIME",        SYSTEM_TIME,   SYSTEM_TIME,   NONE,               NONE,               kTimeParameters.first, BOTH),
    HDR("COMMunicate", DEF,           DEF,           kCommunicate.first, NONE,               NONE,                  NONE),

    // SYSTem:COMMunicate:
    HDR("LAN",         DEF,           DEF,           kLan.first,         kCommunicate.count, NONE,                  NONE),

    // SYSTem:COMMunicate:LAN:
    HDR("HOSTname",    LAN_HOST_NAME, LAN_HOST_NAME, NONE,               kLan.count,         kNameParameter.first,  BOTH),

    //  name       kinds     unit  words first word next parameter             flags
    PAR("state",   ARG_SINT, NONE, NONE, NONE,      NONE,                      NONE),
    PAR("year",    ARG_SINT, NONE, NONE, NONE,      kDateParameters.first + 1, NONE),
    PAR("month",   ARG_SINT, NONE, NONE, NONE,      kDateParameters.first + 2, NONE),
    PAR("day",     ARG_SINT, NONE, NONE, NONE,      NONE,                      NONE),
    PAR("hour",    ARG_SINT, NONE, NONE, NONE,      kTimeParameters.first + 1, NONE),
    PAR("minute",  ARG_SINT, NONE, NONE, NONE,      kTimeParameters.first + 2, NONE),
    PAR("second",  ARG_SINT, NONE, NONE, NONE,      NONE,                      NONE),
    PAR("name",    ARG_STRG, NONE, NONE, NONE,      NONE,                      NONE),
};
// clang-format on

// A record too many or too few in a group moves all that follow; it does not compile.
static_assert(kEnd.first == std::size(kTable));
static_assert(AreHeaderGroups(kTable, {kCommon, kRoot, kSystem, kCommunicate, kLan}));

} // namespace

std::span<const _CMD_SET_RECORD> CInstrumentCommands::Table()
{
    return kTable;
}

} // namespace ZoVelkor::Demo
