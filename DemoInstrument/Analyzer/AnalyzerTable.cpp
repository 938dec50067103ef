#include "AnalyzerTable.h"

#include "AnalyzerSettings.h"
#include "CTraceMemory.h"
#include "Common/CommandTableGroups.h"
#include "ScpiTableMacros.h"

#include <iterator>

namespace ZoVelkor::Demo
{
namespace
{

// The groups, in the order of the table below.
constexpr Group kRoot{0, 11};
constexpr Group kSense = After(kRoot, 6);
constexpr Group kFrequency = After(kSense, 4);
constexpr Group kBandwidth = After(kFrequency, 1);
constexpr Group kResolution = After(kBandwidth, 1);
constexpr Group kPower = After(kResolution, 1);
constexpr Group kSweep = After(kPower, 2);
constexpr Group kSweepTime = After(kSweep, 1);
constexpr Group kInitiate = After(kSweepTime, 2);
constexpr Group kTrigger = After(kInitiate, 1);
constexpr Group kSequence = After(kTrigger, 2);
constexpr Group kTrace = After(kSequence, 1);
constexpr Group kFormat = After(kTrace, 2);
constexpr Group kCalculate = After(kFormat, 1);
constexpr Group kMarker = After(kCalculate, 3);
constexpr Group kDisplay = After(kMarker, 1);
constexpr Group kDisplayText = After(kDisplay, 1);
constexpr Group kMassMemory = After(kDisplayText, 3);
constexpr Group kRoute = After(kMassMemory, 1);
constexpr Group kDiagnostic = After(kRoute, 1);
constexpr Group kService = After(kDiagnostic, 1);
constexpr Group kHertzParameter = After(kService, 1);
constexpr Group kLevelParameter = After(kHertzParameter, 1);
constexpr Group kSecondParameter = After(kLevelParameter, 1);
constexpr Group kCountParameter = After(kSecondParameter, 1);
constexpr Group kBooleanParameter = After(kCountParameter, 1);
constexpr Group kDetectorParameter = After(kBooleanParameter, 1);
constexpr Group kSourceParameter = After(kDetectorParameter, 1);
constexpr Group kTraceParameter = After(kSourceParameter, 1);
constexpr Group kFormatParameters = After(kTraceParameter, 2);
constexpr Group kBorderParameter = After(kFormatParameters, 1);
constexpr Group kTextParameter = After(kBorderParameter, 1);
constexpr Group kFileParameters = After(kTextParameter, 2);
constexpr Group kNameParameter = After(kFileParameters, 1);
constexpr Group kChannelsParameter = After(kNameParameter, 1);
constexpr Group kHertz = After(kChannelsParameter, 1);
constexpr Group kLevel = After(kHertz, 1);
constexpr Group kSecond = After(kLevel, 1);
constexpr Group kDetectorWords = After(kSecond, 5);
constexpr Group kSourceWords = After(kDetectorWords, 3);
constexpr Group kFormatWords = After(kSourceWords, 2);
constexpr Group kBorderWords = After(kFormatWords, 2);
constexpr Group kSuffixes = After(kBorderWords, 3);
constexpr Group kEnd = After(kSuffixes, 0);

template <class TEnum>
constexpr std::uint32_t WordOf(TEnum value)
{
    return static_cast<std::uint32_t>(value);
}

// Laid out in columns by hand.
// clang-format off
constexpr _CMD_SET_RECORD kTable[] = {
    //  keyword         nodata             data             children            length              parameters                form
    HDR("[SENSe]",      DEF,               DEF,             kSense.first,       kRoot.count,        NONE,                     NSUFF),
    HDR("INITiate",     DEF,               DEF,             kInitiate.first,    NONE,               NONE,                     NONE),
    HDR("ABORt",        ABORT_SWEEP,       DEF,             NONE,               NONE,               NONE,                     EVENT),
    HDR("TRIGger",      DEF,               DEF,             kTrigger.first,     NONE,               NONE,                     NONE),
    HDR("TRACe",        DEF,               DEF,             kTrace.first,       NONE,               NONE,                     NSUFF),
    HDR("FORMat",       DEF,               DEF,             kFormat.first,      NONE,               NONE,                     NONE),
    HDR("CALCulate",    DEF,               DEF,             kCalculate.first,   NONE,               NONE,                     NONE),
    HDR("DISPlay",      DEF,               DEF,             kDisplay.first,     NONE,               NONE,                     NONE),
    HDR("MMEMory",      DEF,               DEF,             kMassMemory.first,  NONE,               NONE,                     NONE),
    HDR("ROUTe",        DEF,               DEF,             kRoute.first,       NONE,               NONE,                     NONE),
    HDR("DIAGnostic",   DEF,               DEF,             kDiagnostic.first,  NONE,               NONE,                     NONE),

    // [SENSe<1..4>:]
    HDR("FREQuency",    DEF,               DEF,             kFrequency.first,   kSense.count,       NONE,                     NONE),
    HDR("BANDwidth",    DEF,               DEF,             kBandwidth.first,   NONE,               NONE,                     NONE),
    HDR("BWIDth",       DEF,               DEF,             kBandwidth.first,   NONE,               NONE,                     NONE),
    HDR("POWer",        DEF,               DEF,             kPower.first,       NONE,               NONE,                     NONE),
    HDR("SWEep",        DEF,               DEF,             kSweep.first,       NONE,               NONE,                     NONE),
    HDR("DETector",     DETECTOR,          DETECTOR,        NONE,               NONE,               kDetectorParameter.first, BOTH),

    // [SENSe<1..4>:]FREQuency:
    HDR("CENTer",       FREQ_CENTER,       FREQ_CENTER,     NONE,               kFrequency.count,   kHertzParameter.first,    BOTH),
    HDR("SPAN",         FREQ_SPAN,         FREQ_SPAN,       NONE,               NONE,               kHertzParameter.first,    BOTH),
    HDR("STARt",        FREQ_START,        FREQ_START,      NONE,               NONE,               kHertzParameter.first,    BOTH),
    HDR("STOP",         FREQ_STOP,         FREQ_STOP,       NONE,               NONE,               kHertzParameter.first,    BOTH),

    // [SENSe<1..4>:]BANDwidth|BWIDth
    HDR("[RESolution]", BAND_RESOLUTION,   BAND_RESOLUTION, kResolution.first,  kBandwidth.count,   kHertzParameter.first,    BOTH),

    // [SENSe<1..4>:]BANDwidth|BWIDth[:RESolution]:
    HDR("AUTO",         BAND_AUTO,         BAND_AUTO,       NONE,               kResolution.count,  kBooleanParameter.first,  BOTH),

    // [SENSe<1..4>:]POWer:
    HDR("RLEVel",       REFERENCE_LEVEL,   REFERENCE_LEVEL, NONE,               kPower.count,       kLevelParameter.first,    BOTH),

    // [SENSe:]SWEep:
    HDR("POINts",       SWEEP_POINTS,      SWEEP_POINTS,    NONE,               kSweep.count,       kCountParameter.first,    BOTH),
    HDR("TIME",         SWEEP_TIME,        SWEEP_TIME,      kSweepTime.first,   NONE,               kSecondParameter.first,   BOTH),

    // [SENSe:]SWEep:TIME:
    HDR("AUTO",         SWEEP_TIME_AUTO,   SWEEP_TIME_AUTO, NONE,               kSweepTime.count,   kBooleanParameter.first,  BOTH),

    // INITiate
    HDR("[IMMediate]",  INIT_IMMEDIATE,    DEF,             NONE,               kInitiate.count,    NONE,                     EVENT),
    HDR("CONTinuous",   INIT_CONTINUOUS,   INIT_CONTINUOUS, NONE,               NONE,               kBooleanParameter.first,  BOTH),

    // TRIGger
    HDR("[SEQuence]",   DEF,               DEF,             kSequence.first,    kTrigger.count,     NONE,                     NONE),

    // TRIGger[:SEQuence]
    HDR("[IMMediate]",  TRIGGER_IMMEDIATE, DEF,             NONE,               kSequence.count,    NONE,                     EVENT),
    HDR("SOURce",       TRIGGER_SOURCE,    TRIGGER_SOURCE,  NONE,               NONE,               kSourceParameter.first,   BOTH),

    // TRACe<1..4>
    HDR("[DATA]",       TRACE_DATA,        TRACE_DATA,      NONE,               kTrace.count,       kTraceParameter.first,    BOTH),

    // FORMat
    HDR("[DATA]",       FORMAT_DATA,       FORMAT_DATA,     NONE,               kFormat.count,      kFormatParameters.first,  BOTH),
    HDR("BORDer",       FORMAT_BORDER,     FORMAT_BORDER,   NONE,               NONE,               kBorderParameter.first,   BOTH),

    // CALCulate:
    HDR("MARKer",       DEF,               DEF,             kMarker.first,      kCalculate.count,   NONE,                     NSUFF),

    // CALCulate:MARKer<1..8>:
    HDR("X",            MARKER_X,          MARKER_X,        NONE,               kMarker.count,      kHertzParameter.first,    BOTH),
    HDR("Y",            MARKER_Y,          DEF,             NONE,               NONE,               NONE,                     QUERY),
    HDR("MAXimum",      MARKER_MAXIMUM,    DEF,             NONE,               NONE,               NONE,                     EVENT),

    // DISPlay:
    HDR("TEXT",         DEF,               DEF,             kDisplayText.first, kDisplay.count,     NONE,                     NONE),

    // DISPlay:TEXT
    HDR("[DATA]",       DISPLAY_TEXT,      DISPLAY_TEXT,    NONE,               kDisplayText.count, kTextParameter.first,     BOTH),

    // MMEMory:
    HDR("DATA",         FILE_DATA,         FILE_DATA,       NONE,               kMassMemory.count,  kFileParameters.first,    BOTH),
    HDR("CATalog",      FILE_CATALOG,      DEF,             NONE,               NONE,               NONE,                     QUERY),
    HDR("DELete",       DEF,               FILE_DELETE,     NONE,               NONE,               kNameParameter.first,     SETTING),

    // ROUTe:
    HDR("CLOSe",        ROUTE_CLOSE,       ROUTE_CLOSE,     NONE,               kRoute.count,       kChannelsParameter.first, BOTH),

    // DIAGnostic:
    HDR("SERVice",      DEF,               DEF,             kService.first,     kDiagnostic.count,  NONE,                     NONE),

    // DIAGnostic:SERVice:
    HDR("COUNt",        SERVICE_COUNT,     DEF,             NONE,               kService.count,     NONE,                     QUERY | HDR_DIAG),

    //  name         kinds                   unit           words                 first word            next parameter               flags
    PAR("frequency", NUMERIC,                kHertz.first,  NONE,                 NONE,                 NONE,                        NONE),
    PAR("level",     NUMERIC,                kLevel.first,  NONE,                 NONE,                 NONE,                        NONE),
    PAR("time",      NUMERIC,                kSecond.first, NONE,                 NONE,                 NONE,                        NONE),
    PAR("count",     INTEGER,                NONE,          NONE,                 NONE,                 NONE,                        NONE),
    PAR("state",     BOOLEAN,                NONE,          NONE,                 NONE,                 NONE,                        NONE),
    PAR("detector",  MNEM,                   NONE,          kDetectorWords.count, kDetectorWords.first, NONE,                        NONE),
    PAR("source",    MNEM,                   NONE,          kSourceWords.count,   kSourceWords.first,   NONE,                        NONE),
    PAR("levels",    ARG_SFLOAT | ARG_BLOCK, NONE,          NONE,                 NONE,                 NONE,                        ARG_FLAG_REP),
    PAR("format",    MNEM,                   NONE,          kFormatWords.count,   kFormatWords.first,   kFormatParameters.first + 1, NONE),
    PAR("width",     ARG_SINT,               NONE,          NONE,                 NONE,                 NONE,                        ARG_FLAG_OPT),
    PAR("order",     MNEM,                   NONE,          kBorderWords.count,   kBorderWords.first,   NONE,                        NONE),
    PAR("text",      ARG_STRG,               NONE,          NONE,                 NONE,                 NONE,                        NONE),
    PAR("name",      ARG_STRG,               NONE,          NONE,                 NONE,                 kFileParameters.first + 1,   NONE),
    PAR("content",   ARG_BLOCK,              NONE,          NONE,                 NONE,                 NONE,                        NONE),
    PAR("name",      ARG_STRG,               NONE,          NONE,                 NONE,                 NONE,                        NONE),
    PAR("channels",  ARG_EXPR,               NONE,          NONE,                 NONE,                 NONE,                        NONE),

    SFX("HZ",  BASE_UNIT, kHertz.count),
    SFX("DBM", BASE_UNIT, kLevel.count),
    SFX("S",   BASE_UNIT, kSecond.count),

    CHR("POSitive",  WordOf(Detector::Positive),       kDetectorWords.count),
    CHR("NEGative",  WordOf(Detector::Negative),       NONE),
    CHR("SAMPle",    WordOf(Detector::Sample),         NONE),
    CHR("RMS",       WordOf(Detector::Rms),            NONE),
    CHR("AVERage",   WordOf(Detector::Average),        NONE),

    CHR("IMMediate", WordOf(TriggerSource::Immediate), kSourceWords.count),
    CHR("BUS",       WordOf(TriggerSource::Bus),       NONE),
    CHR("LXI",       WordOf(TriggerSource::Lxi),       NONE),

    CHR("ASCii",     FORMAT_WORD_ASCII,                   kFormatWords.count),
    CHR("REAL",      FORMAT_WORD_REAL,                    NONE),

    CHR("NORMal",    BORDER_WORD_NORMAL,                  kBorderWords.count),
    CHR("SWAPped",   BORDER_WORD_SWAPPED,                 NONE),

    SuffixesUpTo<kChannelCount>(kRoot.first),
    SuffixesUpTo<kTraceCount>(kRoot.first + 4),
    SuffixesUpTo<kMarkerCount>(kCalculate.first),
};
// clang-format on

// A record too many or too few in a group moves all that follow; it does not compile.
static_assert(kEnd.first == std::size(kTable));
static_assert(AreHeaderGroups(kTable,
                              {kRoot,   kSense,      kFrequency, kBandwidth, kResolution,  kPower,
                               kSweep,  kSweepTime,  kInitiate,  kTrigger,   kSequence,    kTrace,
                               kFormat, kCalculate,  kMarker,    kDisplay,   kDisplayText, kMassMemory,
                               kRoute,  kDiagnostic, kService}));
static_assert(AreUnitGroups(kTable, {kHertz, kLevel, kSecond}));
static_assert(AreWordGroups(kTable, {kDetectorWords, kSourceWords, kFormatWords, kBorderWords}));
static_assert(AreSuffixExpressions(kTable, kHertzParameter.first, kSuffixes));

} // namespace

std::span<const _CMD_SET_RECORD> AnalyzerTable()
{
    return kTable;
}

std::string DetectorWord(long value)
{
    return ShortWord(kTable, kDetectorWords, value);
}

std::string BorderWord(long value)
{
    return ShortWord(kTable, kBorderWords, value);
}

std::string TriggerSourceWord(long value)
{
    return ShortWord(kTable, kSourceWords, value);
}

} // namespace ZoVelkor::Demo
