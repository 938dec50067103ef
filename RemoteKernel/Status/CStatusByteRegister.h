#pragma once

#include "CStatusRegister.h"
#include "IServiceRequestObserver.h"
#include "ThreadAnnotations.h"

#include <atomic>

namespace ZoVelkor::RemoteKernel
{

/// Status byte of one session (IEEE 488.2 section 11.2).
///
/// Its condition is the byte without bit 6; its events are the reasons for service since the last serial
/// poll; its enable mask is the service request enable register. So its summary is the request for service.
/// Threads: any operation from any thread.
class CStatusByteRegister : public CStatusRegister
{
public:
    CStatusByteRegister();

    /// As in the base; a reason for service goes with the bit that was the reason.
    HRESULT ModifyCondition(wchar_t mask, wchar_t value) override;
    /// As in the base; a bit that is set and newly enabled is a new reason for service.
    HRESULT SetEnable(wchar_t value) override;
    HRESULT DoUpdateParentRegister(bool summary) override ZO_REQUIRES(Section());

    /// Says whether a response waits. Cheap until somebody watches the bit: see Watch.
    void SetMessageAvailable(bool available) noexcept
    {
        m_messageAvailable.store(available);
        if (m_watched.load())
        {
            UpdateMessageAvailable();
        }
    }
    /// Makes the message-available bit follow at once from here on; others hold the register, or it can
    /// request service.
    void Watch() noexcept;

    /// The byte as *STB? answers it, with the master summary in bit 6.
    ///
    /// @param messageAvailable  whether a response waits at this moment
    wchar_t Read(bool messageAvailable) noexcept;
    /// The byte as a serial poll gives it, with RQS in bit 6; the request for service ends.
    wchar_t SerialPoll() noexcept;

    /// @param pObserver  borrowed until another one is set; null: none. When this returns, the former one is
    /// not called any more.
    void SetObserver(IServiceRequestObserver* pObserver) noexcept;

protected:
    ~CStatusByteRegister() override = default;

private:
    void UpdateMessageAvailable() noexcept;
    wchar_t Enabled() noexcept;

    std::atomic<bool> m_messageAvailable{false};
    std::atomic<bool> m_watched{false};
    IServiceRequestObserver* m_observer ZO_GUARDED_BY(Section()) = nullptr;
};

using CStatusByteObject = CComObject<CStatusByteRegister, IZOScpiStatusRegister>;

} // namespace ZoVelkor::RemoteKernel
