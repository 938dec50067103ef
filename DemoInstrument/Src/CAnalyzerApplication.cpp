#include "CAnalyzerApplication.h"

#include "CBScpiDeviceHandler.h"
#include "CComObject.h"

namespace ZoVelkor::Demo
{
namespace
{

/// Passes the device events of IEEE 488.2 to the analyser.
class CAnalyzerDeviceHandler : public CBScpiDeviceHandler
{
public:
    explicit CAnalyzerDeviceHandler(CAnalyzer& analyzer) : m_analyzer(analyzer) {}

    HRESULT Reset() override
    {
        m_analyzer.Reset();
        return S_OK;
    }

    HRESULT Selftest(short* passed) override
    {
        const HRESULT hr = CBScpiDeviceHandler::Selftest(passed);
        if (SUCCEEDED(hr))
        {
            *passed = CAnalyzer::Selftest() ? VARIANT_TRUE : VARIANT_FALSE;
        }
        return hr;
    }

protected:
    ~CAnalyzerDeviceHandler() override = default;

private:
    CAnalyzer& m_analyzer;
};

} // namespace

CAnalyzerApplication::CAnalyzerApplication()
    : m_registration(L"analyzer",
                     AnalyzerTable(),
                     CComObject<CHandlerSink<CAnalyzerCommands>, IZOScpiExecutionSink>::Create(m_commands),
                     CComObject<CAnalyzerDeviceHandler, IZOScpiDeviceHandler>::Create(m_analyzer))
{}

} // namespace ZoVelkor::Demo
