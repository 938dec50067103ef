#include "Analyzer/CTraceMemory.h"
#include "Analyzer/SignalSimulation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace ZoVelkor::Demo
{
namespace
{

constexpr long kPoints = 1001;
constexpr std::uint64_t kSeed = 42;

ChannelSettings ChannelAt(double centerHz, double spanHz, double bandwidthHz)
{
    ChannelSettings channel;
    channel.frequency.SetCenter(centerHz);
    channel.frequency.SetSpan(spanHz);
    channel.bandwidthAuto = false;
    channel.manualBandwidthHz = bandwidthHz;
    return channel;
}

double MeanOf(const std::vector<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

struct CarrierCase
{
    const char* name;
    double frequencyHz;
    double spanHz;
    double bandwidthHz;
    double levelDbm;
    double toleranceDb;
};

// The last row: a filter far narrower than a point still meets the carrier somewhere in its point.
constexpr CarrierCase kCarrierCases[] = {
    {"Strongest", 1e9, 1e5, 1e3, -10.0, 0.1},
    {"HalfBandwidthOff", 1e9 + 5e2, 0.0, 1e3, -13.0, 0.1},
    {"WeakNeighbour", 1.0005e9, 1e5, 1e3, -45.0, 0.1},
    {"SecondHarmonic", 200e6, 1e6, 1e4, -55.0, 0.2},
    {"WideSpan", 2.4e9, 1e9, 1e3, -30.0, 3.1},
};

TEST(Simulation, ShowsCarriersAtTheirLevel)
{
    for (const CarrierCase& row : kCarrierCases)
    {
        SCOPED_TRACE(row.name);
        const ChannelSettings channel = ChannelAt(row.frequencyHz, row.spanHz, row.bandwidthHz);
        const auto levels = SimulateTrace(channel, kPoints, Detector::Positive, kSeed);
        EXPECT_NEAR(*std::max_element(levels.begin(), levels.end()), row.levelDbm, row.toleranceDb);
    }
}

TEST(Simulation, NoiseGrowsByTenDecibelsADecadeOfBandwidth)
{
    for (const double bandwidthHz : {1e2, 1e3, 1e4})
    {
        const auto levels = SimulateTrace(ChannelAt(5e9, 1e6, bandwidthHz), kPoints, Detector::Rms, kSeed);
        EXPECT_NEAR(MeanOf(levels), kNoiseDensityDbm + 10 * std::log10(bandwidthHz), 0.3) << bandwidthHz;
    }
}

TEST(Simulation, DetectorsOrderTheNoise)
{
    // Mean logarithms of exponentially distributed samples: one lies 2.5 dB below the mean power, the
    // smallest of 16 another 12 dB below, the largest 5.1 dB above it.
    struct DetectorCase
    {
        Detector detector;
        double aboveRmsDb;
    };
    constexpr DetectorCase kCases[] = {
        {Detector::Positive, 5.1},
        {Detector::Rms, -0.1},
        {Detector::Average, -2.5},
        {Detector::Sample, -2.5},
        {Detector::Negative, -14.5},
    };
    const ChannelSettings noise = ChannelAt(5e9, 1e6, 1e3);
    for (const DetectorCase& row : kCases)
    {
        const double mean = MeanOf(SimulateTrace(noise, 10001, row.detector, kSeed));
        EXPECT_NEAR(mean - (kNoiseDensityDbm + 30), row.aboveRmsDb, 0.3) << static_cast<long>(row.detector);
    }
}

TEST(Simulation, EqualSeedsGiveEqualTraces)
{
    const ChannelSettings noise = ChannelAt(5e9, 1e6, 1e3);
    const auto first = SimulateTrace(noise, kPoints, Detector::Sample, kSeed);
    EXPECT_EQ(first, SimulateTrace(noise, kPoints, Detector::Sample, kSeed));
    EXPECT_NE(first, SimulateTrace(noise, kPoints, Detector::Sample, kSeed + 1));
}

struct RangeCase
{
    const char* name;
    void (CFrequencyRange::*set)(double);
    double valueHz;
    double startHz;
    double stopHz;
};

// From a range of 1 to 2 GHz.
constexpr RangeCase kRangeCases[] = {
    {"CenterKeepsSpan", &CFrequencyRange::SetCenter, 3e9, 2.5e9, 3.5e9},
    {"CenterNearZeroShrinksSpan", &CFrequencyRange::SetCenter, 1e8, 0.0, 2e8},
    {"CenterNearEndShrinksSpan", &CFrequencyRange::SetCenter, 5.9e9, 5.8e9, 6e9},
    {"CenterAtEndIsZeroSpan", &CFrequencyRange::SetCenter, 6e9, 6e9, 6e9},
    {"SpanKeepsCenter", &CFrequencyRange::SetSpan, 2e9, 0.5e9, 2.5e9},
    {"WideSpanMovesCenter", &CFrequencyRange::SetSpan, 4e9, 0.0, 4e9},
    {"FullSpan", &CFrequencyRange::SetSpan, 6e9, 0.0, 6e9},
    {"StartKeepsStop", &CFrequencyRange::SetStart, 1.5e9, 1.5e9, 2e9},
    {"StartTakesStopAlong", &CFrequencyRange::SetStart, 3e9, 3e9, 3e9},
    {"StopKeepsStart", &CFrequencyRange::SetStop, 5e9, 1e9, 5e9},
    {"StopTakesStartAlong", &CFrequencyRange::SetStop, 5e8, 5e8, 5e8},
};

TEST(FrequencyRange, CouplesItsFourQuantities)
{
    for (const RangeCase& row : kRangeCases)
    {
        SCOPED_TRACE(row.name);
        CFrequencyRange range;
        range.SetStart(1e9);
        range.SetStop(2e9);
        (range.*row.set)(row.valueHz);
        EXPECT_DOUBLE_EQ(range.StartHz(), row.startHz);
        EXPECT_DOUBLE_EQ(range.StopHz(), row.stopHz);
    }
}

TEST(Settings, StepsFollowTheirSequence)
{
    struct StepCase
    {
        double value;
        bool up;
        double expected;
    };
    constexpr StepCase kCases[] = {
        {1e3, true, 3e3},
        {3e3, true, 1e4},
        {1e3, false, 3e2},
        {3e3, false, 1e3},
        {2e3, true, 3e3},
        {2e3, false, 1e3},
        {9e3, true, 1e4},
        {1e-3, true, 3e-3},
    };
    for (const StepCase& row : kCases)
    {
        EXPECT_DOUBLE_EQ(NextInSequence(row.value, row.up, {1, 3}), row.expected) << row.value << row.up;
    }
}

TEST(Settings, BandwidthAndSweepTimeFollowTheSpan)
{
    AnalyzerSettings settings;
    EXPECT_DOUBLE_EQ(settings.Channel(1).BandwidthHz(), kMaxBandwidthHz);
    settings.Channel(1).frequency.SetSpan(1e6);
    EXPECT_DOUBLE_EQ(settings.Channel(1).BandwidthHz(), 1e4);
    EXPECT_DOUBLE_EQ(settings.SweepTimeS(), kMinAutoSweepTimeS);
    settings.Channel(4).frequency.SetSpan(0);
    EXPECT_DOUBLE_EQ(settings.Channel(4).BandwidthHz(), kMinBandwidthHz);
    EXPECT_DOUBLE_EQ(settings.SweepTimeS(), 0.25) << "the slowest channel counts";
}

} // namespace
} // namespace ZoVelkor::Demo
