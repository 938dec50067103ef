#include "CSwplScpiManager.h"

#include "Assertion.h"
#include "CLocalThread.h"
#include "CSwplScpiParser.h"
#include "GuardedEntry.h"
#include "IZOScpiMultichannelFunctionality.h"
#include "IZOScpiObjectRegistration.h"
#include "KernelServices.h"
#include "Root.h"

#include <memory>

namespace ZoVelkor
{
namespace
{

ZO_SOURCE_UNIT("Src/CSwplScpiManager");

/// Fills a slot, which must be empty, from the root.
template <class T>
HRESULT LookUp(CComPtr<T>& slot)
{
    ZO_ASSERT(slot == nullptr);
    return ZoGetRegisteredInterface(&T::kInterfaceId, &slot);
}

/// Fills slots, which must be empty, with the services of one remote path.
class CPathServices
{
public:
    CPathServices(IZOScpiMultichannelFunctionality& functionality, long remotePath)
        : m_functionality(functionality),
          m_iRemotePath(remotePath)
    {}

    template <class T>
    void Fetch(HRESULT (IZOScpiMultichannelFunctionality::*getter)(long, T**),
               CComPtr<T>& slot,
               const char* condition,
               int line = __builtin_LINE()) const
    {
        ZO_ASSERT(slot == nullptr);
        RequireOk(kSourceUnit, (m_functionality.*getter)(m_iRemotePath, &slot), condition, line);
    }

private:
    IZOScpiMultichannelFunctionality& m_functionality;
    const long m_iRemotePath;
};

/// Reports that there is no kernel; the application goes on without it.
HRESULT ReportMissingKernel(const char* condition, const char* message, int line = __builtin_LINE())
{
    tagErrorReport report = ZO_ERROR(nullptr, condition, message, ZO_E_SHELL);
    report.line = line;
    RepairError(report);
    return S_FALSE;
}

/// The body's result; E_FAIL when it ends with an exception, which has been reported.
template <class TBody>
HRESULT FailOnException(TBody&& body) noexcept
{
    try
    {
        return body();
    }
    catch (...)
    {
        ResultOfCurrentException();
        return E_FAIL;
    }
}

CComPtr<IZOScpiObjectRegistration> ObjectRegistrationOf(IZOScpiParserManagement& parserManagement)
{
    CComPtr<IZOScpiObjectRegistration> pIObjectRegistration;
    RequireOk(kSourceUnit,
              parserManagement.GetObjectRegistration(&pIObjectRegistration),
              "m_pScpiParserManagement->GetObjectRegistration( &pIObjectRegistration ) == S_OK");
    return pIObjectRegistration;
}

/// Makes a request to a service, here or on a thread; without the service there is nothing to do.
template <class TService, class... TArguments>
HRESULT Request(bool onThread,
                TService* service,
                HRESULT (TService::*operation)(),
                TArguments... threadArguments) noexcept
{
    if (service == nullptr)
    {
        return S_OK;
    }
    return FailOnException([&] {
        if (!onThread)
        {
            return (service->*operation)();
        }
        CLocalThread::StartOnPoolThread(std::make_unique<CLocalThread>(service, threadArguments...));
        return S_OK;
    });
}

} // namespace

HRESULT CSwplScpiManager::Find()
{
    if (LookUp(m_pScpiParserManagement) != S_OK)
    {
        return ReportMissingKernel(
            "ZoGetRegisteredInterface(&IID_IZOScpiParserManagement,&m_pScpiParserManagement) == S_OK",
            "ScpiParserManagement-Service nicht verfuegbar!");
    }
    RequireOk(kSourceUnit,
              LookUp(m_pScpiErrorManagement),
              "ZoGetRegisteredInterface(&IID_IZOScpiErrorManagement,&m_pScpiErrorManagement) == S_OK");
    RequireOk(kSourceUnit,
              LookUp(m_pScpiStatusManagement),
              "ZoGetRegisteredInterface(&IID_IZOScpiStatusManagement,&m_pScpiStatusManagement) == S_OK");
    RequireOk(kSourceUnit,
              LookUp(m_pScpiChannelManagement),
              "ZoGetRegisteredInterface(&IID_IZOScpiChannelManagement,&m_pScpiChannelManagement) == S_OK");
    RequireOk(kSourceUnit,
              LookUp(m_pScpiDeviceManagement),
              "ZoGetRegisteredInterface(&IID_IZOScpiDeviceManagement,&m_pScpiDeviceManagement) == S_OK");
    RequireOk(kSourceUnit,
              LookUp(m_pScpiRemoteControl),
              "ZoGetRegisteredInterface(&IID_IZOScpiRemoteControl,&m_pScpiRemoteControl) == S_OK");
    RequireOk(kSourceUnit,
              LookUp(m_pScpiSubsystemFormat),
              "ZoGetRegisteredInterface(&IID_IZOScpiSubsystemFormat,&m_pScpiSubsystemFormat) == S_OK");
    RequireOk(kSourceUnit,
              LookUp(m_pScpiParserLanguage),
              "ZoGetRegisteredInterface(&IID_IZOScpiParserLanguage,&m_pScpiParserLanguage) == S_OK");
    FindTraceManagement();
    return S_OK;
}

HRESULT CSwplScpiManager::FindEx(long remotePath)
{
    using IFunctionality = IZOScpiMultichannelFunctionality;
    CComPtr<IFunctionality> pMultichannelFunctionality;
    if (LookUp(pMultichannelFunctionality) != S_OK)
    {
        // Deliberate: names the service whose absence operators know from the instrument's log.
        return ReportMissingKernel("pMultichannelFunctionality != NULL",
                                   "ScpiDeviceManagement-Service nicht verfuegbar!");
    }
    const CPathServices path(*pMultichannelFunctionality, remotePath);
    path.Fetch(&IFunctionality::GetScpiStatusManagement,
               m_pScpiStatusManagement,
               "pMultichannelFunctionality->GetScpiStatusManagement ( i_RemotePath, "
               "& m_pScpiStatusManagement ) == S_OK");
    path.Fetch(&IFunctionality::GetScpiParserManagement,
               m_pScpiParserManagement,
               "pMultichannelFunctionality->GetScpiParserManagement ( i_RemotePath, "
               "& m_pScpiParserManagement ) == S_OK");
    path.Fetch(&IFunctionality::GetScpiErrorManagement,
               m_pScpiErrorManagement,
               "pMultichannelFunctionality->GetScpiErrorManagement ( i_RemotePath, "
               "& m_pScpiErrorManagement ) == S_OK");
    path.Fetch(&IFunctionality::GetScpiRemoteManagement,
               m_pScpiRemoteControl,
               "pMultichannelFunctionality->GetScpiRemoteManagement ( i_RemotePath, "
               "& m_pScpiRemoteControl ) == S_OK");
    path.Fetch(&IFunctionality::GetScpiChannelManagement,
               m_pScpiChannelManagement,
               "pMultichannelFunctionality->GetScpiChannelManagement ( i_RemotePath, "
               "& m_pScpiChannelManagement ) == S_OK");
    path.Fetch(&IFunctionality::GetScpiDeviceManagement,
               m_pScpiDeviceManagement,
               "pMultichannelFunctionality->GetScpiDeviceManagement ( i_RemotePath, "
               "& m_pScpiDeviceManagement ) == S_OK");
    path.Fetch(&IFunctionality::GetScpiFormatManagement,
               m_pScpiSubsystemFormat,
               "pMultichannelFunctionality->GetScpiFormatManagement ( i_RemotePath, "
               "& m_pScpiSubsystemFormat ) == S_OK");
    path.Fetch(&IFunctionality::GetScpiLanguageManagement,
               m_pScpiParserLanguage,
               "pMultichannelFunctionality->GetScpiLanguageManagement ( i_RemotePath, "
               "& m_pScpiParserLanguage ) == S_OK");
    FindTraceManagement();
    return S_OK;
}

void CSwplScpiManager::FindTraceManagement()
{
    RequireOk(kSourceUnit,
              LookUp(m_pScpiTraceManagement),
              "ZoGetRegisteredInterface(&IID_IZOScpiTraceManagement,&m_pScpiTraceManagement) == S_OK");
}

HRESULT CSwplScpiManager::RegisterParser(CSwplScpiParser* pParser) noexcept
{
    return FailOnException([&] {
        if (pParser == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(nullptr, "pParser"));
        }
        if (!Available())
        {
            return S_OK;
        }
        const auto pIObjectRegistration = ObjectRegistrationOf(*m_pScpiParserManagement);
        tagZO_SCPI_PARSER_OBJECT ParserObject{};
        ParserObject.bsName = pParser->GetParserName();
        ParserObject.eType = pParser->GetParserType();
        RequireOk(kSourceUnit,
                  CoCreateGuid(&ParserObject.m_guidObjectId),
                  "CoCreateGuid( &ParserObject.m_guidObjectId ) == S_OK");
        ParserObject.pParser = pParser->GetScpiParserInterface();
        RequireOk(kSourceUnit,
                  pIObjectRegistration->RegisterObject(&ParserObject),
                  "pIObjectRegistration->RegisterObject( &ParserObject ) == S_OK");
        pParser->SetGuid(ParserObject.m_guidObjectId);
        return S_OK;
    });
}

HRESULT CSwplScpiManager::UnregisterParser(CSwplScpiParser* pParser) noexcept
{
    return FailOnException([&] {
        if (pParser == nullptr)
        {
            return RepairError(ZO_NULL_POINTER(nullptr, "pParser"));
        }
        if (!Available())
        {
            return S_OK;
        }
        const HRESULT result =
            ObjectRegistrationOf(*m_pScpiParserManagement)->UnregisterObject(pParser->GetGuid());
        RequireOk(kSourceUnit,
                  result == S_FALSE ? S_OK : result,
                  "SUCCEEDED( pIObjectRegistration->UnregisterObject( guidObjectId ) )");
        return result;
    });
}

HRESULT CSwplScpiManager::StartParser(bool onThread) noexcept
{
    return Request(onThread,
                   m_pScpiParserManagement.Get(),
                   &IZOScpiParserManagement::StartParser,
                   CLocalThread::tagParserRequest::Start);
}

HRESULT CSwplScpiManager::StopParser(bool onThread) noexcept
{
    return Request(onThread,
                   m_pScpiParserManagement.Get(),
                   &IZOScpiParserManagement::StopParser,
                   CLocalThread::tagParserRequest::Stop);
}

HRESULT CSwplScpiManager::ReturnToLocal(bool onThread) noexcept
{
    return Request(onThread, m_pScpiRemoteControl.Get(), &IZOScpiRemoteControl::GotoLocal);
}

void CSwplScpiManager::Detach() noexcept
{
    *this = CSwplScpiManager();
}

} // namespace ZoVelkor
