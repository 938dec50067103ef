#include "CInstrumentApplication.h"

#include "CApplicationParser.h"
#include "CResetHandler.h"

namespace ZoVelkor::Demo
{

CInstrumentApplication::CInstrumentApplication(const CInstrumentRegistry& registry,
                                               CInstrumentClock& clock,
                                               const CApplicationAccess<CAnalyzer>& analyzer,
                                               const CApplicationAccess<CGenerator>& generator)
    : m_instrument{registry,
                   clock,
                   {registry, analyzer, generator},
                   registry.ReadOr(kNetworkKey, kHostNameValue, "zo-demo")},
      m_registration(
          L"instrument",
          CInstrumentCommands::Table(),
          CApplicationParser<CInstrumentCommands, CResetHandler<tagInstrumentParts>>::Create(m_commands,
                                                                                            m_instrument))
{}

} // namespace ZoVelkor::Demo
