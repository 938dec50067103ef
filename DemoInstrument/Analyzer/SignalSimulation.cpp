#include "SignalSimulation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <random>

namespace ZoVelkor::Demo
{
namespace
{

/// Powers in mW of the samples of one point.
using Samples = std::array<double, kSamplesPerPoint>;

/// Beyond so many bandwidths the Gaussian filter is more than 190 dB down.
constexpr double kFilterReach = 4.0;

/// A level that no noise gets below; keeps the logarithm finite.
constexpr double kSmallestPowerMw = 1e-30;

double ToMilliwatt(double levelDbm)
{
    return std::pow(10.0, levelDbm / 10);
}

double ToDbm(double powerMw)
{
    return 10 * std::log10(std::max(powerMw, kSmallestPowerMw));
}

/// Power of all carriers behind a Gaussian filter, 3 dB down at half its bandwidth.
double CarrierPowerMw(double frequencyHz, double bandwidthHz)
{
    double powerMw = 0.0;
    for (const Carrier& carrier : kCarriers)
    {
        const double offset = (frequencyHz - carrier.frequencyHz) / bandwidthHz;
        if (std::abs(offset) < kFilterReach)
        {
            powerMw += ToMilliwatt(carrier.levelDbm) * std::exp2(-4 * offset * offset);
        }
    }
    return powerMw;
}

double LargestDbm(const Samples& samples)
{
    return ToDbm(*std::max_element(samples.begin(), samples.end()));
}

double SmallestDbm(const Samples& samples)
{
    return ToDbm(*std::min_element(samples.begin(), samples.end()));
}

double MiddleSampleDbm(const Samples& samples)
{
    return ToDbm(samples[samples.size() / 2]);
}

double MeanPowerDbm(const Samples& samples)
{
    return ToDbm(std::accumulate(samples.begin(), samples.end(), 0.0) / kSamplesPerPoint);
}

double MeanLevelDbm(const Samples& samples)
{
    const auto addLevel = [](double sum, double powerMw) { return sum + ToDbm(powerMw); };
    return std::accumulate(samples.begin(), samples.end(), 0.0, addLevel) / kSamplesPerPoint;
}

using DetectorFunction = double (*)(const Samples&);

/// In the order of Detector, which counts from 1.
constexpr DetectorFunction kDetectors[] = {
    &LargestDbm, &SmallestDbm, &MiddleSampleDbm, &MeanPowerDbm, &MeanLevelDbm};

} // namespace

std::vector<double>
SimulateTrace(const ChannelSettings& channel, long points, Detector detector, std::uint64_t seed)
{
    const double pointHz = channel.frequency.SpanHz() / static_cast<double>(points - 1);
    const double slotHz = pointHz / kSamplesPerPoint;
    // A sample collects what the filter passes while it moves through its slot, so that a narrow filter does
    // not miss carriers between two samples.
    const double filterHz = std::max(channel.BandwidthHz(), slotHz);
    const DetectorFunction detect = kDetectors[static_cast<long>(detector) - 1];

    std::mt19937_64 random(seed);
    // The power of Gaussian noise behind a filter is distributed exponentially.
    const double meanNoiseMw = ToMilliwatt(kNoiseDensityDbm) * channel.BandwidthHz();
    std::exponential_distribution<double> noiseMw(1 / meanNoiseMw);

    std::vector<double> levelsDbm(static_cast<std::size_t>(points));
    double slotCenterHz = channel.frequency.StartHz() - pointHz / 2 + slotHz / 2;
    for (double& levelDbm : levelsDbm)
    {
        Samples samples;
        for (double& sampleMw : samples)
        {
            sampleMw = CarrierPowerMw(slotCenterHz, filterHz) + noiseMw(random);
            slotCenterHz += slotHz;
        }
        levelDbm = detect(samples);
    }
    return levelsDbm;
}

} // namespace ZoVelkor::Demo
