#pragma once

#include "CStatusRegister.h"
#include "IServiceRequestObserver.h"

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
    HRESULT SetCondition(long bit, short on) override;
    HRESULT SetEnable(wchar_t value) override;
    HRESULT DoUpdateParentRegister(bool summary) override;

    /// Says whether a response waits. Cheap until somebody watches the bit: see Watch.
    void SetMessageAvailable(bool available) noexcept
    {
        m_bMessageAvailable.store(available);
        if (m_bWatched.load())
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

    /// @param pObserver  borrowed; set before the session's first message; may be null
    void SetObserver(IServiceRequestObserver* pObserver) noexcept { m_pObserver = pObserver; }

protected:
    ~CStatusByteRegister() override = default;

private:
    void UpdateMessageAvailable() noexcept;
    wchar_t Enabled() noexcept;

    CCritSection m_messageSection; // keeps the bit in step with the flag; taken before the register's lock
    std::atomic<bool> m_bMessageAvailable{false};
    std::atomic<bool> m_bWatched{false};
    IServiceRequestObserver* m_pObserver = nullptr;
};

using CStatusByteObject = CComObject<CStatusByteRegister, IZOScpiStatusRegister>;

} // namespace ZoVelkor::RemoteKernel
