#include "CInstrumentApplication.h"

#include "CApplicationParser.h"
#include "CResetHandler.h"

#include <utility>

namespace ZoVelkor::Demo
{

CInstrumentApplication::CInstrumentApplication(const CInstrumentRegistry& registry,
                                               CInstrumentClock& clock,
                                               CSavedStates states)
    : m_instrument{registry,
                   clock,
                   std::move(states),
                   registry.ReadOr(kNetworkKey, kHostNameValue, "zo-demo")},
      m_registration(L"instrument",
                     CInstrumentCommands::Table(),
                     CApplicationParser<CInstrumentCommands, CResetHandler<tagInstrumentParts>>::Create(
                         m_commands, m_instrument))
{}

} // namespace ZoVelkor::Demo
