#pragma once

#include "CFrequencyRange.h"
#include "Common/BySuffix.h"

#include <array>
#include <cstddef>

namespace ZoVelkor::Demo
{

inline constexpr long kChannelCount = 4; ///< SENSe<1..4>; trace n shows what channel n measured
inline constexpr long kMarkerCount = 8;  ///< CALCulate:MARKer<1..8>; all markers sit on trace 1

inline constexpr double kMinBandwidthHz = 10.0;
inline constexpr double kMaxBandwidthHz = 10e6;

inline constexpr long kMinSweepPoints = 101;
inline constexpr long kMaxSweepPoints = 100001;
inline constexpr long kResetSweepPoints = 1001;

inline constexpr double kMinSweepTimeS = 1e-3;
inline constexpr double kMaxSweepTimeS = 1000.0;
inline constexpr double kMinAutoSweepTimeS = 50e-3; ///< the coupled sweep time is never shorter

inline constexpr double kMinReferenceLevelDbm = -130.0;
inline constexpr double kMaxReferenceLevelDbm = 30.0;
inline constexpr double kResetReferenceLevelDbm = 0.0;

/// How the samples that fall into one sweep point become its level.
enum class Detector : long
{
    Positive = 1, ///< largest sample
    Negative,     ///< smallest sample
    Sample,       ///< one of the samples
    Rms,          ///< mean power
    Average       ///< mean of the logarithmic levels
};

/// What a sweep waits for once it is initiated.
enum class TriggerSource : long
{
    Immediate = 1, ///< nothing
    Bus,           ///< *TRG or TRIGger[:IMMediate]
    Lxi            ///< an LXI event that is enabled, or TRIGger[:IMMediate]
};

/// Settings of one measurement channel.
struct ChannelSettings
{
    CFrequencyRange frequency;
    bool bandwidthAuto = true;                          ///< the bandwidth follows the span
    double manualBandwidthHz = kMaxBandwidthHz;         ///< holds while bandwidthAuto is off
    double referenceLevelDbm = kResetReferenceLevelDbm; ///< the input is overloaded above it

    /// The resolution bandwidth in force.
    double BandwidthHz() const;

    /// The time that its filter needs to settle in a sweep; a shorter sweep shows wrong levels.
    double ShortestSweepTimeS() const;

    bool operator==(const ChannelSettings&) const = default;
};

/// All settings of the analyser; a new object is the reset state (*RST).
///
/// A plain value: a command changes a copy and puts it in force as a whole, so a refused command changes
/// nothing, and a sweep works on the copy that it was started with.
struct AnalyzerSettings
{
    std::array<ChannelSettings, kChannelCount> channels{};
    long sweepPoints = kResetSweepPoints;
    bool sweepTimeAuto = true; ///< the sweep time follows the bandwidths
    double manualSweepTimeS = kMinAutoSweepTimeS;
    Detector detector = Detector::Positive;
    TriggerSource triggerSource = TriggerSource::Immediate;
    std::array<double, kMarkerCount> markersHz = ResetMarkers();

    /// A channel by its suffix, 1 to kChannelCount.
    ChannelSettings& Channel(long suffix) { return BySuffix(channels, suffix); }
    const ChannelSettings& Channel(long suffix) const { return BySuffix(channels, suffix); }

    /// A marker's frequency by its suffix, 1 to kMarkerCount.
    double& MarkerHz(long suffix) { return BySuffix(markersHz, suffix); }
    double MarkerHz(long suffix) const { return BySuffix(markersHz, suffix); }

    /// The sweep time in force: that of the slowest channel when it is coupled.
    double SweepTimeS() const;

    /// True when a sweep is too short for the bandwidth of a channel; never while its time is coupled.
    bool IsUncalibrated(long suffix) const { return SweepTimeS() < Channel(suffix).ShortestSweepTimeS(); }

    /// The frequency ranges of all channels.
    std::array<CFrequencyRange, kChannelCount> Ranges() const;

    /// Moves the markers that a new frequency range would leave outside to its edge.
    void KeepMarkersInside();

private:
    static constexpr std::array<double, kMarkerCount> ResetMarkers()
    {
        std::array<double, kMarkerCount> markers{};
        markers.fill((kMinFrequencyHz + kMaxFrequencyHz) / 2);
        return markers;
    }
};

/// The next step of the bandwidths 1-3-10, or of the spans 1-2-5-10, in the direction given.
///
/// @param mantissas  the steps within a decade, rising, the first is 1
double NextInSequence(double value, bool up, std::initializer_list<double> mantissas);

} // namespace ZoVelkor::Demo
