#include "CAnalyzerCommands.h"

#include "HeaderSuffix.h"
#include "SettingHandlers.h"
#include "SteppedSetting.h"

namespace ZoVelkor::Demo
{
namespace
{

/// What a command does with the numeric suffix of its header.
enum class tagSuffix
{
    None,   ///< its header takes none
    One,    ///< it sets one value for all channels; only 1 is allowed
    Number, ///< it says which channel or marker is meant
};

/// A numeric command on the settings, its suffix counted from 1.
struct tagNumericSetting
{
    tagSuffix suffix;
    CNumericSetting (*find)(const tagAnalyzerSettings& settings, long suffix);
    void (*put)(tagAnalyzerSettings& settings, long suffix, double value);
};

/// The same for ON and OFF.
struct tagBooleanSetting
{
    tagSuffix suffix;
    bool (*get)(const tagAnalyzerSettings& settings, long suffix);
    void (*put)(tagAnalyzerSettings& settings, long suffix, bool on);
};

/// The same for a word out of the command table.
struct tagWordSetting
{
    tagSuffix suffix;
    std::string (*shortForm)(long value);
    long (*get)(const tagAnalyzerSettings& settings);
    void (*put)(tagAnalyzerSettings& settings, long value);
};

/// Reads the suffix; 1 without one.
template <class TCall>
HRESULT ReadSuffix(TCall& call, tagSuffix kind, long& suffix)
{
    suffix = kind == tagSuffix::None ? 1 : HeaderSuffix(call);
    // [SENSe] takes more suffixes than some of the commands below it.
    return kind == tagSuffix::One && suffix != 1 ? call.SetScpiError(kScpiHeaderSuffixOutOfRange) : S_OK;
}

/// Frequencies move by a tenth of the span, in zero span by a bandwidth.
constexpr double kStepsPerSpan = 10.0;
/// The span above zero span.
constexpr double kSmallestSpanHz = 100.0;
/// Levels move by a division of the usual screen.
constexpr double kLevelStepDb = 10.0;

double NextIn125(double value, bool up)
{
    return NextInSequence(value, up, {1, 2, 5});
}

CNumericSetting Frequency(const tagChannelSettings& channel, double valueHz, double resetHz)
{
    const double spanHz = channel.frequency.SpanHz();
    const double stepHz = spanHz > 0 ? spanHz / kStepsPerSpan : channel.BandwidthHz();
    return MakeSetting(
        kMinFrequencyHz, kMaxFrequencyHz, resetHz, valueHz, valueHz - stepHz, valueHz + stepHz);
}

CNumericSetting Span(const tagChannelSettings& channel)
{
    const double spanHz = channel.frequency.SpanHz();
    const double downHz = spanHz <= kSmallestSpanHz ? 0.0 : NextIn125(spanHz, false);
    const double upHz = spanHz < kSmallestSpanHz ? kSmallestSpanHz : NextIn125(spanHz, true);
    return MakeSetting(0.0, kMaxSpanHz, kMaxSpanHz, spanHz, downHz, upHz);
}

CNumericSetting Bandwidth(const tagChannelSettings& channel)
{
    const double valueHz = channel.BandwidthHz();
    return MakeSetting(kMinBandwidthHz,
                       kMaxBandwidthHz,
                       kMaxBandwidthHz,
                       valueHz,
                       NextInSequence(valueHz, false, {1, 3}),
                       NextInSequence(valueHz, true, {1, 3}));
}

CNumericSetting ReferenceLevel(const tagChannelSettings& channel)
{
    const double levelDbm = channel.referenceLevelDbm;
    return MakeSetting(kMinReferenceLevelDbm,
                       kMaxReferenceLevelDbm,
                       kResetReferenceLevelDbm,
                       levelDbm,
                       levelDbm - kLevelStepDb,
                       levelDbm + kLevelStepDb);
}

CNumericSetting SweepPoints(const tagAnalyzerSettings& settings)
{
    const double steps = static_cast<double>(settings.sweepPoints - 1);
    return MakeSetting(kMinSweepPoints,
                       kMaxSweepPoints,
                       kResetSweepPoints,
                       steps + 1,
                       NextIn125(steps, false) + 1,
                       NextIn125(steps, true) + 1);
}

CNumericSetting SweepTime(const tagAnalyzerSettings& settings)
{
    const double timeS = settings.SweepTimeS();
    return MakeSetting(kMinSweepTimeS,
                       kMaxSweepTimeS,
                       kMinAutoSweepTimeS,
                       timeS,
                       NextIn125(timeS, false),
                       NextIn125(timeS, true));
}

CNumericSetting Marker(const tagAnalyzerSettings& settings, long marker)
{
    const CFrequencyRange& range = settings.Channel(1).frequency;
    const double pointHz = range.SpanHz() / static_cast<double>(settings.sweepPoints - 1);
    const double markerHz = settings.MarkerHz(marker);
    return MakeSetting(
        range.StartHz(), range.StopHz(), range.CenterHz(), markerHz, markerHz - pointHz, markerHz + pointHz);
}

using Settings = tagAnalyzerSettings;

constexpr tagNumericSetting kCenter{
    tagSuffix::Number,
    [](const Settings& s, long n) {
        return Frequency(s.Channel(n), s.Channel(n).frequency.CenterHz(), CFrequencyRange().CenterHz());
    },
    [](Settings& s, long n, double hz) { s.Channel(n).frequency.SetCenter(hz); }};

constexpr tagNumericSetting kSpan{tagSuffix::Number,
                                  [](const Settings& s, long n) { return Span(s.Channel(n)); },
                                  [](Settings& s, long n, double hz) { s.Channel(n).frequency.SetSpan(hz); }};

constexpr tagNumericSetting kStart{
    tagSuffix::Number,
    [](const Settings& s, long n) {
        return Frequency(s.Channel(n), s.Channel(n).frequency.StartHz(), kMinFrequencyHz);
    },
    [](Settings& s, long n, double hz) { s.Channel(n).frequency.SetStart(hz); }};

constexpr tagNumericSetting kStop{tagSuffix::Number,
                                  [](const Settings& s, long n) {
                                      return Frequency(
                                          s.Channel(n), s.Channel(n).frequency.StopHz(), kMaxFrequencyHz);
                                  },
                                  [](Settings& s, long n, double hz) { s.Channel(n).frequency.SetStop(hz); }};

constexpr tagNumericSetting kBandwidth{tagSuffix::Number,
                                       [](const Settings& s, long n) { return Bandwidth(s.Channel(n)); },
                                       [](Settings& s, long n, double hz) {
                                           s.Channel(n).manualBandwidthHz = hz;
                                           s.Channel(n).bBandwidthAuto = false;
                                       }};

constexpr tagBooleanSetting kBandwidthAuto{
    tagSuffix::Number,
    [](const Settings& s, long n) { return s.Channel(n).bBandwidthAuto; },
    [](Settings& s, long n, bool on) {
        s.Channel(n).manualBandwidthHz = s.Channel(n).BandwidthHz();
        s.Channel(n).bBandwidthAuto = on;
    }};

constexpr tagNumericSetting kReferenceLevel{
    tagSuffix::Number,
    [](const Settings& s, long n) { return ReferenceLevel(s.Channel(n)); },
    [](Settings& s, long n, double dbm) { s.Channel(n).referenceLevelDbm = dbm; }};

constexpr tagNumericSetting kPoints{
    tagSuffix::One,
    [](const Settings& s, long) { return SweepPoints(s); },
    [](Settings& s, long, double points) { s.sweepPoints = static_cast<long>(points); }};

constexpr tagNumericSetting kSweepTime{tagSuffix::One,
                                       [](const Settings& s, long) { return SweepTime(s); },
                                       [](Settings& s, long, double seconds) {
                                           s.manualSweepTimeS = seconds;
                                           s.bSweepTimeAuto = false;
                                       }};

constexpr tagBooleanSetting kSweepTimeAuto{tagSuffix::One,
                                           [](const Settings& s, long) { return s.bSweepTimeAuto; },
                                           [](Settings& s, long, bool on) {
                                               s.manualSweepTimeS = s.SweepTimeS();
                                               s.bSweepTimeAuto = on;
                                           }};

constexpr tagWordSetting kDetector{
    tagSuffix::One,
    &DetectorWord,
    [](const Settings& s) { return static_cast<long>(s.detector); },
    [](Settings& s, long word) { s.detector = static_cast<tagDetector>(word); }};

constexpr tagWordSetting kTriggerSource{
    tagSuffix::None,
    &TriggerSourceWord,
    [](const Settings& s) { return static_cast<long>(s.triggerSource); },
    [](Settings& s, long word) { s.triggerSource = static_cast<tagTriggerSource>(word); }};

constexpr tagNumericSetting kMarkerX{
    tagSuffix::Number, &Marker, [](Settings& s, long n, double hz) { s.MarkerHz(n) = hz; }};

} // namespace

std::span<const tagHandlerRow<CAnalyzerCommands>> CAnalyzerCommands::Handlers()
{
    using Self = CAnalyzerCommands;
    static constexpr tagHandlerRow<Self> kRows[] = {
        {FREQ_CENTER,       &Self::NumericSetting<kCenter>        },
        {FREQ_SPAN,         &Self::NumericSetting<kSpan>          },
        {FREQ_START,        &Self::NumericSetting<kStart>         },
        {FREQ_STOP,         &Self::NumericSetting<kStop>          },
        {BAND_RESOLUTION,   &Self::NumericSetting<kBandwidth>     },
        {BAND_AUTO,         &Self::BooleanSetting<kBandwidthAuto> },
        {REFERENCE_LEVEL,   &Self::NumericSetting<kReferenceLevel>},
        {SWEEP_POINTS,      &Self::NumericSetting<kPoints>        },
        {SWEEP_TIME,        &Self::NumericSetting<kSweepTime>     },
        {SWEEP_TIME_AUTO,   &Self::BooleanSetting<kSweepTimeAuto> },
        {DETECTOR,          &Self::WordSetting<kDetector>         },
        {INIT_IMMEDIATE,    &Self::Initiate                       },
        {INIT_CONTINUOUS,   &Self::InitiateContinuous             },
        {ABORT_SWEEP,       &Self::AbortSweep                     },
        {TRIGGER_IMMEDIATE, &Self::TriggerImmediate               },
        {TRIGGER_SOURCE,    &Self::WordSetting<kTriggerSource>    },
        {TRACE_DATA,        &Self::TraceData                      },
        {FORMAT_DATA,       &Self::FormatData                     },
        {FORMAT_BORDER,     &Self::FormatBorder                   },
        {MARKER_X,          &Self::NumericSetting<kMarkerX>       },
        {MARKER_Y,          &Self::MarkerY                        },
        {MARKER_MAXIMUM,    &Self::MarkerMaximum                  },
        {DISPLAY_TEXT,      &Self::DisplayText                    },
        {FILE_DATA,         &Self::FileData                       },
        {FILE_CATALOG,      &Self::FileCatalog                    },
        {FILE_DELETE,       &Self::FileDelete                     },
        {ROUTE_CLOSE,       &Self::RouteClose                     },
        {SERVICE_COUNT,     &Self::ServiceCount                   },
    };
    static_assert(IsHandlerTable(kRows, ANALYZER_HANDLER_COUNT));
    return kRows;
}

template <const auto& TSetting>
HRESULT CAnalyzerCommands::NumericSetting(Pool& pool)
{
    long suffix = 0;
    if (ReadSuffix(pool, TSetting.suffix, suffix) != S_OK)
    {
        return S_FALSE;
    }
    tagAnalyzerSettings settings = m_analyzer.Settings();
    CNumericSetting number = TSetting.find(settings, suffix);
    if (const HRESULT hr = number.Handle(pool); hr != S_OK || pool.IsQuery())
    {
        return hr;
    }
    TSetting.put(settings, suffix, number.Value());
    m_analyzer.Apply(settings);
    return S_OK;
}

template <const auto& TSetting>
HRESULT CAnalyzerCommands::BooleanSetting(Record& record)
{
    long suffix = 0;
    if (ReadSuffix(record, TSetting.suffix, suffix) != S_OK)
    {
        return S_FALSE;
    }
    tagAnalyzerSettings settings = m_analyzer.Settings();
    bool on = TSetting.get(settings, suffix);
    if (const HRESULT hr = HandleBoolean(record, on); hr != S_OK || record.IsQuery())
    {
        return hr;
    }
    TSetting.put(settings, suffix, on);
    m_analyzer.Apply(settings);
    return S_OK;
}

template <const auto& TSetting>
HRESULT CAnalyzerCommands::WordSetting(Record& record)
{
    long suffix = 0;
    if (ReadSuffix(record, TSetting.suffix, suffix) != S_OK)
    {
        return S_FALSE;
    }
    tagAnalyzerSettings settings = m_analyzer.Settings();
    long value = TSetting.get(settings);
    if (const HRESULT hr = HandleWord(record, value, TSetting.shortForm); hr != S_OK || record.IsQuery())
    {
        return hr;
    }
    TSetting.put(settings, value);
    m_analyzer.Apply(settings);
    return S_OK;
}

} // namespace ZoVelkor::Demo
