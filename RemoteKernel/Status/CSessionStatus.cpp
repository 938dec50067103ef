#include "CSessionStatus.h"

#include "StatusBits.h"

namespace ZoVelkor::RemoteKernel
{

CSessionStatus::CSessionStatus(const SharedEvent& waitEnd)
    : m_statusByte(CStatusByteObject::Create()),
      m_standardEvent(CStandardEventObject::Create())
{
    m_statusByte->EndWaitsWith(waitEnd);
    m_standardEvent->EndWaitsWith(waitEnd);
    m_standardEvent->SetupParentRegister(m_statusByte, kStatusStandardEvent);
    SetEvent(kEventPowerOn);
}

void CSessionStatus::SetEvent(wchar_t bit) noexcept
{
    wchar_t latched = 0;
    m_standardEvent->GetSnapshot(nullptr, nullptr, nullptr, &latched, nullptr);
    // Errors come in bursts; what is latched already need not go up to the status byte again.
    if ((latched & bit) == 0)
    {
        m_standardEvent->ModifyCondition(bit, bit);
    }
}

void CSessionStatus::ErrorQueued(short code) noexcept
{
    if (const wchar_t bit = StandardEventOf(code); bit != 0)
    {
        SetEvent(bit);
    }
}

void CSessionStatus::ErrorsWaiting(bool waiting) noexcept
{
    m_statusByte->ModifyCondition(kStatusErrorQueue, waiting ? kStatusErrorQueue : L'\0');
}

} // namespace ZoVelkor::RemoteKernel
