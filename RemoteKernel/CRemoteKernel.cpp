#include "CRemoteKernel.h"

#include "Root.h"
#include "Services/CChannelManagement.h"
#include "Services/CDeviceManagement.h"
#include "Services/CMultichannelFunctionality.h"
#include "Services/CParserLanguage.h"
#include "Services/CParserManagement.h"
#include "Services/CScpiTree.h"
#include "Sessions/CRemoteControl.h"
#include "Sessions/CSession.h"

#include <utility>

namespace ZoVelkor::RemoteKernel
{

namespace
{

tagKernelParts MakeParts(tagInstrumentIdentity identity)
{
    tagKernelParts parts;
    parts.spRegistry = CApplicationRegistryObject::Create(std::move(identity));
    parts.spErrors = CErrorObject::Create();
    parts.spStatus = CStatusObject::Create();
    parts.spOperations = COperationsObject::Create();
    parts.spFormat = CDefaultFormatObject::Create();
    parts.spTrace = CMessageTraceObject::Create();
    parts.spPaths = std::make_shared<CPathTable>();
    parts.spGate = std::make_shared<CParserGate>();
    parts.spEvents = std::make_shared<CEventDistributor>(parts.spRegistry);
    parts.spOperations->SetObserver(parts.spStatus);
    return parts;
}

} // namespace

CRemoteKernel::CRemoteKernel(tagInstrumentIdentity identity, const tagSessionLimits& limits)
    : m_parts(MakeParts(std::move(identity))),
      m_spAdministration(CAdministrationObject::Create(*this, m_parts, limits))
{
    MakeServices();
}

template <class TObject, class TInterface, class... TArguments>
void CRemoteKernel::AddService(TArguments&&... arguments)
{
    const CComPtr<TInterface> sspService(
        CComObject<TObject, TInterface>::Create(std::forward<TArguments>(arguments)...));
    m_services.emplace_back(&TInterface::kInterfaceId, CComPtr<IUnknown>(sspService));
}

void CRemoteKernel::MakeServices()
{
    constexpr long kAllPaths = tagApplicationParts::kAllPaths;
    m_services = {
        {&IID_IZOScpiObjectRegistration, CComPtr<IUnknown>(&ObjectRegistration())},
        {&IID_IZOScpiErrorManagement, CComPtr<IUnknown>(&ErrorManagement())},
        {&IID_IZOScpiPendingOperations, CComPtr<IUnknown>(&PendingOperations())},
        {&IID_IZOScpiStatusManagement, CComPtr<IUnknown>(&StatusManagement())},
        {&IID_IZOScpiSubsystemFormat,
         CComPtr<IUnknown>(static_cast<IZOScpiSubsystemFormat*>(m_parts.spFormat))},
        {&IID_IZOScpiTraceManagement,
         CComPtr<IUnknown>(static_cast<IZOScpiTraceManagement*>(m_parts.spTrace))},
        {&IID_IZOScpiMultichannelAdministration,
         CComPtr<IUnknown>(static_cast<IZOScpiMultichannelAdministration*>(m_spAdministration))},
    };
    AddService<CParserManagement, IZOScpiParserManagement>(m_parts, kAllPaths);
    AddService<CRemoteControl, IZOScpiRemoteControl>(m_parts, nullptr);
    AddService<CChannelManagement, IZOScpiChannelManagement>(m_parts, nullptr);
    AddService<CDeviceManagement, IZOScpiDeviceManagement>(m_parts, kAllPaths);
    AddService<CParserLanguage, IZOScpiParserLanguage>(m_parts);
    AddService<CScpiTree, IZOScpiTree>(m_parts);
    AddService<CMultichannelFunctionality, IZOScpiMultichannelFunctionality>(m_parts);
}

CRemoteKernel::~CRemoteKernel()
{
    Stop();
    // A connection that was ended from within one of its own commands is still on its way back.
    std::unique_lock lock(m_mutex);
    m_noSession.wait(lock, [this] { return m_sessions.empty(); });
}

HRESULT CRemoteKernel::Start()
{
    const std::lock_guard lock(m_startMutex);
    CComPtr<IZORoot> spRoot;
    HRESULT result = GetRoot(&spRoot);
    if (FAILED(result))
    {
        return result;
    }
    m_bAtRoot = true;
    for (const auto& [pIid, spService] : m_services)
    {
        result = spRoot->RegisterInterface(*pIid, spService);
        if (FAILED(result))
        {
            UnregisterAtRoot();
            return result;
        }
    }
    return S_OK;
}

void CRemoteKernel::UnregisterAtRoot() noexcept
{
    CComPtr<IZORoot> spRoot;
    if (std::exchange(m_bAtRoot, false) && SUCCEEDED(GetRoot(&spRoot)))
    {
        for (const auto& service : m_services)
        {
            spRoot->UnregisterInterface(*service.first);
        }
    }
}

void CRemoteKernel::Stop()
{
    {
        const std::lock_guard lock(m_startMutex);
        UnregisterAtRoot();
    }
    {
        const std::lock_guard lock(m_mutex);
        m_bStopped = true;
        for (CSession* pSession : m_sessions)
        {
            pSession->Cancel();
        }
    }
    // Before the connections' threads are waited for, which may be in such a wait.
    m_parts.spStatus->Stop();
    m_spAdministration->Close();
    m_parts.spRegistry->Close();
    m_parts.spEvents->Close();
}

std::size_t CRemoteKernel::SessionCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_sessions.size();
}

void CRemoteKernel::AddSession(CSession& session)
{
    const std::lock_guard lock(m_mutex);
    m_sessions.insert(&session);
    if (m_bStopped)
    {
        session.Cancel();
    }
}

void CRemoteKernel::RemoveSession(CSession& session) noexcept
{
    const std::lock_guard lock(m_mutex);
    m_sessions.erase(&session);
    m_noSession.notify_all();
}

} // namespace ZoVelkor::RemoteKernel
