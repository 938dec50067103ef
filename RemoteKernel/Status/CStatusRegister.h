#pragma once

#include "CBScpiStatusRegister.h"
#include "CComObject.h"
#include "SharedEvent.h"

#include <string>

namespace ZoVelkor::RemoteKernel
{

/// A status register of the kernel: named, and able to describe itself. Threads: any operation from any
/// thread.
class CStatusRegister : public CBScpiStatusRegister
{
public:
    /// @param name  as IZOScpiStatusManagement finds it
    /// @param mask  bits that the register has
    /// @param presetEnable  enable mask of a new register, and after STATus:PRESet
    CStatusRegister(std::wstring name, wchar_t mask, wchar_t presetEnable);

    /// Lets an event end the waits for bits while it is set; the register keeps it alive.
    void EndWaitsWith(SharedEvent event);

    const std::wstring& Name() const noexcept { return m_name; }
    wchar_t Mask() const noexcept { return m_mask; }

    /// As in the base, by way of ModifyCondition: what a register adds to a change holds for one bit too.
    HRESULT SetCondition(long bit, short on) override;
    HRESULT DoGetScpiStatusData(tagScpiStatusData* data) override;

protected:
    ~CStatusRegister() override = default;

private:
    const std::wstring m_name;
    const wchar_t m_mask;
    SharedEvent m_waitEnd;
};

using CStatusRegisterObject = CComObject<CStatusRegister, IZOScpiStatusRegister>;

} // namespace ZoVelkor::RemoteKernel
