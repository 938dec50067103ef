#pragma once

#include "CInstrumentCommands.h"
#include "Common/CApplicationRegistration.h"

namespace ZoVelkor::Demo
{

/// The application "instrument": what belongs to the whole instrument and outlives its power-off.
class CInstrumentApplication
{
public:
    /// @param registry, clock  borrowed
    /// @throws CShellError when remote control is missing or refuses the application
    CInstrumentApplication(const CInstrumentRegistry& registry, CInstrumentClock& clock, CSavedStates states);

private:
    InstrumentParts m_instrument;
    CInstrumentCommands m_commands{m_instrument};
    CApplicationRegistration m_registration; // last: it goes before what the handlers use
};

} // namespace ZoVelkor::Demo
