#include "CStandardEventRegister.h"

#include "CCritSectionLocker.h"
#include "StatusBits.h"

namespace ZoVelkor::RemoteKernel
{

CStandardEventRegister::CStandardEventRegister() : CStatusRegister(L"*ESR", kStandardRegisterMask, 0)
{}

HRESULT CStandardEventRegister::ModifyCondition(wchar_t mask, wchar_t value)
{
    const CCritSectionLocker locker(Section());
    const HRESULT result = CStatusRegister::ModifyCondition(mask, value);
    ClearCondition();
    return result;
}

} // namespace ZoVelkor::RemoteKernel
