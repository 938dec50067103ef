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

KernelParts MakeParts(InstrumentIdentity identity)
{
    KernelParts parts;
    parts.registry = CApplicationRegistryObject::Create(std::move(identity));
    parts.errors = CErrorObject::Create();
    parts.status = CStatusObject::Create();
    parts.operations = COperationsObject::Create();
    parts.format = CDefaultFormatObject::Create();
    parts.newTrace = CMessageTraceObject::Create();
    parts.paths = std::make_shared<CPathTable>();
    parts.gate = std::make_shared<CParserGate>();
    parts.events = std::make_shared<CEventDistributor>(parts.registry);
    parts.operations->SetObserver(parts.status);
    return parts;
}

} // namespace

CRemoteKernel::CRemoteKernel(InstrumentIdentity identity, const SessionLimits& limits)
    : m_parts(MakeParts(std::move(identity))),
      m_administration(CAdministrationObject::Create(*this, m_parts, limits))
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
    constexpr long kAllPaths = ApplicationParts::kAllPaths;
    m_services = {
        {&IID_IZOScpiObjectRegistration, CComPtr<IUnknown>(&ObjectRegistration())},
        {&IID_IZOScpiErrorManagement, CComPtr<IUnknown>(&ErrorManagement())},
        {&IID_IZOScpiPendingOperations, CComPtr<IUnknown>(&PendingOperations())},
        {&IID_IZOScpiStatusManagement, CComPtr<IUnknown>(&StatusManagement())},
        {&IID_IZOScpiSubsystemFormat,
         CComPtr<IUnknown>(static_cast<IZOScpiSubsystemFormat*>(m_parts.format))},
        {&IID_IZOScpiTraceManagement,
         CComPtr<IUnknown>(static_cast<IZOScpiTraceManagement*>(m_parts.newTrace))},
        {&IID_IZOScpiMultichannelAdministration,
         CComPtr<IUnknown>(static_cast<IZOScpiMultichannelAdministration*>(m_administration))},
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
    CComPtr<IZORoot> root;
    HRESULT result = GetRoot(&root);
    if (FAILED(result))
    {
        return result;
    }
    m_atRoot = true;
    for (const auto& [pIid, service] : m_services)
    {
        result = root->RegisterInterface(*pIid, service);
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
    CComPtr<IZORoot> root;
    if (std::exchange(m_atRoot, false) && SUCCEEDED(GetRoot(&root)))
    {
        for (const auto& service : m_services)
        {
            root->UnregisterInterface(*service.first);
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
        m_stopped = true;
        for (CSession* session : m_sessions)
        {
            session->Cancel();
        }
    }
    // Before the connections' threads are waited for, which may be in such a wait.
    m_parts.status->Stop();
    m_administration->Close();
    m_parts.registry->Close();
    m_parts.events->Close();
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
    if (m_stopped)
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
