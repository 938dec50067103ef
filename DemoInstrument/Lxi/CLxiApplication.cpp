#include "CLxiApplication.h"

#include "Common/CApplicationParser.h"
#include "Common/CResetHandler.h"

namespace ZoVelkor::Demo
{

CLxiApplication::CLxiApplication(CSweepEngine& sweeps,
                                 const std::optional<RemoteKernel::LxiEndpointSettings>& settings)
    : m_trigger(sweeps, settings),
      m_registration(
          CLxiCommands::kApplicationName,
          CLxiCommands::Table(),
          CApplicationParser<CLxiCommands, CResetHandler<CLxiTrigger>>::Create(m_commands, m_trigger))
{}

} // namespace ZoVelkor::Demo
