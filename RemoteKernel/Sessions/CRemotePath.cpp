#include "CRemotePath.h"

#include "CMutexLocker.h"
#include "GuardedEntry.h"

namespace ZoVelkor::RemoteKernel
{

void CRemotePath::Close() noexcept
{
    m_open.store(false);
    CComPtr<IZOScpiChannel> channel; // released without lock
    const CMutexLocker lock(m_mutex);
    channel = std::move(m_channel);
}

void CRemotePath::AttachChannel(IZOScpiChannel* channel)
{
    m_deviceClear = MakeSharedEvent("No event for a channel");
    m_shutdown = MakeSharedEvent("No event for a channel");
    short remoteLocal = 0;
    short status = 0;
    static_cast<void>(channel->GetCapabilities(&remoteLocal, &status));
    m_remoteLocal = remoteLocal != 0;
    m_wantsStatus = status != 0;
    const CMutexLocker lock(m_mutex);
    m_channel = channel;
}

CComPtr<IZOScpiChannel> CRemotePath::Channel() const
{
    const CMutexLocker lock(m_mutex);
    return m_channel;
}

void CRemotePath::ServiceRequest(bool requested) noexcept
{
    m_serviceRequest.store(requested);
    PublishStatus();
}

void CRemotePath::PublishStatus() noexcept
{
    if (!m_wantsStatus)
    {
        return;
    }
    const CMutexLocker lock(m_mutex);
    tagZO_SCPI_CHANNEL_STATUS status{
        ToVariantBool(m_serviceRequest.load()),
        ToVariantBool(m_state.IsRemote()),
        ToVariantBool(m_state.IsLockedOut()),
    };
    if (IZOScpiChannel* const channel = m_channel; channel != nullptr)
    {
        static_cast<void>(GuardedEntry([&] { return channel->SetChannelStatus(&status); }));
    }
}

void CRemotePath::TellReturnToLocal() noexcept
{
    const CMutexLocker lock(m_mutex);
    if (IZOScpiChannel* const channel = m_channel; channel != nullptr)
    {
        static_cast<void>(GuardedEntry([&] { return channel->ReturnToLocal(); }));
    }
}

} // namespace ZoVelkor::RemoteKernel
