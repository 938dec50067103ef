#include "CStatusByteRegister.h"

#include "CCritSectionLocker.h"
#include "StatusBits.h"

namespace ZoVelkor::RemoteKernel
{

CStatusByteRegister::CStatusByteRegister() : CStatusRegister(L"*STB", kStandardRegisterMask, 0)
{}

HRESULT CStatusByteRegister::ModifyCondition(wchar_t mask, wchar_t value)
{
    const CCritSectionLocker locker(Section());
    const HRESULT result = CStatusRegister::ModifyCondition(mask, value);
    // A serial poll asks for reasons that are still there: a bit that falls takes its own along.
    const auto falling = static_cast<wchar_t>(mask & ~value);
    wchar_t reasons = 0;
    const HRESULT fallResult = falling == 0 ? S_OK : GetEventBits(falling, &reasons);
    return FAILED(result) ? result : fallResult;
}

HRESULT CStatusByteRegister::SetEnable(wchar_t value)
{
    if ((value & kStatusMessageAvailable) != 0)
    {
        // From here on somebody depends on the bit; before, it is not kept up with every response.
        Watch();
    }
    const CCritSectionLocker locker(Section());
    wchar_t condition = 0;
    GetCondition(&condition);
    // Reasons are latched by rising bits. What is the case already and is enabled now has to rise once
    // more.
    const auto fresh = static_cast<wchar_t>(condition & value & ~Enabled());
    CStatusRegister::ModifyCondition(fresh, 0);
    CStatusRegister::ModifyCondition(fresh, fresh);
    return CStatusRegister::SetEnable(value);
}

void CStatusByteRegister::SetObserver(IServiceRequestObserver* pObserver) noexcept
{
    const CCritSectionLocker locker(Section());
    m_observer = pObserver;
}

HRESULT CStatusByteRegister::DoUpdateParentRegister(bool summary)
{
    if (m_observer != nullptr)
    {
        m_observer->ServiceRequest(summary);
    }
    return CStatusRegister::DoUpdateParentRegister(summary);
}

void CStatusByteRegister::Watch() noexcept
{
    m_watched.store(true);
    UpdateMessageAvailable();
}

void CStatusByteRegister::UpdateMessageAvailable() noexcept
{
    const CCritSectionLocker locker(Section());
    ModifyCondition(kStatusMessageAvailable, m_messageAvailable.load() ? kStatusMessageAvailable : L'\0');
}

wchar_t CStatusByteRegister::Enabled() noexcept
{
    wchar_t enable = 0;
    GetEnable(&enable);
    return static_cast<wchar_t>(enable & ~kStatusService);
}

wchar_t CStatusByteRegister::Read(bool messageAvailable) noexcept
{
    m_messageAvailable.store(messageAvailable);
    UpdateMessageAvailable();
    wchar_t condition = 0;
    GetCondition(&condition);
    const bool masterSummary = (condition & Enabled()) != 0;
    return static_cast<wchar_t>(condition | (masterSummary ? kStatusService : 0));
}

wchar_t CStatusByteRegister::SerialPoll() noexcept
{
    UpdateMessageAvailable();
    wchar_t condition = 0;
    GetCondition(&condition);
    wchar_t reasons = 0;
    // Taking the reasons is what ends the request.
    GetEventBits(Enabled(), &reasons);
    return static_cast<wchar_t>(condition | (reasons != 0 ? kStatusService : 0));
}

} // namespace ZoVelkor::RemoteKernel
