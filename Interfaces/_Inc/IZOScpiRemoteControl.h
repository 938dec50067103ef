#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Remote, local and lockout states (IEEE 488.1 section 2.8).
///
/// Found at the root, for all connections, or for one path. Every change is told to the device handlers, the
/// observers and, where it did not come from there, the channel.
/// Threads: any operation from any thread, but not from inside a handler or an observer.
struct IZOScpiRemoteControl : IUnknown
{
    static constexpr IID kInterfaceId{
        0xEDBC43AB, 0xD16A, 0x4B9F, {0x98, 0x4F, 0x4B, 0x29, 0xCE, 0xC5, 0x76, 0xEF}};

    /// The instrument's own wish to be local, as by a key of its front panel.
    ///
    /// @return S_OK; S_FALSE when nothing was remote; E_ACCESSDENIED when a local lockout forbids it: then
    /// nothing has changed on the locked paths
    virtual HRESULT GotoLocal() = 0;
    /// @return S_OK; S_FALSE when all was remote
    virtual HRESULT GotoRemote() = 0;
    /// @return S_OK; S_FALSE when nothing changed
    virtual HRESULT LocalLockout(short on) = 0;
    /// @param[out] remote  VARIANT_TRUE when the path, or any path, is remote
    virtual HRESULT get_RemoteState(short* remote) = 0;
    /// @param[out] lockout  VARIANT_TRUE when the path, or any path, is locked out
    virtual HRESULT get_LocalLockoutState(short* lockout) = 0;

protected:
    ~IZOScpiRemoteControl() = default;
};

inline constexpr const IID& IID_IZOScpiRemoteControl = IZOScpiRemoteControl::kInterfaceId;

} // namespace ZoVelkor
