// Status: registers, error queues, pending operations and the masks that outlive a power-off.
//
// Events come in from error queue, output queue and pending operations, are latched by registers, and go up
// as summary bits: CSessionStatus has the status byte and the standard event register of one session,
// CStatusManagement those of the instrument, which CSummaryDistributor passes on to every session. A change
// of the request for service goes out by IServiceRequestObserver. Sessions, the kernel's own commands,
// services and handlers call from any thread.
// Lock order: error queue or pending operations; then registers, child before parent, up to the status byte;
// its observer is called under the last. The lock of CStatusManagement's sessions is held for look-ups alone.

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
    /// @param waitEnd  ends waits for bits of these registers while it is set
    explicit CSessionStatus(const SharedEvent& waitEnd);

    CStatusByteObject& StatusByte() noexcept { return *m_statusByte; }
    CStandardEventObject& StandardEvent() noexcept { return *m_standardEvent; }

    /// Sets the masks that the session begins with, without bit 6 of the service mask as *SRE does; its
    /// observers are there already.
    void Enable(const EnableMasks& masks) noexcept
    {
        m_standardEvent->SetEnable(masks.event);
        m_statusByte->SetEnable(static_cast<wchar_t>(masks.service & ~kStatusService));
    }

    /// Latches an event of the standard event register.
    void SetEvent(wchar_t bit) noexcept;

    void ErrorQueued(short code) noexcept override;
    void ErrorsWaiting(bool waiting) noexcept override;

private:
    const CComPtr<CStatusByteObject> m_statusByte;
    const CComPtr<CStandardEventObject> m_standardEvent;
};

} // namespace ZoVelkor::RemoteKernel
