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
    for (const auto& spStatusByte : m_statusBytes)
    {
        const HRESULT sessionResult = spStatusByte->ModifyCondition(mask, value);
        result = FAILED(result) ? result : sessionResult;
    }
    return result;
}

void CSummaryDistributor::Attach(CStatusByteObject* pStatusByte)
{
    const CCritSectionLocker locker(Section());
    m_statusBytes.emplace_back(pStatusByte);
    wchar_t summaries = 0;
    GetCondition(&summaries);
    pStatusByte->ModifyCondition(kStatusOperation | kStatusQuestionable, summaries);
}

void CSummaryDistributor::Detach(CStatusByteObject* pStatusByte) noexcept
{
    const CCritSectionLocker locker(Section());
    std::erase_if(m_statusBytes, [pStatusByte](const auto& spOther) { return spOther == pStatusByte; });
}

} // namespace ZoVelkor::RemoteKernel
