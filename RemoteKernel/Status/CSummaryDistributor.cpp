#include "CSummaryDistributor.h"

#include "CCritSectionLocker.h"
#include "StatusBits.h"

#include <algorithm>

namespace ZoVelkor::RemoteKernel
{

CSummaryDistributor::CSummaryDistributor() : CStatusRegister(L"SUMMary", kStandardRegisterMask, 0)
{}

HRESULT CSummaryDistributor::ModifyCondition(wchar_t mask, wchar_t value)
{
    const CCritSectionLocker locker(Section());
    HRESULT result = CStatusRegister::ModifyCondition(mask, value);
    // Under the lock: a session that is attached meanwhile neither misses this change nor gets it twice.
    for (const auto& statusByte : m_statusBytes)
    {
        const HRESULT sessionResult = statusByte->ModifyCondition(mask, value);
        result = FAILED(result) ? result : sessionResult;
    }
    return result;
}

void CSummaryDistributor::Attach(CStatusByteObject* statusByte)
{
    const CCritSectionLocker locker(Section());
    m_statusBytes.emplace_back(statusByte);
    wchar_t summaries = 0;
    GetCondition(&summaries);
    statusByte->ModifyCondition(kStatusOperation | kStatusQuestionable, summaries);
}

void CSummaryDistributor::Detach(CStatusByteObject* statusByte) noexcept
{
    const CCritSectionLocker locker(Section());
    std::erase_if(m_statusBytes, [statusByte](const auto& application) { return application == statusByte; });
}

} // namespace ZoVelkor::RemoteKernel
