#include "ConformanceTable.h"

#include "CConformanceCommands.h"
#include "Common/CommandTableGroups.h"
#include "ScpiTableMacros.h"

#include <iterator>

namespace ZoVelkor::Demo::Conformance
{
namespace
{

// The groups, in the order of the table below.
constexpr Group kRoot{0, 9};
constexpr Group kSense = After(kRoot, 2);
constexpr Group kFrequency = After(kSense, 2);
constexpr Group kResistance = After(kFrequency, 1);
constexpr Group kSource = After(kResistance, 1);
constexpr Group kVoltage = After(kSource, 1);
constexpr Group kLevel = After(kVoltage, 1);
constexpr Group kImmediate = After(kLevel, 1);
constexpr Group kOutput = After(kImmediate, 1);
constexpr Group kTrigger = After(kOutput, 3);
constexpr Group kDisplay = After(kTrigger, 1);
constexpr Group kTrace = After(kDisplay, 1);
constexpr Group kCalculate = After(kTrace, 1);
constexpr Group kRoute = After(kCalculate, 1);
constexpr Group kTest = After(kRoute, 8);
constexpr Group kCenterParameter = After(kTest, 1);
constexpr Group kSpanParameter = After(kCenterParameter, 1);
constexpr Group kOhmParameter = After(kSpanParameter, 1);
constexpr Group kVoltParameter = After(kOhmParameter, 1);
constexpr Group kBooleanParameter = After(kVoltParameter, 1);
constexpr Group kTriggerParameter = After(kBooleanParameter, 1);
constexpr Group kCountParameter = After(kTriggerParameter, 1);
constexpr Group kDelayParameter = After(kCountParameter, 1);
constexpr Group kTextParameter = After(kDelayParameter, 1);
constexpr Group kBlockParameter = After(kTextParameter, 1);
constexpr Group kSumParameters = After(kBlockParameter, 3);
constexpr Group kChannelsParameter = After(kSumParameters, 1);
constexpr Group kIntegerParameter = After(kChannelsParameter, 1);
constexpr Group kNumberParameter = After(kIntegerParameter, 1);
constexpr Group kSlowParameter = After(kNumberParameter, 1);
constexpr Group kConditionParameters = After(kSlowParameter, 2);
constexpr Group kHertz = After(kConditionParameters, 1);
constexpr Group kOhm = After(kHertz, 1);
constexpr Group kVolt = After(kOhm, 1);
constexpr Group kSecond = After(kVolt, 1);
constexpr Group kTriggerWords = After(kSecond, 5);
constexpr Group kRegisterWords = After(kTriggerWords, 2);
constexpr Group kSuffixes = After(kRegisterWords, 3);
constexpr Group kEnd = After(kSuffixes, 0);

/// A number that may be named by its limits, but has no steps.
constexpr std::uint32_t LIMITED = ARG_SFLOAT | LIMITS;

// Laid out in columns by hand.
// clang-format off
constexpr _CMD_SET_RECORD kTable[] = {
    //  keyword        nodata           data             children           length             parameters                  form
    HDR("[SENSe]",     DEF,             DEF,             kSense.first,      kRoot.count,       NONE,                       NSUFF),
    HDR("SOURce",      DEF,             DEF,             kSource.first,     NONE,              NONE,                       NSUFF),
    HDR("OUTPut",      DEF,             DEF,             kOutput.first,     NONE,              NONE,                       NSUFF),
    HDR("TRIGger",     DEF,             DEF,             kTrigger.first,    NONE,              NONE,                       NONE),
    HDR("DISPlay",     DEF,             DEF,             kDisplay.first,    NONE,              NONE,                       NONE),
    HDR("TRACe",       DEF,             DEF,             kTrace.first,      NONE,              NONE,                       NONE),
    HDR("CALCulate",   DEF,             DEF,             kCalculate.first,  NONE,              NONE,                       NONE),
    HDR("ROUTe",       DEF,             DEF,             kRoute.first,      NONE,              NONE,                       NONE),
    HDR("TEST",        DEF,             DEF,             kTest.first,       NONE,              NONE,                       NONE),

    // [SENSe<1..4>:]
    HDR("FREQuency",   DEF,             DEF,             kFrequency.first,  kSense.count,      NONE,                       NONE),
    HDR("RESistance",  DEF,             DEF,             kResistance.first, NONE,              NONE,                       NONE),

    // [SENSe<1..4>:]FREQuency:
    HDR("CENTer",      SENSE_CENTER,    SENSE_CENTER,    NONE,              kFrequency.count,  kCenterParameter.first,     BOTH),
    HDR("SPAN",        SENSE_SPAN,      SENSE_SPAN,      NONE,              NONE,              kSpanParameter.first,       BOTH),

    // [SENSe<1..4>:]RESistance:
    HDR("RANGe",       SENSE_RANGE,     SENSE_RANGE,     NONE,              kResistance.count, kOhmParameter.first,        BOTH),

    // SOURce<1..2>:
    HDR("VOLTage",     DEF,             DEF,             kVoltage.first,    kSource.count,     NONE,                       NONE),

    // SOURce<1..2>:VOLTage[:LEVel][:IMMediate][:AMPLitude]
    HDR("[LEVel]",     DEF,             DEF,             kLevel.first,      kVoltage.count,    NONE,                       NONE),
    HDR("[IMMediate]", DEF,             DEF,             kImmediate.first,  kLevel.count,      NONE,                       NONE),
    HDR("[AMPLitude]", SOURCE_VOLTAGE,  SOURCE_VOLTAGE,  NONE,              kImmediate.count,  kVoltParameter.first,       BOTH),

    // OUTPut<1..2>
    HDR("[STATe]",     OUTPUT_ON,       OUTPUT_ON,       NONE,              kOutput.count,     kBooleanParameter.first,    BOTH),

    // TRIGger:
    HDR("SOURce",      TRIGGER_SOURCE,  TRIGGER_SOURCE,  NONE,              kTrigger.count,    kTriggerParameter.first,    BOTH),
    HDR("COUNt",       TRIGGER_COUNT,   TRIGGER_COUNT,   NONE,              NONE,              kCountParameter.first,      BOTH),
    HDR("DELay",       TRIGGER_DELAY,   TRIGGER_DELAY,   NONE,              NONE,              kDelayParameter.first,      BOTH),

    // DISPlay:
    HDR("TEXT",        TEXT_ON_DISPLAY, TEXT_ON_DISPLAY, NONE,              kDisplay.count,    kTextParameter.first,       BOTH),

    // TRACe:
    HDR("DATA",        TRACE_BLOCK,     TRACE_BLOCK,     NONE,              kTrace.count,      kBlockParameter.first,      BOTH),

    // CALCulate:
    HDR("SUM",         CALCULATE_SUM,   DEF,             NONE,              kCalculate.count,  kSumParameters.first,       QUERY),

    // ROUTe:
    HDR("CLOSe",       CLOSE_SWITCHES,  CLOSE_SWITCHES,  NONE,              kRoute.count,      kChannelsParameter.first,   BOTH),

    // TEST:
    HDR("INTeger",     TEST_INTEGER,    TEST_INTEGER,    NONE,              kTest.count,       kIntegerParameter.first,    BOTH),
    HDR("NUMBer",      TEST_NUMBER,     TEST_NUMBER,     NONE,              NONE,              kNumberParameter.first,     BOTH),
    HDR("EVENt",       TEST_EVENT,      DEF,             NONE,              NONE,              NONE,                       EVENT),
    HDR("QONLy",       TEST_QUERY_ONLY, DEF,             NONE,              NONE,              NONE,                       QUERY),
    HDR("SLOW",        TEST_SLOW,       TEST_SLOW,       NONE,              NONE,              kSlowParameter.first,       BOTH),
    HDR("ERRor",       DEF,             TEST_ERROR,      NONE,              NONE,              kIntegerParameter.first,    SETTING),
    HDR("CONDition",   DEF,             TEST_CONDITION,  NONE,              NONE,              kConditionParameters.first, SETTING),
    HDR("INDefinite",  TEST_INDEFINITE, DEF,             NONE,              NONE,              NONE,                       QUERY),

    //  name         kinds                unit           words                 first word           next parameter                  flags
    PAR("frequency", NUMERIC,             kHertz.first,  NONE,                 NONE,                NONE,                           NONE),
    PAR("frequency", LIMITED,             kHertz.first,  NONE,                 NONE,                NONE,                           NONE),
    PAR("range",     LIMITED,             kOhm.first,    NONE,                 NONE,                NONE,                           NONE),
    PAR("voltage",   LIMITED,             kVolt.first,   NONE,                 NONE,                NONE,                           NONE),
    PAR("state",     BOOLEAN,             NONE,          NONE,                 NONE,                NONE,                           NONE),
    PAR("source",    MNEM,                NONE,          kTriggerWords.count,  kTriggerWords.first, NONE,                           NONE),
    PAR("count",     ARG_SINT | LIMITS,   NONE,          NONE,                 NONE,                NONE,                           NONE),
    PAR("delay",     LIMITED,             kSecond.first, NONE,                 NONE,                NONE,                           NONE),
    PAR("text",      ARG_STRG,            NONE,          NONE,                 NONE,                NONE,                           NONE),
    PAR("data",      ARG_BLOCK,           NONE,          NONE,                 NONE,                NONE,                           NONE),
    PAR("summand",   ARG_SFLOAT,          NONE,          NONE,                 NONE,                kSumParameters.first + 1,       NONE),
    PAR("summand",   ARG_SFLOAT,          NONE,          NONE,                 NONE,                kSumParameters.first + 2,       NONE),
    PAR("summand",   ARG_SFLOAT,          NONE,          NONE,                 NONE,                NONE,                           ARG_FLAG_OPT),
    PAR("channels",  ARG_EXPR,            NONE,          NONE,                 NONE,                NONE,                           NONE),
    PAR("value",     ARG_SINT,            NONE,          NONE,                 NONE,                NONE,                           NONE),
    PAR("value",     ARG_SFLOAT,          NONE,          NONE,                 NONE,                NONE,                           NONE),
    PAR("time",      ARG_SFLOAT,          kSecond.first, NONE,                 NONE,                NONE,                           NONE),
    PAR("register",  MNEM,                NONE,          kRegisterWords.count, kRegisterWords.first, kConditionParameters.first + 1, NONE),
    PAR("value",     ARG_SINT,            NONE,          NONE,                 NONE,                NONE,                           NONE),

    SFX("HZ",  BASE_UNIT, kHertz.count),
    SFX("OHM", BASE_UNIT, kOhm.count),
    SFX("V",   BASE_UNIT, kVolt.count),
    SFX("S",   BASE_UNIT, kSecond.count),

    CHR("IMMediate",    TRIGGER_IMMEDIATE,     kTriggerWords.count),
    CHR("EXTernal",     TRIGGER_EXTERNAL,      NONE),
    CHR("BUS",          TRIGGER_BUS,           NONE),
    CHR("TIMer1",       TRIGGER_TIMER1,        NONE),
    CHR("TIMer2",       TRIGGER_TIMER2,        NONE),

    CHR("OPERation",    REGISTER_OPERATION,    kRegisterWords.count),
    CHR("QUEStionable", REGISTER_QUESTIONABLE, NONE),

    SuffixesUpTo<kSenseCount>(kRoot.first),
    SuffixesUpTo<kVoltageCount>(kRoot.first + 1),
    SuffixesUpTo<kVoltageCount>(kRoot.first + 2),
};
// clang-format on

// A record too many or too few in a group moves all that follow; it does not compile.
static_assert(kEnd.first == std::size(kTable));
static_assert(AreHeaderGroups(kTable,
                              {kRoot,
                               kSense,
                               kFrequency,
                               kResistance,
                               kSource,
                               kVoltage,
                               kLevel,
                               kImmediate,
                               kOutput,
                               kTrigger,
                               kDisplay,
                               kTrace,
                               kCalculate,
                               kRoute,
                               kTest}));
static_assert(AreUnitGroups(kTable, {kHertz, kOhm, kVolt, kSecond}));
static_assert(AreWordGroups(kTable, {kTriggerWords, kRegisterWords}));
static_assert(AreSuffixExpressions(kTable, kCenterParameter.first, kSuffixes));

} // namespace

std::span<const _CMD_SET_RECORD> CConformanceCommands::Table()
{
    return kTable;
}

std::string TriggerSourceWord(long value)
{
    return ShortWord(kTable, kTriggerWords, value);
}

} // namespace ZoVelkor::Demo::Conformance
