#include "CAnalyzerApplication.h"

#include "Common/CApplicationParser.h"
#include "Common/CResetHandler.h"

namespace ZoVelkor::Demo
{
namespace
{

/// Passes the device events of IEEE 488.2 on to the analyser.
class CAnalyzerDeviceHandler : public CResetHandler<CAnalyzer>
{
public:
    using CResetHandler::CResetHandler;

    /// @return S_FALSE when no sweep waits for a trigger by the bus
    HRESULT Trigger() override { return Instrument().Sweeps().TriggerByBus() ? S_OK : S_FALSE; }

    HRESULT Selftest(short* passed) override
    {
        const HRESULT result = CBScpiDeviceHandler::Selftest(passed);
        if (SUCCEEDED(result))
        {
            *passed = ToVariantBool(CAnalyzer::Selftest());
        }
        return result;
    }

protected:
    ~CAnalyzerDeviceHandler() override = default;
};

} // namespace

CAnalyzerApplication::CAnalyzerApplication()
    : m_registration(
          L"analyzer",
          AnalyzerTable(),
          CApplicationParser<CAnalyzerCommands, CAnalyzerDeviceHandler>::Create(m_commands, m_analyzer))
{}

} // namespace ZoVelkor::Demo
