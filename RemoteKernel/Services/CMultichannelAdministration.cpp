#include "CMultichannelAdministration.h"

#include "ErrorRaising.h"
#include "GuardedEntry.h"

#include <utility>

namespace ZoVelkor::RemoteKernel
{

ZO_SOURCE_UNIT("RemoteKernel/Services/CMultichannelAdministration")

namespace
{

CComPtr<IUnknown> Identity(IZOScpiChannel* pChannel)
{
    CComPtr<IUnknown> spIdentity;
    static_cast<void>(CComPtr<IZOScpiChannel>(pChannel).QueryInterface(&spIdentity));
    return spIdentity;
}

} // namespace

CMultichannelAdministration::CMultichannelAdministration(CRemoteKernel& kernel,
                                                         const tagKernelParts& parts,
                                                         const tagSessionLimits& limits)
    : m_kernel(kernel),
      m_parts(parts),
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
        const std::lock_guard lock(m_mutex);
        if (m_bClosed)
        {
            return E_UNEXPECTED;
        }
        CComPtr<CConnectionObject>& spConnection = m_connections[Identity(channel)];
        const bool bNew = spConnection == nullptr;
        try
        {
            spConnection =
                bNew ? CConnectionObject::Create(m_kernel, m_parts, m_limits, channel) : spConnection;
        }
        catch (...)
        {
            m_connections.erase(Identity(channel));
            throw;
        }
        *remotePath = spConnection->RemotePath();
        CComPtr<IZOScpiChannelServiceProvider>(spConnection).CopyTo(provider);
        return bNew ? S_OK : S_FALSE;
    });
}

HRESULT CMultichannelAdministration::RemoveConnection(IZOScpiChannel* channel)
{
    if (channel == nullptr)
    {
        return RepairError(ZO_NULL_POINTER(nullptr, "channel"));
    }
    return GuardedEntry([&]() -> HRESULT {
        CComPtr<CConnectionObject> spConnection;
        {
            const std::lock_guard lock(m_mutex);
            const auto found = m_connections.find(Identity(channel));
            if (found == m_connections.end())
            {
                return S_FALSE;
            }
            spConnection = std::move(found->second);
            m_connections.erase(found);
        }
        // Without lock: the commands of this connection may have to end first.
        spConnection->End();
        return S_OK;
    });
}

HRESULT CMultichannelAdministration::RegisterParser(IZOScpiParser* parser)
{
    return parser == nullptr ? RepairError(ZO_NULL_POINTER(nullptr, "parser"))
                             : m_parts.spRegistry->RegisterParser(parser);
}

HRESULT CMultichannelAdministration::UnregisterParser(IZOScpiParser* parser)
{
    return parser == nullptr ? RepairError(ZO_NULL_POINTER(nullptr, "parser"))
                             : m_parts.spRegistry->Unregister(tagApplicationKind::Parser, parser);
}

HRESULT CMultichannelAdministration::RegisterEventObserver(IZOScpiMultichannelEventObserver* observer)
{
    return observer == nullptr ? RepairError(ZO_NULL_POINTER(nullptr, "observer"))
                               : m_parts.spEvents->RegisterObserver(observer);
}

HRESULT CMultichannelAdministration::UnregisterEventObserver(IZOScpiMultichannelEventObserver* observer)
{
    return observer == nullptr ? RepairError(ZO_NULL_POINTER(nullptr, "observer"))
                               : m_parts.spEvents->UnregisterObserver(observer);
}

void CMultichannelAdministration::Close()
{
    std::map<IUnknown*, CComPtr<CConnectionObject>> connections;
    {
        const std::lock_guard lock(m_mutex);
        m_bClosed = true;
        connections.swap(m_connections);
    }
    for (const auto& [identity, spConnection] : connections)
    {
        spConnection->End();
    }
}

} // namespace ZoVelkor::RemoteKernel
