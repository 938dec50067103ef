#include "GeneratorTable.h"

#include "CGeneratorCommands.h"
#include "Common/CommandTableGroups.h"
#include "ScpiTableMacros.h"

#include <iterator>

namespace ZoVelkor::Demo
{
namespace
{

// The groups, in the order of the table below.
constexpr Group kRoot{0, 4};
constexpr Group kSource = After(kRoot, 3);
constexpr Group kFrequency = After(kSource, 2);
constexpr Group kPower = After(kFrequency, 1);
constexpr Group kLevel = After(kPower, 1);
constexpr Group kImmediate = After(kLevel, 1);
constexpr Group kList = After(kImmediate, 1);
constexpr Group kOutput = After(kList, 1);
constexpr Group kCalculate = After(kOutput, 1);
constexpr Group kLimit = After(kCalculate, 1);
constexpr Group kDisplay = After(kLimit, 1);
constexpr Group kHertzParameter = After(kDisplay, 1);
constexpr Group kDbmParameter = After(kHertzParameter, 1);
constexpr Group kListParameter = After(kDbmParameter, 1);
constexpr Group kBooleanParameter = After(kListParameter, 1);
constexpr Group kBrightnessParameter = After(kBooleanParameter, 1);
constexpr Group kHertz = After(kBrightnessParameter, 1);
constexpr Group kDbm = After(kHertz, 1);
constexpr Group kSuffixes = After(kDbm, 3);
constexpr Group kEnd = After(kSuffixes, 0);

// Laid out in columns by hand.
// clang-format off
constexpr _CMD_SET_RECORD kTable[] = {
    //  keyword        nodata              data                children          length            parameters                  form
    HDR("SOURce",      DEF,                DEF,                kSource.first,    kRoot.count,      NONE,                       NSUFF),
    HDR("OUTPut",      DEF,                DEF,                kOutput.first,    NONE,             NONE,                       NSUFF),
    HDR("CALCulate",   DEF,                DEF,                kCalculate.first, NONE,             NONE,                       NONE),
    HDR("DISPlay",     DEF,                DEF,                kDisplay.first,   NONE,             NONE,                       NONE),

    // SOURce<1..2>:
    HDR("FREQuency",   DEF,                DEF,                kFrequency.first, kSource.count,    NONE,                       NONE),
    HDR("POWer",       DEF,                DEF,                kPower.first,     NONE,             NONE,                       NONE),
    HDR("LIST",        DEF,                DEF,                kList.first,      NONE,             NONE,                       NONE),

    // SOURce<1..2>:FREQuency: two names of one command; the one that may be left out is in brackets
    HDR("[CW]",        SOURCE_FREQUENCY,   SOURCE_FREQUENCY,   NONE,             kFrequency.count, kHertzParameter.first,      BOTH),
    HDR("FIXed",       SOURCE_FREQUENCY,   SOURCE_FREQUENCY,   NONE,             NONE,             kHertzParameter.first,      BOTH),

    // SOURce<1..2>:POWer[:LEVel][:IMMediate][:AMPLitude]
    HDR("[LEVel]",     DEF,                DEF,                kLevel.first,     kPower.count,     NONE,                       NONE),
    HDR("[IMMediate]", DEF,                DEF,                kImmediate.first, kLevel.count,     NONE,                       NONE),
    HDR("[AMPLitude]", SOURCE_POWER,       SOURCE_POWER,       NONE,             kImmediate.count, kDbmParameter.first,        BOTH),

    // SOURce<1..2>:LIST:
    HDR("FREQuency",   LIST_FREQUENCY,     LIST_FREQUENCY,     NONE,             kList.count,      kListParameter.first,       BOTH),

    // OUTPut<1..2>
    HDR("[STATe]",     OUTPUT_STATE,       OUTPUT_STATE,       NONE,             kOutput.count,    kBooleanParameter.first,    BOTH),

    // CALCulate:
    HDR("LIMit",       DEF,                DEF,                kLimit.first,     kCalculate.count, NONE,                       NSUFF),

    // CALCulate:LIMit<1..4>:
    HDR("FAIL",        LIMIT_FAIL,         DEF,                NONE,             kLimit.count,     NONE,                       QUERY),

    // DISPlay:
    HDR("BRIGhtness",  DISPLAY_BRIGHTNESS, DISPLAY_BRIGHTNESS, NONE,             kDisplay.count,   kBrightnessParameter.first, BOTH),

    //  name          kinds       unit          words  first word next  flags
    PAR("frequency",  NUMERIC,    kHertz.first, NONE,  NONE,      NONE, NONE),
    PAR("power",      NUMERIC,    kDbm.first,   NONE,  NONE,      NONE, NONE),
    PAR("frequency",  ARG_SFLOAT, kHertz.first, NONE,  NONE,      NONE, ARG_FLAG_REP),
    PAR("state",      BOOLEAN,    NONE,         NONE,  NONE,      NONE, NONE),
    PAR("brightness", NUMERIC,    NONE,         NONE,  NONE,      NONE, NONE),

    SFX("HZ",  BASE_UNIT, kHertz.count),
    SFX("DBM", BASE_UNIT, kDbm.count),

    SuffixesUpTo<kGeneratorCount>(kRoot.first),
    SuffixesUpTo<kGeneratorCount>(kRoot.first + 1),
    SuffixesUpTo<std::size(kSourceLimits)>(kCalculate.first),
};
// clang-format on

// A record too many or too few in a group moves all that follow; it does not compile.
static_assert(kEnd.first == std::size(kTable));
static_assert(AreHeaderGroups(
    kTable,
    {kRoot, kSource, kFrequency, kPower, kLevel, kImmediate, kList, kOutput, kCalculate, kLimit, kDisplay}));
static_assert(AreUnitGroups(kTable, {kHertz, kDbm}));
static_assert(AreSuffixExpressions(kTable, kHertzParameter.first, kSuffixes));

} // namespace

std::span<const _CMD_SET_RECORD> CGeneratorCommands::Table()
{
    return kTable;
}

} // namespace ZoVelkor::Demo
