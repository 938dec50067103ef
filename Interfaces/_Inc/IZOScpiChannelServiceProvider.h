#pragma once

#include "Unknown.h"

namespace ZoVelkor
{

/// The kernel's side of one connection: what a channel tells the kernel, in terms of IEEE 488.
///
/// Results, unless said otherwise: S_OK; S_FALSE when nothing has changed by it; E_UNEXPECTED from what
/// needs the connection once that has ended. Threads: any, but not from inside a call of the kernel to the
/// channel, unless said.
struct IZOScpiChannelServiceProvider : IUnknown
{
    static constexpr IID kInterfaceId{
        0x3140C092, 0x7A29, 0x492D, {0xB6, 0xCE, 0x62, 0xA0, 0x4F, 0x94, 0x0E, 0xB7}};

    /// Bytes can be read, or the connection has ended. Also from inside a call of the kernel.
    virtual HRESULT SignalDataAvailable() = 0;
    /// The controller has made the instrument local (GTL, IEEE 488.1 section 2.8); the device handlers hear
    /// of it.
    virtual HRESULT SignalGotoLocal() = 0;
    /// The controller has made the instrument remote.
    virtual HRESULT SignalGotoRemote() = 0;
    /// The controller has set or released local lockout.
    ///
    /// @param on  non-zero: the front panel cannot return to local
    virtual HRESULT SignalLocalLockout(short on) = 0;
    /// Device clear: ends the message at hand, drops input and response. Does not wait;
    /// DeviceClearAcknowledge says when it is done (IEEE 488.2 section 5.8).
    virtual HRESULT SignalDeviceClear() = 0;
    /// Group execute trigger: waits until the messages before it are worked off and the trigger is given.
    ///
    /// @return S_OK; S_FALSE when no application took it (-211 is queued); E_ABORT when a device clear or
    ///         the end of the connection came first
    virtual HRESULT SignalTrigger() = 0;
    /// The status byte of an emulated instrument behind the channel has changed.
    ///
    /// @return S_FALSE, and nothing is done, when the kernel keeps the status byte itself
    virtual HRESULT SignalStbChange(unsigned char stb) = 0;
    /// Queues an error that the channel has found, as the query errors -410, -420 and -430. Also from inside
    /// a call of the kernel.
    ///
    /// -420 and the command errors -1xx say that what the kernel has read of a message has no end: it is
    /// dropped. As after SignalDeviceClear, DeviceClearAcknowledge says when that is done, and until then
    /// Read gives nothing.
    ///
    /// @param text  device-dependent part, lent for the call; may be null
    virtual HRESULT ReportError(short code, wchar_t* text) = 0;
    /// The connection is there: the kernel begins to read.
    virtual HRESULT SignalConnected() = 0;
    /// The connection is lost: whatever the kernel does for it ends. Does not wait. Also from inside a call
    /// of the kernel.
    virtual HRESULT SignalDisconnected() = 0;
    /// Gives the services of the connection's path, see IZOScpiManager.
    ///
    /// @param[out] manager  a new reference; null on failure
    /// @return S_OK; E_POINTER; E_UNEXPECTED
    virtual HRESULT GetScpiManager(IUnknown** manager) = 0;

protected:
    ~IZOScpiChannelServiceProvider() = default;
};

inline constexpr const IID& IID_IZOScpiChannelServiceProvider = IZOScpiChannelServiceProvider::kInterfaceId;

} // namespace ZoVelkor
