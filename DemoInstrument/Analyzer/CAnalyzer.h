#pragma once

#include "AnalyzerSettings.h"
#include "CInstrumentStatus.h"
#include "CMassMemory.h"
#include "CSweepEngine.h"
#include "CTraceMemory.h"
#include "Common/CSwitchBoard.h"

#include <string>

namespace ZoVelkor::Demo
{

/// The analyser itself, without remote control: settings, sweeps and what they measure, files, switches.
///
/// Threads: the thread that executes the command, except for the parts that say otherwise.
class CAnalyzer
{
public:
    /// @throws CShellError when remote control lacks a status register of the analyser
    CAnalyzer() : m_sweeps(m_traces, m_status) {}

    const AnalyzerSettings& Settings() const { return m_settings; }

    /// Puts settings in force; they hold from the next sweep on.
    void Apply(const AnalyzerSettings& settings);

    /// Returns to the reset state: no sweep, no traces, switches open, no text. The files stay.
    void Reset();

    /// Measures the strongest carrier and compares it with what is known of it.
    static bool Selftest();

    CTraceMemory& Traces() { return m_traces; }
    CSweepEngine& Sweeps() { return m_sweeps; }
    CMassMemory& Files() { return m_files; }
    CSwitchBoard& Switches() { return m_switches; }
    std::string& DisplayText() { return m_displayText; }

private:
    AnalyzerSettings m_settings;
    CMassMemory m_files;
    CSwitchBoard m_switches;
    std::string m_displayText;
    CTraceMemory m_traces;
    CInstrumentStatus m_status;
    CSweepEngine m_sweeps; // last: its thread writes into the traces and the status
};

} // namespace ZoVelkor::Demo
