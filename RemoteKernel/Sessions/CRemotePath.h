#pragma once

#include "CComPtr.h"
#include "CMutex.h"
#include "CRemoteLocalState.h"
#include "IZOScpiChannel.h"
#include "IZOScpiSubsystemFormat.h"
#include "Status/CErrorQueue.h"
#include "Status/IServiceRequestObserver.h"
#include "Status/SharedEvent.h"

#include <atomic>
#include <memory>

namespace ZoVelkor::RemoteKernel
{

/// What belongs to one remote path whatever runs on it: its remote and local state, its channel, the events
/// that the channel can wait for. It can be held longer than the path exists.
///
/// Threads: any operation from any thread, AttachChannel apart.
class CRemotePath final : public IServiceRequestObserver
{
public:
    explicit CRemotePath(long number) noexcept : m_number(number) {}

    long Number() const noexcept { return m_number; }
    /// Tells whether the path exists; its number may mean another one if not any more.
    bool IsOpen() const noexcept { return m_open.load(std::memory_order_acquire); }
    /// Tells whether the path exists and a number means it.
    bool IsOpenAs(long number) const noexcept { return number == m_number && IsOpen(); }
    /// The path is set up: others may find it.
    void Publish() noexcept { m_open.store(true, std::memory_order_release); }
    /// The path has ended; its channel is not called any more when this returns.
    void Close() noexcept;

    CRemoteLocalState& State() noexcept { return m_state; }
    /// Its controller has made it local and will make it remote again; a message does not.
    bool IsHeldLocal() const noexcept { return m_remoteLocal && !m_state.IsRemote(); }
    /// A program message makes it remote.
    bool EntersRemote() const noexcept { return !m_remoteLocal && !m_state.IsRemote(); }

    /// Called before Publish.
    ///
    /// @throws std::system_error when the system is short of descriptors
    void AttachChannel(IZOScpiChannel* channel);
    /// @return a new reference; null without channel or after the end
    CComPtr<IZOScpiChannel> Channel() const;
    /// Null before AttachChannel.
    const SharedEvent& DeviceClearEvent() const noexcept { return m_deviceClear; }
    const SharedEvent& ShutdownEvent() const noexcept { return m_shutdown; }

    /// Called before Publish.
    void SetFormat(const CComPtr<IZOScpiSubsystemFormat>& format) { m_format = format; }
    const CComPtr<IZOScpiSubsystemFormat>& Format() const noexcept { return m_format; }
    /// Called before Publish.
    void SetErrors(const std::shared_ptr<CErrorQueue>& errors) { m_errors = errors; }
    /// @return null when its session is gone
    std::shared_ptr<CErrorQueue> Errors() const noexcept { return m_errors.lock(); }

    void ServiceRequest(bool requested) noexcept override;
    /// Passes the states on to a channel that wants them.
    void PublishStatus() noexcept;
    /// Tells the channel that the instrument went to local by itself.
    void TellReturnToLocal() noexcept;

private:
    const long m_number;
    std::atomic<bool> m_open{false};
    CRemoteLocalState m_state;
    std::atomic<bool> m_serviceRequest{false};
    bool m_remoteLocal = false; // constant after Publish, like the following
    bool m_wantsStatus = false;
    SharedEvent m_deviceClear;
    SharedEvent m_shutdown;
    CComPtr<IZOScpiSubsystemFormat> m_format;
    std::weak_ptr<CErrorQueue> m_errors;
    mutable CMutex m_mutex; // held while the channel is told something
    CComPtr<IZOScpiChannel> m_channel ZO_GUARDED_BY(m_mutex);
};

} // namespace ZoVelkor::RemoteKernel
