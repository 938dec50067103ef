#pragma once

#include "AnalyzerSettings.h"
#include "AnalyzerTable.h"
#include "Common/SteppedSetting.h"

namespace ZoVelkor::Demo
{

// The analyser's settings as commands and properties see them: their limits, and how a value is found and
// put.

/// What a command does with the numeric suffix of its header.
enum class Suffix
{
    None,   ///< its header takes none
    One,    ///< it sets one value for all channels; only 1 is allowed
    Number, ///< it says which channel or marker is meant
};

/// A numeric command on the settings, its suffix counted from 1.
struct NumericSetting
{
    Suffix suffix;
    CNumericSetting (*find)(const AnalyzerSettings& settings, long suffix);
    void (*put)(AnalyzerSettings& settings, long suffix, double value);
};

/// The same for ON and OFF.
struct BooleanSetting
{
    Suffix suffix;
    bool (*get)(const AnalyzerSettings& settings, long suffix);
    void (*put)(AnalyzerSettings& settings, long suffix, bool on);
};

/// The same for a word out of the command table.
struct WordSetting
{
    Suffix suffix;
    std::string (*shortForm)(long value);
    long (*get)(const AnalyzerSettings& settings);
    void (*put)(AnalyzerSettings& settings, long value);
};

/// Frequencies move by a tenth of the span, in zero span by a bandwidth.
inline constexpr double kStepsPerSpan = 10.0;
/// The span above zero span.
inline constexpr double kSmallestSpanHz = 100.0;
/// Levels move by a division of the usual screen.
inline constexpr double kLevelStepDb = 10.0;

inline double NextIn125(double value, bool up)
{
    return NextInSequence(value, up, {1, 2, 5});
}

inline CNumericSetting Frequency(const ChannelSettings& channel, double valueHz, double resetHz)
{
    const double spanHz = channel.frequency.SpanHz();
    const double stepHz = spanHz > 0 ? spanHz / kStepsPerSpan : channel.BandwidthHz();
    return MakeSetting(
        kMinFrequencyHz, kMaxFrequencyHz, resetHz, valueHz, valueHz - stepHz, valueHz + stepHz);
}

inline CNumericSetting Span(const ChannelSettings& channel)
{
    const double spanHz = channel.frequency.SpanHz();
    const double downHz = spanHz <= kSmallestSpanHz ? 0.0 : NextIn125(spanHz, false);
    const double upHz = spanHz < kSmallestSpanHz ? kSmallestSpanHz : NextIn125(spanHz, true);
    return MakeSetting(0.0, kMaxSpanHz, kMaxSpanHz, spanHz, downHz, upHz);
}

inline CNumericSetting Bandwidth(const ChannelSettings& channel)
{
    const double valueHz = channel.BandwidthHz();
    return MakeSetting(kMinBandwidthHz,
                       kMaxBandwidthHz,
                       kMaxBandwidthHz,
                       valueHz,
                       NextInSequence(valueHz, false, {1, 3}),
                       NextInSequence(valueHz, true, {1, 3}));
}

inline CNumericSetting ReferenceLevel(const ChannelSettings& channel)
{
    const double levelDbm = channel.referenceLevelDbm;
    return MakeSetting(kMinReferenceLevelDbm,
                       kMaxReferenceLevelDbm,
                       kResetReferenceLevelDbm,
                       levelDbm,
                       levelDbm - kLevelStepDb,
                       levelDbm + kLevelStepDb);
}

inline CNumericSetting SweepPoints(const AnalyzerSettings& settings)
{
    const double steps = static_cast<double>(settings.sweepPoints - 1);
    return MakeSetting(kMinSweepPoints,
                       kMaxSweepPoints,
                       kResetSweepPoints,
                       steps + 1,
                       NextIn125(steps, false) + 1,
                       NextIn125(steps, true) + 1);
}

inline CNumericSetting SweepTime(const AnalyzerSettings& settings)
{
    const double timeS = settings.SweepTimeS();
    return MakeSetting(kMinSweepTimeS,
                       kMaxSweepTimeS,
                       kMinAutoSweepTimeS,
                       timeS,
                       NextIn125(timeS, false),
                       NextIn125(timeS, true));
}

inline CNumericSetting Marker(const AnalyzerSettings& settings, long marker)
{
    const CFrequencyRange& range = settings.Channel(1).frequency;
    const double pointHz = range.SpanHz() / static_cast<double>(settings.sweepPoints - 1);
    const double markerHz = settings.MarkerHz(marker);
    return MakeSetting(
        range.StartHz(), range.StopHz(), range.CenterHz(), markerHz, markerHz - pointHz, markerHz + pointHz);
}

inline constexpr NumericSetting kCenter{
    Suffix::Number,
    [](const AnalyzerSettings& s, long n) {
        return Frequency(s.Channel(n), s.Channel(n).frequency.CenterHz(), CFrequencyRange().CenterHz());
    },
    [](AnalyzerSettings& s, long n, double hz) { s.Channel(n).frequency.SetCenter(hz); }};

inline constexpr NumericSetting kSpan{
    Suffix::Number,
    [](const AnalyzerSettings& s, long n) { return Span(s.Channel(n)); },
    [](AnalyzerSettings& s, long n, double hz) { s.Channel(n).frequency.SetSpan(hz); }};

inline constexpr NumericSetting kStart{
    Suffix::Number,
    [](const AnalyzerSettings& s, long n) {
        return Frequency(s.Channel(n), s.Channel(n).frequency.StartHz(), kMinFrequencyHz);
    },
    [](AnalyzerSettings& s, long n, double hz) { s.Channel(n).frequency.SetStart(hz); }};

inline constexpr NumericSetting kStop{
    Suffix::Number,
    [](const AnalyzerSettings& s, long n) {
        return Frequency(s.Channel(n), s.Channel(n).frequency.StopHz(), kMaxFrequencyHz);
    },
    [](AnalyzerSettings& s, long n, double hz) { s.Channel(n).frequency.SetStop(hz); }};

inline constexpr NumericSetting kBandwidth{
    Suffix::Number,
    [](const AnalyzerSettings& s, long n) { return Bandwidth(s.Channel(n)); },
    [](AnalyzerSettings& s, long n, double hz) {
        s.Channel(n).manualBandwidthHz = hz;
        s.Channel(n).bandwidthAuto = false;
    }};

inline constexpr BooleanSetting kBandwidthAuto{
    Suffix::Number,
    [](const AnalyzerSettings& s, long n) { return s.Channel(n).bandwidthAuto; },
    [](AnalyzerSettings& s, long n, bool on) {
        s.Channel(n).manualBandwidthHz = s.Channel(n).BandwidthHz();
        s.Channel(n).bandwidthAuto = on;
    }};

inline constexpr NumericSetting kReferenceLevel{
    Suffix::Number,
    [](const AnalyzerSettings& s, long n) { return ReferenceLevel(s.Channel(n)); },
    [](AnalyzerSettings& s, long n, double dbm) { s.Channel(n).referenceLevelDbm = dbm; }};

inline constexpr NumericSetting kPoints{
    Suffix::One,
    [](const AnalyzerSettings& s, long) { return SweepPoints(s); },
    [](AnalyzerSettings& s, long, double points) { s.sweepPoints = static_cast<long>(points); }};

inline constexpr NumericSetting kSweepTime{Suffix::One,
                                           [](const AnalyzerSettings& s, long) { return SweepTime(s); },
                                           [](AnalyzerSettings& s, long, double seconds) {
                                               s.manualSweepTimeS = seconds;
                                               s.sweepTimeAuto = false;
                                           }};

inline constexpr BooleanSetting kSweepTimeAuto{
    Suffix::One,
    [](const AnalyzerSettings& s, long) { return s.sweepTimeAuto; },
    [](AnalyzerSettings& s, long, bool on) {
        s.manualSweepTimeS = s.SweepTimeS();
        s.sweepTimeAuto = on;
    }};

inline constexpr WordSetting kDetector{
    Suffix::One,
    &DetectorWord,
    [](const AnalyzerSettings& s) { return static_cast<long>(s.detector); },
    [](AnalyzerSettings& s, long word) { s.detector = static_cast<Detector>(word); }};

inline constexpr WordSetting kTriggerSource{
    Suffix::None,
    &TriggerSourceWord,
    [](const AnalyzerSettings& s) { return static_cast<long>(s.triggerSource); },
    [](AnalyzerSettings& s, long word) { s.triggerSource = static_cast<TriggerSource>(word); }};

inline constexpr NumericSetting kMarkerX{
    Suffix::Number, &Marker, [](AnalyzerSettings& s, long n, double hz) { s.MarkerHz(n) = hz; }};

} // namespace ZoVelkor::Demo
