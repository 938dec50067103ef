#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Lets an emulation of another instrument take part in message processing.
///
/// Threads: the thread that executes the commands of the path.
struct IZOScpiEmulationCallback : IUnknown
{
    static constexpr IID kInterfaceId{
        0x0D71AC6B, 0x1206, 0x490F, {0x9A, 0x3F, 0x85, 0x98, 0xF4, 0x4E, 0x1D, 0xCD}};

    /// Maps the standard event register to the status byte.
    ///
    /// @return S_OK when mapped; E_NOTIMPL: the kernel's own mapping holds
    virtual HRESULT MapEsrToStb(wchar_t esr, wchar_t stb) = 0;
    /// A program message has been worked off.
    virtual HRESULT ProgramMessageEnd() = 0;

protected:
    ~IZOScpiEmulationCallback() = default;
};

inline constexpr const IID& IID_IZOScpiEmulationCallback = IZOScpiEmulationCallback::kInterfaceId;

} // namespace ZoVelkor
