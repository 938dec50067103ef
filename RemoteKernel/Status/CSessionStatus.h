#pragma once

#include "CErrorQueue.h"
#include "CStandardEventRegister.h"
#include "CStatusByteRegister.h"
#include "IPowerOnStore.h"
#include "StatusBits.h"

namespace ZoVelkor::RemoteKernel
{

/// The status registers of one session: status byte and standard event register, as the session's own error
/// queue, output queue and pending operations move them. Threads: any operation from any thread.
class CSessionStatus final : public IErrorQueueObserver
{
public:
    /// The power-on event is set: the session has not seen it yet.
    ///
    /// @param spWaitEnd  ends waits for bits of these registers while it is set
    explicit CSessionStatus(const SharedEvent& spWaitEnd);

    CStatusByteObject& StatusByte() noexcept { return *m_spStatusByte; }
    CStandardEventObject& StandardEvent() noexcept { return *m_spStandardEvent; }

    /// Sets the masks that the session begins with, without bit 6 of the service mask as *SRE does; its
    /// observers are there already.
    void Enable(const tagEnableMasks& masks) noexcept
    {
        m_spStandardEvent->SetEnable(masks.event);
        m_spStatusByte->SetEnable(static_cast<wchar_t>(masks.service & ~kStatusService));
    }

    /// Latches an event of the standard event register.
    void SetEvent(wchar_t bit) noexcept;

    void ErrorQueued(short code) noexcept override;
    void ErrorsWaiting(bool waiting) noexcept override;

private:
    const CComPtr<CStatusByteObject> m_spStatusByte;
    const CComPtr<CStandardEventObject> m_spStandardEvent;
};

} // namespace ZoVelkor::RemoteKernel
