#include "CMultichannelAdministration.h"

#include "CMutexLocker.h"
#include "ErrorRaising.h"
#include "GuardedEntry.h"

#include <utility>

namespace ZoVelkor::RemoteKernel
{

ZO_SOURCE_UNIT("RemoteKernel/Services/CMultichannelAdministration");

namespace
{

CComPtr<IUnknown> Identity(IZOScpiChannel* channel)
{
    CComPtr<IUnknown> identity;
    static_cast<void>(CComPtr<IZOScpiChannel>(channel).QueryInterface(&identity));
    return identity;
}

} // namespace

CMultichannelAdministration::CMultichannelAdministration(const KernelParts& parts,
                                                         const SessionLimits& limits)
    : m_parts(parts),
      m_limits(limits)
{}

HRESULT CMultichannelAdministration::get_RemotePathCount(long* count)
{
    if (count == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "count"));
    }
    *count = static_cast<long>(kMaxRemotePaths);
    return S_OK;
}

HRESULT CMultichannelAdministration::AddConnection(IZOScpiChannel* channel,
                                                   long* remotePath,
                                                   IZOScpiChannelServiceProvider** provider)
{
    if (channel == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "channel"));
    }
    if (remotePath == nullptr || provider == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "remotePath, provider"));
    }
    *remotePath = -1;
    *provider = nullptr;
    return GuardedEntry([&]() -> HRESULT {
        const CMutexLocker lock(m_mutex);
        if (m_closed)
        {
            return E_UNEXPECTED;
        }
        CComPtr<CConnectionObject>& connection = m_connections[Identity(channel)];
        const bool fresh = connection == nullptr;
        try
        {
            connection = fresh ? CConnectionObject::Create(m_parts, m_limits, channel) : connection;
        }
        catch (...)
        {
            m_connections.erase(Identity(channel));
            throw;
        }
        *remotePath = connection->RemotePath();
        CComPtr<IZOScpiChannelServiceProvider>(connection).CopyTo(provider);
        return fresh ? S_OK : S_FALSE;
    });
}

HRESULT CMultichannelAdministration::RemoveConnection(IZOScpiChannel* channel)
{
    if (channel == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "channel"));
    }
    return GuardedEntry([&]() -> HRESULT {
        CComPtr<CConnectionObject> connection;
        {
            const CMutexLocker lock(m_mutex);
            const auto found = m_connections.find(Identity(channel));
            if (found == m_connections.end())
            {
                return S_FALSE;
            }
            connection = std::move(found->second);
            m_connections.erase(found);
        }
        // Without lock: the commands of this connection may have to end first.
        connection->End();
        return S_OK;
    });
}

HRESULT CMultichannelAdministration::RegisterParser(IZOScpiParser* parser)
{
    return parser == nullptr ? RepairError(ZO_NULL_POINTER(nullptr, "parser"))
                             : m_parts.registry->RegisterParser(parser);
}

HRESULT CMultichannelAdministration::UnregisterParser(IZOScpiParser* parser)
{
    return parser == nullptr ? RepairError(ZO_NULL_POINTER(nullptr, "parser"))
                             : m_parts.registry->Unregister(ApplicationKind::Parser, parser);
}

HRESULT CMultichannelAdministration::RegisterEventObserver(IZOScpiMultichannelEventObserver* observer)
{
    return observer == nullptr ? RepairError(ZO_NULL_POINTER(nullptr, "observer"))
                               : m_parts.events->RegisterObserver(observer);
}

HRESULT CMultichannelAdministration::UnregisterEventObserver(IZOScpiMultichannelEventObserver* observer)
{
    return observer == nullptr ? RepairError(ZO_NULL_POINTER(nullptr, "observer"))
                               : m_parts.events->UnregisterObserver(observer);
}

void CMultichannelAdministration::Close()
{
    std::map<IUnknown*, CComPtr<CConnectionObject>> connections;
    {
        const CMutexLocker lock(m_mutex);
        m_closed = true;
        connections.swap(m_connections);
    }
    for (const auto& [identity, connection] : connections)
    {
        connection->End();
    }
}

} // namespace ZoVelkor::RemoteKernel
