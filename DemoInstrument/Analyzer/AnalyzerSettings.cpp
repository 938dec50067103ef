#include "AnalyzerSettings.h"

#include <algorithm>
#include <cmath>

namespace ZoVelkor::Demo
{
namespace
{

/// Bandwidths that fit into the span, and settling times of the filter within the sweep time.
constexpr double kSpanPerBandwidth = 100.0;
constexpr double kSettlingTimes = 2.5;

/// Values closer than this (relative) are the same step; a decade computed by pow is seldom exact.
constexpr double kStepTolerance = 1e-9;

double CoupledBandwidthHz(double spanHz)
{
    const double wishedHz = std::clamp(spanHz / kSpanPerBandwidth, kMinBandwidthHz, kMaxBandwidthHz);
    return NextInSequence(wishedHz * (1 + 2 * kStepTolerance), false, {1, 3});
}

} // namespace

double NextInSequence(double value, bool up, std::initializer_list<double> mantissas)
{
    const int decade = static_cast<int>(std::floor(std::log10(value)));
    double below = 0.0;
    for (int exponent = decade - 1; exponent <= decade + 1; ++exponent)
    {
        for (const double mantissa : mantissas)
        {
            const double step = mantissa * std::pow(10.0, exponent);
            if (up && step > value * (1 + kStepTolerance))
            {
                return step;
            }
            if (!up && step < value * (1 - kStepTolerance))
            {
                below = step;
            }
        }
    }
    return below;
}

double ChannelSettings::BandwidthHz() const
{
    return bandwidthAuto ? CoupledBandwidthHz(frequency.SpanHz()) : manualBandwidthHz;
}

double ChannelSettings::ShortestSweepTimeS() const
{
    return kSettlingTimes / BandwidthHz();
}

double AnalyzerSettings::SweepTimeS() const
{
    if (!sweepTimeAuto)
    {
        return manualSweepTimeS;
    }
    double timeS = kMinAutoSweepTimeS;
    for (const ChannelSettings& channel : channels)
    {
        timeS = std::max(timeS, channel.ShortestSweepTimeS());
    }
    return timeS;
}

std::array<CFrequencyRange, kChannelCount> AnalyzerSettings::Ranges() const
{
    std::array<CFrequencyRange, kChannelCount> ranges;
    std::ranges::transform(channels, ranges.begin(), &ChannelSettings::frequency);
    return ranges;
}

void AnalyzerSettings::KeepMarkersInside()
{
    const CFrequencyRange& range = Channel(1).frequency;
    for (double& markerHz : markersHz)
    {
        markerHz = std::clamp(markerHz, range.StartHz(), range.StopHz());
    }
}

} // namespace ZoVelkor::Demo
