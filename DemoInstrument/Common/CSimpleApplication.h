// Common: what the demo's applications are made of.
//
// An application is an object of settings, a class of commands with a handler table (HandlerTable,
// CommandTableGroups, SettingHandlers), and a registration at the kernel; CSimpleApplication joins them.
// Others reach its settings by CApplicationAccess, between its commands. COperationTimer ends overlapped
// operations, by time. All rooms of the demo may use this one. Lock order: an application's lock, which the
// kernel holds around handlers, before that of the timer.

#pragma once

#include "CApplicationAccess.h"
#include "CApplicationParser.h"
#include "CApplicationRegistration.h"
#include "CResetHandler.h"

namespace ZoVelkor::Demo
{

/// An instrument, its commands and its place in remote control; of the device events it hears *RST.
///
/// TInstrument has Reset. TCommands is made with a TInstrument and has kApplicationName, Table and Handlers.
template <class TInstrument, class TCommands>
class CSimpleApplication
{
public:
    /// @throws CShellError when remote control is missing or refuses the application
    CSimpleApplication()
        : m_registration(
              TCommands::kApplicationName,
              TCommands::Table(),
              CApplicationParser<TCommands, CResetHandler<TInstrument>>::Create(m_commands, m_instrument))
    {}

    CApplicationAccess<TInstrument> Access(const RemoteKernel::CRemoteKernel& kernel)
    {
        return {m_instrument, kernel, m_registration};
    }

private:
    TInstrument m_instrument;
    TCommands m_commands{m_instrument};
    CApplicationRegistration m_registration; // last: it goes before what the handlers use
};

} // namespace ZoVelkor::Demo
