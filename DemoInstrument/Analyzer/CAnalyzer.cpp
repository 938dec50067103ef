#include "CAnalyzer.h"

#include "SignalSimulation.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace ZoVelkor::Demo
{

void CAnalyzer::Apply(const tagAnalyzerSettings& settings)
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
    m_sDisplayText.clear();
    Apply({});
}

bool CAnalyzer::Selftest()
{
    constexpr double kToleranceDb = 1.0;
    constexpr double kSpanHz = 1e5;
    constexpr std::uint64_t kSeed = 1;
    const tagCarrier& strongest =
        *std::max_element(std::begin(kCarriers), std::end(kCarriers), [](const auto& a, const auto& b) {
            return a.levelDbm < b.levelDbm;
        });

    tagChannelSettings channel;
    channel.frequency.SetCenter(strongest.frequencyHz);
    channel.frequency.SetSpan(kSpanHz);
    const tagTrace trace{channel.frequency, SimulateTrace(channel, kMinSweepPoints, tagDetector::Rms, kSeed)};
    const double measuredDbm = trace.levelsDbm[trace.NearestIndex(strongest.frequencyHz)];
    return std::abs(measuredDbm - strongest.levelDbm) < kToleranceDb;
}

} // namespace ZoVelkor::Demo
