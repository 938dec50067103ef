#include "CAnalyzer.h"

#include "SignalSimulation.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace ZoVelkor::Demo
{

void CAnalyzer::Apply(const AnalyzerSettings& settings)
{
    m_settings = settings;
    m_settings.KeepMarkersInside();
    m_sweeps.SetSettings(m_settings);
}

void CAnalyzer::Reset()
{
    m_sweeps.Reset();
    m_traces.Clear();
    m_switches.Reset();
    m_displayText.clear();
    Apply({});
}

bool CAnalyzer::Selftest()
{
    constexpr double kToleranceDb = 1.0;
    constexpr double kSpanHz = 1e5;
    constexpr std::uint64_t kSeed = 1;
    const Carrier& strongest =
        *std::max_element(std::begin(kCarriers), std::end(kCarriers), [](const auto& a, const auto& b) {
            return a.levelDbm < b.levelDbm;
        });

    ChannelSettings channel;
    channel.frequency.SetCenter(strongest.frequencyHz);
    channel.frequency.SetSpan(kSpanHz);
    const Trace trace{channel.frequency, SimulateTrace(channel, kMinSweepPoints, Detector::Rms, kSeed)};
    const double measuredDbm = trace.levelsDbm[trace.NearestIndex(strongest.frequencyHz)];
    return std::abs(measuredDbm - strongest.levelDbm) < kToleranceDb;
}

} // namespace ZoVelkor::Demo
