#pragma once

#include "CMutex.h"
#include "IZOScpiMultichannelAdministration.h"
#include "SessionLimits.h"
#include "Sessions/CConnection.h"
#include "Sessions/KernelParts.h"

#include <map>

namespace ZoVelkor::RemoteKernel
{

/// The connections of a kernel, by channel. Threads: as the interface says.
class CMultichannelAdministration : public IZOScpiMultichannelAdministration
{
public:
    /// @param limits  bounds of each connection's session
    CMultichannelAdministration(const KernelParts& parts, const SessionLimits& limits);
    virtual ~CMultichannelAdministration() = default;

    HRESULT get_RemotePathCount(long* count) override;
    HRESULT AddConnection(IZOScpiChannel* channel,
                          long* remotePath,
                          IZOScpiChannelServiceProvider** provider) override;
    HRESULT RemoveConnection(IZOScpiChannel* channel) override;
    HRESULT RegisterParser(IZOScpiParser* parser) override;
    HRESULT UnregisterParser(IZOScpiParser* parser) override;
    HRESULT RegisterEventObserver(IZOScpiMultichannelEventObserver* observer) override;
    HRESULT UnregisterEventObserver(IZOScpiMultichannelEventObserver* observer) override;

    /// Ends all connections, whose sessions are cancelled already, and takes no further ones.
    void Close();

private:
    const KernelParts m_parts;
    const SessionLimits m_limits;
    CMutex m_mutex;
    bool m_closed ZO_GUARDED_BY(m_mutex) = false;
    std::map<IUnknown*, CComPtr<CConnectionObject>> m_connections ZO_GUARDED_BY(m_mutex); // by identity
};

} // namespace ZoVelkor::RemoteKernel
