// Lxi: LXI events that start sweeps, and commands that send events.
//
// CLxiTrigger owns the kernel's CLxiEventEndpoint and observes it: an event that is switched on triggers the
// analyser's CSweepEngine. CLxiCommands has the handlers of LxiTable, for switches, sending and the log.
// Handlers run one at a time; events come on the endpoint's thread.
// Lock order: the lock of the endpoint's observers is held around an event, those of the trigger and the
// sweep engine are taken under it; neither is held when the endpoint is called.

#pragma once

#include "CLxiCommands.h"
#include "Common/CApplicationAccess.h"
#include "Common/CApplicationRegistration.h"

namespace ZoVelkor::Demo
{

/// The application "lxi": the LXI events, their commands and their place in remote control.
class CLxiApplication
{
public:
    /// @param sweeps    of the analyser; borrowed
    /// @param settings  null: the instrument has no LXI, and its commands say so
    /// @throws CShellError when remote control is missing or refuses the application
    CLxiApplication(CSweepEngine& sweeps, const std::optional<RemoteKernel::LxiEndpointSettings>& settings);

    CLxiTrigger& Trigger() { return m_trigger; }

    CApplicationAccess<CLxiTrigger> Access(const RemoteKernel::CRemoteKernel& kernel)
    {
        return {m_trigger, kernel, m_registration};
    }

private:
    CLxiTrigger m_trigger;
    CLxiCommands m_commands{m_trigger};
    CApplicationRegistration m_registration; // last: it goes before what the handlers use
};

} // namespace ZoVelkor::Demo
