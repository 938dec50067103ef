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
