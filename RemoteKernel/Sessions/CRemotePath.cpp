#include "CRemotePath.h"

#include "GuardedEntry.h"

namespace ZoVelkor::RemoteKernel
{

void CRemotePath::Close() noexcept
{
    m_bOpen.store(false);
    CComPtr<IZOScpiChannel> spChannel; // released without lock
    const std::lock_guard lock(m_mutex);
    spChannel = std::move(m_spChannel);
}

void CRemotePath::AttachChannel(IZOScpiChannel* pChannel)
{
    m_spDeviceClear = MakeSharedEvent("No event for a channel");
    m_spShutdown = MakeSharedEvent("No event for a channel");
    short remoteLocal = 0;
    short status = 0;
    static_cast<void>(pChannel->GetCapabilities(&remoteLocal, &status));
    m_bRemoteLocal = remoteLocal != 0;
    m_bWantsStatus = status != 0;
    m_spChannel = pChannel;
}

CComPtr<IZOScpiChannel> CRemotePath::Channel() const
{
    const std::lock_guard lock(m_mutex);
    return m_spChannel;
}

void CRemotePath::ServiceRequest(bool requested) noexcept
{
    m_bServiceRequest.store(requested);
    PublishStatus();
}

void CRemotePath::PublishStatus() noexcept
{
    if (!m_bWantsStatus)
    {
        return;
    }
    const std::lock_guard lock(m_mutex);
    tagZO_SCPI_CHANNEL_STATUS status{
        m_bServiceRequest.load() ? VARIANT_TRUE : VARIANT_FALSE,
        m_state.IsRemote() ? VARIANT_TRUE : VARIANT_FALSE,
        m_state.IsLockedOut() ? VARIANT_TRUE : VARIANT_FALSE,
    };
    if (m_spChannel != nullptr)
    {
        static_cast<void>(GuardedEntry([&] { return m_spChannel->SetChannelStatus(&status); }));
    }
}

void CRemotePath::TellReturnToLocal() noexcept
{
    const std::lock_guard lock(m_mutex);
    if (m_spChannel != nullptr)
    {
        static_cast<void>(GuardedEntry([&] { return m_spChannel->ReturnToLocal(); }));
    }
}

} // namespace ZoVelkor::RemoteKernel
