#pragma once

#include "AnalyzerSettings.h"
#include "AnalyzerTable.h"
#include "Common/SteppedSetting.h"

namespace ZoVelkor::Demo
{

// The analyser's settings as commands and properties see them: their limits, and how a value is found and
// put.

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

inline CNumericSetting Frequency(const tagChannelSettings& channel, double valueHz, double resetHz)
{
    const double spanHz = channel.frequency.SpanHz();
    const double stepHz = spanHz > 0 ? spanHz / kStepsPerSpan : channel.BandwidthHz();
    return MakeSetting(
        kMinFrequencyHz, kMaxFrequencyHz, resetHz, valueHz, valueHz - stepHz, valueHz + stepHz);
}

inline CNumericSetting Span(const tagChannelSettings& channel)
{
    const double spanHz = channel.frequency.SpanHz();
    const double downHz = spanHz <= kSmallestSpanHz ? 0.0 : NextIn125(spanHz, false);
    const double upHz = spanHz < kSmallestSpanHz ? kSmallestSpanHz : NextIn125(spanHz, true);
    return MakeSetting(0.0, kMaxSpanHz, kMaxSpanHz, spanHz, downHz, upHz);
}

inline CNumericSetting Bandwidth(const tagChannelSettings& channel)
{
    const double valueHz = channel.BandwidthHz();
    return MakeSetting(kMinBandwidthHz,
                       kMaxBandwidthHz,
                       kMaxBandwidthHz,
                       valueHz,
                       NextInSequence(valueHz, false, {1, 3}),
                       NextInSequence(valueHz, true, {1, 3}));
}

inline CNumericSetting ReferenceLevel(const tagChannelSettings& channel)
{
    const double levelDbm = channel.referenceLevelDbm;
    return MakeSetting(kMinReferenceLevelDbm,
                       kMaxReferenceLevelDbm,
                       kResetReferenceLevelDbm,
                       levelDbm,
                       levelDbm - kLevelStepDb,
                       levelDbm + kLevelStepDb);
}

inline CNumericSetting SweepPoints(const tagAnalyzerSettings& settings)
{
    const double steps = static_cast<double>(settings.sweepPoints - 1);
    return MakeSetting(kMinSweepPoints,
                       kMaxSweepPoints,
                       kResetSweepPoints,
                       steps + 1,
                       NextIn125(steps, false) + 1,
                       NextIn125(steps, true) + 1);
}

inline CNumericSetting SweepTime(const tagAnalyzerSettings& settings)
{
    const double timeS = settings.SweepTimeS();
    return MakeSetting(kMinSweepTimeS,
                       kMaxSweepTimeS,
                       kMinAutoSweepTimeS,
                       timeS,
                       NextIn125(timeS, false),
                       NextIn125(timeS, true));
}

inline CNumericSetting Marker(const tagAnalyzerSettings& settings, long marker)
{
    const CFrequencyRange& range = settings.Channel(1).frequency;
    const double pointHz = range.SpanHz() / static_cast<double>(settings.sweepPoints - 1);
    const double markerHz = settings.MarkerHz(marker);
    return MakeSetting(
        range.StartHz(), range.StopHz(), range.CenterHz(), markerHz, markerHz - pointHz, markerHz + pointHz);
}

inline constexpr tagNumericSetting kCenter{
    tagSuffix::Number,
    [](const tagAnalyzerSettings& s, long n) {
        return Frequency(s.Channel(n), s.Channel(n).frequency.CenterHz(), CFrequencyRange().CenterHz());
    },
    [](tagAnalyzerSettings& s, long n, double hz) { s.Channel(n).frequency.SetCenter(hz); }};

inline constexpr tagNumericSetting kSpan{
    tagSuffix::Number,
    [](const tagAnalyzerSettings& s, long n) { return Span(s.Channel(n)); },
    [](tagAnalyzerSettings& s, long n, double hz) { s.Channel(n).frequency.SetSpan(hz); }};

inline constexpr tagNumericSetting kStart{
    tagSuffix::Number,
    [](const tagAnalyzerSettings& s, long n) {
        return Frequency(s.Channel(n), s.Channel(n).frequency.StartHz(), kMinFrequencyHz);
    },
    [](tagAnalyzerSettings& s, long n, double hz) { s.Channel(n).frequency.SetStart(hz); }};

inline constexpr tagNumericSetting kStop{
    tagSuffix::Number,
    [](const tagAnalyzerSettings& s, long n) {
        return Frequency(s.Channel(n), s.Channel(n).frequency.StopHz(), kMaxFrequencyHz);
    },
    [](tagAnalyzerSettings& s, long n, double hz) { s.Channel(n).frequency.SetStop(hz); }};

inline constexpr tagNumericSetting kBandwidth{
    tagSuffix::Number,
    [](const tagAnalyzerSettings& s, long n) { return Bandwidth(s.Channel(n)); },
    [](tagAnalyzerSettings& s, long n, double hz) {
        s.Channel(n).manualBandwidthHz = hz;
        s.Channel(n).bBandwidthAuto = false;
    }};

inline constexpr tagBooleanSetting kBandwidthAuto{
    tagSuffix::Number,
    [](const tagAnalyzerSettings& s, long n) { return s.Channel(n).bBandwidthAuto; },
    [](tagAnalyzerSettings& s, long n, bool on) {
        s.Channel(n).manualBandwidthHz = s.Channel(n).BandwidthHz();
        s.Channel(n).bBandwidthAuto = on;
    }};

inline constexpr tagNumericSetting kReferenceLevel{
    tagSuffix::Number,
    [](const tagAnalyzerSettings& s, long n) { return ReferenceLevel(s.Channel(n)); },
    [](tagAnalyzerSettings& s, long n, double dbm) { s.Channel(n).referenceLevelDbm = dbm; }};

inline constexpr tagNumericSetting kPoints{
    tagSuffix::One,
    [](const tagAnalyzerSettings& s, long) { return SweepPoints(s); },
    [](tagAnalyzerSettings& s, long, double points) { s.sweepPoints = static_cast<long>(points); }};

inline constexpr tagNumericSetting kSweepTime{tagSuffix::One,
                                              [](const tagAnalyzerSettings& s, long) { return SweepTime(s); },
                                              [](tagAnalyzerSettings& s, long, double seconds) {
                                                  s.manualSweepTimeS = seconds;
                                                  s.bSweepTimeAuto = false;
                                              }};

inline constexpr tagBooleanSetting kSweepTimeAuto{
    tagSuffix::One,
    [](const tagAnalyzerSettings& s, long) { return s.bSweepTimeAuto; },
    [](tagAnalyzerSettings& s, long, bool on) {
        s.manualSweepTimeS = s.SweepTimeS();
        s.bSweepTimeAuto = on;
    }};

inline constexpr tagWordSetting kDetector{
    tagSuffix::One,
    &DetectorWord,
    [](const tagAnalyzerSettings& s) { return static_cast<long>(s.detector); },
    [](tagAnalyzerSettings& s, long word) { s.detector = static_cast<tagDetector>(word); }};

inline constexpr tagWordSetting kTriggerSource{
    tagSuffix::None,
    &TriggerSourceWord,
    [](const tagAnalyzerSettings& s) { return static_cast<long>(s.triggerSource); },
    [](tagAnalyzerSettings& s, long word) { s.triggerSource = static_cast<tagTriggerSource>(word); }};

inline constexpr tagNumericSetting kMarkerX{
    tagSuffix::Number, &Marker, [](tagAnalyzerSettings& s, long n, double hz) { s.MarkerHz(n) = hz; }};

} // namespace ZoVelkor::Demo
