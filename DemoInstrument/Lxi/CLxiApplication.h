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
