#pragma once

#include "IZOScpiStatusRegister.h"
#include "Unknown.h"

namespace ZoVelkor
{

/// Finds the status registers of a remote path by name.
///
/// Threads: any operation from any thread.
struct IZOScpiStatusManagement : IUnknown
{
    static constexpr IID kInterfaceId{
        0xC4A0AC9B, 0x1D12, 0x46EE, {0x8C, 0x5D, 0x8B, 0x7B, 0xD1, 0xAA, 0xD0, 0x46}
    };

    /// @param name  for example "STATus:OPERation", compared without regard to case
    /// @param[out] statusRegister  a new reference; null on failure
    /// @return S_OK; S_FALSE when there is no such register; E_POINTER; E_INVALIDARG for an unknown remote
    /// path
    virtual HRESULT
    GetRegister(long remotePath, wchar_t const* name, IZOScpiStatusRegister** statusRegister) = 0;

protected:
    ~IZOScpiStatusManagement() = default;
};

inline constexpr const IID& IID_IZOScpiStatusManagement = IZOScpiStatusManagement::kInterfaceId;

} // namespace ZoVelkor
