#pragma once

#include "IZOScpiStatusRegister.h"
#include "Unknown.h"

namespace ZoVelkor
{

/// Remote path that stands for the instrument itself: it finds the registers that all sessions share.
inline constexpr long kScpiInstrumentPath = -1;

/// Finds status registers by name.
///
/// "STATus:OPERation", "STATus:QUEStionable", "STATus:QUEStionable:POWer" and "STATus:QUEStionable:FREQuency"
/// belong to the instrument and are the same for every path. "*STB" and "*ESR" belong to the path.
/// Threads: any operation from any thread.
struct IZOScpiStatusManagement : IUnknown
{
    static constexpr IID kInterfaceId{
        0xC4A0AC9B, 0x1D12, 0x46EE, {0x8C, 0x5D, 0x8B, 0x7B, 0xD1, 0xAA, 0xD0, 0x46}};

    /// @param remotePath  a session's path, or kScpiInstrumentPath
    /// @param name  in long or short form, in any case
    /// @param[out] statusRegister  a new reference; null on failure. It may be kept longer than the session
    ///                             lives.
    /// @return S_OK; S_FALSE when there is no such register; E_POINTER; E_INVALIDARG for an unknown remote
    ///         path
    virtual HRESULT
    GetRegister(long remotePath, const wchar_t* name, IZOScpiStatusRegister** statusRegister) = 0;

    /// Serial poll: the status byte of the path with RQS in bit 6, which ends the request for service
    /// (IEEE 488.2 section 11.2.2.1).
    ///
    /// @return S_OK; E_POINTER; E_INVALIDARG for an unknown remote path
    virtual HRESULT SerialPoll(long remotePath, unsigned char* stb) = 0;

protected:
    ~IZOScpiStatusManagement() = default;
};

inline constexpr const IID& IID_IZOScpiStatusManagement = IZOScpiStatusManagement::kInterfaceId;

} // namespace ZoVelkor
