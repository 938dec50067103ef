#include "CRemoteKernel.h"

#include "BuiltIn/BuiltInTable.h"
#include "CMutexLocker.h"
#include "Root.h"
#include "Services/CChannelManagement.h"
#include "Services/CDeviceManagement.h"
#include "Services/CMultichannelAdministration.h"
#include "Services/CMultichannelFunctionality.h"
#include "Services/CParserLanguage.h"
#include "Services/CParserManagement.h"
#include "Services/CScpiTree.h"
#include "Sessions/CRemoteControl.h"
#include "Sessions/KernelParts.h"

#include <utility>
#include <vector>

namespace ZoVelkor::RemoteKernel
{

namespace
{

KernelParts MakeParts(InstrumentIdentity identity)
{
    KernelParts parts;
    parts.registry = CApplicationRegistryObject::Create(std::move(identity), BuiltInTable());
    parts.status = CStatusObject::Create();
    parts.operations = COperationsObject::Create();
    parts.format = CDefaultFormatObject::Create();
    parts.trace = CMessageTraceObject::Create();
    parts.sessions = std::make_shared<CSessionList>();
    parts.paths = std::make_shared<CPathTable>();
    parts.errors = CErrorObject::Create(CServedPaths(parts.paths));
    parts.gate = std::make_shared<CParserGate>();
    parts.events = std::make_shared<CEventDistributor>(parts.registry);
    parts.operations->SetObserver(parts.status);
    return parts;
}

} // namespace

class CRemoteKernel::CImplementation
{
public:
    CImplementation(InstrumentIdentity identity, const SessionLimits& limits);

    HRESULT Start();
    void Stop();
    const KernelParts& Parts() const noexcept { return m_parts; }

private:
    using CAdministrationObject = CComObject<CMultichannelAdministration, IZOScpiMultichannelAdministration>;

    void MakeServices();
    template <class TInterface>
    void AddService(TInterface* service);
    template <class TObject, class TInterface, class... TArguments>
    void MakeService(TArguments&&... arguments);
    void UnregisterAtRootLocked() noexcept ZO_REQUIRES(m_startMutex);

    const KernelParts m_parts;
    const CComPtr<CAdministrationObject> m_administration;
    std::vector<std::pair<const IID*, CComPtr<IUnknown>>> m_services; // constant after construction

    CMutex m_startMutex;
    bool m_atRoot ZO_GUARDED_BY(m_startMutex) = false;
};

CRemoteKernel::CImplementation::CImplementation(InstrumentIdentity identity, const SessionLimits& limits)
    : m_parts(MakeParts(std::move(identity))),
      m_administration(CAdministrationObject::Create(m_parts, limits))
{
    MakeServices();
}

template <class TInterface>
void CRemoteKernel::CImplementation::AddService(TInterface* service)
{
    m_services.emplace_back(&TInterface::kInterfaceId, CComPtr<IUnknown>(service));
}

template <class TObject, class TInterface, class... TArguments>
void CRemoteKernel::CImplementation::MakeService(TArguments&&... arguments)
{
    const CComPtr<TInterface> service(
        CComObject<TObject, TInterface>::Create(std::forward<TArguments>(arguments)...));
    AddService<TInterface>(service);
}

void CRemoteKernel::CImplementation::MakeServices()
{
    AddService<IZOScpiObjectRegistration>(m_parts.registry);
    AddService<IZOScpiErrorManagement>(m_parts.errors);
    AddService<IZOScpiPendingOperations>(m_parts.operations);
    AddService<IZOScpiStatusManagement>(m_parts.status);
    AddService<IZOScpiSubsystemFormat>(m_parts.format);
    AddService<IZOScpiTraceManagement>(m_parts.trace);
    AddService<IZOScpiMultichannelAdministration>(m_administration);
    MakeService<CParserManagement, IZOScpiParserManagement>(m_parts, kAllPaths);
    MakeService<CRemoteControl, IZOScpiRemoteControl>(CServedPaths(m_parts.paths), m_parts.events);
    MakeService<CChannelManagement, IZOScpiChannelManagement>(CServedPaths(m_parts.paths));
    MakeService<CDeviceManagement, IZOScpiDeviceManagement>(m_parts, kAllPaths);
    MakeService<CParserLanguage, IZOScpiParserLanguage>(m_parts);
    MakeService<CScpiTree, IZOScpiTree>(m_parts);
    MakeService<CMultichannelFunctionality, IZOScpiMultichannelFunctionality>(m_parts);
}

HRESULT CRemoteKernel::CImplementation::Start()
{
    const CMutexLocker lock(m_startMutex);
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
            UnregisterAtRootLocked();
            return result;
        }
    }
    return S_OK;
}

void CRemoteKernel::CImplementation::UnregisterAtRootLocked() noexcept
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

void CRemoteKernel::CImplementation::Stop()
{
    {
        const CMutexLocker lock(m_startMutex);
        UnregisterAtRootLocked();
    }
    m_parts.sessions->CancelAll();
    // Before the connections' threads are waited for, which may be in such a wait.
    m_parts.status->Stop();
    m_administration->Close();
    m_parts.registry->Close();
    m_parts.events->Close();
}

CRemoteKernel::CRemoteKernel(InstrumentIdentity identity, const SessionLimits& limits)
    : m_implementation(std::make_unique<CImplementation>(std::move(identity), limits))
{}

CRemoteKernel::~CRemoteKernel()
{
    Stop();
    // A connection that was ended from within one of its own commands is still on its way back.
    Parts().sessions->WaitUntilEmpty();
}

HRESULT CRemoteKernel::Start()
{
    return m_implementation->Start();
}

void CRemoteKernel::Stop()
{
    m_implementation->Stop();
}

void CRemoteKernel::PowerOn(const PowerOnStatus& status, IPowerOnStore* store)
{
    Parts().status->PowerOn(status, store);
}

std::shared_ptr<IRegisteredApplication> CRemoteKernel::FindApplication(const GUID& id) const
{
    return Parts().registry->FindApplication(id);
}

IZOScpiObjectRegistration& CRemoteKernel::ObjectRegistration() noexcept
{
    return *Parts().registry;
}

IZOScpiErrorManagement& CRemoteKernel::ErrorManagement() noexcept
{
    return *Parts().errors;
}

IZOScpiPendingOperations& CRemoteKernel::PendingOperations() noexcept
{
    return *Parts().operations;
}

IZOScpiStatusManagement& CRemoteKernel::StatusManagement() noexcept
{
    return *Parts().status;
}

const KernelParts& CRemoteKernel::Parts() const noexcept
{
    return m_implementation->Parts();
}

std::size_t CRemoteKernel::SessionCount() const
{
    return Parts().sessions->Count();
}

} // namespace ZoVelkor::RemoteKernel
