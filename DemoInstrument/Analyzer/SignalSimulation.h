#pragma once

#include "AnalyzerSettings.h"

#include <cstdint>
#include <vector>

namespace ZoVelkor::Demo
{

/// A continuous wave at the simulated input.
struct Carrier
{
    double frequencyHz;
    double levelDbm;
};

/// What is connected to the input: local-oscillator feed-through, a signal with harmonics, a strong signal
/// with a weak neighbour, and a lonely one.
inline constexpr Carrier kCarriers[] = {
    {0.0, -15.0},
    {100e6, -20.0},
    {200e6, -55.0},
    {300e6, -62.0},
    {1e9, -10.0},
    {1.0005e9, -45.0},
    {2.4e9, -30.0},
};

/// Noise of the input in 1 Hz; it grows with the bandwidth.
inline constexpr double kNoiseDensityDbm = -150.0;

/// Samples that the detector sees of each point.
inline constexpr int kSamplesPerPoint = 16;

/// Measures the simulated input once.
///
/// @param channel  range and bandwidth
/// @param points  2 or more; the first lies at the start, the last at the stop of the range
/// @param seed  of the noise: equal seeds give equal traces
/// @return the level of each point in dBm
std::vector<double>
SimulateTrace(const ChannelSettings& channel, long points, Detector detector, std::uint64_t seed);

} // namespace ZoVelkor::Demo
