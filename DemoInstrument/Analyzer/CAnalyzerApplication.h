// Analyzer: a signal analyser, simulated.
//
// CAnalyzerCommands has the handlers of AnalyzerTable; they work on a CAnalyzer: settings, CSweepEngine,
// CTraceMemory, CMassMemory. A sweep runs on the engine's thread, asks SignalSimulation for what it measures
// and puts it into the traces; CInstrumentStatus tells its phase. Handlers run one at a time; LXI events
// trigger sweeps from their own thread.
// Lock order: the application's lock before that of the sweep engine before those of traces and status
// registers.

#pragma once

#include "CAnalyzerCommands.h"
#include "Common/CApplicationAccess.h"
#include "Common/CApplicationRegistration.h"

namespace ZoVelkor::Demo
{

/// The application "analyzer": the analyser, its commands and its place in remote control.
class CAnalyzerApplication
{
public:
    /// @throws CShellError when remote control is missing or refuses the application
    CAnalyzerApplication();

    CSweepEngine& Sweeps() { return m_analyzer.Sweeps(); }

    CApplicationAccess<CAnalyzer> Access(const RemoteKernel::CRemoteKernel& kernel)
    {
        return {m_analyzer, kernel, m_registration};
    }

private:
    CAnalyzer m_analyzer;
    CAnalyzerCommands m_commands{m_analyzer};
    CApplicationRegistration m_registration; // last: it goes before what the handlers use
};

} // namespace ZoVelkor::Demo
