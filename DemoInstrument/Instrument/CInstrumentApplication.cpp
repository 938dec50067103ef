#include "CInstrumentApplication.h"

#include "Common/CApplicationParser.h"
#include "Common/CResetHandler.h"

#include <string>
#include <utility>

namespace ZoVelkor::Demo
{
namespace
{

/// Any program may have written the registry.
std::string KeptHostName(const CInstrumentRegistry& registry)
{
    constexpr const char* kDefault = "zo-demo";
    std::string name = registry.ReadOr(kNetworkKey, kHostNameValue, kDefault);
    return IsHostName(name) ? name : kDefault;
}

} // namespace

CInstrumentApplication::CInstrumentApplication(const CInstrumentRegistry& registry,
                                               CInstrumentClock& clock,
                                               CSavedStates states)
    : m_instrument{registry, clock, std::move(states), KeptHostName(registry)},
      m_registration(L"instrument",
                     CInstrumentCommands::Table(),
                     CApplicationParser<CInstrumentCommands, CResetHandler<InstrumentParts>>::Create(
                         m_commands, m_instrument))
{}

} // namespace ZoVelkor::Demo
