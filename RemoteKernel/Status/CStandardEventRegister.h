#pragma once

#include "CStatusRegister.h"

namespace ZoVelkor::RemoteKernel
{

/// Standard event register of one session (IEEE 488.2 section 11.5).
///
/// It latches events and has no condition: a condition bit that is set falls again at once, so the next event
/// of its kind is not missed. Threads: any operation from any thread.
class CStandardEventRegister : public CStatusRegister
{
public:
    CStandardEventRegister();

    HRESULT ModifyCondition(wchar_t mask, wchar_t value) override;

protected:
    ~CStandardEventRegister() override = default;
};

using CStandardEventObject = CComObject<CStandardEventRegister, IZOScpiStatusRegister>;

} // namespace ZoVelkor::RemoteKernel
