#pragma once

#include "CBScpiStatusRegister.h"
#include "CComObject.h"

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

    const std::wstring& Name() const noexcept { return m_sName; }
    wchar_t Mask() const noexcept { return m_mask; }

    HRESULT DoGetScpiStatusData(tagScpiStatusData* data) override;

protected:
    ~CStatusRegister() override = default;

private:
    const std::wstring m_sName;
    const wchar_t m_mask;
};

using CStatusRegisterObject = CComObject<CStatusRegister, IZOScpiStatusRegister>;

} // namespace ZoVelkor::RemoteKernel
