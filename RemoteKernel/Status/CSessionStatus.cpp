#include "CSessionStatus.h"

#include "StatusBits.h"

namespace ZoVelkor::RemoteKernel
{

CSessionStatus::CSessionStatus(const SharedEvent& spWaitEnd)
    : m_spStatusByte(CStatusByteObject::Create()),
      m_spStandardEvent(CStandardEventObject::Create())
{
    m_spStatusByte->EndWaitsWith(spWaitEnd);
    m_spStandardEvent->EndWaitsWith(spWaitEnd);
    m_spStandardEvent->SetupParentRegister(m_spStatusByte, kStatusStandardEvent);
    SetEvent(kEventPowerOn);
}

void CSessionStatus::SetEvent(wchar_t bit) noexcept
{
    wchar_t latched = 0;
    m_spStandardEvent->GetSnapshot(nullptr, nullptr, nullptr, &latched, nullptr);
    if ((latched & bit) == 0)
    {
        m_spStandardEvent->ModifyCondition(bit, bit);
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
    m_spStatusByte->ModifyCondition(kStatusErrorQueue, waiting ? kStatusErrorQueue : L'\0');
}

} // namespace ZoVelkor::RemoteKernel
