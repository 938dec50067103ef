#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// Remote, local and lockout states (IEEE 488.1 section 2.8).
///
/// Found at the root, for all connections, or for one path. Every change is told to the device handlers,
/// the observers and, where it did not come from there, the channel. For one path, every operation gives
/// E_INVALIDARG once its connection has ended.
/// Threads: any operation from any thread, but not from inside a handler or an observer.
struct IZOScpiRemoteControl : IUnknown
{
    static constexpr IID kInterfaceId{
        0xEDBC43AB, 0xD16A, 0x4B9F, {0x98, 0x4F, 0x4B, 0x29, 0xCE, 0xC5, 0x76, 0xEF}};

    /// The instrument's own wish to be local, as by a key of its front panel.
    ///
    /// @return S_OK; S_FALSE when nothing was remote; E_ACCESSDENIED when a local lockout forbids it: then
    ///         nothing has changed on the locked paths
    virtual HRESULT GotoLocal() = 0;
    /// Makes the path, or all paths, remote.
    ///
    /// @return S_OK; S_FALSE when all was remote
    virtual HRESULT GotoRemote() = 0;
    /// Sets or releases local lockout, under which GotoLocal is refused.
    ///
    /// @param on  non-zero sets
    /// @return S_OK; S_FALSE when nothing changed
    virtual HRESULT LocalLockout(short on) = 0;
    /// Tells who is in control.
    ///
    /// @param[out] remote  VARIANT_TRUE when the path, or any path, is remote
    /// @return S_OK; E_POINTER
    virtual HRESULT get_RemoteState(short* remote) = 0;
    /// Tells whether local lockout is set.
    ///
    /// @param[out] lockout  VARIANT_TRUE when the path, or any path, is locked out
    /// @return S_OK; E_POINTER
    virtual HRESULT get_LocalLockoutState(short* lockout) = 0;

protected:
    ~IZOScpiRemoteControl() = default;
};

inline constexpr const IID& IID_IZOScpiRemoteControl = IZOScpiRemoteControl::kInterfaceId;

} // namespace ZoVelkor
